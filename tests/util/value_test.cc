#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <unordered_set>

#include "util/hash.h"
#include "util/little_endian.h"
#include "util/site_rec_cell.h"
#include "util/url_id.h"
#include "util/vec.h"

namespace zvrsit::test {
namespace {

TEST(SiteRecCell, AFreshCellAndItsCopy) {
  SiteRecCell cell;
  EXPECT_EQ(cell.GetID(), UrlID(0, -1));
  EXPECT_EQ(cell.GetSize(), 0xFFFFFFFFu);
  EXPECT_EQ(cell.GetLinkType() | cell.GetFileType() | cell.GetFlag() | cell.GetTime(), 0);
  EXPECT_TRUE(cell.GetName().empty() && cell.GetTitle().empty());
  cell.SetName("\\a.htm");
  cell.SetSize(12);
  SiteRecCell copy;
  copy = SiteRecCell(cell);
  cell.SetName("changed");
  EXPECT_EQ(copy.GetName(), "\\a.htm");
  EXPECT_EQ(copy.GetSize(), 12u);
}

TEST(Vec, AnIndexOutOfRangeThrows) {
  vec<int> numbers{1, 2};
  numbers[1] = 5;
  EXPECT_EQ(std::as_const(numbers)[1], 5);
  for (const std::size_t bad : {std::size_t{2}, static_cast<std::size_t>(-1)}) {
    try {
      numbers[bad] = 0;
      FAIL();
    } catch (const std::out_of_range& error) {
      EXPECT_STREQ(error.what(), "invalid vector<T> subscript");
    }
  }
}

TEST(LittleEndian, WordsAtAnyAlignment) {
  unsigned char bytes[6] = {};
  StoreLE32(bytes + 1, -2);
  EXPECT_EQ(std::memcmp(bytes, "\0\xFE\xFF\xFF\xFF\0", 6), 0);
  EXPECT_EQ(LoadLE32(bytes + 1), -2);
  StoreLE32(bytes + 1, 0x01020304);
  EXPECT_EQ(std::memcmp(bytes, "\0\4\3\2\1\0", 6), 0);
  EXPECT_EQ(LoadLEU32(bytes), 0x02030400u);
}

// Names that differ in one byte at any place, or in length only, spread over the low bits too.
TEST(Hash, KeysOfEveryLengthSpread) {
  std::unordered_set<std::uint64_t> whole;
  std::unordered_set<std::uint32_t> low;
  std::size_t keys = 0;
  for (std::size_t length = 0; length < 80; ++length) {
    for (std::size_t at = 0; at <= length; ++at, ++keys) {
      std::string key(length, '\0');
      if (at < length) key[at] = 1;
      const std::uint64_t hash = HashBytes(key);
      EXPECT_EQ(hash, HashBytes(std::string(key)));
      whole.insert(hash);
      low.insert(static_cast<std::uint32_t>(hash) & 0x3FFFFF);
    }
  }
  EXPECT_EQ(whole.size(), keys);
  EXPECT_GT(low.size(), keys - 30);
}

}  // namespace
}  // namespace zvrsit::test
