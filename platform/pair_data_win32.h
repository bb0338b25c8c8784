// Characters that the library brings itself where the system lacks some of them: write_pairs.py
// makes the source of this.
#pragma once

#include <cstddef>

namespace zvrsit::platform {

// What pairs from 0x8140 to 0xFEFE mean; 0 for no character.
using PairMeanings = char32_t[0xFE - 0x81 + 1][0xFE - 0x40 + 1];
extern const PairMeanings kBig5Pairs;
extern const PairMeanings kGb18030Pairs;

// Characters of four bytes of GB 18030, by number, up to the next run. The last one is behind all
// that have no more than 16 bits.
struct PairRun {
  unsigned first;
  char32_t meaning;  // of the first; 0 where there are no characters
};
extern const PairRun kGb18030Runs[];
extern const std::size_t kGb18030RunCount;

}  // namespace zvrsit::platform
