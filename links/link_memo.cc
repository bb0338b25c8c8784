#include "links/link_memo.h"

#include <algorithm>

#include "util/hash.h"

namespace zvrsit {

void TargetMemo::TurnTo(std::string_view base, std::string_view root, const SiteLinkDB* links) {
  key_.assign(base).append(1, '\0').append(root);
  const auto next = static_cast<std::uint32_t>(bases_.size() * 2);
  base_ = bases_.try_emplace(key_, next).first->second;
  const SiteVarRecDB* const strings = links != nullptr ? links->strings() : nullptr;
  if (strings == nullptr || strings->releases() == releases_) return;
  releases_ = strings->releases();
  texts_.Clear();
}

std::uint32_t TargetMemo::HashOf(std::string_view target, std::uint32_t base) {
  return static_cast<std::uint32_t>(HashWords(HashBytes(target), base));
}

std::uint32_t TargetMemo::HashOf(int text, std::uint32_t base) {
  return static_cast<std::uint32_t>(HashWords(static_cast<std::uint32_t>(text), base));
}

const UrlID* TargetMemo::Find(std::string_view target, bool variant) const {
  const std::uint32_t base = base_ + (variant ? 1 : 0);
  const Entry* const entry = entries_.Find(HashOf(target, base), [&](const Entry& known) {
    return known.base == base &&
           std::string_view(bytes_).substr(known.offset, known.length) == target;
  });
  return entry == nullptr ? nullptr : &entry->place;
}

void TargetMemo::Put(std::string_view target, bool variant, const UrlID& place) {
  if (bytes_.size() + target.size() > UINT32_MAX) return;
  const std::uint32_t base = base_ + (variant ? 1 : 0);
  entries_.Insert(HashOf(target, base), {0, base, static_cast<std::uint32_t>(bytes_.size()),
                                         static_cast<std::uint32_t>(target.size()), place});
  bytes_.append(target);
}

const UrlID* TargetMemo::FindText(int text, bool variant) const {
  const std::uint32_t base = base_ + (variant ? 1 : 0);
  const TextEntry* const entry = texts_.Find(HashOf(text, base), [&](const TextEntry& known) {
    return known.base == base && known.text == text;
  });
  return entry == nullptr ? nullptr : &entry->place;
}

void TargetMemo::PutText(int text, bool variant, const UrlID& place) {
  const std::uint32_t base = base_ + (variant ? 1 : 0);
  texts_.Insert(HashOf(text, base), {0, base, text, place});
}

std::uint32_t RowsAhead::HashOf(std::size_t row) {
  for (; hashed_ < std::min(row + kHashAhead, end_); ++hashed_) {
    const std::uint32_t hash = SiteVarRecDB::HashOf(rows_[hashed_].target);
    hashes_[hashed_ % hashes_.size()] = hash;
    if (texts_ != nullptr) texts_->ExpectHash(hash);
  }
  for (; texts_ != nullptr && expected_ < std::min(row + kTextAhead, hashed_); ++expected_) {
    const int text = texts_->ExpectString(hashes_[expected_ % hashes_.size()]);
    if (text >= 0) targets_.ExpectText(text);
  }
  return hashes_[row % hashes_.size()];
}

}  // namespace zvrsit
