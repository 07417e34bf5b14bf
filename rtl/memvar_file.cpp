// Reading memory-variable files and the name filter they are read through.
#include "rtl/memvar_file.h"

#include <bit>
#include <cctype>
#include <cstring>
#include <string>

#include "frame/frame.h"

namespace {

static_assert(std::endian::native == std::endian::little, "the file's numbers are little-endian");

constexpr int32_t MASK_ERROR = 9100;

bool readExactly(const MemvarSource& source, void* buffer, uint32_t count) {
  return source.read(source.cargo, buffer, count) == count;
}

bool readDouble(const MemvarSource& source, double* value) {
  return readExactly(source, value, sizeof *value);
}

// A day outside the 32-bit range, or not a number, becomes the value that an
// x86 conversion gives it.
int32_t julianOfDay(double day) {
  if (!(day > -2147483649.0 && day < 2147483648.0)) return INT32_MIN;
  return static_cast<int32_t>(day);
}

// The text and its zero, the zero counted in the length; a length of 0 gives
// the empty string.
void readCharacter(VMEngine* vm, const MemvarSource& source, uint32_t length, Item* value) {
  if (length == 0) {
    itemPutCL(vm, value, "", 0);
    return;
  }
  auto* text = static_cast<char*>(vmAlloc(vm, length));
  if (!readExactly(source, text, length)) {
    vmFree(vm, text);
    return;
  }
  // Whatever the file holds in the zero's place, the string ends there.
  text[length - 1] = '\0';
  itemPutCPtr(vm, value, text, length - 1);
}

// The value after a header; left nil for an unknown type or a value that the
// file cuts short.
void readValue(VMEngine* vm, const MemvarSource& source, const uint8_t* header, Item* value) {
  uint8_t low = header[MEMVAR_LENGTH_OFFSET];
  uint8_t high = header[MEMVAR_HIGH_OFFSET];
  double number = 0;
  switch (header[MEMVAR_TYPE_OFFSET]) {
    case MEMVAR_TYPE_CHARACTER:
      readCharacter(vm, source, low + high * 256u, value);
      break;
    case MEMVAR_TYPE_DATE:
      if (readDouble(source, &number)) itemPutDL(vm, value, julianOfDay(number));
      break;
    case MEMVAR_TYPE_LOGICAL: {
      uint8_t truth = 0;
      if (readExactly(source, &truth, 1)) itemPutL(vm, value, truth != 0);
      break;
    }
    case MEMVAR_TYPE_NUMBER:
      // The stored width counts the point and the decimals.
      if (readDouble(source, &number)) {
        itemPutNLen(vm, value, number, low - (high > 0 ? high + 1 : 0), high);
      }
      break;
    default:
      break;
  }
}

void restoreVariable(VMEngine* vm, const char* name, const Item* value) {
  DynSymbol* symbol = memvarFindSymbol(vm, name);
  if (symbol) {
    memvarSetValue(vm, symbol, value);
  } else {
    // Restored variables are private whatever they were when saved.
    memvarCreateFromDynSymbol(vm, xdynsymGet(vm, name), MV_PRIVATE, value);
  }
  itemCopy(vm, returnItem(vm), value);
}

bool clearSymbol(VMEngine* vm, DynSymbol* symbol, void*) {
  memvarClear(vm, symbol);
  return true;
}

}  // namespace

MemvarMask::MemvarMask(VMEngine* vm, const char* mask) : takesAll_(mask[0] == '*') {
  char* text = Wild2RegEx(vm, mask, false);
  if (regcomp(&expression_, text, 0) == 0) {
    vmFree(vm, text);
    return;
  }
  std::string message =
      std::string("Invalid mask passed as MEMVAR filter '") + mask + "' -> '" + text + "'\n";
  vmFree(vm, text);
  err_Internal(vm, MASK_ERROR, message.c_str(), "");
}

bool MemvarMask::takes(const char* name, bool include) const {
  bool matches = takesAll_ || regexec(&expression_, name, 0, nullptr, 0) == 0;
  return matches == include;
}

void memvarRestoreRecords(VMEngine* vm, const MemvarSource& source, const MemvarMask& mask,
                          bool include) {
  uint8_t header[MEMVAR_HEADER_SIZE];
  Item value{};
  while (readExactly(source, header, MEMVAR_HEADER_SIZE)) {
    // The name field holds at most ten characters and a zero; a field without
    // its zero is read no further than its end.
    char name[MEMVAR_NAME_LENGTH + 2] = {};
    for (uint32_t i = 0; i <= MEMVAR_NAME_LENGTH && header[i]; i++)
      name[i] = static_cast<char>(std::toupper(header[i]));
    readValue(vm, source, header, &value);
    if (mask.takes(name, include)) restoreVariable(vm, name, &value);
    itemClear(vm, &value);
  }
}

void memvarClearAll(VMEngine* vm) {
  xdynsymEval(vm, clearSymbol, nullptr);
}
