// The VM item: a 16-bit type word and a payload whose meaning depends on it.
// The type codes and payload fields are part of the interface: the function
// library tests type words with bit masks and reads payload fields directly.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kovo/export.h"

using HB_TYPE = uint16_t;

inline constexpr HB_TYPE HB_IT_NIL = 0x0000;
inline constexpr HB_TYPE HB_IT_POINTER = 0x0001;
inline constexpr HB_TYPE HB_IT_INTEGER = 0x0002;
inline constexpr HB_TYPE HB_IT_HASH = 0x0004;
inline constexpr HB_TYPE HB_IT_LONG = 0x0008;
inline constexpr HB_TYPE HB_IT_DOUBLE = 0x0010;
inline constexpr HB_TYPE HB_IT_DATE = 0x0020;
// An unsigned 32-bit counter of the host; numeric-compatible wherever numbers are read.
inline constexpr HB_TYPE HB_IT_COUNTER = 0x0040;
inline constexpr HB_TYPE HB_IT_LOGICAL = 0x0080;
inline constexpr HB_TYPE HB_IT_SYMBOL = 0x0100;
inline constexpr HB_TYPE HB_IT_STRING = 0x0400;
inline constexpr HB_TYPE HB_IT_MEMOFLAG = 0x0800;
inline constexpr HB_TYPE HB_IT_MEMO = HB_IT_STRING | HB_IT_MEMOFLAG;
inline constexpr HB_TYPE HB_IT_BLOCK = 0x1000;
inline constexpr HB_TYPE HB_IT_BYREF = 0x2000;
// An indirect array element: designates element `index` of an array.
inline constexpr HB_TYPE HB_IT_ELEMREF = 0x4000;
inline constexpr HB_TYPE HB_IT_ARRAY = 0x8000;

inline constexpr HB_TYPE HB_IT_NUMERIC = HB_IT_INTEGER | HB_IT_LONG | HB_IT_DOUBLE;
// The bits that make a type word numeric-compatible on their own.
inline constexpr HB_TYPE HB_IT_NUMCOMPAT = 0x005A;
inline constexpr HB_TYPE HB_IT_ANY = 0xFFFF;

// Every string is shorter than this many bytes: its length is a 32-bit count.
inline constexpr uint64_t STRING_LENGTH_LIMIT = UINT32_MAX;

struct Item;
struct VMEngine;
struct BaseArray;
struct BaseHash;
struct Block;
struct DynSymbol;
struct Class;

// A variable's storage: memory variables and block locals live in cells so
// that references to them stay valid while anybody holds them.
struct ValueCell;

struct Item {
  HB_TYPE type;
  union Payload {
    struct {
      int32_t value;
      uint16_t length;
    } asInteger;
    struct {
      int32_t value;
      uint16_t length;
    } asLong;
    struct {
      double value;
      uint16_t length;
      uint16_t decimal;
    } asDouble;
    struct {
      int32_t value;
    } asDate;
    struct {
      uint32_t value;
    } asCounter;
    struct {
      int32_t value;
    } asLogical;
    struct {
      char* value;
      uint32_t length;
      // Non-zero when `value` is a buffer of the heap whose reference count the item holds;
      // zero for constant text that the item only refers to.
      uint32_t owned;
    } asString;
    struct {
      BaseArray* value;
    } asArray;
    struct {
      BaseHash* value;
    } asHash;
    struct {
      Block* value;
    } asBlock;
    struct {
      void* value;
    } asPointer;
    struct {
      DynSymbol* value;
      int32_t stackBase;
      uint16_t paramCount;
    } asSymbol;
    struct {
      ValueCell* value;
    } asRefer;
    struct {
      BaseArray* array;
      uint32_t index;  // 1-based
    } asElemRef;
  } item;
};

struct BaseArray {
  uint32_t refCount;
  uint32_t length;
  uint32_t capacity;
  Item* items;
  const Class* cls;  // null for a plain array; set for an object
};

struct HashPair {
  Item key;
  Item value;
};

struct BaseHash {
  uint32_t refCount;
  uint32_t length;
  uint32_t capacity;
  HashPair* pairs;
};

struct ValueCell {
  uint32_t refCount;
  Item value;
};

inline bool itemIsString(const Item* p) {
  return p && (p->type & HB_IT_STRING);
}
inline bool itemIsNumeric(const Item* p) {
  return p && (p->type & HB_IT_NUMERIC);
}
inline bool itemIsArray(const Item* p) {
  return p && (p->type & HB_IT_ARRAY);
}
inline bool itemIsLogical(const Item* p) {
  return p && (p->type & HB_IT_LOGICAL);
}
inline bool itemIsByRef(const Item* p) {
  return p && (p->type & HB_IT_BYREF);
}

// Numeric-compatible: a type bit of 0x005A, exactly a date item, or a string of
// length exactly 1 (read as its character code).
inline bool itemIsNumCompat(const Item* p) {
  if (!p) return false;
  if (p->type & HB_IT_NUMCOMPAT) return true;
  if (p->type == HB_IT_DATE) return true;
  return (p->type & HB_IT_STRING) && p->item.asString.length == 1;
}

inline const char* itemStrPtr(const Item* p) {
  return p->item.asString.value;
}
inline uint32_t itemStrLen(const Item* p) {
  return p->item.asString.length;
}
inline uint32_t itemArrayLen(const Item* p) {
  return p->item.asArray.value->length;
}
