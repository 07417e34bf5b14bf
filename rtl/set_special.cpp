// Settings of the SET table with rules of their own.
#include <strings.h>

#include <cstring>

#include "rtl/set_table.h"

namespace {

constexpr int32_t TYPEAHEAD_MIN = 16;
constexpr int32_t TYPEAHEAD_MAX = 4096;
constexpr int32_t ERRORLOOP_DEFAULT = 8;

// The console facilities this library does not serve.
constexpr const char* TYPEAHEAD_REPORT =
    "set.c: hb_inkeyReset( old == VMACTIVE->SET->HB_SET_TYPEAHEAD ? FALSE : TRUE );";
constexpr const char* COLOR_REPORT = "hb_conSetColor";
constexpr const char* CURSOR_REPORT = "hb_conSetCursor";

struct ModeWord {
  const char* word;
  int32_t mode;
};
const ModeWord TRACESTACK_WORDS[] = {{"NONE", 0}, {"CURRENT", 1}, {"ALL", 2}};
const ModeWord CASE_WORDS[] = {{"MIXED", 0}, {"LOWER", 1}, {"UPPER", 2}};
const ModeWord GTMODE_WORDS[] = {{"INLINE", 0}, {"DETACHED", 1}};

// The mode a whole word names (any case), or -1.
template <size_t N>
int32_t modeOfWord(const Item* item, const ModeWord (&words)[N]) {
  for (const ModeWord& entry : words) {
    if (itemStrLen(item) == std::strlen(entry.word) &&
        strncasecmp(itemStrPtr(item), entry.word, itemStrLen(item)) == 0) {
      return entry.mode;
    }
  }
  return -1;
}

}  // namespace

void setDateFormat(VMEngine* vm, const SetCall& call) {
  char*& format = vm->set.text[HB_SET_DATEFORMAT];
  itemPutC(vm, returnItem(vm), setText(format));
  if (!call.changes()) return;
  setStringRule(vm, format, call.value);
  vm->set.century = setCenturyOfFormat(setText(format));
}

void setTypeahead(VMEngine* vm, const SetCall& call) {
  int32_t& size = vm->set.value[HB_SET_TYPEAHEAD];
  itemPutNI(vm, returnItem(vm), size);
  if (!call.changes() || !setIsNumeric(call.value)) return;
  int32_t wanted = itemGetNI(call.value);
  // 0 turns the buffer off; any other size, negative ones too, is held in the range.
  if (wanted != 0) wanted = wanted < TYPEAHEAD_MIN ? TYPEAHEAD_MIN : wanted;
  size = wanted > TYPEAHEAD_MAX ? TYPEAHEAD_MAX : wanted;
  kovo_report_error(vm, TYPEAHEAD_REPORT);
}

void setColor(VMEngine* vm, const SetCall&) {
  kovo_report_error(vm, COLOR_REPORT);
  returnEmptyText(vm);
}

// The new value is read and dropped, as the console keeps the cursor.
void setCursor(VMEngine* vm, const SetCall&) {
  kovo_report_error(vm, CURSOR_REPORT);
  itemPutNI(vm, returnItem(vm), 0);
}

// A new value lands in the margin, never in setting 47 itself: programs have
// come to depend on this wiring.
void setAutoshare(VMEngine* vm, const SetCall& call) {
  itemPutNI(vm, returnItem(vm), vm->set.value[HB_SET_AUTOSHARE]);
  if (!call.changes() || !setIsNumeric(call.value)) return;
  int32_t wanted = itemGetNI(call.value);
  if (wanted < 0) return setRaiseError(vm);
  vm->set.value[HB_SET_MARGIN] = wanted;
}

void setLanguage(VMEngine* vm, const SetCall& call) {
  itemPutC(vm, returnItem(vm), langID(vm));
  if (call.changes() && call.value->type != HB_IT_NIL) langSelectID(vm, itemGetC(vm, call.value));
}

// 104 (kept in a byte), 105 and 106: a mode by its word or its number.
void setWordMode(VMEngine* vm, const SetCall& call) {
  bool isByte = call.number == HB_SET_TRACESTACK;
  int32_t old = isByte ? vm->set.mode104 : vm->set.value[call.number];
  itemPutNI(vm, returnItem(vm), old);
  if (!call.changes()) return;
  int32_t wanted = -1;
  if (itemIsString(call.value)) {
    wanted = isByte ? modeOfWord(call.value, TRACESTACK_WORDS) : modeOfWord(call.value, CASE_WORDS);
  } else if (setIsNumeric(call.value)) {
    wanted = itemGetNI(call.value);
  }
  if (wanted < 0) return setRaiseError(vm);
  if (isByte) {
    vm->set.mode104 = static_cast<uint8_t>(wanted);
  } else {
    vm->set.value[call.number] = wanted;
  }
}

void setDirSeparator(VMEngine* vm, const SetCall& call) {
  SetBlock& set = vm->set;
  set.char107Text[0] = set.char107;
  set.char107Text[1] = '\0';
  itemPutCL(vm, returnItem(vm), set.char107Text, 1);
  if (call.changes() && itemIsString(call.value) && itemStrLen(call.value) > 0)
    set.char107 = itemStrPtr(call.value)[0];
}

void setErrorLoop(VMEngine* vm, const SetCall& call) {
  int32_t& loops = vm->set.value[HB_SET_ERRORLOOP];
  itemPutNI(vm, returnItem(vm), loops);
  if (!call.changes()) return;
  if (!setIsNumeric(call.value)) return setRaiseError(vm);
  // Stored before it is judged: a negative value stays in place after the error.
  loops = itemGetNI(call.value);
  if (loops < 0) return setRaiseError(vm);
  if (loops == 0) loops = ERRORLOOP_DEFAULT;
}

// Gives no result at all; a value that is no truth value switches it on.
void setOutputSafety(VMEngine* vm, const SetCall& call) {
  if (call.changes()) vm->set.value[HB_SET_OUTPUTSAFETY] = setLogicalRule(call.value, true);
}

// Insists on a word even when the call gives none.
void setGtMode(VMEngine* vm, const SetCall& call) {
  itemPutNI(vm, returnItem(vm), vm->set.value[HB_SET_GTMODE]);
  int32_t wanted = itemIsString(call.value) ? modeOfWord(call.value, GTMODE_WORDS) : -1;
  if (wanted < 0) return setRaiseError(vm);
  vm->set.value[HB_SET_GTMODE] = wanted;
}

void setBackgroundTick(VMEngine* vm, const SetCall& call) {
  int32_t& tick = vm->set.value[HB_SET_BACKGROUNDTICK];
  itemPutNL(vm, returnItem(vm), tick);
  if (!call.changes() || !setIsNumeric(call.value)) return;
  int32_t wanted = itemGetNL(call.value);
  if (wanted < 0) return setRaiseError(vm);
  tick = wanted;
}

// An empty text leaves no value at all, which reads back as "".
void setPrinterJob(VMEngine* vm, const SetCall& call) {
  char*& job = vm->set.text[HB_SET_PRINTERJOB];
  itemPutC(vm, returnItem(vm), setText(job));
  if (!call.changes() || !itemIsString(call.value)) return;
  vmFree(vm, job);
  job = nullptr;
  if (itemStrLen(call.value) > 0)
    setStoreText(vm, job, itemStrPtr(call.value), itemStrLen(call.value));
}

// Any item at all, made "\r\n" while no program has given one.
void setEol(VMEngine* vm, const SetCall& call) {
  SetBlock& set = vm->set;
  if (!set.eol118Exists) {
    itemPutCL(vm, &set.eol118, "\r\n", 2);
    set.eol118Exists = 1;
  }
  itemReturnCopy(vm, &set.eol118);
  if (!call.changes()) return;
  itemClear(vm, &set.eol118);
  itemCopy(vm, &set.eol118, call.value);
}

void setRange1000(VMEngine* vm, const SetCall& call) {
  int32_t& value = vm->set.value[HB_SET_EXT119];
  itemPutNI(vm, returnItem(vm), value);
  if (!call.changes()) return;
  int32_t wanted = setIsNumeric(call.value) ? itemGetNI(call.value) : 0;
  // Judged as unsigned: 0 and negative values fall out with the large ones.
  if (static_cast<uint32_t>(wanted) - 1 > 999) return setRaiseError(vm);
  value = wanted;
}
