#include <windows.h>

#include <algorithm>

#include "platform/pair_data_win32.h"
#include "platform/pair_source.h"

namespace zvrsit::platform {
namespace {

char32_t MeaningInPage(unsigned page, unsigned char first, unsigned char second) {
  const char bytes[] = {static_cast<char>(first), static_cast<char>(second)};
  wchar_t units[2];
  const int count = ::MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, bytes, 2, units, 2);
  return count == 1 ? units[0] : 0;
}

bool IsPrivate(char32_t c) {
  return c >= 0xE000 && c <= 0xF8FF;
}

}  // namespace

PairSource::PairSource(unsigned codePage) : codePage_(codePage) {}

bool PairSource::IsKnown() const {
  return codePage_ == kBig5 || codePage_ == kGb18030 || ::IsValidCodePage(codePage_);
}

char32_t PairSource::MeaningOfPair(unsigned char lead, unsigned char trail) const {
  switch (codePage_) {
    case kBig5:
      return kBig5Pairs[lead - 0x81][trail - 0x40];
    case kGb18030:
      return kGb18030Pairs[lead - 0x81][trail - 0x40];
    case kJis0212:
      return lead < 0xA1 || trail < 0xA1 ? 0 : MeaningInPage(codePage_, lead, trail & 0x7F);
  }
  const char32_t meaning = MeaningInPage(codePage_, lead, trail);
  return codePage_ == kEucKr && IsPrivate(meaning) ? 0 : meaning;
}

char32_t PairSource::MeaningOfNumber(unsigned number) const {
  const PairRun* const end = kGb18030Runs + kGb18030RunCount;
  const PairRun* behind =
      std::upper_bound(kGb18030Runs, end, number,
                       [](unsigned value, const PairRun& run) { return value < run.first; });
  const PairRun& run = behind[-1];
  return run.meaning == 0 ? 0 : run.meaning + (number - run.first);
}

}  // namespace zvrsit::platform
