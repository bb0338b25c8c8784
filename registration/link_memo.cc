#include "registration/link_memo.h"

#include <algorithm>

#include "util/hash.h"

namespace zvrsit {

void TargetMemo::TurnTo(std::string_view base, std::string_view root, const SiteLinkDB* links) {
  const SiteVarRecDB* const strings = links != nullptr ? links->strings() : nullptr;
  const std::uint32_t releases = strings != nullptr ? strings->releases() : 0;
  key_.assign(base).append(1, '\0').append(root);
  if (releases != releases_) ++turn_;
  releases_ = releases;
  if (key_ == base_) return;
  base_ = key_;
  Clear();
}

void TargetMemo::Clear() {
  ++turn_;
  entries_.Clear();
  bytes_.clear();
}

std::uint32_t TargetMemo::HashOf(std::string_view target, bool variant) {
  return static_cast<std::uint32_t>(HashWords(HashBytes(target), variant ? 1 : 0));
}

const UrlID* TargetMemo::Find(std::string_view target, bool variant) const {
  const Entry* const entry = entries_.Find(HashOf(target, variant), [&](const Entry& known) {
    return known.variant == variant &&
           std::string_view(bytes_).substr(known.offset, known.length) == target;
  });
  return entry == nullptr ? nullptr : &entry->place;
}

void TargetMemo::Put(std::string_view target, bool variant, const UrlID& place) {
  if (bytes_.size() + target.size() > UINT32_MAX) return;
  entries_.Insert(HashOf(target, variant),
                  {0, static_cast<std::uint32_t>(bytes_.size()),
                   static_cast<std::uint32_t>(target.size()), variant, place});
  bytes_.append(target);
}

void TargetMemo::PutText(int text, bool variant, const UrlID& place) {
  const auto at = static_cast<std::size_t>(text);
  auto& texts = texts_[variant ? 1 : 0];
  texts.Grow(at + 1);
  texts.slot(at) = {turn_, place};
}

void RowsAhead::GoAhead(std::size_t row) {
  passed_ = std::min(row + kRows, end_);
  for (std::size_t i = row; i < passed_; ++i) {
    FoundString& expected = expected_[i % kRows];
    expected = {SiteVarRecDB::HashOf(rows_[i].target)};
    if (texts_ != nullptr) texts_->FetchFor(expected.hash);
  }
  if (texts_ == nullptr) return;
  for (std::size_t i = row; i < passed_; ++i) {
    FoundString& expected = expected_[i % kRows];
    expected = texts_->GuessOf(expected.hash);
    if (expected.id >= 0) targets_.ExpectText(expected.id);
  }
}

}  // namespace zvrsit
