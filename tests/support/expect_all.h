// Calls that all have one answer, such as those that all refuse.
#pragma once

#include <gtest/gtest.h>

namespace zvrsit::test {

template <class Expected, class... Results>
void ExpectAll(Expected expected, Results... results) {
  int number = 0;
  const auto expect = [&](const auto& result) {
    EXPECT_EQ(result, expected) << "result " << number;
    ++number;
  };
  (expect(results), ...);
}

}  // namespace zvrsit::test
