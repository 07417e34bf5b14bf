// GUIDs from COM: CoCreateGuid makes them, StringFromGUID2 writes their text
// and IIDFromString reads it, through wide characters of the system code page.
#include "os/guid.h"

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

#include <cstring>

static_assert(sizeof(GUID) == GUID_SIZE);

bool osNewGuid(Guid* guid) {
  GUID made;
  if (CoCreateGuid(&made) != S_OK) {
    *guid = Guid{};
    return false;
  }
  std::memcpy(guid->bytes, &made, GUID_SIZE);
  return true;
}

void osGuidText(const Guid& guid, char (&text)[GUID_TEXT_LENGTH + 2]) {
  GUID value;
  std::memcpy(&value, guid.bytes, GUID_SIZE);
  wchar_t wide[GUID_TEXT_LENGTH + 1];
  text[0] = '\0';
  if (StringFromGUID2(value, wide, GUID_TEXT_LENGTH + 1) == 0) return;
  if (WideCharToMultiByte(CP_ACP, 0, wide, -1, text, GUID_TEXT_LENGTH + 1, nullptr, nullptr) == 0)
    text[0] = '\0';
}

bool osParseGuid(const char* text, Guid* guid) {
  if (!text) return false;
  int length = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
  if (length <= 0) return false;
  BSTR wide = SysAllocStringLen(nullptr, static_cast<UINT>(length - 1));
  if (!wide) return false;
  MultiByteToWideChar(CP_ACP, 0, text, -1, wide, length);
  GUID value{};
  bool parsed = IIDFromString(wide, &value) == S_OK;
  SysFreeString(wide);
  if (parsed) std::memcpy(guid->bytes, &value, GUID_SIZE);
  return parsed;
}
