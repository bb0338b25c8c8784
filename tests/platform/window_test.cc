#include "platform/window_calls.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace zvrsit::platform {
namespace {

// The loader writes more than it may say, and no terminator.
int LoadSixLetters(unsigned id, char* buffer, int size) {
  if (id != 8131) return -1;
  std::memcpy(buffer, "walked", static_cast<std::size_t>(std::min(size, 6)));
  return 6;
}

TEST(Window, TableStringsAreCutAndTerminated) {
  char buffer[8] = "old";
  EXPECT_EQ(LoadTableString(8131, buffer, sizeof buffer), 0);
  EXPECT_STREQ(buffer, "");
  SetStringLoader(LoadSixLetters);
  EXPECT_EQ(LoadTableString(8131, buffer, sizeof buffer), 6);
  EXPECT_STREQ(buffer, "walked");
  EXPECT_EQ(LoadTableString(8131, buffer, 4), 3);
  EXPECT_STREQ(buffer, "wal");
  EXPECT_EQ(LoadTableString(8132, buffer, sizeof buffer), 0);
  EXPECT_EQ(LoadTableString(8131, buffer, 0), 0);
  SetStringLoader(nullptr);
}

}  // namespace
}  // namespace zvrsit::platform
