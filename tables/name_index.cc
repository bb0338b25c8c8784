#include "tables/name_index.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "storage/guarded.h"

namespace zvrsit {

namespace {

bool LiesIn(std::string_view whole, std::string_view text) {
  const std::less_equal<const char*> before;
  return before(whole.data(), text.data()) &&
         before(text.data() + text.size(), whole.data() + whole.size());
}

}  // namespace

NameIndex::NameIndex(const SiteVarRecDB& store, int count)
    : store_(store.isInMemory() ? &store : nullptr) {
  names_.Reserve(static_cast<std::size_t>(count));
}

std::string_view NameIndex::Texts() const {
  if (store_ != nullptr) return store_->WholeFile();
  if (closed_.isHeld()) return closed_.view();
  return texts_;
}

auto NameIndex::HasText(std::string_view text) const {
  return [texts = Texts(), text](const Name& name) {
    return name.length == text.size() && name.offset <= texts.size() &&
           texts.substr(name.offset, name.length) == text;
  };
}

int NameIndex::Find(std::string_view text) const {
  const Name* name = names_.Find(SiteVarRecDB::HashOf(text), HasText(text));
  return name == nullptr || name->number < 0 ? -1 : name->number;
}

void NameIndex::Put(std::string_view text, int number) {
  Put(text, number, SiteVarRecDB::HashOf(text));
}

void NameIndex::Put(std::string_view text, int number, std::uint32_t hash) {
  if (Name* known = names_.Find(hash, HasText(text))) {
    known->number = number;
    return;
  }
  const std::uint32_t offset = Place(text);
  names_.Insert(hash, {0, number, offset, static_cast<std::uint32_t>(text.size())});
}

// Where a text lies that is to be entered.
std::uint32_t NameIndex::Place(std::string_view text) {
  const std::string_view whole = Texts();
  if (store_ != nullptr && LiesIn(whole, text)) {
    return static_cast<std::uint32_t>(text.data() - whole.data());
  }
  CopyNames();
  texts_.append(text);
  return static_cast<std::uint32_t>(texts_.size() - text.size());
}

void NameIndex::Remove(std::string_view text) {
  Name* name = names_.Find(SiteVarRecDB::HashOf(text), HasText(text));
  if (name == nullptr) return;
  const std::size_t length = name->length;
  names_.Erase(name);
  if (Texts().data() != texts_.data()) return;
  removed_ += length;
  if (removed_ <= kKeptBytes || removed_ <= texts_.size() / 2) return;
  Guarded([&] {  // without memory they stay
    Rewrite();
    return 0;
  });
}

void NameIndex::MakeRoom(std::size_t length) {
  names_.Reserve(names_.size() + 1);
  if (Texts().data() == texts_.data()) GrowTexts(length);
}

// Makes room for a text of that length behind the others, in linear time for many.
void NameIndex::GrowTexts(std::size_t length) {
  const std::size_t wanted = texts_.size() + length;
  if (wanted > texts_.capacity()) texts_.reserve(std::max(wanted, texts_.size() * 2));
}

void NameIndex::CopyNames() {
  if (Texts().data() != texts_.data()) Rewrite();
}

void NameIndex::Keep(FileImage bytes) {
  if (store_ == nullptr) return;
  store_ = nullptr;
  closed_ = std::move(bytes);
}

// Copies the texts of all names, and no others, from where they lie.
void NameIndex::Rewrite() {
  const std::string_view texts = Texts();
  std::size_t length = 0;
  names_.ForEach([&length](const Name& name) { length += name.length; });
  std::string copied;
  copied.reserve(length);
  names_.ForEach([&](Name& name) {
    const std::size_t offset = copied.size();
    if (name.offset <= texts.size()) copied.append(texts.substr(name.offset, name.length));
    name.offset = static_cast<std::uint32_t>(offset);
  });
  texts_ = std::move(copied);
  store_ = nullptr;
  closed_ = {};
  removed_ = 0;
}

}  // namespace zvrsit
