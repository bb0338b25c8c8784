#include "links/link_memo.h"

#include "util/hash.h"

namespace zvrsit {

void TargetMemo::TurnTo(std::string_view base, std::string_view root) {
  key_.assign(base).append(1, '\0').append(root);
  const auto next = static_cast<std::uint32_t>(bases_.size() * 2);
  base_ = bases_.try_emplace(key_, next).first->second;
}

std::uint32_t TargetMemo::HashOf(std::string_view target, std::uint32_t base) const {
  return static_cast<std::uint32_t>(HashWords(HashBytes(target), base));
}

const UrlID* TargetMemo::Find(std::string_view target, bool variant) const {
  const std::uint32_t base = base_ + (variant ? 1 : 0);
  const Entry* const entry = entries_.Find(HashOf(target, base), [&](const Entry& known) {
    return known.base == base &&
           std::string_view(texts_).substr(known.offset, known.length) == target;
  });
  return entry == nullptr ? nullptr : &entry->place;
}

void TargetMemo::Put(std::string_view target, bool variant, const UrlID& place) {
  if (texts_.size() + target.size() > UINT32_MAX) return;
  const std::uint32_t base = base_ + (variant ? 1 : 0);
  entries_.Insert(HashOf(target, base), {0, base, static_cast<std::uint32_t>(texts_.size()),
                                         static_cast<std::uint32_t>(target.size()), place});
  texts_.append(target);
}

const TargetMemo::Written* TargetMemo::FindWritten(std::string_view target, bool variant,
                                                   const SiteLinkDB& links) const {
  const std::uint32_t base = base_ + (variant ? 1 : 0);
  const WrittenEntry* const entry =
      written_.Find(HashOf(target, base), [&](const WrittenEntry& known) {
        return known.base == base && links.TextView(known.written.text) == target;
      });
  return entry == nullptr ? nullptr : &entry->written;
}

void TargetMemo::PutWritten(std::string_view target, bool variant, const Written& written) {
  const std::uint32_t base = base_ + (variant ? 1 : 0);
  written_.Insert(HashOf(target, base), {0, base, written});
}

}  // namespace zvrsit
