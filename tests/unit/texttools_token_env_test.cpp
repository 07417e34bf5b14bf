// Token environments that a program changed or made up: every function that
// takes one stays inside the bytes it was given (the sanitizer build checks
// the reads and writes), and a well-formed one survives saving and restoring.
#include <random>
#include <string>

#include "frame/frame.h"
#include "vm_fixture.h"

extern "C" {
void TOKENINIT(VMEngine* vm);
void TOKENNEXT(VMEngine* vm);
void TOKENNUM(VMEngine* vm);
void TOKENEND(VMEngine* vm);
void TOKENAT(VMEngine* vm);
void SAVETOKEN(VMEngine* vm);
void RESTTOKEN(VMEngine* vm);
void TOKENEXIT(VMEngine* vm);
}

namespace {

void putWord(std::string& bytes, size_t offset, uint32_t value) {
  for (size_t i = 0; i < 4 && offset + i < bytes.size(); i++)
    bytes[offset + i] = static_cast<char>(value >> (8 * i));
}

// Mostly small numbers, so that counts and offsets sometimes make sense.
uint32_t someNumber(std::mt19937& random) {
  switch (random() % 4) {
    case 0:
      return random();
    case 1:
      return UINT32_MAX - random() % 4;
    default:
      return random() % 12;
  }
}

std::string madeUpEnvironment(std::mt19937& random) {
  std::string bytes(random() % 48, '\0');
  for (size_t offset = 0; offset < bytes.size(); offset += 4)
    putWord(bytes, offset, someNumber(random));
  return bytes;
}

class TokenEnvTest : public VmTest {
 protected:
  // Every reader and walker on the environment passed by reference.
  void walkByReference(const std::string& env, Item* scanned) {
    Item* variable = ref(str(env));
    call(TOKENNUM, {variable});
    call(TOKENEND, {variable});
    call(TOKENAT, {logical(true), nil(), variable});
    call(TOKENAT, {nil(), num(2), variable});
    call(TOKENNEXT, {scanned, nil(), variable});
    call(TOKENNEXT, {scanned, num(1), variable});
    call(TOKENINIT, {nil(), nil(), nil(), variable});
    call(TOKENNEXT, {scanned, nil(), variable});
  }
  // The same on the environment made current.
  void walkCurrent(const std::string& env, Item* scanned) {
    call(RESTTOKEN, {str(env)});
    call(TOKENNUM, {});
    call(TOKENEND, {});
    call(TOKENAT, {});
    call(TOKENAT, {logical(true), num(1)});
    call(TOKENNEXT, {scanned});
    call(TOKENNEXT, {scanned, num(2)});
    call(TOKENINIT, {});
    call(TOKENNEXT, {scanned});
    call(SAVETOKEN, {});
  }
};

TEST_F(TokenEnvTest, MadeUpEnvironmentsAreReadOnlyAsFarAsTheyGo) {
  ctSetArgErrorMode(vm, -1);
  std::mt19937 random(8128);
  Item* scanned = str("abc def");
  for (int round = 0; round < 3000; round++) {
    std::string env = madeUpEnvironment(random);
    walkByReference(env, scanned);
    walkCurrent(env, scanned);
  }
  call(TOKENEXIT, {});
  EXPECT_TRUE(exceptions.empty());
}

TEST_F(TokenEnvTest, SavedEnvironmentComesBackTheSame) {
  for (bool ext : {false, true}) {
    extended = ext;
    Item* scanned = str("one two three");
    call(TOKENINIT, {scanned});
    call(TOKENNEXT, {scanned});
    std::string saved = text(call(SAVETOKEN, {}));
    ASSERT_EQ(saved.size(), 816u);
    call(TOKENINIT, {str("x")});
    std::string replaced = text(call(RESTTOKEN, {str(saved)}));
    EXPECT_EQ(replaced.size(), 816u);
    EXPECT_EQ(text(call(TOKENNEXT, {scanned})), "two");
    EXPECT_EQ(text(call(RESTTOKEN, {str("")})).substr(0, 12),
              std::string("\x03\0\0\0\x64\0\0\0\x02\0\0\0", 12));
    EXPECT_EQ(text(call(SAVETOKEN, {})), "");
  }
}

}  // namespace
