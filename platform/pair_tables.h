// What the two-byte characters of the web's charsets mean. These are the indexes of the Encoding
// Standard (encoding.spec.whatwg.org): taken from the system's converters, and corrected where the
// two differ.
#pragma once

#include <string_view>
#include <vector>

namespace zvrsit::platform {

// The characters of one charset by their lead and trail bytes.
class PairTable {
 public:
  // Asks the system what every pair means in one of the pages of pair_source.h. Empty when the
  // system does not know it.
  explicit PairTable(unsigned codePage);

  bool empty() const { return meanings_.empty(); }
  // 0 where the pair is no character.
  char32_t At(unsigned char lead, unsigned char trail) const {
    if (lead < kFirstLead || lead > kLastLead || trail < kFirstTrail || trail > kLastTrail) {
      return 0;
    }
    return meanings_[static_cast<std::size_t>(lead - kFirstLead) * kTrails + trail - kFirstTrail];
  }

 private:
  static constexpr unsigned kFirstLead = 0x81, kLastLead = 0xFE;
  static constexpr unsigned kFirstTrail = 0x40, kLastTrail = 0xFE;
  static constexpr unsigned kTrails = kLastTrail - kFirstTrail + 1;

  void Correct(unsigned bytes, char32_t meaning);
  void CorrectAll(unsigned codePage);

  std::vector<char32_t> meanings_;
};

// The table of a page, made when it is first asked for.
const PairTable& PairTableOf(unsigned codePage);

// What a character of four bytes of GB 18030 means; 0 where it means nothing.
char32_t MeaningOfFourBytes(std::string_view bytes);

}  // namespace zvrsit::platform
