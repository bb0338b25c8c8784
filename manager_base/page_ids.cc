#include "manager_base/page_ids.h"

#include <algorithm>

#include "dom/document.h"
#include "dom/html_text.h"
#include "links/text_places.h"
#include "util/hash.h"

namespace zvrsit {
namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

}  // namespace

void PageIds::Note(int number, const Document& document) {
  Forget(number);
  const std::size_t begin = hashes_.size();
  for (const TextRange& id : document.ids()) {
    hashes_.push_back(HashOf(Decode(document.text().substr(id.offset, id.length))));
  }
  const auto first = hashes_.begin() + static_cast<std::ptrdiff_t>(begin);
  std::sort(first, hashes_.end());
  if (std::adjacent_find(first, hashes_.end()) != hashes_.end()) {
    repeated_[number] = RepeatedIn(document, {first, hashes_.end()});
  }
  const std::size_t ids = hashes_.size();
  for (const std::uint32_t index : document.elementsOf(Tag::kA)) {
    const Attribute name = document.element(index).attributes().find(Attr::kName);
    if (name) hashes_.push_back(HashOf(Decode(name.rawValue())));
  }
  if (hashes_.size() > ids) {
    std::sort(hashes_.begin() + static_cast<std::ptrdiff_t>(begin), hashes_.end());
  }
  PageOf(number) = {begin, hashes_.size(), true, false};
}

std::vector<PageIds::Repeated> PageIds::RepeatedIn(const Document& document,
                                                   std::span<const std::uint64_t> hashes) {
  std::unordered_map<std::uint64_t, std::size_t> indexes;  // in `repeated`
  for (std::size_t i = 1; i < hashes.size(); ++i) {
    if (hashes[i] == hashes[i - 1]) indexes.try_emplace(hashes[i], kNone);
  }
  std::vector<Repeated> repeated;
  TextPlaces places(document.text());
  for (const TextRange& range : document.ids()) {
    const std::string_view id = Decode(document.text().substr(range.offset, range.length));
    const auto entry = indexes.find(HashOf(id));
    if (entry == indexes.end()) continue;
    if (entry->second == kNone) {
      entry->second = repeated.size();
      repeated.push_back({std::string(id), {}});
    }
    repeated[entry->second].places.push_back(places.Of(range.offset));
  }
  return repeated;
}

std::string_view PageIds::Decode(std::string_view raw) {
  if (!NeedsDecoding(raw)) return raw;
  scratch_.clear();
  AppendAttributeValue(scratch_, raw);
  return scratch_;
}

void PageIds::NoteAny(int number) {
  Forget(number);
  PageOf(number) = {0, 0, true, true};
}

void PageIds::Forget(int number) {
  Page& page = PageOf(number);
  forgotten_ += page.end - page.begin;
  page = {};
  repeated_.erase(number);
  if (forgotten_ > hashes_.size() / 2) CloseUp();
}

// Takes out the hashes that no page has any more.
void PageIds::CloseUp() {
  std::vector<std::uint64_t> hashes;
  hashes.reserve(hashes_.size() - forgotten_);
  for (Page& page : pages_) {
    const auto first = hashes_.begin();
    const std::size_t begin = hashes.size();
    hashes.insert(hashes.end(), first + static_cast<std::ptrdiff_t>(page.begin),
                  first + static_cast<std::ptrdiff_t>(page.end));
    page.begin = begin;
    page.end = hashes.size();
  }
  hashes_ = std::move(hashes);
  forgotten_ = 0;
}

bool PageIds::IsKnown(int number) const {
  const Page* const page = Find(number);
  return page != nullptr && page->isKnown;
}

std::uint64_t PageIds::HashOf(std::string_view name) {
  return std::max<std::uint64_t>(HashBytes(name), 2);
}

bool PageIds::Has(int number, std::uint64_t hash) const {
  const Page* const page = Find(number);
  if (page == nullptr) return false;
  if (page->hasAny) return true;
  return std::binary_search(hashes_.begin() + static_cast<std::ptrdiff_t>(page->begin),
                            hashes_.begin() + static_cast<std::ptrdiff_t>(page->end), hash);
}

const std::vector<PageIds::Repeated>* PageIds::FindRepeated(int number) const {
  const auto found = repeated_.find(number);
  return found != repeated_.end() ? &found->second : nullptr;
}

PageIds::Page& PageIds::PageOf(int number) {
  const auto index = static_cast<std::size_t>(number);
  if (index >= pages_.size()) pages_.resize(index + 1);
  return pages_[index];
}

const PageIds::Page* PageIds::Find(int number) const {
  const auto index = static_cast<std::size_t>(number);
  return number >= 0 && index < pages_.size() ? &pages_[index] : nullptr;
}

}  // namespace zvrsit
