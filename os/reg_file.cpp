#include "os/reg_file.h"

#include <cstdio>
#include <cstring>

#include "kovo/hex_digits.h"
#include "os/cp1251.h"
#include "os/registry.h"

namespace {

const char HEADER_500[] = "Windows Registry Editor Version 5.00";
const char HEADER_4[] = "REGEDIT4";
// regedit breaks a hex line once its bytes reach this column, going on after two blanks.
constexpr size_t HEX_LINE_LIMIT = 77;
// regedit writes its hex digits in lower case.
const char LOWER_HEX_DIGITS[] = "0123456789abcdef";

struct Root {
  const char* name;
  const char* shortName;
  uint32_t key;
};
constexpr Root ROOTS[] = {
    {"HKEY_CLASSES_ROOT", "HKCR", HKEY_CLASSES_ROOT_KEY},
    {"HKEY_CURRENT_USER", "HKCU", HKEY_CURRENT_USER_KEY},
    {"HKEY_LOCAL_MACHINE", "HKLM", HKEY_LOCAL_MACHINE_KEY},
    {"HKEY_USERS", "HKU", HKEY_USERS_KEY},
    {"HKEY_CURRENT_CONFIG", "HKCC", HKEY_CURRENT_CONFIG_KEY},
};

bool isText(uint32_t type) {
  return type == REG_TYPE_SZ || type == REG_TYPE_EXPAND_SZ || type == REG_TYPE_MULTI_SZ;
}

bool sameUpper(const std::string& a, const char* b) {
  if (a.size() != std::strlen(b)) return false;
  for (size_t i = 0; i < a.size(); i++) {
    if (cp1251Upper(static_cast<unsigned char>(a[i])) != static_cast<unsigned char>(b[i]))
      return false;
  }
  return true;
}

// ---- Reading -----------------------------------------------------------------------

// One line of the file after continuations are joined: Unicode characters
// and the number of the line it began on.
struct Line {
  std::u32string text;
  int number;
};

class Parser {
 public:
  Parser(std::vector<RegOperation>* operations, std::string* error)
      : operations_(operations), error_(error) {}

  bool run(const std::string& bytes);

 private:
  std::vector<RegOperation>* operations_;
  std::string* error_;
  bool unicode_ = false;
  int line_ = 0;
  // The key that values go to; none before the first section or in a deleted one.
  bool haveKey_ = false;
  bool skipping_ = false;
  uint32_t root_ = 0;
  std::string path_;

  bool fail(const std::string& message) {
    *error_ = "line " + std::to_string(line_) + ": " + message;
    return false;
  }
  bool decode(const std::string& bytes, std::u32string* text);
  bool ansi(const std::u32string& text, std::string* out);
  bool section(const std::u32string& text);
  bool value(const std::u32string& text);
  bool quoted(const std::u32string& text, size_t* at, std::string* out);
  bool hexBytes(const std::u32string& text, size_t at, std::string* out);
};

bool Parser::decode(const std::string& bytes, std::u32string* text) {
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  size_t size = bytes.size();
  unicode_ = size >= 2 && data[0] == 0xFF && data[1] == 0xFE;
  if (!unicode_) {
    text->reserve(size);
    for (size_t i = 0; i < size; i++)
      text->push_back(cp1251ToUnicode(data[i]));
    return true;
  }
  if (size % 2 != 0) return fail("a UTF-16 file of an odd number of bytes");
  text->reserve(size / 2);
  for (size_t i = 2; i < size; i += 2) {
    uint32_t unit = data[i] | (data[i + 1] << 8);
    if (unit >= 0xD800 && unit <= 0xDBFF && i + 3 < size) {
      uint32_t low = data[i + 2] | (data[i + 3] << 8);
      if (low >= 0xDC00 && low <= 0xDFFF) {
        unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
        i += 2;
      }
    }
    text->push_back(unit);
  }
  return true;
}

bool Parser::ansi(const std::u32string& text, std::string* out) {
  out->clear();
  out->reserve(text.size());
  for (char32_t c : text) {
    int byte = cp1251FromUnicode(c);
    if (byte < 0) return fail("a character that the ANSI code page cannot hold");
    out->push_back(static_cast<char>(byte));
  }
  return true;
}

bool Parser::run(const std::string& bytes) {
  std::u32string text;
  if (!decode(bytes, &text)) return false;
  std::vector<Line> lines;
  int number = 0;
  bool continued = false;
  for (size_t start = 0; start <= text.size();) {
    size_t end = text.find(U'\n', start);
    if (end == std::u32string::npos) end = text.size();
    std::u32string piece = text.substr(start, end - start);
    start = end + 1;
    number++;
    if (!piece.empty() && piece.back() == U'\r') piece.pop_back();
    if (continued) {
      size_t first = piece.find_first_not_of(U" \t");
      lines.back().text += first == std::u32string::npos ? U"" : piece.substr(first);
    } else {
      lines.push_back({piece, number});
    }
    size_t last = lines.back().text.find_last_not_of(U" \t");
    continued = last != std::u32string::npos && lines.back().text[last] == U'\\';
    if (continued) lines.back().text.erase(last);
    if (end == text.size()) break;
  }
  line_ = 1;
  std::string header;
  if (lines.empty() || !ansi(lines[0].text, &header)) return fail("no header");
  bool headerOk = unicode_ ? header == HEADER_500 : header == HEADER_4;
  if (!headerOk) {
    return fail(unicode_ ? "a UTF-16 file must begin with \"Windows Registry Editor Version 5.00\""
                         : "an ANSI file must begin with \"REGEDIT4\"");
  }
  for (size_t i = 1; i < lines.size(); i++) {
    line_ = lines[i].number;
    const std::u32string& line = lines[i].text;
    size_t first = line.find_first_not_of(U" \t");
    if (first == std::u32string::npos || line[first] == U';') continue;
    std::u32string body = line.substr(first);
    if (!(body[0] == U'[' ? section(body) : value(body))) return false;
  }
  return true;
}

bool Parser::section(const std::u32string& text) {
  size_t close = text.rfind(U']');
  if (close == std::u32string::npos) return fail("a key without its closing \"]\"");
  bool remove = text.size() > 1 && text[1] == U'-';
  std::string full;
  if (!ansi(text.substr(remove ? 2 : 1, close - (remove ? 2 : 1)), &full)) return false;
  size_t slash = full.find('\\');
  uint32_t root = regRootOf(full.substr(0, slash));
  if (root == 0) return fail("\"" + full.substr(0, slash) + "\" is no root key");
  std::string path = slash == std::string::npos ? "" : full.substr(slash + 1);
  operations_->push_back(
      {remove ? RegOperation::DELETE_KEY : RegOperation::CREATE_KEY, line_, root, path, "", 0, ""});
  haveKey_ = !remove;
  skipping_ = remove;
  root_ = root;
  path_ = path;
  return true;
}

bool Parser::quoted(const std::u32string& text, size_t* at, std::string* out) {
  std::u32string raw;
  size_t i = *at + 1;
  for (; i < text.size() && text[i] != U'"'; i++) {
    if (text[i] == U'\\' && i + 1 < text.size()) i++;
    raw.push_back(text[i]);
  }
  if (i >= text.size()) return fail("a text without its closing quote");
  *at = i + 1;
  return ansi(raw, out);
}

bool Parser::hexBytes(const std::u32string& text, size_t at, std::string* out) {
  for (size_t i = at; i < text.size();) {
    if (text[i] == U' ' || text[i] == U'\t' || text[i] == U',') {
      i++;
      continue;
    }
    int high = text[i] < 0x80 ? hexDigitValue(static_cast<char>(text[i])) : -1;
    int low = i + 1 < text.size() && text[i + 1] < 0x80
                  ? hexDigitValue(static_cast<char>(text[i + 1]))
                  : -1;
    if (high < 0 || low < 0) return fail("a byte of hex data that is not two hex digits");
    out->push_back(static_cast<char>(high * 16 + low));
    i += 2;
    if (i < text.size() && text[i] != U',' && text[i] != U' ' && text[i] != U'\t') {
      return fail("hex bytes must be separated by commas");
    }
  }
  return true;
}

bool Parser::value(const std::u32string& text) {
  RegOperation operation{RegOperation::SET_VALUE, line_, root_, path_, "", 0, ""};
  size_t at = 0;
  if (text[0] == U'@') {
    at = 1;
  } else if (text[0] == U'"') {
    if (!quoted(text, &at, &operation.name)) return false;
  } else {
    return fail("neither a key, a value nor a comment");
  }
  while (at < text.size() && (text[at] == U' ' || text[at] == U'\t'))
    at++;
  if (at >= text.size() || text[at] != U'=') return fail("a value name without \"=\"");
  at++;
  while (at < text.size() && (text[at] == U' ' || text[at] == U'\t'))
    at++;
  std::u32string rest = text.substr(at);
  if (rest == U"-") {
    operation.kind = RegOperation::DELETE_VALUE;
  } else if (!rest.empty() && rest[0] == U'"') {
    size_t end = 0;
    if (!quoted(rest, &end, &operation.data)) return false;
    if (rest.find_first_not_of(U" \t", end) != std::u32string::npos) {
      return fail("something after the closing quote");
    }
    operation.type = REG_TYPE_SZ;
    operation.data.push_back('\0');
  } else if (rest.compare(0, 6, U"dword:") == 0) {
    uint32_t number = 0;
    size_t digits = rest.size() - 6;
    if (digits == 0 || digits > 8) return fail("dword: needs one to eight hex digits");
    for (size_t i = 6; i < rest.size(); i++) {
      int digit = rest[i] < 0x80 ? hexDigitValue(static_cast<char>(rest[i])) : -1;
      if (digit < 0) return fail("dword: needs one to eight hex digits");
      number = number * 16 + static_cast<uint32_t>(digit);
    }
    operation.type = REG_TYPE_DWORD;
    for (int i = 0; i < 4; i++)
      operation.data.push_back(static_cast<char>((number >> (8 * i)) & 0xFF));
  } else if (rest.compare(0, 4, U"hex:") == 0 || rest.compare(0, 4, U"hex(") == 0) {
    size_t colon = rest.find(U':');
    operation.type = REG_TYPE_BINARY;
    if (rest[3] == U'(') {
      uint64_t type = 0;
      size_t i = 4;
      for (; i < rest.size() && rest[i] != U')'; i++) {
        int digit = rest[i] < 0x80 ? hexDigitValue(static_cast<char>(rest[i])) : -1;
        if (digit < 0 || type > 0xFFFFFFF) return fail("hex( needs a type in hex digits");
        type = type * 16 + static_cast<uint64_t>(digit);
      }
      if (i == 4 || i + 1 >= rest.size() || rest[i + 1] != U':') {
        return fail("hex( needs a type in hex digits and \"):\"");
      }
      operation.type = static_cast<uint32_t>(type);
      colon = i + 1;
    }
    std::string bytes;
    if (!hexBytes(rest, colon + 1, &bytes)) return false;
    if (unicode_ && isText(operation.type)) {
      // The text of a 5.00 file is UTF-16: the store keeps its ANSI form.
      if (bytes.size() % 2 != 0) return fail("UTF-16 text of an odd number of bytes");
      std::u32string units;
      for (size_t i = 0; i < bytes.size(); i += 2) {
        units.push_back(static_cast<unsigned char>(bytes[i]) |
                        (static_cast<unsigned char>(bytes[i + 1]) << 8));
      }
      if (!ansi(units, &bytes)) return false;
    }
    operation.data = std::move(bytes);
  } else {
    return fail("a value that is neither text, dword:, hex: nor -");
  }
  if (skipping_) return true;  // values of a deleted key are passed over, as regedit does
  if (!haveKey_) return fail("a value before the first key");
  operations_->push_back(std::move(operation));
  return true;
}

// ---- Writing -------------------------------------------------------------------------

void appendQuoted(std::string* out, const std::string& text) {
  out->push_back('"');
  for (char c : text) {
    if (c == '\\' || c == '"') out->push_back('\\');
    out->push_back(c);
  }
  out->push_back('"');
}

// Text that a quoted value gives back exactly: one closing zero, no other
// zero and no line break inside.
bool quotable(const RegValue& value) {
  const std::string& data = value.data;
  if (value.type != REG_TYPE_SZ || data.empty() || data.back() != '\0') return false;
  return data.find_first_of(std::string("\0\r\n", 3)) == data.size() - 1;
}

void appendHex(std::string* out, const std::string& bytes) {
  size_t column = out->size() - out->rfind('\n') - 1;
  for (size_t i = 0; i < bytes.size(); i++) {
    auto byte = static_cast<unsigned char>(bytes[i]);
    const char digits[2] = {LOWER_HEX_DIGITS[byte >> 4], LOWER_HEX_DIGITS[byte & 15]};
    out->append(digits, 2);
    column += 2;
    if (i + 1 == bytes.size()) break;
    out->push_back(',');
    column++;
    if (column >= HEX_LINE_LIMIT) {
      out->append("\\\r\n  ");
      column = 2;
    }
  }
}

// The UTF-16LE bytes of ANSI text, as a 5.00 file keeps text values.
std::string utf16Bytes(const std::string& text) {
  std::string bytes;
  bytes.reserve(text.size() * 2);
  for (char c : text) {
    uint16_t unit = cp1251ToUnicode(static_cast<unsigned char>(c));
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  }
  return bytes;
}

void appendValue(std::string* out, const RegValue& value) {
  if (value.name.empty()) {
    out->push_back('@');
  } else {
    appendQuoted(out, value.name);
  }
  out->push_back('=');
  if (quotable(value)) {
    appendQuoted(out, value.data.substr(0, value.data.size() - 1));
  } else if (value.type == REG_TYPE_DWORD && value.data.size() == 4) {
    uint32_t number = 0;
    for (int i = 3; i >= 0; i--)
      number = number << 8 | static_cast<unsigned char>(value.data[i]);
    char text[16];
    std::snprintf(text, sizeof text, "dword:%08x", number);
    out->append(text);
  } else if (value.type == REG_TYPE_BINARY) {
    out->append("hex:");
    appendHex(out, value.data);
  } else {
    char text[24];
    std::snprintf(text, sizeof text, "hex(%x):", value.type);
    out->append(text);
    appendHex(out, isText(value.type) ? utf16Bytes(value.data) : value.data);
  }
  out->append("\r\n");
}

}  // namespace

bool regParse(const std::string& bytes, std::vector<RegOperation>* operations, std::string* error) {
  Parser parser(operations, error);
  return parser.run(bytes);
}

uint32_t regRootOf(const std::string& name) {
  for (const Root& root : ROOTS) {
    if (sameUpper(name, root.name) || sameUpper(name, root.shortName)) return root.key;
  }
  return 0;
}

const char* regRootName(uint32_t key) {
  for (const Root& root : ROOTS) {
    if (root.key == key) return root.name;
  }
  return "";
}

std::string regFormat(const std::vector<RegKeyText>& keys) {
  std::string text = std::string(HEADER_500) + "\r\n\r\n";
  for (const RegKeyText& key : keys) {
    text += "[" + key.path + "]\r\n";
    for (const RegValue& value : key.values)
      appendValue(&text, value);
    text += "\r\n";
  }
  // The whole text is ANSI so far; the file holds it as UTF-16.
  return "\xFF\xFE" + utf16Bytes(text);
}
