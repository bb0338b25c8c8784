#include "util/id_bitmap.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <set>

namespace zvrsit {
namespace {

TEST(IdBitmap, AFullBlockGivesWayToTheFirstWithRoomThenToANewOne) {
  IdBitmap ids;
  for (int id = 0; id < IdBlock::kIds; ++id) ids.SetUsed(id);
  ids.SetUsed(9600);
  EXPECT_EQ(ids.Allocate(7), 9601);
  for (int id = 9600; id < 9600 + IdBlock::kIds; ++id) ids.SetUsed(id);
  EXPECT_EQ(ids.Allocate(9600), 12800);
  EXPECT_EQ(ids.Allocate(4000), 4000);
}

TEST(IdBitmap, IdsThatNoBlockCanHoldAreRefused) {
  IdBitmap ids;
  for (const std::int32_t id : {-1, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(ids.Allocate(id), -1);
    EXPECT_EQ(ids.SetUsed(id), -1);
    EXPECT_EQ(ids.SetFree(id), -1);
    EXPECT_EQ(ids.IsUsed(id), -1);
  }
  constexpr std::int32_t kLastBlock = (INT32_MAX / IdBlock::kIds - 1) * IdBlock::kIds;
  for (int i = 0; i < IdBlock::kIds; ++i) ASSERT_EQ(ids.Allocate(kLastBlock), kLastBlock + i);
  EXPECT_EQ(ids.Allocate(kLastBlock), -1);
}

TEST(IdBitmap, AgreesWithASetOfIds) {
  IdBitmap ids;
  std::set<std::int32_t> used;
  std::mt19937 random(1);
  for (int step = 0; step < 100000; ++step) {
    const auto id = static_cast<std::int32_t>(random() % 20000);
    switch (random() % 4) {
      case 0:
        ids.SetUsed(id);
        used.insert(id);
        break;
      case 1:
        ids.SetFree(id);
        used.erase(id);
        break;
      case 2:
        ASSERT_EQ(ids.IsUsed(id) == 1, used.count(id) == 1);
        break;
      default:
        // The one asked for, else the lowest of its block.
        std::int32_t wanted = id;
        if (used.contains(id)) wanted -= id % IdBlock::kIds;
        while (used.contains(wanted)) ++wanted;
        const std::int32_t got = ids.Allocate(id);
        ASSERT_TRUE(got == wanted || wanted / IdBlock::kIds != id / IdBlock::kIds);
        ASSERT_TRUE(used.insert(got).second);
    }
  }
}

}  // namespace
}  // namespace zvrsit
