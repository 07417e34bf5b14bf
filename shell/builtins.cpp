// The shell's own functions: what a script needs beside the library to build
// values and look at them.
#include <cstring>
#include <string>

#include "session.h"

namespace {

Item* argument(VMEngine* vm, int n) {
  return itemUnRef(vm, vmParamSlot(vm, n));
}
Item* result(VMEngine* vm) {
  return &vm->stack.Return;
}

void raiseArgument(VMEngine* vm, int32_t subCode, const char* operation) {
  Item* first = argument(vm, 1);
  if (first) {
    err_RT_BASE_SubstR(vm, EG_ARG, subCode, nullptr, operation, 1, first);
  } else {
    err_RT_BASE_SubstR(vm, EG_ARG, subCode, nullptr, operation, 0);
  }
}

void builtinChr(VMEngine* vm) {
  Item* code = argument(vm, 1);
  if (!code || !(code->type & HB_IT_NUMERIC)) return raiseArgument(vm, 1104, "CHR");
  char byte = static_cast<char>(itemGetNI(code) & 0xFF);
  itemPutCL(vm, result(vm), &byte, 1);
}

void builtinAsc(VMEngine* vm) {
  Item* text = argument(vm, 1);
  if (!text || !(text->type & HB_IT_STRING)) return raiseArgument(vm, 1107, "ASC");
  int code = itemStrLen(text) ? static_cast<unsigned char>(itemStrPtr(text)[0]) : 0;
  itemPutNI(vm, result(vm), code);
}

// The arguments after the block are handed over as passed: a reference
// stays a reference.
void builtinEval(VMEngine* vm) {
  Item* block = argument(vm, 1);
  if (!block || !(block->type & HB_IT_BLOCK)) {
    err_RT_BASE_SubstR(vm, EG_NOMETHOD, 1004, nullptr, "EVAL", 1, block ? block : &vm->spareNil);
    return;
  }
  int count = vmParamCount(vm);
  std::vector<Item*> args;
  for (int n = 2; n <= count; n++)
    args.push_back(vmParamSlot(vm, n));
  vmEvalBlockArgs(vm, block, static_cast<uint32_t>(args.size()), args.data());
}

void builtinStod(VMEngine* vm) {
  Item* text = argument(vm, 1);
  bool usable = text && (text->type & HB_IT_STRING) && itemStrLen(text) >= 8;
  itemPutDL(vm, result(vm), usable ? dateEncStr(itemStrPtr(text)) : 0);
}

void builtinDtos(VMEngine* vm) {
  Item* date = argument(vm, 1);
  if (!date || date->type != HB_IT_DATE) return raiseArgument(vm, 1120, "DTOS");
  char text[9];
  itemPutCL(vm, result(vm), dateDecStr(text, date->item.asDate.value), 8);
}

void builtinErrorNew(VMEngine* vm) {
  Item* error = errNew(vm);
  itemForwardValue(vm, result(vm), error);
  xItemRelease(vm, error);
}

// The raw type word of the argument as passed, references included.
void builtinHostType(VMEngine* vm) {
  Item* slot = vmParamSlot(vm, 1);
  itemPutNI(vm, result(vm), slot ? slot->type : 0);
}

void builtinMemo(VMEngine* vm) {
  Item* text = argument(vm, 1);
  if (!text || !(text->type & HB_IT_STRING)) return;
  itemPutCLM(vm, result(vm), itemStrPtr(text), itemStrLen(text), 1);
}

// The listener has no cargo of its own: it writes to the output of the session
// that switched it on last.
Output* listenerOutput = nullptr;

void printListenerCall(int32_t setting, int32_t phase) {
  if (listenerOutput)
    listenerOutput->write("LISTENER " + std::to_string(setting) + " " + std::to_string(phase) +
                          "\n");
}

// __SETLISTEN(lOn): a listener that prints every set-change call on a line of
// its own, added with .T. and removed with .F.
void builtinSetListen(VMEngine* vm) {
  Item* on = argument(vm, 1);
  if (!on || on->type != HB_IT_LOGICAL) return;
  if (on->item.asLogical.value) {
    listenerOutput = &static_cast<Session*>(vm->eventCargo)->output;
    setListenerAdd(vm, printListenerCall);
  } else {
    setListenerRemove(vm, printListenerCall);
  }
}

struct Builtin {
  const char* name;
  VMFunction function;
};

const Builtin BUILTINS[] = {
    {"CHR", builtinChr},
    {"ASC", builtinAsc},
    {"EVAL", builtinEval},
    {"STOD", builtinStod},
    {"DTOS", builtinDtos},
    {"ERRORNEW", builtinErrorNew},
    {"__HOSTTYPE", builtinHostType},
    {"__MEMO", builtinMemo},
    {"__SETLISTEN", builtinSetListen},
};

}  // namespace

VMFunction findBuiltin(const std::string& name) {
  for (const Builtin& builtin : BUILTINS) {
    if (name == builtin.name) return builtin.function;
  }
  return nullptr;
}
