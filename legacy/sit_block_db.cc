#include "legacy/sit_block_db.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "legacy/sit_error.h"
#include "util/little_endian.h"

namespace zvrsit {

namespace {

constexpr char kMagic[] = "ZVSITBLK";
constexpr std::size_t kMagicSize = 8;
constexpr std::int32_t kVersion = 1;
constexpr std::int64_t kBlockHeaderSize = 24;
constexpr std::int64_t kBlockHeadSize = 12;
// Records grow a little when a page is edited; blocks leave room for it.
constexpr std::size_t kRoomUnit = 32;

void StoreHead(unsigned char* bytes, std::int32_t index, std::int32_t capacity,
               std::int32_t length) {
  StoreLE32(bytes, index);
  StoreLE32(bytes + 4, capacity);
  StoreLE32(bytes + 8, length);
}

std::int32_t Length(const std::string& bytes) {
  return static_cast<std::int32_t>(bytes.size());
}

// The words and the texts of a record in the order of the file.
constexpr std::int32_t SitUrlRec::*kWords[] = {
    &SitUrlRec::fileType,         &SitUrlRec::size,       &SitUrlRec::creationTime,
    &SitUrlRec::modificationTime, &SitUrlRec::accessTime, &SitUrlRec::status,
    &SitUrlRec::ftpMember,        &SitUrlRec::lastChecked};
constexpr std::string SitUrlRec::*kTexts[] = {
    &SitUrlRec::key,       &SitUrlRec::title,    &SitUrlRec::lastModified, &SitUrlRec::expires,
    &SitUrlRec::generator, &SitUrlRec::keywords, &SitUrlRec::description,  &SitUrlRec::contentType};

std::uint32_t TagOfKind(int kind) {
  if (kind == SitBlockDB::kJunkFile) return kTagJunk;
  return kind == SitBlockDB::kFolderFile ? kTagFolder : kTagUrl;
}

}  // namespace

std::string EncodeUrlRec(const SitUrlRec& record) {
  std::string bytes;
  unsigned char stored[4];
  const auto append = [&](std::int32_t value) {
    StoreLE32(stored, value);
    bytes.append(reinterpret_cast<const char*>(stored), sizeof stored);
  };
  for (const auto word : kWords) append(record.*word);
  for (const auto text : kTexts) {
    append(Length(record.*text));
    bytes += record.*text;
  }
  return bytes;
}

bool DecodeUrlRec(const char* bytes, std::size_t length, SitUrlRec& record) {
  std::size_t at = 0;
  const auto take = [&](std::int32_t& value) {
    if (length - at < 4) return false;
    value = LoadLE32(bytes + at);
    at += 4;
    return true;
  };
  for (const auto word : kWords) {
    if (!take(record.*word)) return false;
  }
  for (const auto text : kTexts) {
    std::int32_t size = 0;
    if (!take(size) || size < 0 || static_cast<std::size_t>(size) > length - at) return false;
    (record.*text).assign(bytes + at, static_cast<std::size_t>(size));
    at += static_cast<std::size_t>(size);
  }
  return true;
}

int SitBlockDB::Open(const std::string& path, int kind, int bucketCount) {
  Close();
  kind_ = kind;
  bucketCount_ = bucketCount;
  keys_.Reset(bucketCount);
  entries_.clear();
  live_ = 0;
  end_ = kBlockHeaderSize;
  deadBytes_ = 0;
  whole_ = false;
  counted_ = {};
  if (!file_.Open(path)) return -1;
  if (!LoadHeader()) {
    file_.Close();
    return -1;
  }
  Load();
  return 0;
}

bool SitBlockDB::LoadHeader() {
  unsigned char header[kBlockHeaderSize];
  if (file_.Size() == 0) {
    StoreCounts(header);
    return file_.WriteAt(0, header, sizeof header);
  }
  if (!file_.ReadAt(0, header, sizeof header)) return false;
  counted_ = {LoadLE32(header + 16), LoadLE32(header + 20)};
  return std::memcmp(header, kMagic, kMagicSize) == 0 && LoadLE32(header + 8) == kVersion &&
         LoadLE32(header + 12) == kind_;
}

void SitBlockDB::StoreCounts(unsigned char* header) const {
  std::memcpy(header, kMagic, kMagicSize);
  StoreLE32(header + 8, kVersion);
  StoreLE32(header + 12, kind_);
  StoreLE32(header + 16, Num());
  StoreLE32(header + 20, live_);
}

void SitBlockDB::Load() {
  const std::int64_t size = file_.Size();
  SitFileScan scan(file_, kBlockHeaderSize);
  unsigned char head[kBlockHeadSize];
  std::string bytes;
  bool good = true;
  while (scan.Take(head, sizeof head)) {
    const std::int32_t index = LoadLE32(head);
    const Block block{static_cast<std::int32_t>(end_), LoadLE32(head + 4), LoadLE32(head + 8)};
    const std::int64_t next = scan.offset() + block.capacity;
    if (block.capacity < 0 || next > size) break;
    const bool inRange = index >= 0 && index < size / kBlockHeadSize;
    good = inRange && LoadBlock(scan, index, block, bytes) && good;
    scan.Skip(next - scan.offset());
    end_ = next;
  }
  whole_ = good && end_ == size && Num() >= counted_[0];
}

// False for a block that is damaged.
bool SitBlockDB::LoadBlock(SitFileScan& scan, std::int32_t index, const Block& block,
                           std::string& bytes) {
  if (index >= Num()) entries_.resize(static_cast<std::size_t>(index) + 1);
  SitUrlRec record;
  bool live = block.length >= 0 && block.length <= block.capacity;
  if (live) {
    bytes.resize(static_cast<std::size_t>(block.length));
    live = scan.Take(bytes.data(), bytes.size()) &&
           DecodeUrlRec(bytes.data(), bytes.size(), record) && !record.key.empty();
  }
  if (!live) {
    deadBytes_ += block.capacity;
    return block.length == -1;
  }
  if (At(index).offset >= 0) {
    deadBytes_ += kBlockHeadSize + At(index).capacity;
    keys_.Erase(index);
    --live_;
  }
  At(index) = block;
  keys_.Insert(index, record.key);
  ++live_;
  return true;
}

int SitBlockDB::Close() {
  if (!file_.IsOpen()) return 0;
  bool written = true;
  // The count of a file that is not whole tells that it is not.
  if (whole_ && counted_ != std::array{Num(), live_}) {
    unsigned char header[kBlockHeaderSize];
    StoreCounts(header);
    written = file_.WriteAt(0, header, sizeof header);
  }
  return CloseFile() && written ? 0 : -1;
}

bool SitBlockDB::CloseFile() {
  entries_.clear();
  keys_.Reset(1);
  live_ = 0;
  return file_.Close();
}

int SitBlockDB::State(int index) const {
  if (index < 0 || index >= Num()) return kSitPastEnd;
  return entries_[static_cast<std::size_t>(index)].offset >= 0 ? kSitOk : kSitNotFound;
}

bool SitBlockDB::WriteBlock(int index, const Block& block, const std::string& bytes) {
  std::string all(kBlockHeadSize, '\0');
  StoreHead(reinterpret_cast<unsigned char*>(all.data()), index, block.capacity, Length(bytes));
  all += bytes;
  // A block at the end of the file is written in full, so that the next one begins behind it.
  if (block.offset + kBlockHeadSize + block.capacity >= end_) {
    all.resize(static_cast<std::size_t>(kBlockHeadSize + block.capacity), '\0');
  }
  return file_.WriteAt(block.offset, all.data(), all.size());
}

bool SitBlockDB::Store(int index, const std::string& bytes) {
  Block& entry = At(index);
  if (entry.offset >= 0 && Length(bytes) <= entry.capacity) {
    if (!WriteBlock(index, entry, bytes)) return false;
    entry.length = Length(bytes);
    return true;
  }
  if (!whole_) return file_.RefuseWrite(EIO);
  const std::size_t capacity = (bytes.size() / kRoomUnit + 1) * kRoomUnit;
  if (end_ + kBlockHeadSize + static_cast<std::int64_t>(capacity) >
      std::numeric_limits<std::int32_t>::max()) {
    return file_.RefuseWrite(EFBIG);
  }
  const Block block{static_cast<std::int32_t>(end_), static_cast<std::int32_t>(capacity),
                    Length(bytes)};
  if (!WriteBlock(index, block, bytes)) return false;
  if (entry.offset >= 0) Kill(index);
  entry = block;
  end_ += kBlockHeadSize + block.capacity;
  return true;
}

bool SitBlockDB::Kill(int index) {
  Block& entry = At(index);
  unsigned char head[kBlockHeadSize];
  StoreHead(head, index, entry.capacity, -1);
  if (!file_.WriteAt(entry.offset, head, sizeof head)) return false;
  deadBytes_ += entry.capacity;
  entry = {};
  return true;
}

int SitBlockDB::Add(const SitUrlRec& record) {
  if (!IsOpen() || record.key.empty() || Find(record.key) >= 0) return -1;
  const int index = Num();
  entries_.emplace_back();
  if (!Store(index, EncodeUrlRec(record))) {
    entries_.pop_back();
    return -1;
  }
  keys_.Insert(index, record.key);
  ++live_;
  RecordChange(kOpAdd, index, record);
  return index;
}

int SitBlockDB::Read(int index, SitUrlRec& record) {
  const int state = State(index);
  if (state != kSitOk) return state;
  const Block& entry = At(index);
  std::string bytes(static_cast<std::size_t>(entry.length), '\0');
  if (!file_.ReadAt(entry.offset + kBlockHeadSize, bytes.data(), bytes.size()) ||
      !DecodeUrlRec(bytes.data(), bytes.size(), record)) {
    return kSitNotFound;
  }
  return kSitOk;
}

int SitBlockDB::Write(int index, const SitUrlRec& record) {
  SitUrlRec old;
  if (const int result = Read(index, old); result != kSitOk) return result;
  const int holder = Find(record.key);
  if (record.key.empty() || (holder >= 0 && holder != index)) return kSitBadArgument;
  if (record == old) return kSitOk;
  if (!Store(index, EncodeUrlRec(record))) return kSitWriteFailed;
  if (record.key != old.key) {
    keys_.Erase(index);
    keys_.Insert(index, record.key);
  }
  RecordChange(kOpRewrite, index, old);
  return kSitOk;
}

int SitBlockDB::Delete(int index) {
  SitUrlRec old;
  if (const int result = Read(index, old); result != kSitOk) return result;
  if (!Kill(index)) return kSitDeleteFailed;
  keys_.Erase(index);
  --live_;
  RecordChange(kOpDelete, index, old);
  return kSitOk;
}

int SitBlockDB::TakeBackAdd(int index) {
  SitUrlRec old;
  if (Read(index, old) != kSitOk || !Kill(index)) return -1;
  RecordChange(kOpDelete, index, old);
  keys_.Erase(index);
  --live_;
  // The dead block keeps the index in the file until the next packing; then it is gone.
  if (index == Num() - 1) entries_.pop_back();
  return 0;
}

int SitBlockDB::TakeBackDelete(int index, const SitUrlRec& record) {
  if (State(index) != kSitNotFound || Find(record.key) >= 0) return -1;
  if (!Store(index, EncodeUrlRec(record))) return -1;
  keys_.Insert(index, record.key);
  ++live_;
  RecordChange(kOpAdd, index, record);
  return 0;
}

void SitBlockDB::RecordChange(std::uint32_t operation, int index, const SitUrlRec& record) {
  if (history_ != nullptr) {
    history_->Record(TagOfKind(kind_) | operation, index, EncodeUrlRec(record));
  }
}

bool SitBlockDB::CopyBlocks(SitPackWriter& copy) {
  std::string bytes;
  for (int index = 0; index < Num(); ++index) {
    const Block& entry = At(index);
    bytes.assign(static_cast<std::size_t>(std::max(entry.length, 0)), '\0');
    const bool live = entry.offset >= 0;
    if (live && !file_.ReadAt(entry.offset + kBlockHeadSize, bytes.data(), bytes.size()))
      return false;
    unsigned char head[kBlockHeadSize];
    StoreHead(head, index, Length(bytes), live ? Length(bytes) : -1);
    copy.Append(head, sizeof head);
    copy.Append(bytes.data(), bytes.size());
  }
  return true;
}

int SitBlockDB::Pack(bool reopen) {
  if (!IsOpen() || !whole_) return -1;
  const int kept = live_;
  const std::string target = path();
  if (deadBytes_ == 0) return !reopen && Close() < 0 ? -1 : kept;
  SitPackWriter copy(target, kBlockHeaderSize);
  if (!copy.IsOpen() || !CopyBlocks(copy)) return -1;
  unsigned char header[kBlockHeaderSize];
  StoreCounts(header);
  if (!copy.Finish(header, sizeof header)) return -1;
  CloseFile();
  const bool replaced = copy.Replace();
  if (reopen && Open(target, kind_, bucketCount_) < 0) return -1;
  return replaced ? kept : -1;
}

int SitBlockDB::Remove() {
  const std::string target = path();
  CloseFile();
  if (platform::Unlink(target) < 0) return -1;
  return Open(target, kind_, bucketCount_);
}

}  // namespace zvrsit
