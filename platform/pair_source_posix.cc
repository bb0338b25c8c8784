#include <string>
#include <utility>

#include "platform/iconv_decoder.h"
#include "platform/pair_source.h"

namespace zvrsit::platform {
namespace {

const char* NameForIconv(unsigned codePage) {
  constexpr std::pair<unsigned, const char*> kNames[] = {
      {kShiftJis, "CP932"}, {kGb18030, "GB18030"}, {kEucKr, "UHC"}, {kBig5, "BIG5-HKSCS"}};
  for (const auto& [page, name] : kNames) {
    if (page == codePage) return name;
  }
  return "EUC-JP-MS";
}

// The one code point that the bytes mean; 0 when they mean none, or more.
char32_t MeaningOf(iconv_t converter, std::string bytes) {
  char32_t meanings[4];
  char* source = bytes.data();
  std::size_t sourceLeft = bytes.size();
  char* target = reinterpret_cast<char*>(meanings);
  std::size_t targetLeft = sizeof meanings;
  ::iconv(converter, nullptr, nullptr, nullptr, nullptr);
  const bool isGood = ::iconv(converter, &source, &sourceLeft, &target, &targetLeft) == 0 &&
                      ::iconv(converter, nullptr, nullptr, &target, &targetLeft) == 0;
  return isGood && targetLeft == sizeof meanings - sizeof meanings[0] ? meanings[0] : 0;
}

}  // namespace

PairSource::PairSource(unsigned codePage)
    : codePage_(codePage), converter_(OpenIconv(kCodePointCharset, NameForIconv(codePage))) {}

bool PairSource::IsKnown() const {
  return converter_ != nullptr;
}

char32_t PairSource::MeaningOfPair(unsigned char lead, unsigned char trail) const {
  std::string bytes(codePage_ == kJis0212 ? "\x8F" : "");
  bytes += static_cast<char>(lead);
  bytes += static_cast<char>(trail);
  return MeaningOf(converter_.get(), std::move(bytes));
}

char32_t PairSource::MeaningOfNumber(unsigned number) const {
  std::string bytes(4, '\0');
  for (std::size_t at = 4; at-- > 0;) {
    const unsigned count = at % 2 == 0 ? 126 : 10;
    bytes[at] = static_cast<char>((at % 2 == 0 ? 0x81 : '0') + number % count);
    number /= count;
  }
  return MeaningOf(converter_.get(), std::move(bytes));
}

}  // namespace zvrsit::platform
