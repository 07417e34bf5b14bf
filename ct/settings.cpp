// The text-tools settings shared by the searches: reference mode, multi-pass
// mode and the AT-like (wildcard) mode with its wildcard character.
#include "frame/frame.h"

namespace {

// CSETREF and CSETATMUPA: a logical parameter becomes the setting; any other
// parameter is reported and changes nothing. The old value is the result.
void switchSetting(VMEngine* vm, int32_t* setting, int32_t subCode, const char* operation) {
  bool old = *setting != 0;
  if (paramCount(vm) >= 1) {
    if (paramIsLogical(vm, 1)) {
      *setting = paramResolved(vm, 1)->item.asLogical.value != 0;
    } else {
      ctArgErrorDefault(vm, subCode, operation, 1);
    }
  }
  itemPutL(vm, returnItem(vm), old);
}

constexpr int32_t SETATLIKE_ERROR = 3872;

// A string by reference receives the wildcard character; a non-empty string
// by value gives the new one.
void applyWildcard(VMEngine* vm) {
  Item* wildcard = paramItem(vm, 2, HB_IT_STRING);
  if (!wildcard) {
    ctArgErrorDefault(vm, SETATLIKE_ERROR, "SETATLIKE", 2);
  } else if (paramIsByRef(vm, 2)) {
    hb_storclen(vm, &vm->ct.atLikeChar, 1, 2);
  } else if (itemStrLen(wildcard) > 0) {
    vm->ct.atLikeChar = wildcard->item.asString.value[0];
  }
}

}  // namespace

KOVO_FUNC(CSETREF) {
  switchSetting(vm, &vm->ct.refMode, 3554, "CSETREF");
}

KOVO_FUNC(CSETATMUPA) {
  switchSetting(vm, &vm->ct.multiPass, 3544, "CSETATMUPA");
}

KOVO_FUNC(SETATLIKE) {
  int32_t old = vm->ct.atLikeMode;
  if (paramIsNumCompat(vm, 1)) {
    int32_t mode = paramGetNI(vm, 1);
    if (mode == 0 || mode == 1) {
      vm->ct.atLikeMode = mode;
    } else {
      ctArgErrorDefault(vm, SETATLIKE_ERROR, "SETATLIKE", 2);
    }
  }
  if (paramCount(vm) >= 2) applyWildcard(vm);
  itemPutNI(vm, returnItem(vm), old);
}
