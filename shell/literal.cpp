#include "literal.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "kovo/host.h"

namespace {

// Nesting deeper than this prints as "..." (an array may hold itself).
constexpr int MAX_DEPTH = 64;

void appendLiteral(std::string& out, const Item* item, int depth);

void appendElements(std::string& out, const BaseArray* array, int depth) {
  out += '{';
  for (uint32_t i = 0; i < array->length; i++) {
    if (i) out += ", ";
    appendLiteral(out, &array->items[i], depth + 1);
  }
  out += '}';
}

void appendHash(std::string& out, const Item* hash, int depth) {
  uint32_t length = hashLen(hash);
  if (length == 0) {
    out += "{=>}";
    return;
  }
  out += '{';
  for (uint32_t i = 1; i <= length; i++) {
    if (i > 1) out += ", ";
    appendLiteral(out, hashGetKeyAt(hash, i), depth + 1);
    out += " => ";
    appendLiteral(out, hashGetValueAt(hash, i), depth + 1);
  }
  out += '}';
}

void appendDate(std::string& out, int32_t julian) {
  char text[9];
  dateDecStr(text, julian);
  out += "0d";
  out += julian == 0 ? "00000000" : text;
}

void appendLiteral(std::string& out, const Item* item, int depth) {
  if (depth > MAX_DEPTH) {
    out += "...";
    return;
  }
  while (item->type & HB_IT_BYREF)
    item = &item->item.asRefer.value->value;
  HB_TYPE type = item->type;
  if (type & HB_IT_STRING) {
    out += formatString(item->item.asString.value, item->item.asString.length);
  } else if (type & HB_IT_ARRAY) {
    const BaseArray* array = item->item.asArray.value;
    if (array->cls) {
      out += std::string("<object ") + xobjGetClsName(item) + ">";
    } else {
      appendElements(out, array, depth);
    }
  } else if (type & HB_IT_HASH) {
    appendHash(out, item, depth);
  } else if (type & HB_IT_BLOCK) {
    out += "<block>";
  } else if (type & HB_IT_SYMBOL) {
    out += std::string("<symbol ") + item->item.asSymbol.value->name + ">";
  } else if (type & HB_IT_ELEMREF) {
    const BaseArray* array = item->item.asElemRef.array;
    uint32_t index = item->item.asElemRef.index;
    if (index >= 1 && index <= array->length) {
      appendLiteral(out, &array->items[index - 1], depth + 1);
    } else {
      out += "NIL";
    }
  } else {
    switch (type) {
      case HB_IT_NIL:
        out += "NIL";
        break;
      case HB_IT_LOGICAL:
        out += item->item.asLogical.value ? ".T." : ".F.";
        break;
      case HB_IT_INTEGER:
        out += std::to_string(item->item.asInteger.value);
        break;
      case HB_IT_LONG:
        out += std::to_string(item->item.asLong.value);
        break;
      case HB_IT_COUNTER:
        out += std::to_string(item->item.asCounter.value);
        break;
      case HB_IT_DOUBLE:
        out += formatDouble(item->item.asDouble.value);
        break;
      case HB_IT_DATE:
        appendDate(out, item->item.asDate.value);
        break;
      case HB_IT_POINTER:
        out += "<pointer>";
        break;
      default:
        out += "<type " + std::to_string(type) + ">";
        break;
    }
  }
}

}  // namespace

std::string formatDouble(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0 ? "-Inf" : "Inf";
  // The shortest digits that read back to the same double, in scientific form.
  char buffer[64];
  auto [end, ec] =
      std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific);
  std::string scientific(buffer, end);
  size_t e = scientific.find('e');
  std::string mantissa = scientific.substr(0, e);
  int exponent = std::atoi(scientific.c_str() + e + 1);
  bool negative = mantissa[0] == '-';
  std::string digits;
  for (char c : mantissa) {
    if (c >= '0' && c <= '9') digits += c;
  }
  std::string out = negative ? "-" : "";
  if (exponent < -4 || exponent >= 16) {
    out += digits[0];
    if (digits.size() > 1) out += "." + digits.substr(1);
    char exp[16];
    std::snprintf(exp, sizeof exp, "e%c%02d", exponent < 0 ? '-' : '+', std::abs(exponent));
    return out + exp;
  }
  if (exponent < 0) {
    return out + "0." + std::string(static_cast<size_t>(-exponent - 1), '0') + digits;
  }
  size_t point = static_cast<size_t>(exponent) + 1;
  if (digits.size() <= point) {
    return out + digits + std::string(point - digits.size(), '0') + ".0";
  }
  return out + digits.substr(0, point) + "." + digits.substr(point);
}

std::string formatString(const char* bytes, size_t length) {
  bool plain = true;
  for (size_t i = 0; i < length && plain; i++) {
    auto c = static_cast<unsigned char>(bytes[i]);
    plain = c >= 0x20 && c <= 0x7E && c != '"' && c != '\\';
  }
  if (plain) return "\"" + std::string(bytes, length) + "\"";
  std::string out = "e\"";
  for (size_t i = 0; i < length; i++) {
    auto c = static_cast<unsigned char>(bytes[i]);
    switch (c) {
      case '\\':
        out += "\\\\";
        break;
      case '"':
        out += "\\\"";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\t':
        out += "\\t";
        break;
      default:
        if (c >= 0x20 && c <= 0x7E) {
          out += static_cast<char>(c);
        } else {
          char hex[5];
          std::snprintf(hex, sizeof hex, "\\x%02X", c);
          out += hex;
        }
    }
  }
  return out + "\"";
}

std::string formatText(const char* text) {
  return formatString(text, std::strlen(text));
}

std::string formatLiteral(const Item* item) {
  std::string out;
  appendLiteral(out, item, 0);
  return out;
}
