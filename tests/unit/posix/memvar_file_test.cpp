// Reading memory-variable records from bytes: every type, the damaged ends,
// and the filter's decisions.
#include <cstring>
#include <fstream>
#include <iterator>

#include "frame/frame.h"
#include "rtl/memvar_file.h"
#include "temp_directory.h"
#include "vm_fixture.h"

KOVO_FUNC(__MVSAVE);
KOVO_FUNC(__MVRESTORE);

namespace {

// A record header: name, type byte, the two length bytes.
std::string header(const std::string& name, uint8_t type, uint8_t low, uint8_t high) {
  std::string bytes(32, '\0');
  bytes.replace(0, name.size(), name);
  bytes[11] = static_cast<char>(type);
  bytes[16] = static_cast<char>(low);
  bytes[17] = static_cast<char>(high);
  return bytes;
}

std::string doubleBytes(double value) {
  std::string bytes(8, '\0');
  std::memcpy(bytes.data(), &value, 8);
  return bytes;
}

struct Bytes {
  std::string data;
  size_t pos = 0;
};

uint32_t readBytes(void* cargo, void* buffer, uint32_t count) {
  auto* bytes = static_cast<Bytes*>(cargo);
  size_t n = std::min<size_t>(count, bytes->data.size() - bytes->pos);
  std::memcpy(buffer, bytes->data.data() + bytes->pos, n);
  bytes->pos += n;
  return static_cast<uint32_t>(n);
}

class MemvarFileTest : public VmTest {
 protected:
  // Restores the bytes and describes every variable that exists afterwards.
  std::string restore(const std::string& data, const char* mask = "*", bool include = true) {
    Bytes bytes{data};
    MemvarMask filter(vm, mask);
    memvarRestoreRecords(vm, {readBytes, &bytes}, filter, include);
    last = describe(&vm->stack.Return);
    std::string out;
    Item names{};
    arrayNew(vm, &names, 0);
    xdynsymEval(vm, GetSymbolInfo, &names);
    for (uint32_t i = 1; i <= names.item.asArray.value->length; i++) {
      const char* name = arrayGetItemPtr(&names, i)->item.asString.value;
      Item value{};
      memvarGetValue(vm, &value, memvarFindSymbol(vm, name));
      out += std::string(name) + "=" + describe(&value) + " ";
      itemClear(vm, &value);
    }
    itemClear(vm, &names);
    return out;
  }

  static std::string describe(const Item* value) {
    switch (value->type) {
      case HB_IT_NIL:
        return "NIL";
      case HB_IT_LOGICAL:
        return value->item.asLogical.value ? ".T." : ".F.";
      case HB_IT_DATE:
        return "d" + std::to_string(value->item.asDate.value);
      case HB_IT_DOUBLE: {
        int width = 0;
        int decimals = 0;
        itemGetNLen(value, &width, &decimals);
        return std::to_string(itemGetND(value)).substr(0, 6) + "/" + std::to_string(width) + "." +
               std::to_string(decimals);
      }
      default:
        return "\"" + text(value) + "\"";
    }
  }

  std::string last;
};

TEST_F(MemvarFileTest, RecordsOfEveryTypeAndDamagedOnes) {
  const std::string end = "\x1A";
  struct {
    const char* what;
    std::string bytes;
    const char* restored;
    const char* last;
  } cases[] = {
      {"empty file", "", "", "NIL"},
      {"end byte only", end, "", "NIL"},
      {"text counts its zero", header("S", 0xC3, 6, 0) + std::string("hello\0", 6) + end,
       "S=\"hello\" ", "\"hello\""},
      {"length's high byte", header("S", 0xC3, 1, 1) + std::string(256, 'x') + end,
       "S=\"" /* 256 bytes */, nullptr},
      {"length 0", header("S", 0xC3, 0, 0) + end, "S=\"\" ", "\"\""},
      {"no zero in its place", header("S", 0xC3, 3, 0) + "abc" + end, "S=\"ab\" ", "\"ab\""},
      {"number width counts point and decimals", header("N", 0xCE, 10, 2) + doubleBytes(12.5) + end,
       "N=12.500/7.2 ", "12.500/7.2"},
      {"number without decimals", header("N", 0xCE, 10, 0) + doubleBytes(3) + end, "N=3.0000/10.0 ",
       "3.0000/10.0"},
      {"date", header("D", 0xC4, 8, 0) + doubleBytes(2460000) + end, "D=d2460000 ", "d2460000"},
      {"date out of range", header("D", 0xC4, 8, 0) + doubleBytes(1e300) + end, "D=d-2147483648 ",
       "d-2147483648"},
      {"logical", header("T", 0xCC, 1, 0) + "\x01" + header("F", 0xCC, 1, 0) + std::string(1, '\0'),
       "F=.F. T=.T. ", ".F."},
      {"unknown type reads no value", header("U", 0x41, 8, 0) + header("L", 0xCC, 1, 0) + "\x01",
       "L=.T. U=NIL ", ".T."},
      {"cut-off text", header("A", 0xCC, 1, 0) + "\x01" + header("S", 0xC3, 9, 0) + "abc",
       "A=.T. S=NIL ", "NIL"},
      {"cut-off number", header("N", 0xCE, 5, 0) + "\x01\x02", "N=NIL ", "NIL"},
      {"cut-off header", header("A", 0xCC, 1, 0) + "\x01" + header("B", 0xCC, 1, 0).substr(0, 31),
       "A=.T. ", ".T."},
      {"lower-case name, full field without zero",
       header("abcdefghijk", 0xCC, 1, 0) + "\x01" + header("x", 0xCC, 1, 0) + std::string(1, '\0'),
       "ABCDEFGHIJK=.T. X=.F. ", ".F."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    std::string restored = restore(c.bytes);
    if (c.last) {
      EXPECT_EQ(restored, c.restored);
      EXPECT_EQ(last, c.last);
    } else {
      EXPECT_EQ(restored, "S=\"" + std::string(256, 'x') + "\" ");
    }
    memvarClearAll(vm);
  }
}

TEST_F(MemvarFileTest, FilterTakesMatchingOrOtherNames) {
  std::string file = header("ABC", 0xCC, 1, 0) + "\x01" + header("XAB", 0xCC, 1, 0) + "\x01" +
                     header("AB", 0xCC, 1, 0) + "\x01";
  struct {
    const char* mask;
    bool include;
    const char* restored;
  } cases[] = {
      {"a*", true, "AB=.T. ABC=.T. "},         {"a*", false, "XAB=.T. "}, {"?AB", true, "XAB=.T. "},
      {"*C", true, "AB=.T. ABC=.T. XAB=.T. "}, {"*C", false, ""},         {"ABC", true, "ABC=.T. "},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.mask);
    EXPECT_EQ(restore(file, c.mask, c.include), c.restored);
    memvarClearAll(vm);
  }
}

// A restored variable that exists keeps its scope; a new one is private.
TEST_F(MemvarFileTest, ExistingVariablesAreAssignedNewOnesArePrivate) {
  memvarCreateFromItem(vm, str("P"), MV_PUBLIC, nullptr);
  restore(header("P", 0xCC, 1, 0) + "\x01" + header("Q", 0xCC, 1, 0) + "\x01");
  EXPECT_EQ(memvarScope(vm, "P"), MV_DBG_PUBLIC);
  EXPECT_EQ(memvarScope(vm, "Q"), MV_DBG_PRIVATE_OWN);
  EXPECT_EQ(last, ".T.");
}

// What the host writes: zeros in the reserved bytes and after the name, the
// name cut to ten characters, widths and text lengths cut to what their
// fields hold, types that are not saved left out; and what the library reads
// back from the directory of the default setting.
TEST_F(MemvarFileTest, SavedBytesAndTheirWayBack) {
  TempDirectory dir;
  std::filesystem::create_directory(dir.path() / "sub");
  memvarCreateFromItem(vm, str("LONGERTHANTEN"), MV_PRIVATE, logical(true));
  Item* wide = nil();
  itemPutNLen(vm, wide, 1.5, 99, 200);
  memvarCreateFromItem(vm, str("WIDE"), MV_PRIVATE, wide);
  memvarCreateFromItem(vm, str("BIG"), MV_PRIVATE, str(std::string(70000, 'x')));
  memvarCreateFromItem(vm, str("DAY"), MV_PRIVATE, date("20230224"));
  memvarCreateFromItem(vm, str("LIST"), MV_PRIVATE, array({num(1)}));
  call(__MVSAVE, {str("sub/out"), str("*"), logical(true)});
  std::ifstream in(dir.path() / "sub" / "out.mem", std::ios::binary);
  std::string written((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::string expected = header("BIG", 0xC3, 0xFF, 0xFF) + std::string(65534, 'x') +
                         std::string(1, '\0') + header("DAY", 0xC4, 8, 0) + doubleBytes(2460000) +
                         header("LONGERTHAN", 0xCC, 1, 0) + "\x01" +
                         header("WIDE", 0xCE, 255, 200) + doubleBytes(1.5) + "\x1A";
  EXPECT_EQ(written.size(), expected.size());
  EXPECT_TRUE(written == expected);

  memvarClearAll(vm);
  vm->set.text[HB_SET_DEFAULT] = static_cast<char*>(vmAlloc(vm, 4));
  std::memcpy(vm->set.text[HB_SET_DEFAULT], "sub", 3);
  Item* result = call(__MVRESTORE, {str("out"), logical(false), str("w*")});
  EXPECT_EQ(describe(result), "1.5000/54.200");
  EXPECT_TRUE(errors.empty());
}

}  // namespace
