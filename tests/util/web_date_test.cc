#include "util/web_date.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdint>
#include <ctime>
#include <memory>
#include <string>

namespace zvrsit {
namespace {

// A local time as the calendar has it.
std::int32_t Local(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  std::tm when{};
  when.tm_year = year - 1900;
  when.tm_mon = month - 1;
  when.tm_mday = day;
  when.tm_hour = hour;
  when.tm_min = minute;
  when.tm_sec = second;
  when.tm_isdst = -1;
  return static_cast<std::int32_t>(std::mktime(&when));
}

// The time zone of the process; null takes it back.
void SetZone(const char* zone) {
#if defined(_WIN32)
  _putenv_s("TZ", zone != nullptr ? zone : "");
  _tzset();
#else
  zone != nullptr ? ::setenv("TZ", zone, 1) : ::unsetenv("TZ");
  ::tzset();
#endif
}

class WebDate : public testing::TestWithParam<const char*> {
 protected:
  WebDate() { SetZone(GetParam()); }
  ~WebDate() override { SetZone(nullptr); }
};

TEST_P(WebDate, ThreeFormsGiveTheSameLocalTime) {
  const std::int32_t expected = Local(1994, 11, 6, 8, 49, 37);
  for (const char* text :
       {"Sun, 06 Nov 1994 08:49:37 GMT", "Sunday, 06-Nov-94 08:49:37 GMT",
        "Sun Nov  6 08:49:37 1994", " Sun Nov 6 08:49:37 1994\n", "Sun,\t 06 Nov 1994   08:49:37",
        "Sun, 06 Nov 1994 08:49:37 -0900", "Sun, 6  Nov 1994 8 :49:37"}) {
    EXPECT_EQ(ParseWebDate(text), expected) << text;
  }
  EXPECT_EQ(ParseWebDate("Sat, 02 Jul 2005 12:00:00 GMT"), Local(2005, 7, 2, 12));
}

TEST_P(WebDate, OddFieldsAreReadAsTheyStand) {
  // An unknown month is the one before January.
  EXPECT_EQ(ParseWebDate("Thu, 01 Foo 1998 00:00:00 GMT"), Local(1997, 12, 1));
  EXPECT_EQ(ParseWebDate("Thu, 01 jan 1998 00:00:00 GMT"), Local(1997, 12, 1));
  // A full week day counts the year from 1900 even where it has four digits.
  EXPECT_EQ(ParseWebDate("Sunday, 06-Nov-1994 08:49:37 GMT"), INT32_MAX);
  EXPECT_EQ(ParseWebDate("Sun, 32 Dec 1998 00:00:61"), Local(1999, 1, 1, 0, 1, 1));
  EXPECT_EQ(ParseWebDate("Sun, 01 Jan 2100 00:00:00"), INT32_MAX);
  EXPECT_EQ(ParseWebDate("Sun, 01 Jan 1800 00:00:00"), -1);
  EXPECT_EQ(ParseWebDate("Sun, 06 Nov 1994 x"), Local(1994, 11, 6));
  EXPECT_EQ(ParseWebDate("Sun Nov 99999999999999999999 08:49:37 1994"), INT32_MAX);
}

INSTANTIATE_TEST_SUITE_P(Zones, WebDate,
                         testing::Values("UTC0", "JST-9", "EST5EDT,M3.2.0,M11.1.0"));

TEST(WebDateText, MayEndAnywhere) {
  EXPECT_EQ(ParseWebDate(nullptr), -1);
  for (const std::string full : {"Sun, 06 Nov 1994 08:49:37", "Sunday, 06-Nov-94 08:49:37",
                                 "Sun Nov  6 08:49:37 1994", "    "}) {
    for (std::size_t length = 0; length < full.size(); ++length) {
      // A buffer of its own, so that a sanitizer sees a read behind the end.
      const auto text = std::make_unique<char[]>(length + 1);
      full.copy(text.get(), length);
      const std::int32_t got = ParseWebDate(text.get());
      // A year cut short is long before the epoch; a time cut short is that of its first digits.
      const bool timeBegins = full.find(',') < full.size() && full.find("08") < length;
      EXPECT_EQ(got == -1, !timeBegins) << text.get();
    }
  }
}

}  // namespace
}  // namespace zvrsit
