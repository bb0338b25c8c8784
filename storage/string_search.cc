#include "storage/string_search.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "storage/batch.h"
#include "storage/guarded.h"
#include "storage/site_var_rec_db.h"
#include "util/hash.h"
#include "util/little_endian.h"

namespace zvrsit {

namespace {

// With fewer entries than this the index costs less than the search without it.
constexpr int kManyEntries = 1024;
// After so many passes over the tags the index costs less.
constexpr int kMostPasses = 32;

std::uint64_t WordAt(std::string_view text, std::size_t at) {
  std::uint64_t word;
  std::memcpy(&word, text.data() + at, sizeof word);
  return word;
}

// A quick hash: of the length and of the words in the middle and at the end. Never 0.
std::uint16_t TagOf(std::string_view text) {
  const std::size_t size = text.size();
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  const std::uint64_t hash =
      size < kWord ? HashBytes(text)
                   : HashWords(WordAt(text, size - kWord), WordAt(text, (size - kWord) / 2) + size);
  return static_cast<std::uint16_t>(std::max<std::uint64_t>(hash >> 48, 1));
}

}  // namespace

void StringSearch::Start() {
  indexMade_ = !file_.inMemory;
  if (indexMade_) names_.Reserve(static_cast<std::size_t>(file_.MostEntries()));
  passesLeft_ = file_.inMemory && file_.MostEntries() >= kManyEntries ? kMostPasses : 0;
  if (passesLeft_ > 0) tags_.Reset(file_.offsets_.size());
}

void StringSearch::Note(int id, int offset, std::string_view text) {
  assert(wantsStrings());
  if (indexMade_) {
    Enter(text, SiteVarRecDB::HashOf(text), id, offset);
  } else {
    tags_.slot(static_cast<std::size_t>(id)) = TagOf(text);
  }
}

void StringSearch::Forget() {
  names_.Clear();
  copies_.clear();
  ForgetAsked();
  indexMade_ = false;
}

void StringSearch::ForgetAsked() {
  asked_.Clear();
  released_.clear();
  tags_.Reset(0);
  passesLeft_ = 0;
}

FoundString StringSearch::Find(std::string_view text, const FoundString& guess) {
  if (guess.id >= 0 && file_.IsEntryOf(guess.id, guess.offset) && HasText(guess.offset, text)) {
    return guess;
  }
  if (MakeKnown(text, guess.hash) < 0) return {guess.hash, -1, -1};
  const Name* const name = FindName(text, guess.hash);
  return name == nullptr ? FoundString{guess.hash}
                         : FoundString{guess.hash, name->id, name->offset};
}

FoundString StringSearch::GuessOf(std::uint32_t hash) const {
  const Name* const name = names_.Guess(hash);
  const char* const entry =
      name == nullptr ? nullptr : file_.Bytes(name->offset, SiteVarRecDB::kHeadSize);
  if (entry == nullptr) return {hash};
  PrefetchMemory(entry);
  return {hash, name->id, name->offset};
}

int StringSearch::MakeKnown(std::string_view text, std::uint32_t hash) {
  if (IsKnown(text, hash)) return 0;
  return passesLeft_ == 0 ? MakeIndex() : AskFor({&text, 1});
}

int StringSearch::MakeIndex() {
  if (indexMade_) return 0;
  const int result = Guarded([&] { return EnterAll(); });
  if (result < 0) {
    Forget();
  } else {
    ForgetAsked();
    indexMade_ = true;
  }
  return result;
}

int StringSearch::EnterAll() {
  names_.Reserve(static_cast<std::size_t>(file_.MostEntries()));
  auto batch = MakeBatch<NewName>(
      [this](const NewName& name) { Enter(name.text, name.hash, name.id, name.offset); });
  const int result = file_.ForEachString([&](int id, int offset, std::string_view text) {
    const std::uint32_t hash = SiteVarRecDB::HashOf(text);
    if (!IsKnown(text, hash)) batch.Add(names_.Home(hash), {hash, id, offset, text});
  });
  batch.Finish();
  TakeReleasedOut(
      [this](std::string_view text, std::uint32_t hash) { return !IsKnown(text, hash); });
  return result;
}

int StringSearch::AskFor(std::span<const std::string_view> texts) {
  if (passesLeft_ == 0) return 0;
  const int result = Guarded([&] {
    EnterTagged(texts);
    return 0;
  });
  if (result < 0) Forget();
  return result;
}

// Enters the strings that are equal to these texts into the index.
void StringSearch::EnterTagged(std::span<const std::string_view> texts) {
  assert(file_.inMemory && passesLeft_ > 0);
  ProbeTable<Wanted> wanted;
  TagSet wantedTags;
  const auto isWanted = [&wanted](std::string_view text, std::uint32_t hash) {
    return wanted.Find(hash, [text](const Wanted& each) { return each.text == text; }) != nullptr;
  };
  for (const std::string_view text : texts) {
    const std::uint32_t hash = SiteVarRecDB::HashOf(text);
    if (IsKnown(text, hash) || isWanted(text, hash)) continue;
    wantedTags.set(TagOf(text));
    wanted.Insert(hash, {0, text});
  }
  if (wanted.empty()) return;
  --passesLeft_;
  for (const std::int32_t offset : OffsetsOf(wantedTags)) {
    SiteVarRecDB::Head head;
    if (file_.ReadHead(offset, head) < 0 || !file_.IsAcceptable(head.id)) continue;
    const std::string_view text = file_.TextAt(offset, head.length);
    const std::uint32_t hash = SiteVarRecDB::HashOf(text);
    if (isWanted(text, hash)) Enter(text, hash, head.id, offset);
  }
  TakeReleasedOut(isWanted);
  wanted.ForEach([this](const Wanted& each) { asked_.Insert(each.text, each.hash, {}); });
}

// Where the live entries with these tags lie, in the order of the file. Few entries have a given
// tag, so several texts are searched for in one pass.
std::vector<std::int32_t> StringSearch::OffsetsOf(const TagSet& wanted) const {
  using Tags = IdTable<std::uint16_t>;
  constexpr std::size_t kAtOnce = 8;
  static_assert(Tags::kPiece % kAtOnce == 0);
  std::vector<std::int32_t> offsets;
  tags_.ForEachPiece([&](std::size_t first, std::span<const std::uint16_t, Tags::kPiece> tags) {
    for (std::size_t at = 0; at < tags.size(); at += kAtOnce) {
      bool isAny = false;
      for (std::size_t i = at; i < at + kAtOnce; ++i) isAny |= wanted[tags[i]];
      for (std::size_t i = at; isAny && i < at + kAtOnce; ++i) {
        const std::int32_t offset = wanted[tags[i]] ? file_.offsets_.at(first + i) : 0;
        if (offset > 0) offsets.push_back(offset);
      }
    }
  });
  std::sort(offsets.begin(), offsets.end());
  return offsets;
}

StringSearch::Name* StringSearch::FindName(std::string_view text, std::uint32_t hash) {
  return names_.Find(hash, [this, text](const Name& name) { return HasText(name.offset, text); });
}

// Whether that is the text of the entry at `offset`, which is in `names_`.
bool StringSearch::HasText(int offset, std::string_view text) {
  if (!file_.inMemory) {
    const auto copy = copies_.find(offset);
    return copy != copies_.end() && copy->second == text;
  }
  const std::int64_t length = static_cast<std::int64_t>(text.size()) + 1;
  const char* const entry = file_.Bytes(offset, SiteVarRecDB::kHeadSize + length);
  return entry != nullptr && LoadLE32(entry + SiteVarRecDB::kLengthAt) == length &&
         std::memcmp(entry + SiteVarRecDB::kHeadSize, text.data(), text.size()) == 0;
}

void StringSearch::MakeRoom(std::string_view text, int offset) {
  names_.Reserve(names_.size() + 1);
  if (!file_.inMemory) copies_[offset] = text;
}

void StringSearch::Enter(std::string_view text, std::uint32_t hash, int id, int offset) {
  if (Name* const known = FindName(text, hash)) {
    known->id = id;
  } else {
    EnterNew(text, hash, id, offset);
  }
}

void StringSearch::EnterNew(std::string_view text, std::uint32_t hash, int id, int offset) {
  if (!file_.inMemory) copies_[offset] = text;
  names_.Insert(hash, {0, id, offset});
}

int StringSearch::Release(std::string_view text, int offset) {
  const std::uint32_t hash = SiteVarRecDB::HashOf(text);
  if (IsKnown(text, hash)) {
    TakeOut(text, hash);
    return 0;
  }
  return Guarded([&] {
    released_.push_back(offset);
    return 0;
  });
}

template <class IsWanted>
void StringSearch::TakeReleasedOut(IsWanted isWanted) {
  for (const std::int32_t offset : released_) {
    SiteVarRecDB::Head head;
    if (file_.ReadHead(offset, head) < 0) continue;
    const std::string_view text = file_.TextAt(offset, head.length);
    const std::uint32_t hash = SiteVarRecDB::HashOf(text);
    if (isWanted(text, hash)) TakeOut(text, hash);
  }
}

void StringSearch::TakeOut(std::string_view text, std::uint32_t hash) {
  Name* const name = FindName(text, hash);
  if (name == nullptr) return;
  copies_.erase(name->offset);
  names_.Erase(name);
}

}  // namespace zvrsit
