#include "manager_base/page_ids.h"

#include <algorithm>

#include "dom/document.h"
#include "dom/html_text.h"
#include "util/hash.h"

namespace zvrsit {

void PageIds::Note(int number, const Document& document) {
  const std::size_t begin = hashes_.size();
  const auto hashOf = [&](std::string_view raw) {
    if (!NeedsDecoding(raw)) return HashBytes(raw);
    scratch_.clear();
    AppendAttributeValue(scratch_, raw);
    return HashBytes(scratch_);
  };
  for (const TextRange& id : document.ids()) {
    hashes_.push_back(hashOf(document.text().substr(id.offset, id.length)));
  }
  const auto first = hashes_.begin() + static_cast<std::ptrdiff_t>(begin);
  std::sort(first, hashes_.end());
  const bool repeats = std::adjacent_find(first, hashes_.end()) != hashes_.end();
  const std::size_t ids = hashes_.size();
  for (const std::uint32_t index : document.elementsOf(Tag::kA)) {
    const Attribute name = document.element(index).attributes().find(Attr::kName);
    if (name) hashes_.push_back(hashOf(name.rawValue()));
  }
  if (hashes_.size() > ids) {
    std::sort(hashes_.begin() + static_cast<std::ptrdiff_t>(begin), hashes_.end());
  }
  PageOf(number) = {begin, hashes_.size(), true, false, repeats};
}

void PageIds::NoteAny(int number) {
  PageOf(number) = {0, 0, true, true, false};
}

void PageIds::ForgetAll() {
  pages_.clear();
  hashes_.clear();
}

void PageIds::Forget(int number) {
  PageOf(number) = {};
}

bool PageIds::IsKnown(int number) const {
  const Page* const page = Find(number);
  return page != nullptr && page->isKnown;
}

bool PageIds::Has(int number, std::string_view name) const {
  const Page* const page = Find(number);
  if (page == nullptr) return false;
  if (page->hasAny) return true;
  return std::binary_search(hashes_.begin() + static_cast<std::ptrdiff_t>(page->begin),
                            hashes_.begin() + static_cast<std::ptrdiff_t>(page->end),
                            HashBytes(name));
}

bool PageIds::MayRepeat(int number) const {
  const Page* const page = Find(number);
  return page != nullptr && page->repeats;
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
