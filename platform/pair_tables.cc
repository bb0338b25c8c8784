#include "platform/pair_tables.h"

#include <map>
#include <string>
#include <utility>

#include "platform/iconv_decoder.h"

namespace zvrsit::platform {
namespace {

struct PairCorrection {
  unsigned short bytes;
  char16_t meaning;  // 0: no character
};

constexpr PairCorrection kBig5Corrections[] = {
#include "platform/big5_corrections.inc"
};

// Those of makers have stayed where they were; the standard of 2022 moved others.
constexpr PairCorrection kGb18030Corrections[] = {
    {0xA3A0, 0x3000}, {0xFE51, 0xE816}, {0xFE52, 0xE817}, {0xFE53, 0xE818},
    {0xFE6C, 0xE831}, {0xFE76, 0xE83B}, {0xFE91, 0xE855},
};

// Behind the prefix of JIS X 0212.
constexpr PairCorrection kJis0212Corrections[] = {{0xA2C3, 0x00A6}};
constexpr unsigned kFirstRowOfMakers = 0xEE;  // no row of it is one of JIS X 0212

// Runs of four-byte characters, by number, of which the system knows some in two bytes only.
struct Run {
  unsigned first, last;
  char32_t meaning;  // of the first
};
constexpr Run kGb18030Runs[] = {
    {19057, 19064, 0x9FB4}, {39076, 39085, 0xFE10}, {189000, 1237575, 0x10000}};

// The one code point that the bytes mean; 0 when they mean none, or more.
char32_t MeaningOf(iconv_t descriptor, std::string_view bytes) {
  char32_t meanings[4];
  char* source = const_cast<char*>(bytes.data());
  std::size_t sourceLeft = bytes.size();
  char* target = reinterpret_cast<char*>(meanings);
  std::size_t targetLeft = sizeof meanings;
  ::iconv(descriptor, nullptr, nullptr, nullptr, nullptr);
  const bool isGood = ::iconv(descriptor, &source, &sourceLeft, &target, &targetLeft) == 0 &&
                      ::iconv(descriptor, nullptr, nullptr, &target, &targetLeft) == 0;
  return isGood && targetLeft == sizeof meanings - sizeof meanings[0] ? meanings[0] : 0;
}

}  // namespace

PairTable::PairTable(const char* charset, std::string_view prefix) {
  const Iconv descriptor = OpenIconv(kCodePointCharset, charset);
  if (!descriptor) return;
  meanings_.reserve(std::size_t{kLastLead - kFirstLead + 1} * kTrails);
  std::string bytes(prefix);
  bytes.append(2, '\0');
  for (unsigned lead = kFirstLead; lead <= kLastLead; ++lead) {
    for (unsigned trail = kFirstTrail; trail <= kLastTrail; ++trail) {
      bytes[prefix.size()] = static_cast<char>(lead);
      bytes[prefix.size() + 1] = static_cast<char>(trail);
      meanings_.push_back(MeaningOf(descriptor.get(), bytes));
    }
  }
  CorrectAll(charset, prefix);
}

void PairTable::Correct(unsigned bytes, char32_t meaning) {
  meanings_[((bytes >> 8) - kFirstLead) * std::size_t{kTrails} + (bytes & 0xFF) - kFirstTrail] =
      meaning;
}

void PairTable::CorrectAll(std::string_view charset, std::string_view prefix) {
  const auto correct = [this](const auto& corrections) {
    for (const PairCorrection& c : corrections) Correct(c.bytes, c.meaning);
  };
  if (charset == "BIG5-HKSCS") correct(kBig5Corrections);
  if (charset == "GB18030") correct(kGb18030Corrections);
  if (prefix.empty()) return;
  correct(kJis0212Corrections);
  for (unsigned row = kFirstRowOfMakers; row <= kLastLead; ++row) {
    for (unsigned trail = kFirstTrail; trail <= kLastTrail; ++trail) Correct(row << 8 | trail, 0);
  }
}

const PairTable& PairTableOf(const char* charset, std::string_view prefix) {
  using Name = std::pair<std::string, std::string>;
  thread_local std::map<Name, PairTable> known;
  const Name name{charset, prefix};
  const auto found = known.find(name);
  if (found != known.end()) return found->second;
  return known.emplace(name, PairTable(charset, prefix)).first->second;
}

char32_t MeaningOfFourBytes(std::string_view bytes) {
  thread_local const Iconv descriptor = OpenIconv(kCodePointCharset, "GB18030");
  unsigned number = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    number = i % 2 == 0 ? number * 126 + byte - 0x81 : number * 10 + byte - '0';
  }
  for (const Run& run : kGb18030Runs) {
    if (number >= run.first && number <= run.last) return run.meaning + (number - run.first);
  }
  return descriptor ? MeaningOf(descriptor.get(), bytes) : 0;
}

}  // namespace zvrsit::platform
