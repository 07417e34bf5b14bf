// Objects: arrays with a class whose instance variables are read by message
// and assigned through the "_NAME" message form. The host knows one class,
// the error class.
#include <cctype>
#include <cstdarg>
#include <cstring>

#include "internals.h"
#include "kovo/host_embed.h"

namespace {

const char* const ERROR_IVARS[] = {
    "ARGS",    "CANDEFAULT", "CANRETRY", "CANSUBSTITUTE", "CARGO",   "DESCRIPTION", "FILENAME",
    "GENCODE", "OPERATION",  "OSCODE",   "SEVERITY",      "SUBCODE", "SUBSYSTEM",   "TRIES"};

const Class ERROR_CLASS = {"ERROR", ERROR_IVARS, sizeof ERROR_IVARS / sizeof ERROR_IVARS[0]};

// Slot (0-based) of an instance variable, -1 when the class has none of that name.
int ivarSlot(const Class* cls, const char* name) {
  for (uint32_t i = 0; i < cls->ivarCount; i++) {
    if (strcasecmp(cls->ivars[i], name) == 0) return static_cast<int>(i);
  }
  return -1;
}

}  // namespace

const Class* errorClass() {
  return &ERROR_CLASS;
}

Item* errNew(VMEngine* vm) {
  Item* error = itemNew(vm, nullptr);
  BaseArray* array = arrayCreate(vm, ERROR_CLASS.ivarCount);
  array->cls = &ERROR_CLASS;
  error->type = HB_IT_ARRAY;
  error->item.asArray.value = array;
  Item* slots = array->items;
  itemPutL(vm, &slots[ivarSlot(&ERROR_CLASS, "CANDEFAULT")], false);
  itemPutL(vm, &slots[ivarSlot(&ERROR_CLASS, "CANRETRY")], false);
  itemPutL(vm, &slots[ivarSlot(&ERROR_CLASS, "CANSUBSTITUTE")], false);
  itemPutC(vm, &slots[ivarSlot(&ERROR_CLASS, "DESCRIPTION")], "");
  itemPutC(vm, &slots[ivarSlot(&ERROR_CLASS, "FILENAME")], "");
  itemPutNI(vm, &slots[ivarSlot(&ERROR_CLASS, "GENCODE")], 0);
  itemPutC(vm, &slots[ivarSlot(&ERROR_CLASS, "OPERATION")], "");
  itemPutNI(vm, &slots[ivarSlot(&ERROR_CLASS, "OSCODE")], 0);
  itemPutNI(vm, &slots[ivarSlot(&ERROR_CLASS, "SEVERITY")], ES_ERROR);
  itemPutNI(vm, &slots[ivarSlot(&ERROR_CLASS, "SUBCODE")], 0);
  itemPutC(vm, &slots[ivarSlot(&ERROR_CLASS, "SUBSYSTEM")], "");
  itemPutNI(vm, &slots[ivarSlot(&ERROR_CLASS, "TRIES")], 0);
  return error;
}

void objectSend(VMEngine* vm, Item* object, const char* message, uint16_t count) {
  const Class* cls = (object->type & HB_IT_ARRAY) ? object->item.asArray.value->cls : nullptr;
  bool assign = message[0] == '_';
  int slot = cls ? ivarSlot(cls, assign ? message + 1 : message) : -1;
  if (slot < 0) {
    Item* self = itemNew(vm, object);
    err_RT_BASE_SubstR(vm, EG_NOMETHOD, 1004, nullptr, message, 1, self);
    xItemRelease(vm, self);
    return;
  }
  Item* variable = &object->item.asArray.value->items[slot];
  if (assign) {
    Item* value = count >= 1 ? itemUnRef(vm, vmParamSlot(vm, 1)) : nullptr;
    if (value) {
      itemCopy(vm, variable, value);
    } else {
      itemClear(vm, variable);
    }
  }
  itemCopy(vm, &vm->stack.Return, variable);
}

Item* xobjSendMsg(VMEngine* vm, Item* object, const char* message, uint32_t argc, ...) {
  vmPushSymbol(vm, xdynsymGet(vm, message));
  itemCopy(vm, vmPush(vm), object);
  GATHER_ITEMS(argv, argc);
  for (Item* arg : argv)
    itemCopy(vm, vmPush(vm), arg);
  xvmSend(vm, static_cast<uint16_t>(argc));
  return &vm->stack.Return;
}

bool xobjHasMsg(VMEngine*, const Item* object, const char* message) {
  if (!object || !(object->type & HB_IT_ARRAY) || !object->item.asArray.value->cls) return false;
  const char* name = message[0] == '_' ? message + 1 : message;
  return ivarSlot(object->item.asArray.value->cls, name) >= 0;
}

const char* xobjGetClsName(const Item* object) {
  if (object && (object->type & HB_IT_ARRAY) && object->item.asArray.value->cls) {
    return object->item.asArray.value->cls->name;
  }
  if (!object) return "NIL";
  return itemTypeStr(object);
}

Item* xobjIvarPtr(const Item* object, const char* name) {
  if (!object || !(object->type & HB_IT_ARRAY) || !object->item.asArray.value->cls) return nullptr;
  int slot = ivarSlot(object->item.asArray.value->cls, name);
  return slot < 0 ? nullptr : &object->item.asArray.value->items[slot];
}
