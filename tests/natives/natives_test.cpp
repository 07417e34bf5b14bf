// The natives that other native code finds by name in the loaded library:
// they must come from the library itself, not from what it depends on.
#include <gtest/gtest.h>

#include <cstring>

#include "kovo/host_embed.h"
#include "own_symbols.h"

namespace {

class NativesTest : public ::testing::Test {
 public:
  static void SetUpTestSuite() {
    std::string error;
    ASSERT_TRUE(loadLibrary(KOVO_LIBRARY_PATH, &error)) << error;
  }
};

TEST_F(NativesTest, ZlibCrcRoutineAndTableAreTheLibrarysOwn) {
  using Crc32 = unsigned long (*)(unsigned long, const unsigned char*, unsigned);
  using CrcTable = const uint32_t* (*)();
  auto crc32 = reinterpret_cast<Crc32>(ownSymbol("crc32"));
  auto table = reinterpret_cast<CrcTable>(ownSymbol("get_crc_table"));
  ASSERT_NE(crc32, nullptr);
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(crc32(0, reinterpret_cast<const unsigned char*>("123456789"), 9), 0xCBF43926ul);
  EXPECT_EQ(table()[1], 0x77073096u);
}

TEST_F(NativesTest, SerializationNativesRoundTripAValue) {
  using Var2Bin = char* (*)(VMEngine*, const Item*, uint32_t*);
  using Bin2Item = Item* (*)(VMEngine*, const char*);
  auto var2bin = reinterpret_cast<Var2Bin>(ownSymbol("var2bin"));
  auto bin2item = reinterpret_cast<Bin2Item>(ownSymbol("bin2item"));
  ASSERT_NE(var2bin, nullptr);
  ASSERT_NE(bin2item, nullptr);
  VMConfig config{nullptr, nullptr, false};
  VMEngine* vm = vmCreate(&config);
  Item* value = itemPutCL(vm, itemNew(vm, nullptr), "AB", 2);
  uint32_t length = 0;
  char* stream = var2bin(vm, value, &length);
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(length, 13u);
  EXPECT_EQ(std::memcmp(stream, "XHBIN\0\0\4\0\0AB\0", 13), 0);
  Item* decoded = bin2item(vm, stream);
  ASSERT_TRUE(decoded->type & HB_IT_STRING);
  EXPECT_EQ(std::string(itemStrPtr(decoded), itemStrLen(decoded)), "AB");
  xItemRelease(vm, decoded);
  xItemRelease(vm, value);
  vmFree(vm, stream);
  EXPECT_EQ(vmDestroy(vm), 0u);
}

}  // namespace
