// VAR2BIN and the native var2bin: the XHBIN writer and its size computation.
#include <cstdio>
#include <cstring>
#include <unordered_set>
#include <vector>

#include "xhbin.h"

namespace {

// "Функция item2Bin() тип %X не обрабатывается!" and the same of itemBinSize(), in CP1251.
const char WRITER_UNHANDLED[] =
    "\xD4\xF3\xED\xEA\xF6\xE8\xFF item2Bin() \xF2\xE8\xEF %X \xED\xE5 "
    "\xEE\xE1\xF0\xE0\xE1\xE0\xF2\xFB\xE2\xE0\xE5\xF2\xF1\xFF!";
const char SIZE_UNHANDLED[] =
    "\xD4\xF3\xED\xEA\xF6\xE8\xFF itemBinSize() \xF2\xE8\xEF %X \xED\xE5 "
    "\xEE\xE1\xF0\xE0\xE1\xE0\xF2\xFB\xE2\xE0\xE5\xF2\xF1\xFF!";

// What the size computation counts for a logical, against the eight bytes written.
constexpr uint64_t LOGICAL_COUNTED = 5;
constexpr uint64_t LOGICAL_WRITTEN = 8;

// Walks a value depth-first with a stack of its own, so that nesting of any
// depth costs heap, not machine stack. An array met again inside itself
// counts as a value the encoding cannot hold; only arrays with more than
// one holder can be met again, so only they are remembered.
template <typename Visitor>
void walkValue(const Item* root, Visitor& visitor) {
  // Where the enclosing array goes on once `array` is done.
  struct Frame {
    const Item* next;
    const Item* end;
    const BaseArray* array;
    bool remembered;
  };
  std::vector<Frame> path;
  std::unordered_set<const BaseArray*> sharedOnPath;
  const Item* next = root;
  const Item* end = root + 1;
  for (;;) {
    while (next != end) {
      const Item* item = next++;
      if (item->type != HB_IT_ARRAY) {
        visitor.scalar(item);
        continue;
      }
      const BaseArray* array = item->item.asArray.value;
      bool remembered = array->refCount > 1;
      if (remembered && !sharedOnPath.insert(array).second) {
        visitor.unencodable(item->type);
        continue;
      }
      visitor.arrayHead(array->length);
      path.push_back({next, end, array, remembered});
      next = array->items;
      end = array->items + array->length;
    }
    if (path.empty()) return;
    const Frame& done = path.back();
    if (done.remembered) sharedOnPath.erase(done.array);
    next = done.next;
    end = done.end;
    path.pop_back();
  }
}

struct SizeCounter {
  VMEngine* vm;
  uint64_t computed = 0;
  uint64_t logicals = 0;

  void scalar(const Item* item) {
    switch (item->type) {
      case HB_IT_NIL:
      case HB_IT_INTEGER:
      case HB_IT_LONG:
      case HB_IT_DATE:
      case HB_IT_COUNTER:
        computed += 8;
        break;
      case HB_IT_DOUBLE:
        computed += 12;
        break;
      case HB_IT_LOGICAL:
        computed += LOGICAL_COUNTED;
        logicals++;
        break;
      case HB_IT_STRING:
      case HB_IT_MEMO:
        computed += uint64_t{item->item.asString.length} + 5;
        break;
      default:
        unencodable(item->type);
        break;
    }
  }
  void arrayHead(uint32_t) { computed += 8; }
  void unencodable(HB_TYPE type) { xhbinReportType(vm, SIZE_UNHANDLED, type, "BIN2VAR"); }
};

struct StreamWriter {
  VMEngine* vm;
  unsigned char* out;

  void put32(uint32_t value) {
    out[0] = static_cast<unsigned char>(value);
    out[1] = static_cast<unsigned char>(value >> 8);
    out[2] = static_cast<unsigned char>(value >> 16);
    out[3] = static_cast<unsigned char>(value >> 24);
    out += 4;
  }

  void putTagged(HB_TYPE tag, uint32_t value) {
    put32(tag);
    put32(value);
  }

  void scalar(const Item* item) {
    switch (item->type) {
      case HB_IT_NIL:
        putTagged(HB_IT_NIL, 0);
        break;
      case HB_IT_INTEGER:
        putTagged(HB_IT_INTEGER, static_cast<uint32_t>(item->item.asInteger.value));
        break;
      case HB_IT_LONG:
        putTagged(HB_IT_LONG, static_cast<uint32_t>(item->item.asLong.value));
        break;
      case HB_IT_DATE:
        putTagged(HB_IT_DATE, static_cast<uint32_t>(item->item.asDate.value));
        break;
      case HB_IT_COUNTER:
        putTagged(HB_IT_COUNTER, item->item.asCounter.value);
        break;
      case HB_IT_LOGICAL:
        putTagged(HB_IT_LOGICAL, static_cast<uint32_t>(item->item.asLogical.value));
        break;
      case HB_IT_DOUBLE:
        put32(HB_IT_DOUBLE);
        std::memcpy(out, &item->item.asDouble.value, sizeof(double));
        out += sizeof(double);
        break;
      case HB_IT_STRING:
      case HB_IT_MEMO:  // a memo string is written as a plain string
        put32(HB_IT_STRING);
        // The bytes and a NUL, which the zero-filled buffer holds already.
        std::memcpy(out, item->item.asString.value, item->item.asString.length);
        out += item->item.asString.length + 1;
        break;
      default:
        unencodable(item->type);
        break;
    }
  }
  void arrayHead(uint32_t count) { putTagged(HB_IT_ARRAY, count); }
  void unencodable(HB_TYPE type) { xhbinReportType(vm, WRITER_UNHANDLED, type, nullptr); }
};

}  // namespace

void xhbinReportType(VMEngine* vm, const char* format, uint32_t type, const char* caption) {
  char text[255];
  std::snprintf(text, sizeof text, format, type);
  MsgBox(vm, text, caption);
}

char* xhbinEncode(VMEngine* vm, const Item* item, uint32_t* length) {
  SizeCounter size{vm};
  walkValue(item, size);
  uint64_t streamLength = XHBIN_SIGNATURE_LENGTH + size.computed;
  uint64_t working = streamLength + (LOGICAL_WRITTEN - LOGICAL_COUNTED) * size.logicals + 1;
  if (working > UINT32_MAX) return nullptr;
  auto* buffer = static_cast<char*>(vmAlloc(vm, working));
  std::memcpy(buffer, XHBIN_SIGNATURE, XHBIN_SIGNATURE_LENGTH);
  StreamWriter writer{vm, reinterpret_cast<unsigned char*>(buffer) + XHBIN_SIGNATURE_LENGTH};
  walkValue(item, writer);
  *length = static_cast<uint32_t>(streamLength);
  return buffer;
}

char* var2bin(VMEngine* vm, const Item* item, uint32_t* pLen) {
  if (!item) return nullptr;
  uint32_t length = 0;
  char* buffer = xhbinEncode(vm, item, &length);
  if (buffer && pLen) *pLen = length;
  return buffer;
}

KOVO_FUNC(VAR2BIN) {
  const Item* item = paramItem(vm, 1, HB_IT_ANY);
  if (!item) return;
  uint32_t length = 0;
  char* buffer = xhbinEncode(vm, item, &length);
  if (buffer) itemPutCRaw(vm, returnItem(vm), buffer, length);
}
