// Error objects, their launch through the error block, and substitution.
#include "frame/frame.h"
#include "vm_fixture.h"

namespace {

// A block whose value is decided by the test.
struct BlockScript {
  int calls = 0;
  Item* answer = nullptr;  // copied as the block's value
  Item* lastError = nullptr;
};

void scriptedEval(VMEngine* vm, Block* block, uint32_t argc, Item** argv, Item* result) {
  auto* script = static_cast<BlockScript*>(block->code);
  script->calls++;
  if (argc >= 1 && script->lastError) itemCopy(vm, script->lastError, argv[0]);
  if (script->answer) itemCopy(vm, result, script->answer);
}

class ErrorTest : public VmTest {
 protected:
  BlockScript script;

  void installBlock(Item* answer) {
    script.answer = answer;
    script.lastError = nil();
    Item* blockItem = nil();
    itemPutBlock(vm, blockItem, blockNew(vm, scriptedEval, nullptr, &script));
    itemCopy(vm, &vm->error.errorBlock, blockItem);
  }
};

TEST_F(ErrorTest, MissingDescriptionTakesTheStandardText) {
  Item* error = err_RT_New(vm, ES_ERROR, "BASE", EG_ZERODIV, 1340, nullptr, "/", 0, 0);
  EXPECT_EQ(text(xobjIvarPtr(error, "DESCRIPTION")), "Zero divisor");
  xItemRelease(vm, error);
  EXPECT_STREQ(errDescription(EG_ARG), "Argument error");
  EXPECT_STREQ(errDescription(EG_NOVAR), "Variable does not exist");
  EXPECT_STREQ(errDescription(EG_OPEN), "Open error");
}

TEST_F(ErrorTest, WithoutABlockTheDefaultIsTakenAndReported) {
  err_RT_BASE_SubstR(vm, EG_ARG, 1124, nullptr, "LEFT", 2, nil(), num(0));
  EXPECT_EQ(vm->stack.Return.type, HB_IT_NIL);
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_EQ(errors[0], "1/BASE/1124 LEFT");
}

TEST_F(ErrorTest, TheBlocksValueIsTheSubstitute) {
  installBlock(str("substitute"));
  err_RT_BASE_SubstR(vm, EG_ARG, 1111, nullptr, "LEN", 1, num(5));
  EXPECT_EQ(text(&vm->stack.Return), "substitute");
  EXPECT_EQ(script.calls, 1);
  Item* args = xobjIvarPtr(script.lastError, "ARGS");
  ASSERT_TRUE(itemIsArray(args));
  EXPECT_EQ(arrayGetNI(args, 1), 5);
  EXPECT_TRUE(itemGetL(xobjIvarPtr(script.lastError, "CANSUBSTITUTE")));
  EXPECT_TRUE(errors.empty());
  itemClear(vm, &vm->stack.Return);
}

TEST_F(ErrorTest, TrueRetriesOnlyWhenRetryIsAllowed) {
  installBlock(logical(true));
  Item* retryable = err_RT_New(vm, ES_ERROR, "BASE", EG_OPEN, 2005, nullptr, "F", 0, EF_CANRETRY);
  EXPECT_EQ(err_Launch(vm, retryable), E_RETRY);
  Item* fixed = err_RT_New(vm, ES_ERROR, "BASE", EG_OPEN, 2005, nullptr, "F", 0, EF_CANDEFAULT);
  EXPECT_EQ(err_Launch(vm, fixed), E_DEFAULT);
  EXPECT_EQ(itemGetNI(xobjIvarPtr(retryable, "TRIES")), 1);
  xItemRelease(vm, retryable);
  xItemRelease(vm, fixed);
}

TEST_F(ErrorTest, LaunchingKeepsTheReturnItem) {
  installBlock(str("ignored"));
  itemPutNI(vm, &vm->stack.Return, 77);
  Item* error = err_RT_New(vm, ES_ERROR, "CT", EG_ARG, 1, nullptr, "X", 0, EF_CANDEFAULT);
  err_Launch(vm, error);
  xItemRelease(vm, error);
  EXPECT_EQ(itemGetNI(&vm->stack.Return), 77);
}

TEST_F(ErrorTest, TextToolsErrorsFollowTheErrorMode) {
  auto raiseSubst = [](VMEngine* vm) {
    if (!ctArgErrorSubst(vm, 3162, "ATNUM", 4)) itemPutNI(vm, returnItem(vm), -1);
  };
  Item* result = call(raiseSubst, {num(1)});
  EXPECT_EQ(itemGetNI(result), -1);
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_EQ(errors[0], "1/CT/3162 ATNUM");

  ctSetArgErrorMode(vm, -1);
  errors.clear();
  call(raiseSubst, {num(1)});
  EXPECT_TRUE(errors.empty());

  ctSetArgErrorMode(vm, 2);
  installBlock(str("from handler"));
  result = call(raiseSubst, {num(1)});
  EXPECT_EQ(text(result), "from handler");
  EXPECT_EQ(itemGetNI(xobjIvarPtr(script.lastError, "SEVERITY")), 2);
  Item* args = xobjIvarPtr(script.lastError, "ARGS");
  EXPECT_EQ(itemArrayLen(args), 4u);  // the declared count, missing ones as nil
  EXPECT_EQ(arrayGetItemPtr(args, 4)->type, HB_IT_NIL);
}

TEST_F(ErrorTest, ArgumentErrorsListTheDeclaredParametersAsPassed) {
  installBlock(nullptr);
  auto left = [](VMEngine* vm) { argError(vm, 1124, "LEFT", 2); };
  call(left, {ref(str("abc"))});
  Item* args = xobjIvarPtr(script.lastError, "ARGS");
  ASSERT_EQ(itemArrayLen(args), 2u);
  EXPECT_EQ(text(arrayGetItemPtr(args, 1)), "abc");  // resolved, not the reference
  EXPECT_EQ(arrayGetItemPtr(args, 2)->type, HB_IT_NIL);
}

TEST_F(ErrorTest, ErrorObjectsAnswerAndAssignByMessage) {
  Item* error = errNew(vm);
  xobjSendMsg(vm, error, "_SUBCODE", 1, num(12));
  EXPECT_EQ(itemGetNI(xobjSendMsg(vm, error, "subCode", 0)), 12);
  EXPECT_TRUE(xobjHasMsg(vm, error, "_ARGS"));
  EXPECT_FALSE(xobjHasMsg(vm, error, "NOSUCH"));
  EXPECT_STREQ(xobjGetClsName(error), "ERROR");
  itemClear(vm, &vm->stack.Return);
  xItemRelease(vm, error);
}

}  // namespace
