// Writing memory variables as ".mem" records, in the layout the original
// system reads: values of other types are not saved.
#include <algorithm>
#include <cstring>

#include "kovo/host.h"
#include "kovo/memvar_record.h"

namespace {

// The length field has 16 bits and counts the text's terminating zero.
constexpr uint32_t TEXT_LIMIT = 65534;
constexpr int WIDTH_LIMIT = 255;

void writeDouble(VMEngine* vm, FHANDLE handle, double value) {
  uint8_t bytes[sizeof value];
  std::memcpy(bytes, &value, sizeof value);
  fsWrite(vm, handle, bytes, sizeof value);
}

// Fills in the type and length of the header; false for a type not saved.
bool describeValue(const Item* value, uint8_t* header) {
  HB_TYPE type = value->type;
  if (type & HB_IT_STRING) {
    uint32_t length = std::min(value->item.asString.length, TEXT_LIMIT) + 1;
    header[MEMVAR_TYPE_OFFSET] = MEMVAR_TYPE_CHARACTER;
    header[MEMVAR_LENGTH_OFFSET] = static_cast<uint8_t>(length & 0xFF);
    header[MEMVAR_HIGH_OFFSET] = static_cast<uint8_t>(length >> 8);
  } else if (type & HB_IT_NUMERIC) {
    int width = 0;
    int decimals = 0;
    itemGetNLen(value, &width, &decimals);
    // The stored width counts the point and the decimals.
    int total = width + (decimals > 0 ? decimals + 1 : 0);
    header[MEMVAR_TYPE_OFFSET] = MEMVAR_TYPE_NUMBER;
    header[MEMVAR_LENGTH_OFFSET] = static_cast<uint8_t>(std::min(total, WIDTH_LIMIT));
    header[MEMVAR_HIGH_OFFSET] = static_cast<uint8_t>(std::min(decimals, WIDTH_LIMIT));
  } else if (type == HB_IT_DATE) {
    header[MEMVAR_TYPE_OFFSET] = MEMVAR_TYPE_DATE;
    header[MEMVAR_LENGTH_OFFSET] = sizeof(double);
  } else if (type == HB_IT_LOGICAL) {
    header[MEMVAR_TYPE_OFFSET] = MEMVAR_TYPE_LOGICAL;
    header[MEMVAR_LENGTH_OFFSET] = 1;
  } else {
    return false;
  }
  return true;
}

void writeValue(VMEngine* vm, FHANDLE handle, const Item* value) {
  HB_TYPE type = value->type;
  if (type & HB_IT_STRING) {
    uint32_t length = std::min(value->item.asString.length, TEXT_LIMIT);
    fsWrite(vm, handle, value->item.asString.value, static_cast<uint16_t>(length));
    const char zero = '\0';
    fsWrite(vm, handle, &zero, 1);
  } else if (type & HB_IT_NUMERIC) {
    writeDouble(vm, handle, itemGetND(value));
  } else if (type == HB_IT_DATE) {
    writeDouble(vm, handle, value->item.asDate.value);
  } else {
    const uint8_t truth = value->item.asLogical.value ? 1 : 0;
    fsWrite(vm, handle, &truth, 1);
  }
}

}  // namespace

bool memvarSave(VMEngine* vm, DynSymbol* symbol, void* cargo) {
  const auto* context = static_cast<const MemvarSaveContext*>(cargo);
  if (!symbol->memvar) return true;
  bool matches =
      context->mask[0] == '*' || regexec(context->expression, symbol->name, 0, nullptr, 0) == 0;
  if (matches != context->include) return true;
  const Item* value = itemUnRef(vm, &symbol->memvar->value);
  uint8_t* header = context->buffer;
  // Reserved bytes and the bytes after the name's zero are written as zeros.
  std::memset(header, 0, MEMVAR_HEADER_SIZE);
  if (!describeValue(value, header)) return true;
  std::memcpy(header, symbol->name,
              std::min<size_t>(std::strlen(symbol->name), MEMVAR_NAME_LENGTH));
  fsWrite(vm, context->handle, header, MEMVAR_HEADER_SIZE);
  writeValue(vm, context->handle, value);
  return true;
}
