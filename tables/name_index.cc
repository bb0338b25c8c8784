#include "tables/name_index.h"

#include <utility>

#include "util/hash.h"

namespace zvrsit {

namespace {

std::uint32_t HashName(std::string_view text) {
  return static_cast<std::uint32_t>(HashBytes(text));
}

}  // namespace

auto NameIndex::HasText(std::string_view text) const {
  return [this, text](const Name& name) {
    return name.length == text.size() && texts_.compare(name.offset, name.length, text) == 0;
  };
}

int NameIndex::Find(std::string_view text) const {
  const Name* name = names_.Find(HashName(text), HasText(text));
  return name == nullptr || name->number < 0 ? -1 : name->number;
}

void NameIndex::Put(std::string_view text, int number) {
  const std::uint32_t hash = HashName(text);
  if (Name* known = names_.Find(hash, HasText(text))) {
    known->number = number;
    return;
  }
  names_.Insert(hash, {0, number, texts_.size(), text.size()});
  texts_.append(text);
}

void NameIndex::Remove(std::string_view text) {
  Name* name = names_.Find(HashName(text), HasText(text));
  if (name == nullptr) return;
  removed_ += name->length;
  names_.Erase(name);
  if (removed_ > kKeptBytes && removed_ > texts_.size() / 2) DropRemovedTexts();
}

void NameIndex::Clear() {
  names_.Clear();
  texts_.clear();
  removed_ = 0;
}

void NameIndex::DropRemovedTexts() {
  std::string kept;
  kept.reserve(texts_.size() - removed_);
  names_.ForEach([this, &kept](Name& name) {
    const std::size_t offset = kept.size();
    kept.append(texts_, name.offset, name.length);
    name.offset = offset;
  });
  texts_ = std::move(kept);
  removed_ = 0;
}

}  // namespace zvrsit
