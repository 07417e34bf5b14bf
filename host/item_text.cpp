// Text forms of items: the STR text of numbers, the display text of any item
// and the text that the pad functions use.
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "internals.h"
#include "kovo/host.h"

namespace {

// Rounds half away from zero at `decimals` places, correcting for the binary
// representation of decimal fractions (2.675 rounds to 2.68, as a reader of
// the decimal text expects).
double roundDecimal(double value, int decimals) {
  if (!std::isfinite(value) || decimals > 15) return value;
  double scale = std::pow(10.0, decimals);
  double scaled = value * scale;
  if (std::fabs(scaled) >= 4503599627370496.0) return value;
  double nudged = scaled + std::copysign(std::fabs(scaled) * 4 * DBL_EPSILON, scaled);
  return std::round(nudged) / scale;
}

char* heapText(VMEngine* vm, const char* text, uint32_t length) {
  auto* buffer = static_cast<char*>(vmAlloc(vm, size_t{length} + 1));
  std::memcpy(buffer, text, length);
  return buffer;
}

char* asterisks(VMEngine* vm, int width) {
  auto* buffer = static_cast<char*>(vmAlloc(vm, static_cast<size_t>(width) + 1));
  std::memset(buffer, '*', static_cast<size_t>(width));
  return buffer;
}

char* formatDate(VMEngine* vm, const Item* item, uint32_t* length) {
  char yyyymmdd[9];
  dateDecStr(yyyymmdd, item->item.asDate.value);
  const char* format = vm->set.text[HB_SET_DATEFORMAT] ? vm->set.text[HB_SET_DATEFORMAT] : "";
  size_t formatLength = std::strlen(format);
  auto* buffer = static_cast<char*>(vmAlloc(vm, formatLength + 1));
  dateFormat(buffer, yyyymmdd, format);
  *length = static_cast<uint32_t>(std::strlen(buffer));
  return buffer;
}

}  // namespace

char* itemStr(VMEngine* vm, const Item* number, const Item* width, const Item* decimals) {
  if (!number || !(number->type & (HB_IT_NUMERIC | HB_IT_COUNTER))) return nullptr;
  int itemWidth = 0;
  int itemDecimals = 0;
  itemGetNLen(number, &itemWidth, &itemDecimals);
  if (number->type == HB_IT_COUNTER) itemWidth = 10;
  // The item's width counts the integer part; a width argument counts everything.
  int total = itemDecimals > 0 ? itemWidth + itemDecimals + 1 : itemWidth;
  int places = itemDecimals;
  if (width && (width->type & HB_IT_NUMERIC)) {
    total = itemGetNI(width);
    if (total < 1) total = 10;
    places = 0;
  }
  if (decimals && (decimals->type & HB_IT_NUMERIC)) {
    places = itemGetNI(decimals);
    if (places < 0) places = 0;
  }
  if (total > 255) total = 255;
  char text[512];
  double value = itemGetND(number);
  int length;
  if (!std::isfinite(value)) return asterisks(vm, total);
  if (number->type == HB_IT_DOUBLE || places > 0) {
    if (places > total - 1) places = total > 1 ? total - 2 : 0;
    if (places < 0) places = 0;
    length = std::snprintf(text, sizeof text, "%*.*f", total, places, roundDecimal(value, places));
  } else {
    length = std::snprintf(text, sizeof text, "%*lld", total, static_cast<long long>(value));
  }
  if (length < 0 || length > total) return asterisks(vm, total);
  return heapText(vm, text, static_cast<uint32_t>(length));
}

char* itemString(VMEngine* vm, const Item* item, uint32_t* length, bool* mustFree) {
  *mustFree = false;
  if (!item) item = &vm->spareNil;
  HB_TYPE type = item->type;
  if (type & HB_IT_STRING) {
    *length = item->item.asString.length;
    return item->item.asString.value;
  }
  if (type & (HB_IT_NUMERIC | HB_IT_COUNTER)) {
    char* text = itemStr(vm, item, nullptr, nullptr);
    *length = static_cast<uint32_t>(std::strlen(text));
    *mustFree = true;
    return text;
  }
  if (type == HB_IT_DATE) {
    *mustFree = true;
    return formatDate(vm, item, length);
  }
  char text[128];
  const char* constant = nullptr;
  if (type == HB_IT_NIL) {
    constant = "NIL";
  } else if (type == HB_IT_LOGICAL) {
    constant = item->item.asLogical.value ? ".T." : ".F.";
  } else if (type & HB_IT_ARRAY) {
    const Class* cls = item->item.asArray.value->cls;
    if (cls) {
      std::snprintf(text, sizeof text, "{ %s Object }", cls->name);
    } else {
      constant = "{ Array }";
    }
  } else if (type & HB_IT_HASH) {
    constant = "{ Hash }";
  } else if (type & HB_IT_BLOCK) {
    constant = "{|| ... }";
  } else if (type & HB_IT_POINTER) {
    std::snprintf(
        text, sizeof text, "0x%016llX",
        static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(item->item.asPointer.value)));
  } else if (type & HB_IT_SYMBOL) {
    std::snprintf(text, sizeof text, "@%s()", item->item.asSymbol.value->name);
  } else {
    constant = "";
  }
  if (!constant) constant = text;
  *length = static_cast<uint32_t>(std::strlen(constant));
  *mustFree = true;
  return heapText(vm, constant, *length);
}

void itemReleaseString(char* text, bool mustFree) {
  if (mustFree && text) vmFree(nullptr, text);
}

char* itemPadConv(VMEngine* vm, const Item* item, uint32_t* length, bool* mustFree) {
  *mustFree = false;
  if (!item) return nullptr;
  HB_TYPE type = item->type;
  if (type & HB_IT_STRING) {
    *length = item->item.asString.length;
    return item->item.asString.value;
  }
  if (type & (HB_IT_NUMERIC | HB_IT_COUNTER)) {
    char* text = itemStr(vm, item, nullptr, nullptr);
    uint32_t full = static_cast<uint32_t>(std::strlen(text));
    uint32_t trimmed = full;
    const char* start = strLTrim(text, &trimmed);
    std::memmove(text, start, trimmed);
    text[trimmed] = '\0';
    *length = trimmed;
    *mustFree = true;
    return text;
  }
  if (type == HB_IT_DATE) {
    *mustFree = true;
    return formatDate(vm, item, length);
  }
  if (type == HB_IT_LOGICAL) {
    *length = 1;
    return const_cast<char*>(item->item.asLogical.value ? "T" : "F");
  }
  return nullptr;
}
