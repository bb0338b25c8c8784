#include "registration/link_memo.h"

#include <algorithm>

namespace zvrsit {

void TargetMemo::SetBase(std::string_view base, std::string_view root, const SiteLinkDB* links) {
  const SiteVarRecDB* const strings = links != nullptr ? links->strings() : nullptr;
  const std::uint32_t releases = strings != nullptr ? strings->releases() : 0;
  key_.assign(base).append(1, '\0').append(root);
  if (releases != releases_) ++round_;
  releases_ = releases;
  if (key_ == base_) return;
  base_ = key_;
  Clear();
}

void TargetMemo::Clear() {
  ++round_;
  for (auto& targets : targets_) targets.Clear();
}

void TargetMemo::PutText(int text, bool takesName, const UrlID& place) {
  const auto at = static_cast<std::size_t>(text);
  auto& texts = texts_[takesName ? 1 : 0];
  texts.Grow(at + 1);
  texts.slot(at) = {round_, place};
}

void RowsAhead::GoAhead(std::size_t row) {
  passed_ = std::min(row + kRows, end_);
  for (std::size_t i = row; i < passed_; ++i) {
    FoundString& guess = guesses_[i % kRows];
    guess = {SiteVarRecDB::HashOf(rows_[i].target)};
    if (texts_ != nullptr) texts_->FetchFor(guess.hash);
  }
  if (texts_ == nullptr) return;
  for (std::size_t i = row; i < passed_; ++i) {
    FoundString& guess = guesses_[i % kRows];
    guess = texts_->GuessOf(guess.hash);
    if (guess.id >= 0) targets_.FetchText(guess.id);
  }
}

}  // namespace zvrsit
