// BIN2VAR and the native bin2item: the XHBIN reader.
#include <cstring>
#include <vector>

#include "frame/padded_bytes.h"
#include "xhbin.h"

namespace {

// "Функция bin2Item() тип %X не обрабатывается!" in CP1251.
const char READER_UNHANDLED[] =
    "\xD4\xF3\xED\xEA\xF6\xE8\xFF bin2Item() \xF2\xE8\xEF %X \xED\xE5 "
    "\xEE\xE1\xF0\xE0\xE1\xE0\xF2\xFB\xE2\xE0\xE5\xF2\xF1\xFF!";

// The least an element takes in a stream: a tag (an unknown one stands alone).
constexpr uint64_t SMALLEST_ELEMENT = 4;

bool isSignature(const PaddedBytes& stream) {
  return stream.holds(0, XHBIN_SIGNATURE_LENGTH) &&
         std::memcmp(stream.data, XHBIN_SIGNATURE, XHBIN_SIGNATURE_LENGTH) == 0;
}

// How far past its end a stream may be read: what the writer's short length
// can leave out, three bytes per logical the stream could hold, or eight.
size_t readLimit(size_t length) {
  if (length == SIZE_MAX) return SIZE_MAX;
  size_t body = length > XHBIN_SIGNATURE_LENGTH ? length - XHBIN_SIGNATURE_LENGTH : 0;
  size_t slack = body / 5 * 3;
  return length + (slack > 8 ? slack : 8);
}

class Decoder {
 public:
  Decoder(VMEngine* vm, const PaddedBytes& stream)
      : vm_(vm), stream_(stream), limit_(readLimit(stream.length)) {}

  size_t position() const { return pos_; }

  // Decodes the item at the current position into dst, and every element of
  // the arrays it opens, without recursion.
  bool decode(Item* dst) {
    Item* target = dst;
    for (;;) {
      if (!decodeOne(target)) return false;
      while (!open_.empty() && open_.back().next == open_.back().array->length)
        open_.pop_back();
      if (open_.empty()) return true;
      target = &open_.back().array->items[open_.back().next++];
      owed_--;
    }
  }

 private:
  struct Frame {
    BaseArray* array;
    uint32_t next;
  };

  bool take(size_t count) {
    if (limit_ - pos_ < count) return false;
    pos_ += count;
    return true;
  }

  bool read32(uint32_t* value) {
    size_t at = pos_;
    if (!take(4)) return false;
    *value = stream_.le32(at);
    return true;
  }

  // The bytes up to the first NUL; the stream's end stands for one.
  bool readString(Item* dst) {
    size_t start = pos_;
    size_t length = 0;
    if (stream_.length == SIZE_MAX) {
      length = std::strlen(reinterpret_cast<const char*>(stream_.data) + start);
    } else if (start < stream_.length) {
      const void* nul = std::memchr(stream_.data + start, 0, stream_.length - start);
      length =
          nul ? static_cast<size_t>(static_cast<const unsigned char*>(nul) - stream_.data) - start
              : stream_.length - start;
    }
    if (!take(length + 1)) return false;
    itemPutCL(vm_, dst, reinterpret_cast<const char*>(stream_.data) + start,
              static_cast<uint32_t>(length));
    return true;
  }

  // An array's count is believed only while every element still owed could
  // take its smallest size in what is left, so no array is made larger than
  // the stream can fill.
  bool openArray(Item* dst) {
    uint32_t count = 0;
    if (!read32(&count)) return false;
    if ((owed_ + count) * SMALLEST_ELEMENT > limit_ - pos_) return false;
    arrayNew(vm_, dst, count);
    if (count > 0) open_.push_back({dst->item.asArray.value, 0});
    owed_ += count;
    return true;
  }

  // The items whose payload is one 32-bit value.
  void putValue(uint32_t tag, uint32_t value, Item* dst) {
    auto number = static_cast<int32_t>(value);
    switch (tag) {
      case HB_IT_NIL:
        itemPutNI(vm_, dst, 0);
        break;
      case HB_IT_INTEGER:
        itemPutNI(vm_, dst, number);
        break;
      case HB_IT_DATE:
        itemPutDL(vm_, dst, number);
        break;
      case HB_IT_LOGICAL:
        itemPutL(vm_, dst, value != 0);
        break;
      default:  // long, and the 0x0040 type read as a long
        itemPutNL(vm_, dst, number);
        break;
    }
  }

  bool decodeOne(Item* dst) {
    uint32_t tag = 0;
    uint32_t value = 0;
    if (!read32(&tag)) return false;
    switch (tag) {
      case HB_IT_NIL:
      case HB_IT_INTEGER:
      case HB_IT_LONG:
      case HB_IT_COUNTER:
      case HB_IT_DATE:
      case HB_IT_LOGICAL:
        if (!read32(&value)) return false;
        putValue(tag, value, dst);
        return true;
      case HB_IT_DOUBLE: {
        double number = 0;
        size_t at = pos_;
        if (!take(sizeof number)) return false;
        stream_.copy(at, &number, sizeof number);
        itemPutND(vm_, dst, number);
        return true;
      }
      case HB_IT_STRING:
      case HB_IT_MEMO:
        return readString(dst);
      case HB_IT_ARRAY:
        return openArray(dst);
      default:
        xhbinReportType(vm_, READER_UNHANDLED, tag, "BIN2VAR");
        return true;
    }
  }

  VMEngine* vm_;
  PaddedBytes stream_;
  size_t limit_;
  size_t pos_ = XHBIN_SIGNATURE_LENGTH;
  uint64_t owed_ = 0;
  std::vector<Frame> open_;
};

}  // namespace

XhbinDecoded xhbinDecode(VMEngine* vm, const unsigned char* stream, size_t length, Item* dst) {
  Decoder decoder(vm, PaddedBytes{stream, length});
  bool ok = decoder.decode(dst);
  if (!ok) itemClear(vm, dst);
  return {ok, decoder.position()};
}

Item* bin2item(VMEngine* vm, const char* pBuf) {
  Item* item = gcGripGet(vm, nullptr);
  if (!pBuf) return item;
  // The caller vouches for the stream: it is read as far as its items go. The
  // signature test stops at the first byte that differs, so a shorter text
  // is not read past its NUL.
  if (std::strncmp(pBuf, XHBIN_SIGNATURE, XHBIN_SIGNATURE_LENGTH) == 0) {
    xhbinDecode(vm, reinterpret_cast<const unsigned char*>(pBuf), SIZE_MAX, item);
  }
  return item;
}

KOVO_FUNC(BIN2VAR) {
  const Item* text = paramItem(vm, 1, HB_IT_STRING);
  if (!text) {
    itemPutNL(vm, returnItem(vm), 0);
    return;
  }
  const auto* stream = reinterpret_cast<const unsigned char*>(itemStrPtr(text));
  PaddedBytes bytes{stream, itemStrLen(text)};
  if (!isSignature(bytes)) return;
  Item decoded{};
  xhbinDecode(vm, stream, bytes.length, &decoded);
  itemForwardValue(vm, returnItem(vm), &decoded);
}
