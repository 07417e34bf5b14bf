// New identifiers: random version-4 GUIDs in the Windows memory layout.
#include <set>
#include <string>

#include "frame/frame.h"
#include "vm_fixture.h"

KOVO_FUNC(NEWGUID16);
KOVO_FUNC(NEWGUID38);
KOVO_FUNC(XGUID);

namespace {

using GuidTest = VmTest;

TEST_F(GuidTest, NewGuidsCarryVersionFourAndTheStandardVariant) {
  std::set<std::string> seen;
  for (int i = 0; i < 1000; i++) {
    std::string guid = text(call(NEWGUID16, {}));
    ASSERT_EQ(guid.size(), 16u);
    // The third field is little-endian: its high byte, with the version, comes second.
    EXPECT_EQ(static_cast<uint8_t>(guid[7]) >> 4, 4);
    EXPECT_EQ(static_cast<uint8_t>(guid[8]) >> 6, 2);
    seen.insert(guid);
  }
  EXPECT_EQ(seen.size(), 1000u);
}

TEST_F(GuidTest, TextFormShowsTheVersionDigit) {
  std::string guid = text(call(NEWGUID38, {}));
  ASSERT_EQ(guid.size(), 38u);
  EXPECT_EQ(guid[15], '4');
  EXPECT_NE(std::string("89AB").find(guid[20]), std::string::npos);
  EXPECT_EQ(guid.find_first_not_of("{}-0123456789ABCDEF"), std::string::npos);
}

TEST_F(GuidTest, ShortFormIsTwentyTwoUrlSafeCharacters) {
  std::string id = text(call(XGUID, {}));
  ASSERT_EQ(id.size(), 22u);
  EXPECT_EQ(
      id.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_"),
      std::string::npos);
  // The last character carries the last two bits and four zero bits.
  EXPECT_NE(std::string("AQgw").find(id[21]), std::string::npos);
}

}  // namespace
