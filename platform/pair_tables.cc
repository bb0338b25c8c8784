#include "platform/pair_tables.h"

#include <map>

#include "platform/pair_source.h"

namespace zvrsit::platform {
namespace {

struct PairCorrection {
  unsigned short bytes;
  char32_t meaning;  // 0: no character
};

constexpr PairCorrection kBig5Corrections[] = {
#include "platform/big5_corrections.inc"
};

// Those of makers have stayed where they were; the standard of 2022 moved others. Systems follow
// some edition of it.
constexpr PairCorrection kGb18030Corrections[] = {
    {0xA3A0, 0x3000}, {0xA6D9, 0xFE10}, {0xA6DA, 0xFE12}, {0xA6DB, 0xFE11}, {0xA6DC, 0xFE13},
    {0xA6DD, 0xFE14}, {0xA6DE, 0xFE15}, {0xA6DF, 0xFE16}, {0xA6EC, 0xFE17}, {0xA6ED, 0xFE18},
    {0xA6F3, 0xFE19}, {0xA8BC, 0x1E3F}, {0xFE51, 0xE816}, {0xFE52, 0xE817}, {0xFE53, 0xE818},
    {0xFE59, 0x9FB4}, {0xFE61, 0x9FB5}, {0xFE66, 0x9FB6}, {0xFE67, 0x9FB7}, {0xFE6C, 0xE831},
    {0xFE6D, 0x9FB8}, {0xFE76, 0xE83B}, {0xFE7E, 0x9FB9}, {0xFE90, 0x9FBA}, {0xFE91, 0xE855},
    {0xFEA0, 0x9FBB},
};

constexpr PairCorrection kJis0212Corrections[] = {{0xA2B7, 0xFF5E}, {0xA2C3, 0x00A6}};
constexpr unsigned kFirstRowOfMakers = 0xEE;  // no row of it is one of JIS X 0212

// Runs of four-byte characters, by number, of which the system knows some in two bytes only.
struct Run {
  unsigned first, last;
  char32_t meaning;  // of the first
};
constexpr Run kGb18030Runs[] = {
    {19057, 19064, 0x9FB4}, {39076, 39085, 0xFE10}, {189000, 1237575, 0x10000}};

}  // namespace

PairTable::PairTable(unsigned codePage) {
  const PairSource source(codePage);
  if (!source.IsKnown()) return;
  meanings_.reserve(std::size_t{kLastLead - kFirstLead + 1} * kTrails);
  for (unsigned lead = kFirstLead; lead <= kLastLead; ++lead) {
    for (unsigned trail = kFirstTrail; trail <= kLastTrail; ++trail) {
      meanings_.push_back(source.MeaningOfPair(static_cast<unsigned char>(lead),
                                               static_cast<unsigned char>(trail)));
    }
  }
  CorrectAll(codePage);
}

void PairTable::Correct(unsigned bytes, char32_t meaning) {
  meanings_[((bytes >> 8) - kFirstLead) * std::size_t{kTrails} + (bytes & 0xFF) - kFirstTrail] =
      meaning;
}

void PairTable::CorrectAll(unsigned codePage) {
  const auto correct = [this](const auto& corrections) {
    for (const PairCorrection& c : corrections) Correct(c.bytes, c.meaning);
  };
  if (codePage == kBig5) correct(kBig5Corrections);
  if (codePage == kGb18030) correct(kGb18030Corrections);
  if (codePage != kJis0212) return;
  correct(kJis0212Corrections);
  for (unsigned row = kFirstRowOfMakers; row <= kLastLead; ++row) {
    for (unsigned trail = kFirstTrail; trail <= kLastTrail; ++trail) Correct(row << 8 | trail, 0);
  }
}

const PairTable& PairTableOf(unsigned codePage) {
  thread_local std::map<unsigned, PairTable> known;
  const auto found = known.find(codePage);
  if (found != known.end()) return found->second;
  return known.emplace(codePage, PairTable(codePage)).first->second;
}

char32_t MeaningOfFourBytes(std::string_view bytes) {
  thread_local const PairSource source(kGb18030);
  unsigned number = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    number = i % 2 == 0 ? number * 126 + byte - 0x81 : number * 10 + byte - '0';
  }
  for (const Run& run : kGb18030Runs) {
    if (number >= run.first && number <= run.last) return run.meaning + (number - run.first);
  }
  return source.IsKnown() ? source.MeaningOfNumber(number) : 0;
}

}  // namespace zvrsit::platform
