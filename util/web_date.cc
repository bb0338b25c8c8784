#include "util/web_date.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <limits>
#include <string_view>

namespace zvrsit {
namespace {

constexpr int kMostInt = std::numeric_limits<int>::max();

bool IsSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

struct Number {
  int value = 0;
  std::size_t length = 0;  // characters read, 0 when there is no number
};

// White space, a sign, digits; whatever follows ends the number. Saturates.
Number ReadNumber(std::string_view field) {
  std::size_t at = 0;
  while (at < field.size() && IsSpace(field[at])) ++at;
  const bool negative = at < field.size() && field[at] == '-';
  if (at < field.size() && (field[at] == '-' || field[at] == '+')) ++at;
  const std::size_t firstDigit = at;
  long long value = 0;
  for (; at < field.size() && IsDigit(field[at]); ++at) {
    value = std::min<long long>(value * 10 + (field[at] - '0'), kMostInt);
  }
  if (at == firstDigit) return {};
  return {static_cast<int>(negative ? -value : value), at};
}

// 0 to 11, or -1.
int MonthOf(std::string_view name) {
  static constexpr std::string_view kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const auto* found = std::find(std::begin(kMonths), std::end(kMonths), name);
  return found == std::end(kMonths) ? -1 : static_cast<int>(found - kMonths);
}

// Reads fields from left to right; past the end of the text every field is empty.
class Fields {
 public:
  explicit Fields(std::string_view text) : rest_(text) {}

  // False when nothing but white space is left.
  bool SkipSpace() {
    while (!rest_.empty() && IsSpace(rest_[0])) rest_.remove_prefix(1);
    return !rest_.empty();
  }
  void Skip(std::size_t count) { rest_.remove_prefix(std::min(count, rest_.size())); }
  std::string_view Take(std::size_t count) {
    const std::string_view field = rest_.substr(0, count);
    Skip(count);
    return field;
  }
  int TakeNumber(std::size_t count) { return ReadNumber(Take(count)).value; }
  int TakeDigits() {
    std::size_t count = 0;
    while (count < rest_.size() && IsDigit(rest_[count])) ++count;
    return TakeNumber(count);
  }
  // Takes a number from the next `most` characters, and as many characters as it has.
  int TakeNumberOfUpTo(std::size_t most) {
    const Number number = ReadNumber(rest_.substr(0, most));
    Skip(number.length);
    return number.value;
  }
  void TakeTime(std::tm& when) {
    when.tm_hour = TakeNumber(2);
    Skip(1);
    when.tm_min = TakeNumber(2);
    Skip(1);
    when.tm_sec = TakeNumber(2);
  }

 private:
  std::string_view rest_;
};

// Sun Nov  6 08:49:37 1994
bool ReadCtimeForm(std::string_view text, std::tm& when) {
  Fields fields(text);
  if (!fields.SkipSpace()) return false;
  fields.Skip(4);
  when.tm_mon = MonthOf(fields.Take(3));
  if (!fields.SkipSpace()) return false;
  when.tm_mday = fields.TakeDigits();
  if (!fields.SkipSpace()) return false;
  fields.TakeTime(when);
  if (!fields.SkipSpace()) return false;
  when.tm_year = fields.TakeNumber(4) - 1900;
  return true;
}

// 06 Nov 1994 08:49:37, or 06-Nov-94 08:49:37 when `fullDayName`. In the second form the year is
// counted from 1900 as it stands, even where it has four digits.
bool ReadCommaForm(std::string_view text, bool fullDayName, std::tm& when) {
  Fields fields(text);
  if (!fields.SkipSpace()) return false;
  when.tm_mday = fields.TakeNumber(2);
  fields.Skip(1);
  when.tm_mon = MonthOf(fields.Take(3));
  fields.Skip(1);
  when.tm_year = fullDayName ? fields.TakeNumberOfUpTo(4) : fields.TakeNumber(4) - 1900;
  if (!fields.SkipSpace()) return false;
  fields.TakeTime(when);
  return true;
}

#if defined(_WIN32)
// Seconds since the epoch if the fields told universal time.
std::int64_t AsUniversalTime(const std::tm& when) {
  using namespace std::chrono;
  const sys_days month = year{when.tm_year + 1900} / January / 1 + months{when.tm_mon};
  const sys_seconds time = month + days{std::int64_t{when.tm_mday} - 1} + hours{when.tm_hour} +
                           minutes{when.tm_min} + seconds{when.tm_sec};
  return time.time_since_epoch().count();
}
#endif

// Local time in seconds since the epoch. The runtime of Windows knows no year after 3000.
std::int64_t MakeTime(std::tm& when) {
#if defined(_WIN32)
  constexpr std::int64_t kYear2999 = 32'472'144'000;
  const std::int64_t universal = AsUniversalTime(when);
  return universal > kYear2999 ? universal : _mktime64(&when);
#else
  return std::mktime(&when);
#endif
}

}  // namespace

std::int32_t ParseWebDate(const char* text) {
  if (!text) return -1;
  const std::string_view whole(text);
  const std::size_t comma = whole.find(',');
  std::tm when{};
  when.tm_isdst = -1;
  const bool read = comma == std::string_view::npos
                        ? ReadCtimeForm(whole, when)
                        : ReadCommaForm(whole.substr(comma + 1), comma != 3, when);
  if (!read) return -1;
  const std::int64_t seconds = MakeTime(when);
  if (seconds > std::numeric_limits<std::int32_t>::max()) {
    return std::numeric_limits<std::int32_t>::max();
  }
  return seconds < std::numeric_limits<std::int32_t>::min() ? -1
                                                            : static_cast<std::int32_t>(seconds);
}

}  // namespace zvrsit
