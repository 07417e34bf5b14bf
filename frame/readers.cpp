// The parameter readers. Each resolves references first and turns every item
// type into its value by one table; an array where a scalar is wanted throws
// the reader's message text, which the host catches around the call.
#include "frame.h"

namespace {

const char EMPTY_TEXT[] = "";
const char BLANK_DATE[] = "        ";

const char THROW_NI[] = "error in paramGetNI() HB_IS_ARRAY ";
const char THROW_NL[] = "error in paramGetNL() HB_IS_ARRAY ";
const char THROW_XPCHAR[] = "error in paramXPChar() HB_IS_ARRAY ";
const char THROW_PARAM[] = "error in param() HB_IS_ARRAY ";
const char THROW_PCHAR[] = "error in paramPChar() HB_IS_ARRAY ";

// The item of parameter n, resolved; throws `arrayText` for an array.
const Item* scalarParam(VMEngine* vm, int n, const char* arrayText) {
  const Item* item = paramResolved(vm, n);
  if (item && (item->type & HB_IT_ARRAY)) throw arrayText;
  return item;
}

// The byte of a one-byte string, sign-extended as a signed char is.
int32_t oneByteCode(const Item* item) {
  return static_cast<signed char>(item->item.asString.value[0]);
}

bool isOneByteString(const Item* item) {
  return (item->type & HB_IT_STRING) && item->item.asString.length == 1;
}

// The common numeric reading; `date` is what a date item gives.
int32_t numberOf(const Item* item, int32_t date) {
  if (!item) return 0;
  if (item->type & (HB_IT_NUMERIC | HB_IT_LOGICAL)) return itemGetNI(item);
  if (item->type == HB_IT_DATE) return date;
  return isOneByteString(item) ? oneByteCode(item) : 0;
}

}  // namespace

int32_t paramGetNI(VMEngine* vm, int n) {
  return numberOf(scalarParam(vm, n, THROW_NI), 0);
}

int32_t paramGetNL(VMEngine* vm, int n) {
  const Item* item = scalarParam(vm, n, THROW_NL);
  return numberOf(item, item && item->type == HB_IT_DATE ? item->item.asDate.value : 0);
}

double paramGetND(VMEngine* vm, int n) {
  const Item* item = scalarParam(vm, n, THROW_XPCHAR);
  if (item && item->type == HB_IT_DOUBLE) return item->item.asDouble.value;
  return numberOf(item, 0);
}

int32_t param(VMEngine* vm, int n) {
  const Item* item = scalarParam(vm, n, THROW_PARAM);
  if (!item) return 0;
  switch (item->type) {
    case HB_IT_INTEGER:
      return item->item.asInteger.value != 0;
    case HB_IT_LONG:
      return item->item.asLong.value != 0;
    case HB_IT_DOUBLE:
      return item->item.asDouble.value != 0.0;  // a NaN is not 0.0 either
    case HB_IT_LOGICAL:
      return item->item.asLogical.value != 0;
    default:
      return isOneByteString(item) ? oneByteCode(item) : 0;
  }
}

const char* paramPChar(VMEngine* vm, int n) {
  const Item* item = scalarParam(vm, n, THROW_PCHAR);
  return item && (item->type & HB_IT_STRING) ? item->item.asString.value : nullptr;
}

const char* paramXPChar(VMEngine* vm, int n) {
  const Item* item = scalarParam(vm, n, THROW_XPCHAR);
  return item && (item->type & HB_IT_STRING) ? item->item.asString.value : EMPTY_TEXT;
}

uint32_t paramGetCLen(VMEngine* vm, int n) {
  const Item* item = scalarParam(vm, n, THROW_PARAM);
  return item && (item->type & HB_IT_STRING) ? item->item.asString.length : 0;
}

const char* paramGetDS(VMEngine* vm, int n) {
  const Item* item = scalarParam(vm, n, THROW_PARAM);
  if (!item || item->type != HB_IT_DATE) return BLANK_DATE;
  return dateDecStr(vm->stack.szDate, item->item.asDate.value);
}

Item* paramError(VMEngine* vm, int n) {
  Item* item = paramItem(vm, n, HB_IT_ANY);
  if (item) return item;
  itemClear(vm, &vm->spareNil);
  return &vm->spareNil;
}
