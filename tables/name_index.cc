#include "tables/name_index.h"

#include <algorithm>
#include <cassert>
#include <functional>
#include <utility>

#include "storage/guarded.h"

namespace zvrsit {

namespace {

// So many bytes of copies may lie there unused.
constexpr std::size_t kUnusedBytes = 4096;

bool LiesIn(std::string_view whole, std::string_view text) {
  const std::less_equal<const char*> before;
  return before(whole.data(), text.data()) &&
         before(text.data() + text.size(), whole.data() + whole.size());
}

}  // namespace

std::string_view NameTexts::view() const {
  if (store_ != nullptr) return store_->WholeFile();
  return closed_.isHeld() ? closed_.view() : copies_;
}

bool NameTexts::HoldsStored(std::string_view text) const {
  return store_ != nullptr && LiesIn(view(), text);
}

std::size_t NameTexts::Place(std::string_view text) {
  assert(areCopies() || HoldsStored(text));
  if (store_ != nullptr) return static_cast<std::size_t>(text.data() - view().data());
  copies_.append(text);
  return copies_.size() - text.size();
}

void NameTexts::MakeRoom(std::size_t length) {
  const std::size_t wanted = copies_.size() + length;
  if (wanted > copies_.capacity()) copies_.reserve(std::max(wanted, copies_.size() * 2));
}

void NameTexts::TakeCopies(std::string copies) {
  copies_ = std::move(copies);
  store_ = nullptr;
  closed_.Drop();
}

void NameTexts::Keep(FileImage bytes) {
  if (store_ == nullptr) return;
  store_ = nullptr;
  closed_ = std::move(bytes);
}

NameIndex::NameIndex(const SiteVarRecDB& store, int count)
    : names_(NameTexts(store.isInMemory() ? &store : nullptr)) {
  names_.Reserve(static_cast<std::size_t>(count));
}

int NameIndex::Find(std::string_view text) const {
  const std::int32_t* const number = names_.Find(text, SiteVarRecDB::HashOf(text));
  return number == nullptr || *number < 0 ? -1 : *number;
}

void NameIndex::Put(std::string_view text, int number) {
  Put(text, number, SiteVarRecDB::HashOf(text));
}

void NameIndex::Put(std::string_view text, int number, std::uint32_t hash) {
  if (std::int32_t* const known = names_.Find(text, hash)) {
    *known = number;
    return;
  }
  if (!names_.texts().HoldsStored(text)) CopyNames();
  names_.Insert(text, hash, number);
}

void NameIndex::Remove(std::string_view text) {
  if (!names_.Remove(text, SiteVarRecDB::HashOf(text)) || !names_.texts().areCopies()) return;
  removed_ += text.size();
  if (removed_ <= kUnusedBytes || removed_ <= names_.texts().view().size() / 2) return;
  Guarded([&] {  // without memory they stay
    CopyAnew();
    return 0;
  });
}

void NameIndex::Clear() {
  names_.Clear();
  removed_ = 0;
}

void NameIndex::MakeRoom(std::size_t length) {
  names_.Reserve(names_.size() + 1);
  if (names_.texts().areCopies()) names_.texts().MakeRoom(length);
}

void NameIndex::CopyNames() {
  if (!names_.texts().areCopies()) CopyAnew();
}

void NameIndex::CopyAnew() {
  names_.texts().TakeCopies(names_.Move());
  removed_ = 0;
}

}  // namespace zvrsit
