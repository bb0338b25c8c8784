#include "storage/site_var_rec_db.h"

#include <algorithm>
#include <bitset>
#include <cstring>
#include <functional>
#include <limits>
#include <utility>

#include "storage/pack_file.h"
#include "storage/probe_batch.h"
#include "util/hash.h"
#include "util/little_endian.h"

namespace zvrsit {

namespace {

constexpr int kIdCountAt = 16;
constexpr int kEntryCountAt = 20;
constexpr int kEndAt = 24;
constexpr int kFirstEntry = 28;
constexpr int kHeadSize = 16;
constexpr int kLengthAt = 4;  // in a head
constexpr int kReferencesAt = 8;
constexpr int kString = 1;
constexpr int kBlock = 2;
// In a smaller file the index costs less than what is done without it; and after so many passes it
// pays.
constexpr int kManyEntries = 1024;
constexpr int kMostPasses = 8;
constexpr std::int32_t kReleased = -1;  // in place of an offset: the number waits in the free list

// Which texts are surely not among some: by their length and two of their bytes.
class TextFilter {
 public:
  void Add(std::string_view text) { marks_.set(PlaceOf(text)); }
  bool MayHave(std::string_view text) const { return marks_.test(PlaceOf(text)); }

 private:
  static constexpr std::size_t kPlaces = 1 << 12;

  static std::size_t PlaceOf(std::string_view text) {
    if (text.empty()) return 0;
    const std::size_t size = text.size();
    const auto byteAt = [text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    return (size ^ std::size_t{byteAt(size / 2)} << 4 ^ std::size_t{byteAt(size * 3 / 4)} << 2) %
           kPlaces;
  }

  std::bitset<kPlaces> marks_;
};

}  // namespace

std::uint32_t SiteVarRecDB::HashOf(std::string_view text) {
  return static_cast<std::uint32_t>(HashBytes(text));
}

SiteVarRecDB::SiteVarRecDB(std::string filePath, bool wholeFile)
    : SiteDB(std::move(filePath), wholeFile) {}

int SiteVarRecDB::Open() {
  if (SiteDB::Open() < 0) return -1;
  if (OpenEntries() < 0) {
    Abandon();
    return -1;
  }
  return 0;
}

int SiteVarRecDB::OpenEntries() {
  if (!CountsAreSound() || ReadEnd() < 0) return -1;
  ForgetEntries();
  offsets_.Reset(headerWord1 == 0 ? 1 : static_cast<std::size_t>(headerWord1));
  std::int64_t walked = kFirstEntry;
  const int result = ForEachEntry([&](int offset, const Head& head) {
    walked = std::int64_t{offset} + kHeadSize + head.length;
    if (IsAcceptable(head.id)) {
      offsets_.slot(static_cast<std::size_t>(head.id)) = offset;
    } else {
      dead_ += kHeadSize + head.length;
    }
    return 0;
  });
  // Of a damaged file each pass could find other entries, once some are added.
  if (walked != end_) passes_ = kMostPasses;
  return result;
}

bool SiteVarRecDB::CountsAreSound() const {
  return headerWord1 >= 0 && headerWord1 <= kMostIds && headerWord2 >= 0 &&
         (headerWord2 == 0 || std::int64_t{headerWord2} * kHeadSize <= Length() - kFirstEntry);
}

int SiteVarRecDB::ReadEnd() {
  char word[4];
  if (ReadAt(word, kEndAt, 4) == 4) {
    end_ = endInFile_ = LoadLE32(word);
  } else {
    end_ = kFirstEntry;
    if (WriteEnd() < 0) return -1;
  }
  return end_ >= kFirstEntry && end_ <= Length() ? 0 : -1;
}

int SiteVarRecDB::WriteEnd() {
  char word[4];
  StoreLE32(word, end_);
  if (WriteAt(word, kEndAt, 4) != 4) return -1;
  endInFile_ = end_;
  return 0;
}

// Calls visit(offset, head) for each entry as they lie in the file, until one gives -1.
template <class Visit>
int SiteVarRecDB::ForEachEntry(Visit visit) {
  std::int64_t at = firstAlive_;
  for (int k = deadBefore_; k < headerWord2 && at < end_; ++k) {
    Head head;
    if (ReadHead(static_cast<int>(at), head) < 0) return -1;
    if (head.length < 0 || at + kHeadSize + head.length > end_) return -1;
    if (visit(static_cast<int>(at), head) < 0) return -1;
    at += kHeadSize + head.length;
  }
  return 0;
}

int SiteVarRecDB::Close(Image* kept) {
  if (!isOpen()) return 0;
  // Only where it differs: a file that was only read is not to be written.
  if (end_ != endInFile_ && WriteEnd() < 0) return -1;
  if (SiteDB::Close(kept) < 0) return -1;
  ForgetEntries();
  return 0;
}

int SiteVarRecDB::Flush() {
  if (isOpen() && end_ != endInFile_ && WriteEnd() < 0) return -1;
  return SiteDB::Flush();
}

void SiteVarRecDB::ForgetEntries() {
  offsets_.Reset(0);
  free_.clear();
  cursor_ = 0;
  dead_ = 0;
  firstAlive_ = kFirstEntry;
  deadBefore_ = 0;
  passes_ = 0;
  ++releases_;
  ForgetNames();
}

int SiteVarRecDB::ReadHead(int offset, Head& head) {
  char copy[kHeadSize];
  const char* bytes = Bytes(offset, kHeadSize);
  if (bytes == nullptr) {
    if (ReadAt(copy, offset, kHeadSize) != kHeadSize) return -1;
    bytes = copy;
  }
  head = {LoadLE32(bytes), LoadLE32(bytes + 4), LoadLE32(bytes + 8), LoadLE32(bytes + 12)};
  return 0;
}

void SiteVarRecDB::StoreHead(char* bytes, const Head& head) {
  StoreLE32(bytes, head.id);
  StoreLE32(bytes + 4, head.length);
  StoreLE32(bytes + 8, head.references);
  StoreLE32(bytes + 12, head.kind);
}

int SiteVarRecDB::WriteHead(int offset, const Head& head) {
  char bytes[kHeadSize];
  StoreHead(bytes, head);
  return WriteAt(bytes, offset, kHeadSize) == kHeadSize ? 0 : -1;
}

// The offset of an entry, 0 for an id without one, -1 for no id.
int SiteVarRecDB::Offset(int id) const {
  if (!isOpen() || !IsAcceptable(id)) return -1;
  const std::int32_t offset = offsets_.at(static_cast<std::size_t>(id));
  return offset == kReleased ? 0 : offset;
}

// Reads the head of an entry whose data can be read; its offset or -1.
int SiteVarRecDB::ReadEntry(int id, Head& head) {
  const int offset = Offset(id);
  return offset > 0 && ReadHead(offset, head) == 0 && HasData(offset, head) ? offset : -1;
}

bool SiteVarRecDB::HasData(int offset, const Head& head) const {
  return head.id >= 0 && head.id < headerWord1 && head.length >= 1 &&
         std::int64_t{offset} + kHeadSize + head.length <= end_;
}

int SiteVarRecDB::GetData(int id, void* destination) {
  Head head;
  if (destination == nullptr) return -1;
  const int offset = ReadEntry(id, head);
  if (offset < 0) return -1;
  return ReadAt(destination, offset + kHeadSize, head.length) == head.length ? 0 : -1;
}

int SiteVarRecDB::DataLength(int id) {
  Head head;
  return ReadEntry(id, head) < 0 ? -1 : head.length;
}

std::string_view SiteVarRecDB::DataAt(int offset, int length, std::string& scratch) {
  if (inMemory) {
    const char* bytes = Bytes(std::int64_t{offset} + kHeadSize, length);
    return bytes == nullptr ? std::string_view()
                            : std::string_view(bytes, static_cast<std::size_t>(length));
  }
  scratch.resize(static_cast<std::size_t>(length));
  if (ReadAt(scratch.data(), offset + kHeadSize, length) != length) return {};
  return scratch;
}

std::string_view SiteVarRecDB::ViewData(int id) {
  Head head;
  const int offset = ReadEntry(id, head);
  return offset < 0 ? std::string_view() : DataAt(offset, head.length, scratch_);
}

std::string_view SiteVarRecDB::View(int id) {
  std::string_view data = ViewData(id);
  if (!data.empty()) data.remove_suffix(1);
  return data;
}

int SiteVarRecDB::GetString(int id, std::string& text) {
  const std::string_view data = ViewData(id);
  if (data.empty()) return -1;
  text.assign(data.substr(0, data.size() - 1));
  return 0;
}

void SiteVarRecDB::ForgetNames() {
  names_.Clear();
  copies_.clear();
  sought_.Clear();
  soughtTexts_.clear();
  unnamed_.clear();
  namesMade_ = false;
}

// Calls visit(offset, id, text) for each string, until one gives -1.
template <class Visit>
int SiteVarRecDB::ForEachString(Visit visit) {
  return ForEachEntry([&](int offset, const Head& head) {
    if (!IsAcceptable(head.id) || head.kind != kString || head.length < 1) return 0;
    const std::string_view data = DataAt(offset, head.length, scratch_);
    if (data.empty()) return -1;
    visit(offset, head.id, data.substr(0, data.size() - 1));
    return 0;
  });
}

int SiteVarRecDB::MakeStringIndex() {
  if (namesMade_) return 0;
  names_.Reserve(static_cast<std::size_t>(headerWord2));
  // A text in direct mode is good until the next one is read.
  auto batch = MakeProbeBatch<FoundText>(names_, inMemory, [this](const FoundText& found) {
    EnterName(found.text, found.hash, found.id, found.offset);
  });
  const int result = ForEachString([&](int offset, int id, std::string_view text) {
    const std::uint32_t hash = HashOf(text);
    if (!IsKnown(text, hash)) batch.Add({hash, id, offset, text});
  });
  batch.Finish();
  UnnameReleased(
      [this](std::string_view text, std::uint32_t hash) { return !IsKnown(text, hash); });
  if (result < 0) {
    ForgetNames();
    return -1;
  }
  sought_.Clear();
  soughtTexts_.clear();
  unnamed_.clear();
  namesMade_ = true;
  return 0;
}

// What was released takes its text out of the index, whoever else has it.
template <class IsWanted>
void SiteVarRecDB::UnnameReleased(IsWanted isWanted) {
  for (const std::int32_t offset : unnamed_) {
    Head head;
    if (ReadHead(offset, head) < 0) continue;
    std::string_view text = DataAt(offset, head.length, scratch_);
    text.remove_suffix(text.empty() ? 0 : 1);
    const std::uint32_t hash = HashOf(text);
    if (isWanted(text, hash)) Unname(text, hash);
  }
}

bool SiteVarRecDB::MayGoOverFile() const {
  return inMemory && !namesMade_ && passes_ < kMostPasses && headerWord2 >= kManyEntries;
}

void SiteVarRecDB::LookAhead(std::span<const std::string_view> texts) {
  if (isOpen() && MayGoOverFile()) GoOverFileFor(texts);
}

int SiteVarRecDB::MakeKnown(std::string_view text, std::uint32_t hash) {
  if (IsKnown(text, hash)) return 0;
  return MayGoOverFile() ? GoOverFileFor({&text, 1}) : MakeStringIndex();
}

bool SiteVarRecDB::WasSought(std::string_view text, std::uint32_t hash) const {
  const Sought* const found = sought_.Find(hash, [this, text](const Sought& sought) {
    return std::string_view(soughtTexts_).substr(sought.offset, sought.length) == text;
  });
  return found != nullptr;
}

// Enters the strings that are equal to these texts into the index; 0 or -1.
int SiteVarRecDB::GoOverFileFor(std::span<const std::string_view> texts) {
  ProbeTable<Wanted> wanted;
  TextFilter filter;
  const auto isWanted = [&wanted](std::string_view text, std::uint32_t hash) {
    return wanted.Find(hash, [text](const Wanted& each) { return each.text == text; }) != nullptr;
  };
  for (const std::string_view text : texts) {
    const std::uint32_t hash = HashOf(text);
    if (IsKnown(text, hash) || isWanted(text, hash)) continue;
    filter.Add(text);
    wanted.Insert(hash, {0, text});
  }
  if (wanted.empty()) return 0;
  ++passes_;
  const int result = ForEachString([&](int offset, int id, std::string_view text) {
    if (!filter.MayHave(text)) return;
    const std::uint32_t hash = HashOf(text);
    if (isWanted(text, hash)) EnterName(text, hash, id, offset);
  });
  UnnameReleased(isWanted);
  if (result < 0) {
    ForgetNames();
    return -1;
  }
  wanted.ForEach([this](const Wanted& each) {
    sought_.Insert(each.hash, {0, soughtTexts_.size(), each.text.size()});
    soughtTexts_.append(each.text);
  });
  return 0;
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
  if (expected.id >= 0 && Offset(expected.id) == expected.offset &&
      HasText(expected.offset, text)) {
    return expected;
  }
  if (!isOpen() || MakeKnown(text, expected.hash) < 0) return {};
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

int SiteVarRecDB::AddString(std::string_view text) {
  if (text.empty() || !isOpen()) return -1;
  return AddString(text, Look(text));
}

int SiteVarRecDB::AddString(std::string_view text, const Search& search) {
  if (text.empty() || !isOpen() || !IsKnown(text, search.hash)) return -1;
  const int known = search.id < 0 ? -1 : Offset(search.id);
  if (known > 0) return AddReference(known) < 0 ? -1 : search.id;
  const int offset = end_;
  const int id = AddEntry(kString, text);
  if (id < 0) return -1;
  if (search.id < 0) {
    AddName(text, search.hash, id, offset);
  } else {
    EnterName(View(id), search.hash, id, offset);  // `text` itself may have moved
  }
  return id;
}

// To the entry at `offset`; 0 or -1.
int SiteVarRecDB::AddReference(int offset) {
  Head head;
  if (ReadHead(offset, head) < 0) return -1;
  const bool isFull = head.references == std::numeric_limits<std::int32_t>::max();
  return WriteReferences(offset, head, head.references + (isFull ? 0 : 1));
}

int SiteVarRecDB::WriteReferences(int offset, Head& head, std::int32_t references) {
  if (char* const word = ChangeBytes(offset + kReferencesAt, 4)) {
    StoreLE32(word, references);
    return 0;
  }
  head.references = references;
  return WriteHead(offset, head);
}

int SiteVarRecDB::AddData(const void* bytes, int length) {
  if (!isOpen() || length < 0 || (bytes == nullptr && length > 0)) return -1;
  return AddEntry(kBlock, {static_cast<const char*>(bytes), static_cast<std::size_t>(length)});
}

// Takes the number that has been free for longest, else a new one.
int SiteVarRecDB::ChooseId() {
  const auto count = static_cast<std::size_t>(headerWord1);
  while (cursor_ < count && offsets_.at(cursor_) != 0) ++cursor_;
  if (cursor_ < count) return static_cast<int>(cursor_++);
  if (free_.empty()) return headerWord1;
  const int id = free_.front();
  free_.pop_front();
  return id;
}

int SiteVarRecDB::AddEntry(int kind, std::string_view data) {
  const std::int64_t length = static_cast<std::int64_t>(data.size()) + (kind == kString ? 1 : 0);
  const std::int64_t newEnd = end_ + kHeadSize + length;
  if (newEnd > std::numeric_limits<std::int32_t>::max()) return -1;
  const int id = ChooseId();
  if (id >= kMostIds) return -1;
  if (WriteEntry({id, static_cast<int>(length), kind == kString ? 1 : 0, kind}, data) < 0)
    return -1;
  offsets_.Grow(static_cast<std::size_t>(id) + 1);
  offsets_.slot(static_cast<std::size_t>(id)) = end_;
  if (id == headerWord1) ++headerWord1;
  ++headerWord2;
  return WriteCounts(static_cast<int>(newEnd)) < 0 ? -1 : id;
}

int SiteVarRecDB::WriteEntry(const Head& head, std::string_view data) {
  if (IsOwnBytes(data)) return WriteEntry(head, std::string(data));
  if (char* const entry = MakeRoom(end_, kHeadSize + head.length)) {
    StoreHead(entry, head);
    std::copy(data.begin(), data.end(), entry + kHeadSize);
    if (head.kind == kString) entry[kHeadSize + data.size()] = '\0';
    return 0;
  }
  if (WriteHead(end_, head) < 0) return -1;
  const int at = end_ + kHeadSize;
  const int bytes = static_cast<int>(data.size());
  if (bytes > 0 && WriteAt(data.data(), at, bytes) != bytes) return -1;
  if (head.kind != kString) return 0;
  return WriteAt("", at + bytes, 1) == 1 ? 0 : -1;
}

// Whether a text lies in the buffer of this file, which moves when it grows.
bool SiteVarRecDB::IsOwnBytes(std::string_view data) const {
  const std::less_equal<const char*> before;
  return buffer.get() != nullptr && !data.empty() && before(buffer.get(), data.data()) &&
         before(data.data(), buffer.get() + size);
}

// A file in memory gets them when it is written.
int SiteVarRecDB::WriteCounts(int newEnd) {
  if (inMemory) {
    end_ = newEnd;
    return 0;
  }
  char words[8];
  StoreLE32(words, headerWord1);
  StoreLE32(words + 4, headerWord2);
  if (WriteAt(words, kIdCountAt, 4) != 4 || WriteAt(words + 4, kEntryCountAt, 4) != 4) return -1;
  end_ = newEnd;
  return WriteEnd();
}

int SiteVarRecDB::ReleaseString(int id) {
  const int offset = Offset(id);
  return offset <= 0 ? offset : Release(id, offset, true);
}

int SiteVarRecDB::ReleaseStringUnindexed(int id) {
  const int offset = Offset(id);
  if (offset <= 0) return offset;
  if (namesMade_ || !sought_.empty()) ForgetNames();
  return Release(id, offset, false);
}

int SiteVarRecDB::Release(int id, int offset, bool isNamed) {
  Head head;
  if (ReadHead(offset, head) < 0) return -1;
  if (head.references >= 2) return WriteReferences(offset, head, head.references - 1);
  if (MarkEntryDead(offset, head) < 0) return -1;
  if (isNamed && head.kind == kString && head.length >= 1 && Unname(offset, head.length) < 0) {
    return -1;
  }
  offsets_.slot(static_cast<std::size_t>(id)) = kReleased;
  ++releases_;
  free_.push_back(id);
  return 0;
}

int SiteVarRecDB::Unname(int offset, int length) {
  const std::string_view data = DataAt(offset, length, scratch_);
  if (data.empty()) return -1;
  const std::string_view text = data.substr(0, data.size() - 1);
  const std::uint32_t hash = HashOf(text);
  if (IsKnown(text, hash)) {
    Unname(text, hash);
  } else {
    unnamed_.push_back(offset);
  }
  return 0;
}

void SiteVarRecDB::Unname(std::string_view text, std::uint32_t hash) {
  Name* const name = FindName(text, hash);
  if (name == nullptr) return;
  copies_.erase(name->offset);
  names_.Erase(name);
}

int SiteVarRecDB::DeleteData(int id) {
  const int offset = Offset(id);
  if (offset <= 0) return offset;
  Head head;
  if (ReadHead(offset, head) < 0) return -1;
  // A string stays in the index until the file is closed, so it must be there by now.
  if (head.kind == kString && MakeStringIndex() < 0) return -1;
  return MarkEntryDead(offset, head);
}

int SiteVarRecDB::MarkEntryDead(int offset, Head& head) {
  const bool wasLive = head.id >= 0;
  head.id = -1;
  if (WriteHead(offset, head) < 0) return -1;
  if (wasLive) dead_ += kHeadSize + head.length;
  return 0;
}

void SiteVarRecDB::DropDeadEntries(bool wasUnchanged) {
  if (!wasUnchanged || dead_ != end_ - kFirstEntry || !DropDead(kFirstEntry, end_)) return;
  firstAlive_ = end_;
  deadBefore_ = headerWord2;
  unnamed_.clear();
}

// As giving back all references leaves each entry.
void SiteVarRecDB::MarkDead(char* bytes, std::int32_t length) {
  std::int64_t at = 0;
  int entries = 0;
  for (; at + kHeadSize <= length && entries < deadBefore_; ++entries) {
    char* const head = bytes + at;
    if (LoadLE32(head) >= 0) {
      StoreLE32(head, -1);
      StoreLE32(head + kReferencesAt, std::min(LoadLE32(head + kReferencesAt), 1));
    }
    at += kHeadSize + std::int64_t{std::max(LoadLE32(head + kLengthAt), 0)};
  }
  if (at != length || entries != deadBefore_) LayDeadEntries(bytes, length);
}

// As many dead entries as there were, where those are not known any more.
void SiteVarRecDB::LayDeadEntries(char* bytes, std::int32_t length) const {
  for (int left = deadBefore_; left > 0; --left, bytes += kHeadSize, length -= kHeadSize) {
    StoreHead(bytes, {-1, left == 1 ? length - kHeadSize : 0, 0, kString});
  }
}

int SiteVarRecDB::Pack() {
  if (!isOpen()) return -1;
  PackFile packed(path);
  int entries = 0;
  if (packed.Open(kFirstEntry) < 0 || AppendLiveEntries(packed, entries) < 0) return -1;
  if (packed.end() > std::numeric_limits<std::int32_t>::max()) return -1;
  char head[kFirstEntry];
  StoreHeader(head, headerWord1, entries);
  StoreLE32(head + kEndAt, static_cast<std::int32_t>(packed.end()));
  if (packed.Finish({head, kFirstEntry}) < 0) return -1;
  if (end_ != endInFile_ && WriteEnd() < 0) return -1;
  return ReplaceBy(PackFile::PathFor(path)) < 0 ? -1 : Open();
}

int SiteVarRecDB::AppendLiveEntries(PackFile& packed, int& entries) {
  std::string copy;
  const bool hasFailed = offsets_.FindSet([&](std::size_t, std::int32_t offset) {
    Head head;
    if (offset <= 0) return false;
    if (ReadHead(offset, head) < 0) return true;
    if (!HasData(offset, head)) return false;
    ++entries;
    const int length = kHeadSize + head.length;
    if (const char* const entry = Bytes(offset, length)) {
      return packed.Append({entry, static_cast<std::size_t>(length)}, true) < 0;
    }
    copy.resize(static_cast<std::size_t>(length));
    return ReadAt(copy.data(), offset, length) != length || packed.Append(copy, false) < 0;
  });
  return hasFailed ? -1 : 0;
}

}  // namespace zvrsit
