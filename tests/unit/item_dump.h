// A text of an item's type word and value, arrays element by element, for
// comparing values in tests: type words, widths and decimals included.
#pragma once

#include <cmath>
#include <cstdio>
#include <string>

#include "kovo/host.h"

inline std::string itemDump(const Item* item) {
  char head[48];
  std::snprintf(head, sizeof head, "%04X:", item->type);
  std::string out = head;
  switch (item->type) {
    case HB_IT_INTEGER:
      return out + std::to_string(item->item.asInteger.value);
    case HB_IT_LONG:
      return out + std::to_string(item->item.asLong.value);
    case HB_IT_COUNTER:
      return out + std::to_string(item->item.asCounter.value);
    case HB_IT_DATE:
      return out + std::to_string(item->item.asDate.value);
    case HB_IT_LOGICAL:
      return out + (item->item.asLogical.value ? "T" : "F");
    case HB_IT_DOUBLE: {
      double value = item->item.asDouble.value;
      std::snprintf(head, sizeof head, "%.17g/%u/%u%s", value, item->item.asDouble.length,
                    item->item.asDouble.decimal, std::signbit(value) ? "-" : "");
      return out + head;
    }
    case HB_IT_STRING:
    case HB_IT_MEMO:
      return out + std::string(itemStrPtr(item), itemStrLen(item));
    case HB_IT_ARRAY: {
      out += "{";
      for (uint32_t i = 1; i <= itemArrayLen(item); i++)
        out += (i > 1 ? ", " : "") + itemDump(arrayGetItemPtr(item, i));
      return out + "}";
    }
    default:
      return out;
  }
}
