// Identifiers: new GUIDs from the operating system in their binary and
// 38-character text forms, and the host's 22-character form.
#include <algorithm>
#include <cstring>

#include "frame/frame.h"
#include "os/guid.h"

namespace {

void returnGuid(VMEngine* vm, const Guid& guid) {
  itemPutCL(vm, returnItem(vm), reinterpret_cast<const char*>(guid.bytes), GUID_SIZE);
}

// What the system wrote, "" when it could not.
void returnGuidText(VMEngine* vm, const Guid& guid) {
  char text[GUID_TEXT_LENGTH + 2];
  osGuidText(guid, text);
  itemPutCL(vm, returnItem(vm), text, static_cast<uint32_t>(std::strlen(text)));
}

}  // namespace

KOVO_FUNC(NEWGUID16) {
  Guid guid;
  osNewGuid(&guid);
  returnGuid(vm, guid);
}

KOVO_FUNC(NEWGUID38) {
  Guid guid;
  osNewGuid(&guid);
  returnGuidText(vm, guid);
}

KOVO_FUNC(GENGUID) {
  Guid guid;
  if (osNewGuid(&guid)) {
    returnGuidText(vm, guid);
  } else {
    returnEmptyText(vm);
  }
}

KOVO_FUNC(XGUID) {
  Guid guid;
  if (!osNewGuid(&guid)) {
    returnEmptyText(vm);
    return;
  }
  char* text = genguid22(vm, guid.bytes);
  itemPutCPtr(vm, returnItem(vm), text, static_cast<uint32_t>(std::strlen(text)));
}

// Text that does not parse gives sixteen zero bytes: the parser leaves the
// GUID untouched then.
KOVO_FUNC(IDXTOGUID) {
  Guid guid{};
  osParseGuid(paramPChar(vm, 1), &guid);
  returnGuid(vm, guid);
}

// The first sixteen bytes of the string; bytes that a shorter string lacks are zero.
KOVO_FUNC(GUIDTOIDX2) {
  Guid guid{};
  if (const char* bytes = paramPChar(vm, 1)) {
    std::memcpy(guid.bytes, bytes, std::min(GUID_SIZE, paramGetCLen(vm, 1)));
  }
  returnGuidText(vm, guid);
}
