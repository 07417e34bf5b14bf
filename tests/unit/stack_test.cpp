// The VM stack and the call frame.
#include "frame/frame.h"
#include "vm_fixture.h"

namespace {

int observedCount;
int observedValues[4];
bool observedThird;

void observeFrame(VMEngine* vm) {
  observedCount = paramCount(vm);
  for (int n = 1; n <= 2; n++)
    observedValues[n] = itemGetNI(paramSlot(vm, n));
  observedThird = paramSlot(vm, 3) != nullptr;
}

TEST_F(VmTest, PushGrowsTheSlotArrayByTwentyZeroFilledItems) {
  uint32_t before = vm->stack.wItems;
  uint32_t used = static_cast<uint32_t>(vm->stack.pos - vm->stack.items);
  for (uint32_t i = used; i < before + 1; i++)
    vmPushNil(vm);
  EXPECT_EQ(vm->stack.wItems, before + STACK_GROWTH);
  for (uint32_t i = before; i < vm->stack.wItems; i++) {
    EXPECT_EQ(vm->stack.items[i]->type, HB_IT_NIL);
  }
  vmPop(vm, before + 1 - used);
  EXPECT_EQ(vm->stack.pos - vm->stack.items, used);
}

TEST_F(VmTest, OrdinaryFrameHoldsParametersRightAfterSelf) {
  call(observeFrame, {num(1), num(2)});
  EXPECT_EQ(observedCount, 2);
  EXPECT_EQ(observedValues[1], 1);
  EXPECT_EQ(observedValues[2], 2);
  EXPECT_FALSE(observedThird);
}

TEST_F(VmTest, ExtendedFrameDisplacesParametersByTheirCount) {
  extended = true;
  call(observeFrame, {num(1), num(2)});
  EXPECT_EQ(observedCount, 2);
  EXPECT_EQ(observedValues[1], 1);
  EXPECT_EQ(observedValues[2], 2);
}

TEST_F(VmTest, StoredCountRuleCoversEveryLayout) {
  Item* symbol = *vm->stack.pBase;
  struct Case {
    uint16_t stored;
    int count;
  } cases[] = {{0, 0}, {3, 3}, {254, 254}, {255, 0}, {256, 0}, {258, 2}, {300, 44}};
  for (const Case& c : cases) {
    symbol->item.asSymbol.paramCount = c.stored;
    EXPECT_EQ(vmParamCount(vm), c.count) << "stored " << c.stored;
  }
  symbol->item.asSymbol.paramCount = 0;
}

TEST_F(VmTest, StoredCount258PutsParametersAtBasePlusFourAndFive) {
  Item** base = vm->stack.pBase;
  Item* symbol = *base;
  for (int i = 0; i < 6; i++)
    vmPushNil(vm);
  symbol->item.asSymbol.paramCount = 258;
  EXPECT_EQ(vmParamSlot(vm, 1), base[4]);
  EXPECT_EQ(vmParamSlot(vm, 2), base[5]);
  EXPECT_EQ(vmParamSlot(vm, 3), nullptr);
  symbol->item.asSymbol.paramCount = 0;
  vmPop(vm, 6);
}

TEST_F(VmTest, ParameterMinusOneIsTheReturnItemEvenWithoutParameters) {
  EXPECT_EQ(vmParamSlot(vm, -1), &vm->stack.Return);
  EXPECT_EQ(vmParamSlot(vm, -2), nullptr);
  EXPECT_EQ(vmParamSlot(vm, 0), nullptr);
}

TEST_F(VmTest, CallLeavesTheStackAsItFoundIt) {
  ptrdiff_t top = vm->stack.pos - vm->stack.items;
  Item** base = vm->stack.pBase;
  call(observeFrame, {str("a"), array({num(1)})});
  EXPECT_EQ(vm->stack.pos - vm->stack.items, top);
  EXPECT_EQ(vm->stack.pBase, base);
}

TEST_F(VmTest, ArrayExceptionIsCaughtAroundTheCallAndLeavesNil) {
  auto throwing = [](VMEngine* vm) {
    itemPutNI(vm, returnItem(vm), 5);
    paramGetNI(vm, 1);
  };
  Item* result = call(throwing, {array({})});
  EXPECT_EQ(result->type, HB_IT_NIL);
  ASSERT_EQ(exceptions.size(), 1u);
  EXPECT_EQ(exceptions[0], "error in paramGetNI() HB_IS_ARRAY ");
}

}  // namespace
