#include "manager_base/kept_places.h"

#include <algorithm>
#include <functional>

#include "links/text_places.h"

namespace zvrsit {

void KeptPlaces::Note(int number, std::size_t offset, std::int32_t offsetInFile) {
  noted_.push_back({offset, number, offsetInFile});
}

void KeptPlaces::EndPage(const UrlID& page, std::string_view text) {
  if (noted_.empty()) return;
  std::sort(noted_.begin(), noted_.end(),
            [](const Noted& a, const Noted& b) { return a.offset < b.offset; });
  TextPlaces places(text);
  for (const Noted& link : noted_) {
    if (!kept_.empty() && link.number < kept_.back().number) isSorted_ = false;
    kept_.push_back({link.number, page.id, link.offsetInFile, places.OfReference(link.offset)});
  }
  noted_.clear();
}

bool KeptPlaces::Find(int number, int count, const UrlID& page, std::int32_t offsetInFile,
                      std::vector<LinkPlace>& places) {
  if (!isSorted_) std::stable_sort(kept_.begin(), kept_.end(), std::mem_fn(&Kept::ComesBefore));
  isSorted_ = true;
  const Kept wanted{number, page.id, offsetInFile, {}};
  auto found =
      std::lower_bound(kept_.begin(), kept_.end(), wanted, std::mem_fn(&Kept::ComesBefore));
  if (found == kept_.end() || found->number != number) return false;
  if (found->page != page.id || found->offsetInFile != offsetInFile) return false;
  std::vector<LinkPlace> all;
  for (; found != kept_.end() && found->number == number; ++found) all.push_back(found->place);
  if (all.size() != static_cast<std::size_t>(std::max(count, 1))) return false;
  places = std::move(all);
  return true;
}

}  // namespace zvrsit
