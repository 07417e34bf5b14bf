// The text files of regedit: "Windows Registry Editor Version 5.00" in
// UTF-16LE with a byte-order mark, and "REGEDIT4" in the ANSI code page
// (CP1251). Names and text values are CP1251 bytes here, as the ANSI
// registry calls see them; a 5.00 file holds them as UTF-16.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct RegOperation {
  enum Kind { CREATE_KEY, DELETE_KEY, SET_VALUE, DELETE_VALUE };
  Kind kind;
  int line;          // where it stands in the file, for messages
  uint32_t root;     // the predefined key that the path starts from
  std::string path;  // below the root, levels separated by `\`
  std::string name;  // the value's name, "" for the default value
  uint32_t type = 0;
  std::string data;
};

// The operations of a file, in file order; false with `error` ("line N: ...")
// when a line is malformed or holds a character that CP1251 cannot.
bool regParse(const std::string& bytes, std::vector<RegOperation>* operations, std::string* error);

// The predefined key that a root name stands for (full or short form,
// any case), 0 for none.
uint32_t regRootOf(const std::string& name);
// The full name of a predefined key.
const char* regRootName(uint32_t root);

struct RegValue {
  std::string name;
  uint32_t type;
  std::string data;
};
struct RegKeyText {
  std::string path;  // the full name, root included
  std::vector<RegValue> values;
};

// The 5.00 form of the keys, in the order given, as UTF-16LE bytes with the byte-order mark.
std::string regFormat(const std::vector<RegKeyText>& keys);
