// Platform and interpreter versions, as texts that the host hands over.
#include <cstring>

#include "frame/frame.h"

namespace {

void returnHostText(VMEngine* vm, char* text) {
  itemPutCPtr(vm, returnItem(vm), text, static_cast<uint32_t>(std::strlen(text)));
}

}  // namespace

KOVO_FUNC(OS) {
  returnHostText(vm, verPlatform(vm));
}

KOVO_FUNC(OS_ISWINNT) {
  itemPutL(vm, returnItem(vm), osIsWinNT() != 0);
}

KOVO_FUNC(HB_COMPILER) {
  returnHostText(vm, verCompiler(vm));
}

KOVO_FUNC(VERSION) {
  returnHostText(vm, verInterpreter(vm));
}

KOVO_FUNC(HB_PCODEVER) {
  returnHostText(vm, verPCode(vm));
}
