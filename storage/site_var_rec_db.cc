#include "storage/site_var_rec_db.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <utility>

#include "storage/batch.h"
#include "storage/guarded.h"
#include "storage/pack_file.h"
#include "util/hash.h"
#include "util/little_endian.h"

namespace zvrsit {

namespace {

constexpr int kStringIdCountAt = 16;
constexpr int kEntryCountAt = 20;
constexpr int kEndAt = 24;
constexpr int kBlock = 2;
constexpr std::int32_t kReleased = -1;  // in place of an offset: the number waits in the free list

}  // namespace

SiteVarRecDB::SiteVarRecDB(std::string filePath, bool wholeFile)
    : SiteDB(std::move(filePath), wholeFile) {}

int SiteVarRecDB::Open() {
  return SiteDB::Open() < 0 ? -1 : UseOpened();
}

int SiteVarRecDB::UseOpened() {
  if (Guarded([&] { return OpenEntries(); }) == 0) return 0;
  Abandon();
  ForgetEntries();
  return -1;
}

int SiteVarRecDB::OpenEntries() {
  if (!CountsAreSound() || ReadEnd() < 0) return -1;
  ForgetEntries();
  offsets_.Reset(headerWord1 == 0 ? 1 : static_cast<std::size_t>(headerWord1));
  search_.Start();
  std::int64_t walked = kFirstEntry;
  std::size_t numbers = 0;
  isSound_ = true;
  const int result = ForEachEntry([&](int offset, const Head& head) {
    walked = std::int64_t{offset} + kHeadSize + head.length;
    if (!IsAcceptable(head.id)) {
      isSound_ = isSound_ && head.id < 0;
      dead_ += std::int64_t{kHeadSize} + head.length;
      return 0;
    }
    std::int32_t& known = offsets_.slot(static_cast<std::size_t>(head.id));
    if (known == 0) ++numbers;
    isSound_ = isSound_ && known == 0 && head.id < headerWord1;
    known = offset;
    return NoteString(offset, head);
  });
  if (numbers == offsets_.size()) cursor_ = numbers;  // none is free
  isSound_ = isSound_ && walked == end_;
  if (!isSound_) search_.GiveTagsUp();
  // An entry reaches beyond the end offset. Once the end offset has grown, no later walk finds its
  // way past this entry, so the index is made now.
  return result == 0 && walked > end_ ? MakeStringIndex() : result;
}

bool SiteVarRecDB::CountsAreSound() const {
  return headerWord1 >= 0 && headerWord1 <= kMostIds && headerWord2 >= 0;
}

int SiteVarRecDB::ReadEnd() {
  char word[4];
  if (ReadAt(word, kEndAt, 4) == 4) {
    end_ = endInFile_ = LoadLE32(word);
  } else {
    end_ = kFirstEntry;
    if (WriteEnd() < 0) return -1;
  }
  lengthAtOpen_ = Length();
  return end_ >= kFirstEntry && end_ <= lengthAtOpen_ ? 0 : -1;
}

int SiteVarRecDB::WriteEnd() {
  char word[4];
  StoreLE32(word, end_);
  if (WriteAt(word, kEndAt, 4) != 4) return -1;
  endInFile_ = end_;
  return 0;
}

int SiteVarRecDB::Close(FileImage* kept) {
  if (!isOpen()) return 0;
  // Only when it differs: a file that was only read must not be written.
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
  ++releases_;
  search_.Forget();
}

void SiteVarRecDB::StoreHead(char* bytes, const Head& head) {
  StoreLE32(bytes, head.id);
  StoreLE32(bytes + kLengthAt, head.length);
  StoreLE32(bytes + kReferencesAt, head.references);
  StoreLE32(bytes + kKindAt, head.kind);
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
  return head.id >= 0 && head.id < headerWord1 && head.length >= 1 && IsInFile(offset, head.length);
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
  if (!IsInFile(offset, length)) return {};
  const auto makeRoom = [&] {
    scratch.resize(static_cast<std::size_t>(length));
    return 0;
  };
  if (Guarded(makeRoom) < 0) return {};
  if (ReadAt(scratch.data(), offset + kHeadSize, length) != length) return {};
  return scratch;
}

std::string_view SiteVarRecDB::ViewData(int id) {
  Head head;
  const int offset = ReadEntry(id, head);
  return offset < 0 ? std::string_view() : DataAt(offset, head.length, scratch_);
}

std::string_view SiteVarRecDB::View(int id) {
  return TextOf(ViewData(id));
}

int SiteVarRecDB::GetString(int id, std::string& text) {
  const std::string_view data = ViewData(id);
  if (data.empty()) return -1;
  return Guarded([&] {
    text.assign(TextOf(data));
    return 0;
  });
}

std::uint32_t SiteVarRecDB::HashOf(std::string_view text) {
  return static_cast<std::uint32_t>(HashBytes(text));
}

FoundString SiteVarRecDB::Search(std::string_view text, const FoundString& guess) {
  return isOpen() ? search_.Find(text, guess) : FoundString{guess.hash, -1, -1};
}

int SiteVarRecDB::FindString(std::string_view text) {
  return Search(text).id;
}

void SiteVarRecDB::LookAhead(std::span<const std::string_view> texts) {
  // Without memory each search makes its own text known.
  if (isOpen()) static_cast<void>(search_.AskFor(texts));
}

int SiteVarRecDB::MakeStringIndex() {
  return search_.MakeIndex();
}

// Tells the search of a string while the file is opened; 0, or -1 where it cannot be read.
int SiteVarRecDB::NoteString(int offset, const Head& head) {
  if (!search_.wantsStrings() || head.kind != kString || head.length < 1) return 0;
  const std::string_view data = DataAt(offset, head.length, scratch_);
  if (data.empty()) return -1;
  search_.Note(head.id, offset, TextOf(data));
  return 0;
}

int SiteVarRecDB::AddString(std::string_view text) {
  if (text.empty() || !isOpen()) return -1;
  return AddString(text, Search(text));
}

int SiteVarRecDB::AddString(std::string_view text, const FoundString& found) {
  if (text.empty() || !isOpen() || !search_.IsKnown(text, found.hash)) return -1;
  if (found.id >= 0) {
    const bool isThere = isSound_ && IsEntryOf(found.id, found.offset);
    const int known = isThere ? found.offset : Offset(found.id);
    if (known > 0) return AddReference(known) < 0 ? -1 : found.id;
  }
  return Guarded([&] { return AddNewString(text, found); });
}

int SiteVarRecDB::AddNewString(std::string_view text, const FoundString& found) {
  assert(search_.IsKnown(text, found.hash));
  const int offset = end_;
  search_.MakeRoom(text, offset);  // before anything is changed
  const int id = AddEntry(kString, text);
  if (id < 0) return -1;
  if (found.id < 0) {
    search_.EnterNew(text, found.hash, id, offset);
  } else {
    // `text` itself may have moved with the buffer.
    search_.Enter(inMemory ? View(id) : text, found.hash, id, offset);
  }
  return id;
}

// To the entry at `offset`; 0 or -1.
int SiteVarRecDB::AddReference(int offset) {
  Head head;
  if (ReadHead(offset, head) < 0) return -1;
  const bool isFull = head.references == std::numeric_limits<std::int32_t>::max();
  return WriteHeadWord(offset, kReferencesAt, head.references + (isFull ? 0 : 1));
}

int SiteVarRecDB::AddData(const void* bytes, int length) {
  if (!isOpen() || length < 0 || (bytes == nullptr && length > 0)) return -1;
  const std::string_view data(static_cast<const char*>(bytes), static_cast<std::size_t>(length));
  return Guarded([&] { return AddEntry(kBlock, data); });
}

// Takes the number that has been free for longest, else a new one.
int SiteVarRecDB::ChooseId() {
  const auto count = static_cast<std::size_t>(headerWord1);
  if (cursor_ < count) cursor_ = offsets_.FindZero(cursor_);
  if (cursor_ < count) return static_cast<int>(cursor_++);
  if (free_.empty()) return headerWord1;
  const int id = free_.front();
  free_.pop_front();
  return id;
}

int SiteVarRecDB::AddEntry(int kind, std::string_view data) {
  const std::int64_t length = static_cast<std::int64_t>(data.size()) + (kind == kString ? 1 : 0);
  const std::int64_t newEnd = std::int64_t{end_} + kHeadSize + length;
  if (newEnd > FileImage::kLargestFile) return RefuseForRoom();
  const int id = ChooseId();
  if (id >= kMostIds) return RefuseForRoom();
  offsets_.Grow(static_cast<std::size_t>(id) + 1);
  std::int32_t& known = offsets_.slot(static_cast<std::size_t>(id));
  if (WriteEntry({id, static_cast<int>(length), kind == kString ? 1 : 0, kind}, data) < 0) {
    return -1;
  }
  known = end_;
  if (id == headerWord1) ++headerWord1;
  if (headerWord2 < std::numeric_limits<std::int32_t>::max()) ++headerWord2;
  return WriteCounts(static_cast<int>(newEnd)) < 0 ? -1 : id;
}

int SiteVarRecDB::WriteEntry(const Head& head, std::string_view data) {
  if (image.HasInMemory(data)) return WriteEntry(head, std::string(data));
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

int SiteVarRecDB::WriteCounts(int newEnd) {
  char words[8];
  StoreLE32(words, headerWord1);
  StoreLE32(words + 4, headerWord2);
  if (WriteAt(words, kStringIdCountAt, 4) != 4 || WriteAt(words + 4, kEntryCountAt, 4) != 4)
    return -1;
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
  if (inMemory && search_.knowsAny()) search_.Forget();
  return Release(id, offset, !inMemory);
}

int SiteVarRecDB::Release(int id, int offset, bool isNamed) {
  Head head;
  if (ReadHead(offset, head) < 0) return -1;
  if (head.references >= 2) return WriteHeadWord(offset, kReferencesAt, head.references - 1);
  if (MarkEntryDead(offset, head) < 0) return -1;
  if (isNamed && head.kind == kString && head.length >= 1) {
    const std::string_view data = DataAt(offset, head.length, scratch_);
    if (data.empty() || search_.Release(TextOf(data), offset) < 0) return -1;
  }
  offsets_.slot(static_cast<std::size_t>(id)) = kReleased;
  ++releases_;
  Guarded([&] {  // a number that cannot be noted is free again from the next opening on
    free_.push_back(id);
    return 0;
  });
  return 0;
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

int SiteVarRecDB::MarkEntryDead(int offset, const Head& head) {
  if (WriteHeadWord(offset, 0, -1) < 0) return -1;
  if (head.id >= 0) dead_ += std::int64_t{kHeadSize} + head.length;
  return 0;
}

int SiteVarRecDB::Pack() {
  return isOpen() ? Guarded([&] { return PackEntries(); }) : -1;
}

int SiteVarRecDB::PackEntries() {
  PackFile packed(path);
  IdTable<std::int32_t> offsets;
  int entries = 0;
  if (packed.Open(kFirstEntry) < 0 || AppendLiveEntries(packed, entries, offsets) < 0) return -1;
  if (packed.end() > std::numeric_limits<std::int32_t>::max()) return -1;
  char head[kFirstEntry];
  StoreHeader(head, headerWord1, entries);
  StoreLE32(head + kEndAt, static_cast<std::int32_t>(packed.end()));
  if (packed.Finish({head, kFirstEntry}) < 0) return -1;
  if (end_ != endInFile_ && WriteEnd() < 0) return -1;
  const std::int32_t numbers = headerWord1;
  if (ReplaceBy(packed.path()) < 0 || SiteDB::Open() < 0) return -1;
  const bool isAsWritten =
      headerWord1 == numbers && headerWord2 == entries && Length() >= packed.end();
  if (!inMemory || !isAsWritten) return UseOpened();
  ForgetEntries();
  end_ = endInFile_ = static_cast<std::int32_t>(packed.end());
  lengthAtOpen_ = Length();
  isSound_ = true;
  offsets_ = std::move(offsets);
  return 0;
}

// `offsets` gets where each entry lies then, by the number in its head, which opening goes by.
int SiteVarRecDB::AppendLiveEntries(PackFile& packed, int& entries,
                                    IdTable<std::int32_t>& offsets) {
  offsets.Reset(offsets_.size());
  std::string copy;
  int result = 0;
  const auto append = [&](std::int32_t offset) {
    Head head;
    if (result < 0) return;
    result = ReadHead(offset, head);
    if (result < 0 || !HasData(offset, head)) return;
    ++entries;
    offsets.slot(static_cast<std::size_t>(head.id)) = static_cast<std::int32_t>(packed.end());
    const int length = kHeadSize + head.length;
    if (const char* const bytes = Bytes(offset, length)) {
      result = packed.Append({bytes, static_cast<std::size_t>(length)}, true);
      return;
    }
    copy.resize(static_cast<std::size_t>(length));
    const bool isRead = ReadAt(copy.data(), offset, length) == length;
    result = isRead ? packed.Append(copy, false) : -1;
  };
  auto batch = MakeBatch<std::int32_t>(append);
  offsets_.FindSet([&](std::size_t, std::int32_t offset) {
    if (offset > 0) batch.Add(Bytes(offset, kHeadSize), offset);
    return result < 0;
  });
  batch.Finish();
  return result;
}

}  // namespace zvrsit
