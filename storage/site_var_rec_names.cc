// Strings by their texts: the index over them, and what is done before it is made.
#include <algorithm>
#include <cstring>

#include "storage/batch.h"
#include "storage/guarded.h"
#include "storage/site_var_rec_db.h"
#include "util/hash.h"
#include "util/little_endian.h"

namespace zvrsit {

namespace {

// In a smaller file the index costs less than what is done without it.
constexpr int kManyEntries = 1024;
// After so many passes over the tags the index pays.
constexpr int kMostPasses = 32;

std::uint64_t WordAt(std::string_view text, std::size_t at) {
  std::uint64_t word;
  std::memcpy(&word, text.data() + at, sizeof word);
  return word;
}

// A hash in less time: of the length and the words in the middle and at the end. Never 0.
std::uint16_t TagOf(std::string_view text) {
  const std::size_t size = text.size();
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  const std::uint64_t hash =
      size < kWord ? HashBytes(text)
                   : HashWords(WordAt(text, size - kWord), WordAt(text, (size - kWord) / 2) + size);
  return static_cast<std::uint16_t>(std::max<std::uint64_t>(hash >> 48, 1));
}

}  // namespace

std::uint32_t SiteVarRecDB::HashOf(std::string_view text) {
  return static_cast<std::uint32_t>(HashBytes(text));
}

void SiteVarRecDB::ForgetNames() {
  names_.Clear();
  copies_.clear();
  ForgetSought();
  namesMade_ = false;
}

void SiteVarRecDB::ForgetSought() {
  sought_.Clear();
  soughtTexts_.clear();
  unnamed_.clear();
  tags_.Reset(0);
  passesLeft_ = 0;
}

// Starts the tags, in direct mode the index, for strings that are told by NoteString.
void SiteVarRecDB::StartNames() {
  namesMade_ = !inMemory;
  if (namesMade_) names_.Reserve(static_cast<std::size_t>(MostEntries()));
  passesLeft_ = inMemory && MostEntries() >= kManyEntries ? kMostPasses : 0;
  if (passesLeft_ > 0) tags_.Reset(offsets_.size());
}

// 0, or -1 where the string cannot be read.
int SiteVarRecDB::NoteString(int offset, const Head& head) {
  if ((passesLeft_ == 0 && !namesMade_) || head.kind != kString || head.length < 1) return 0;
  const std::string_view data = DataAt(offset, head.length, scratch_);
  if (data.empty()) return -1;
  const std::string_view text = TextOf(data);
  if (namesMade_) {
    EnterName(text, HashOf(text), head.id, offset);
  } else {
    tags_.slot(static_cast<std::size_t>(head.id)) = TagOf(text);
  }
  return 0;
}

// Calls visit(offset, id, text) for each string, until one gives -1.
template <class Visit>
int SiteVarRecDB::ForEachString(Visit visit) {
  return ForEachEntry([&](int offset, const Head& head) {
    if (!IsAcceptable(head.id) || head.kind != kString || head.length < 1) return 0;
    const std::string_view data = DataAt(offset, head.length, scratch_);
    if (data.empty()) return -1;
    visit(offset, head.id, TextOf(data));
    return 0;
  });
}

int SiteVarRecDB::MakeStringIndex() {
  if (namesMade_) return 0;
  const int result = Guarded([&] { return EnterAllStrings(); });
  if (result < 0) {
    ForgetNames();
  } else {
    ForgetSought();
    namesMade_ = true;
  }
  return result;
}

int SiteVarRecDB::EnterAllStrings() {
  names_.Reserve(static_cast<std::size_t>(MostEntries()));
  const auto enter = [this](const FoundText& found) {
    EnterName(found.text, found.hash, found.id, found.offset);
  };
  auto batch = MakeBatch<FoundText>(enter);
  const int result = ForEachString([&](int offset, int id, std::string_view text) {
    const std::uint32_t hash = HashOf(text);
    if (!IsKnown(text, hash)) batch.Add(names_.Home(hash), {hash, id, offset, text});
  });
  batch.Finish();
  UnnameReleased(
      [this](std::string_view text, std::uint32_t hash) { return !IsKnown(text, hash); });
  return result;
}

// What was released takes its text out of the index, whoever else has it.
template <class IsWanted>
void SiteVarRecDB::UnnameReleased(IsWanted isWanted) {
  for (const std::int32_t offset : unnamed_) {
    Head head;
    if (ReadHead(offset, head) < 0) continue;
    const std::string_view text = TextOf(DataAt(offset, head.length, scratch_));
    const std::uint32_t hash = HashOf(text);
    if (isWanted(text, hash)) Unname(text, hash);
  }
}

void SiteVarRecDB::LookAhead(std::span<const std::string_view> texts) {
  if (isOpen() && passesLeft_ > 0) GoOverTagsFor(texts);
}

int SiteVarRecDB::MakeKnown(std::string_view text, std::uint32_t hash) {
  if (IsKnown(text, hash)) return 0;
  return passesLeft_ == 0 ? MakeStringIndex() : GoOverTagsFor({&text, 1});
}

bool SiteVarRecDB::WasSought(std::string_view text, std::uint32_t hash) const {
  const Sought* const found = sought_.Find(hash, [this, text](const Sought& sought) {
    return std::string_view(soughtTexts_).substr(sought.offset, sought.length) == text;
  });
  return found != nullptr;
}

int SiteVarRecDB::GoOverTagsFor(std::span<const std::string_view> texts) {
  const auto go = [&] {
    EnterTagged(texts);
    return 0;
  };
  const int result = Guarded(go);
  if (result < 0) ForgetNames();
  return result;
}

// Enters the strings that are equal to these texts into the index.
void SiteVarRecDB::EnterTagged(std::span<const std::string_view> texts) {
  ProbeTable<Wanted> wanted;
  TagSet wantedTags;
  const auto isWanted = [&wanted](std::string_view text, std::uint32_t hash) {
    return wanted.Find(hash, [text](const Wanted& each) { return each.text == text; }) != nullptr;
  };
  for (const std::string_view text : texts) {
    const std::uint32_t hash = HashOf(text);
    if (IsKnown(text, hash) || isWanted(text, hash)) continue;
    wantedTags.set(TagOf(text));
    wanted.Insert(hash, {0, text});
  }
  if (wanted.empty()) return;
  --passesLeft_;
  for (const std::int32_t offset : OffsetsOf(wantedTags)) {
    Head head;
    if (ReadHead(offset, head) < 0 || !IsAcceptable(head.id)) continue;
    const std::string_view text = TextOf(DataAt(offset, head.length, scratch_));
    const std::uint32_t hash = HashOf(text);
    if (isWanted(text, hash)) EnterName(text, hash, head.id, offset);
  }
  UnnameReleased(isWanted);
  wanted.ForEach([this](const Wanted& each) {
    sought_.Insert(each.hash, {0, soughtTexts_.size(), each.text.size()});
    soughtTexts_.append(each.text);
  });
}

// Where the live entries with these tags lie, in the order of the file. Few have one of them, so
// several are asked at once.
std::vector<std::int32_t> SiteVarRecDB::OffsetsOf(const TagSet& wanted) const {
  using Tags = IdTable<std::uint16_t>;
  constexpr std::size_t kAtOnce = 8;
  static_assert(Tags::kPiece % kAtOnce == 0);
  std::vector<std::int32_t> offsets;
  tags_.ForEachPiece([&](std::size_t first, std::span<const std::uint16_t, Tags::kPiece> tags) {
    for (std::size_t at = 0; at < tags.size(); at += kAtOnce) {
      bool isAny = false;
      for (std::size_t i = at; i < at + kAtOnce; ++i) isAny |= wanted[tags[i]];
      for (std::size_t i = at; isAny && i < at + kAtOnce; ++i) {
        const std::int32_t offset = wanted[tags[i]] ? offsets_.at(first + i) : 0;
        if (offset > 0) offsets.push_back(offset);
      }
    }
  });
  std::sort(offsets.begin(), offsets.end());
  return offsets;
}

void SiteVarRecDB::AddName(std::string_view text, std::uint32_t hash, int id, int offset) {
  if (!inMemory) copies_[offset] = text;
  names_.Insert(hash, {0, id, offset});
}

// An equal text that is there already gets the new number: of two, the later entry is found.
void SiteVarRecDB::EnterName(std::string_view text, std::uint32_t hash, int id, int offset) {
  if (Name* known = FindName(text, hash)) {
    known->id = id;
  } else {
    AddName(text, hash, id, offset);
  }
}

SiteVarRecDB::Name* SiteVarRecDB::FindName(std::string_view text, std::uint32_t hash) {
  return names_.Find(hash, [this, text](const Name& name) { return HasText(name.offset, text); });
}

// Whether that is the text of the entry at `offset`, which is in the index.
bool SiteVarRecDB::HasText(int offset, std::string_view text) {
  if (!inMemory) return copies_[offset] == text;
  const char* head = Bytes(offset, kHeadSize + static_cast<std::int64_t>(text.size()) + 1);
  return head != nullptr &&
         LoadLE32(head + kLengthAt) == static_cast<std::int64_t>(text.size()) + 1 &&
         std::memcmp(head + kHeadSize, text.data(), text.size()) == 0;
}

SiteVarRecDB::Search SiteVarRecDB::Look(std::string_view text, const Search& expected) {
  if (expected.id >= 0 && IsEntryOf(expected.id, expected.offset) &&
      HasText(expected.offset, text)) {
    return expected;
  }
  if (!isOpen() || MakeKnown(text, expected.hash) < 0) return {expected.hash, -1, -1};
  const Name* const name = FindName(text, expected.hash);
  return name == nullptr ? Search{expected.hash} : Search{expected.hash, name->id, name->offset};
}

SiteVarRecDB::Search SiteVarRecDB::ExpectString(std::uint32_t hash) const {
  const Name* const name = names_.Guess(hash);
  const char* const entry = name == nullptr ? nullptr : Bytes(name->offset, kHeadSize);
  if (entry == nullptr) return {hash};
  PrefetchMemory(entry);
  return {hash, name->id, name->offset};
}

int SiteVarRecDB::FindString(std::string_view text) {
  return Look(text).id;
}

int SiteVarRecDB::Unname(int offset, int length) {
  const std::string_view data = DataAt(offset, length, scratch_);
  if (data.empty()) return -1;
  const std::string_view text = TextOf(data);
  const std::uint32_t hash = HashOf(text);
  if (IsKnown(text, hash)) {
    Unname(text, hash);
    return 0;
  }
  return Guarded([&] {
    unnamed_.push_back(offset);
    return 0;
  });
}

void SiteVarRecDB::Unname(std::string_view text, std::uint32_t hash) {
  Name* const name = FindName(text, hash);
  if (name == nullptr) return;
  copies_.erase(name->offset);
  names_.Erase(name);
}

}  // namespace zvrsit
