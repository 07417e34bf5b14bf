// The settings of the SET table that need more than one of the three value
// rules: each is a handler that puts the value on entry into the return item
// and, when the call gives a new value, takes it.
#pragma once

#include "rtl/set_rules.h"

struct SetCall {
  int32_t number;
  int count;     // parameters passed to SET
  Item* value;   // parameter 2 with references followed; null when not passed
  Item* option;  // parameter 3 likewise
  // The parameter count decides, not the value: SET(n, NIL) is a change.
  bool changes() const { return count >= 2; }
};

using SetHandler = void (*)(VMEngine* vm, const SetCall& call);

// Numeric rule with the lower bound 0 that most numeric settings have.
void setNonNegative(VMEngine* vm, const SetCall& call);

void setDateFormat(VMEngine* vm, const SetCall& call);
void setTypeahead(VMEngine* vm, const SetCall& call);
void setColor(VMEngine* vm, const SetCall& call);
void setCursor(VMEngine* vm, const SetCall& call);
void setAutoshare(VMEngine* vm, const SetCall& call);
void setLanguage(VMEngine* vm, const SetCall& call);
void setWordMode(VMEngine* vm, const SetCall& call);
void setDirSeparator(VMEngine* vm, const SetCall& call);
void setErrorLoop(VMEngine* vm, const SetCall& call);
void setOutputSafety(VMEngine* vm, const SetCall& call);
void setGtMode(VMEngine* vm, const SetCall& call);
void setBackgroundTick(VMEngine* vm, const SetCall& call);
void setPrinterJob(VMEngine* vm, const SetCall& call);
void setEol(VMEngine* vm, const SetCall& call);
void setRange1000(VMEngine* vm, const SetCall& call);
void setPath(VMEngine* vm, const SetCall& call);
void setAltFile(VMEngine* vm, const SetCall& call);
void setExtraFile(VMEngine* vm, const SetCall& call);
void setPrinter(VMEngine* vm, const SetCall& call);
void setPrintFile(VMEngine* vm, const SetCall& call);
void setTraceFile(VMEngine* vm, const SetCall& call);
