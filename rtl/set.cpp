// SET: reads and changes the settings block, one setting per call, with the
// set-change listeners told before and after every change.
#include <array>

#include "rtl/set_table.h"

namespace {

void setLogical(VMEngine* vm, const SetCall& call) {
  int32_t& value = vm->set.value[call.number];
  itemPutL(vm, returnItem(vm), value != 0);
  if (call.changes()) value = setLogicalRule(call.value, value != 0);
}

// Numeric rule without a lower bound.
void setNumeric(VMEngine* vm, const SetCall& call) {
  int32_t& value = vm->set.value[call.number];
  itemPutNI(vm, returnItem(vm), value);
  if (call.changes() && setIsNumeric(call.value)) value = itemGetNI(call.value);
}

void setString(VMEngine* vm, const SetCall& call) {
  char*& value = vm->set.text[call.number];
  itemPutC(vm, returnItem(vm), setText(value));
  if (call.changes()) setStringRule(vm, value, call.value);
}

constexpr std::array<SetHandler, HB_SET_COUNT> makeTable() {
  std::array<SetHandler, HB_SET_COUNT> table{};
  for (int number = 1; number <= HB_SET_EXT_LAST; number++) {
    if (number <= HB_SET_BASE_LAST || number >= HB_SET_EXT_FIRST) table[number] = setLogical;
  }
  const int nonNegative[] = {HB_SET_DECIMALS, HB_SET_EPOCH,        HB_SET_MARGIN,
                             HB_SET_MESSAGE,  HB_SET_VIDEOMODE,    HB_SET_MBLOCKSIZE,
                             HB_SET_AUTORDER, HB_SET_DBFLOCKSCHEME};
  for (int number : nonNegative)
    table[number] = setNonNegative;
  const int strings[] = {HB_SET_DEFAULT, HB_SET_DEVICE, HB_SET_DELIMCHARS, HB_SET_MFILEEXT};
  for (int number : strings)
    table[number] = setString;
  table[HB_SET_EVENTMASK] = setNumeric;
  table[HB_SET_DATEFORMAT] = setDateFormat;
  table[HB_SET_PATH] = setPath;
  table[HB_SET_ALTFILE] = setAltFile;
  table[HB_SET_EXTRAFILE] = setExtraFile;
  table[HB_SET_PRINTER] = setPrinter;
  table[HB_SET_PRINTFILE] = setPrintFile;
  table[HB_SET_TRACEFILE] = setTraceFile;
  table[HB_SET_TYPEAHEAD] = setTypeahead;
  table[HB_SET_COLOR] = setColor;
  table[HB_SET_CURSOR] = setCursor;
  table[HB_SET_AUTOSHARE] = setAutoshare;
  table[HB_SET_LANGUAGE] = setLanguage;
  table[HB_SET_TRACESTACK] = setWordMode;
  table[HB_SET_FILECASE] = setWordMode;
  table[HB_SET_DIRCASE] = setWordMode;
  table[HB_SET_DIRSEPARATOR] = setDirSeparator;
  table[HB_SET_ERRORLOOP] = setErrorLoop;
  table[HB_SET_OUTPUTSAFETY] = setOutputSafety;
  table[HB_SET_GTMODE] = setGtMode;
  table[HB_SET_BACKGROUNDTICK] = setBackgroundTick;
  table[HB_SET_PRINTERJOB] = setPrinterJob;
  table[HB_SET_EOL] = setEol;
  table[HB_SET_EXT119] = setRange1000;
  return table;
}

constexpr std::array<SetHandler, HB_SET_COUNT> SET_TABLE = makeTable();

}  // namespace

void setNonNegative(VMEngine* vm, const SetCall& call) {
  int32_t& value = vm->set.value[call.number];
  itemPutNI(vm, returnItem(vm), value);
  if (!call.changes() || !setIsNumeric(call.value)) return;
  int32_t wanted = itemGetNI(call.value);
  if (wanted < 0) return setRaiseError(vm);
  value = wanted;
}

KOVO_FUNC(SET) {
  SetCall call{paramGetNI(vm, 1), paramCount(vm), paramResolved(vm, 2), paramResolved(vm, 3)};
  if (call.changes()) setNotify(vm, call.number, SET_LISTENER_BEFORE);
  // Numbers the table does not know (48 to 99 among them) leave the result nil.
  bool known = call.number >= 1 && call.number < HB_SET_COUNT;
  if (known && SET_TABLE[call.number]) SET_TABLE[call.number](vm, call);
  if (call.changes()) setNotify(vm, call.number, SET_LISTENER_AFTER);
}
