// What the system knows of the characters of the charsets of the web that have more than one byte.
#pragma once

#include <memory>

namespace zvrsit::platform {

// Their code pages. JIS X 0212 stands for the characters that EUC-JP has behind a prefix.
constexpr unsigned kShiftJis = 932, kGb18030 = 936, kEucKr = 949, kBig5 = 950, kJis0212 = 20932;

class PairSource {
 public:
  explicit PairSource(unsigned codePage);

  // Whether the system knows the page at all.
  bool IsKnown() const;
  // The one code point that two bytes mean, both from 0x40 to 0xFE, the first from 0x81; 0 when
  // they mean none, or more.
  char32_t MeaningOfPair(unsigned char lead, unsigned char trail) const;
  // The code point of a four-byte character of GB 18030; `number` counts these in their order.
  char32_t MeaningOfNumber(unsigned number) const;

 private:
  unsigned codePage_;
  std::shared_ptr<void> converter_;  // of the system, where it has such
};

}  // namespace zvrsit::platform
