// ASCPOS and VALPOS: the character at a position, as its code or as the value
// of a decimal digit.
#include "ct/params.h"

namespace {

enum class PosResult { Code, DigitValue };

int32_t valueOf(PosResult kind, unsigned char character) {
  if (kind == PosResult::Code) return character;
  return character >= '0' && character <= '9' ? character - '0' : 0;
}

void positionWorker(VMEngine* vm, PosResult kind, int32_t subCode, const char* operation) {
  Item* textItem = paramItem(vm, 1, HB_IT_STRING);
  if (!textItem) {
    if (!ctArgErrorSubst(vm, subCode, operation, 1)) itemPutNI(vm, returnItem(vm), 0);
    return;
  }
  CtText text = ctTextOf(textItem);
  uint32_t position = ctParamUnsigned(vm, 2, text.length);
  int32_t result = 0;
  if (position != 0 && position <= text.length) {
    result = valueOf(kind, static_cast<unsigned char>(text.bytes[position - 1]));
  }
  itemPutNI(vm, returnItem(vm), result);
}

}  // namespace

KOVO_FUNC(ASCPOS) {
  positionWorker(vm, PosResult::Code, 3142, "ASCPOS");
}

KOVO_FUNC(VALPOS) {
  positionWorker(vm, PosResult::DigitValue, 4012, "VALPOS");
}
