// The century flag with the date format it rewrites, and the cancel switch.
#include <cctype>
#include <cstring>

#include "rtl/set_rules.h"

namespace {

// The date format with its run of Y made two or four letters long; a format
// without Y gains them at its front.
char* formatForCentury(VMEngine* vm, char* format, bool century) {
  size_t length = std::strlen(format);
  for (size_t i = 0; i < length; i++)
    format[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(format[i])));
  const char* first = std::strchr(format, 'Y');
  size_t start = first ? static_cast<size_t>(first - format) : 0;
  size_t end = start;
  while (first && end < length && format[end] == 'Y')
    end++;
  const char* year = century ? "YYYY" : "YY";
  size_t yearLength = std::strlen(year);
  auto* rewritten = static_cast<char*>(vmAlloc(vm, length - (end - start) + yearLength + 1));
  std::memcpy(rewritten, format, start);
  std::memcpy(rewritten + start, year, yearLength);
  std::memcpy(rewritten + start + yearLength, format + end, length - end);
  return rewritten;
}

}  // namespace

KOVO_FUNC(__SETCENTURY) {
  SetBlock& set = vm->set;
  bool old = set.century != 0;
  bool century = setLogicalRule(paramResolved(vm, 1), old);
  itemPutL(vm, returnItem(vm), old);
  if (century == old) return;
  set.century = century;
  if (!set.text[HB_SET_DATEFORMAT]) setStoreText(vm, set.text[HB_SET_DATEFORMAT], "", 0);
  char* rewritten = formatForCentury(vm, set.text[HB_SET_DATEFORMAT], century);
  setNotify(vm, HB_SET_DATEFORMAT, SET_LISTENER_BEFORE);
  vmFree(vm, set.text[HB_SET_DATEFORMAT]);
  set.text[HB_SET_DATEFORMAT] = rewritten;
  setNotify(vm, HB_SET_DATEFORMAT, SET_LISTENER_AFTER);
}

// Calls no listeners: the switch is read where a program can be stopped.
KOVO_FUNC(SETCANCEL) {
  int32_t& cancel = vm->set.value[HB_SET_CANCEL];
  itemPutL(vm, returnItem(vm), cancel != 0);
  if (itemIsLogical(paramResolved(vm, 1))) cancel = param(vm, 1) != 0;
}
