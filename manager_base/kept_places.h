// Where the broken links of the pages that were just read stand.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "links/link_place.h"
#include "util/url_id.h"

namespace zvrsit {

// Taken while a page is in memory. To read the pages once more for these places costs a sixth of a
// check where all pages refer to one missing script.
class KeptPlaces {
 public:
  // Whether the file with this path number is not there; `isThere()` is asked once for each file.
  template <class IsThere>
  bool IsMissing(int path, IsThere isThere) {
    const auto at = static_cast<std::size_t>(path);
    if (at >= files_.size()) files_.resize(at + 1, File::kUnknown);
    if (files_[at] == File::kUnknown) files_[at] = isThere() ? File::kThere : File::kMissing;
    return files_[at] == File::kMissing;
  }

  // Forgets what was noted of a page that was given up.
  void BeginPage() { noted_.clear(); }
  // Link `number` of the page stands at `offset` of the page's text, and at `offsetInFile`.
  void Note(int number, std::size_t offset, std::int32_t offsetInFile);
  // What was noted since then is of `page`, which has this text.
  void EndPage(const UrlID& page, std::string_view text);

  // Puts the places of link `number` in `places`, if they are known, and there are `count` of them.
  // `page` and `offsetInFile` are those of the link's record: numbers of links are used again.
  bool Find(int number, int count, const UrlID& page, std::int32_t offsetInFile,
            std::vector<LinkPlace>& places);

 private:
  struct Noted {
    std::size_t offset;
    int number;
    std::int32_t offsetInFile;
  };
  struct Kept {
    int number;
    std::int32_t page;
    std::int32_t offsetInFile;
    LinkPlace place;

    bool ComesBefore(const Kept& other) const { return number < other.number; }
  };

  enum class File : std::uint8_t { kUnknown, kThere, kMissing };

  std::vector<File> files_;   // by path number
  std::vector<Noted> noted_;  // of the page that is being read
  std::vector<Kept> kept_;
  bool isSorted_ = true;  // kept_, by link
};

}  // namespace zvrsit
