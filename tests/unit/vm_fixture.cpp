#include "vm_fixture.h"

namespace {

std::string fieldText(const Item* error, const char* name) {
  return VmTest::text(xobjIvarPtr(error, name));
}

std::string fieldNumber(const Item* error, const char* name) {
  return std::to_string(itemGetNI(xobjIvarPtr(error, name)));
}

void onError(VMEngine*, void* cargo, const Item* error) {
  static_cast<VmTest*>(cargo)->errors.push_back(
      fieldNumber(error, "GENCODE") + "/" + fieldText(error, "SUBSYSTEM") + "/" +
      fieldNumber(error, "SUBCODE") + " " + fieldText(error, "OPERATION"));
}

void onException(VMEngine*, void* cargo, const char* text) {
  static_cast<VmTest*>(cargo)->exceptions.emplace_back(text);
}

const HostEvents TEST_EVENTS = {onError, onException, nullptr, nullptr,
                                nullptr, nullptr,     nullptr, nullptr};

}  // namespace

void VmTest::SetUp() {
  VMConfig config{&TEST_EVENTS, this, false};
  vm = vmCreate(&config);
}

void VmTest::TearDown() {
  for (Item* item : kept_)
    xItemRelease(vm, item);
  kept_.clear();
  EXPECT_EQ(vmDestroy(vm), 0u) << "heap blocks were left allocated";
}

Item* VmTest::call(VMFunction function, std::initializer_list<Item*> args) {
  vm->extendedFrames = extended;
  DynSymbol* symbol = xdynsymGet(vm, "TESTED");
  symbol->function = function;
  std::vector<Item*> argv(args);
  return vmCallFunction(vm, symbol, static_cast<uint32_t>(argv.size()), argv.data());
}

Item* VmTest::keep(Item* item) {
  kept_.push_back(item);
  return item;
}

Item* VmTest::nil() {
  return keep(itemNew(vm, nullptr));
}
Item* VmTest::num(int32_t value) {
  return itemPutNI(vm, nil(), value);
}
Item* VmTest::longNum(int32_t value) {
  return itemPutNL(vm, nil(), value);
}
Item* VmTest::dbl(double value) {
  return itemPutND(vm, nil(), value);
}
Item* VmTest::logical(bool value) {
  return itemPutL(vm, nil(), value);
}
Item* VmTest::date(const char* yyyymmdd) {
  return itemPutDS(vm, nil(), yyyymmdd);
}

Item* VmTest::str(const std::string& bytes) {
  return itemPutCL(vm, nil(), bytes.data(), static_cast<uint32_t>(bytes.size()));
}

Item* VmTest::array(std::initializer_list<Item*> elements) {
  Item* result = nil();
  arrayNew(vm, result, static_cast<uint32_t>(elements.size()));
  uint32_t index = 1;
  for (Item* element : elements)
    arraySet(vm, result, index++, element);
  return result;
}

Item* VmTest::ref(Item* value) {
  ValueCell* cell = cellNew(vm, value);
  Item* reference = itemPutRef(vm, nil(), cell);
  cellRelease(cell);
  return reference;
}

std::string VmTest::text(const Item* item) {
  if (!item || !(item->type & HB_IT_STRING)) return "";
  return std::string(itemStrPtr(item), itemStrLen(item));
}
