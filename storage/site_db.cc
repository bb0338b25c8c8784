#include "storage/site_db.h"

#include <cassert>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "platform/file.h"
#include "storage/file_names.h"
#include "storage/guarded.h"
#include "storage/undo_log.h"
#include "util/little_endian.h"

namespace zvrsit {

namespace {

constexpr int kWord1 = 16;
constexpr int kWord2 = 20;

// Copies all of an open file of `size` bytes; the number of bytes written or -1.
int CopyOpenFile(int from, int to, std::uint32_t size) {
  std::unique_ptr<char[]> bytes(new (std::nothrow) char[size]());
  if (bytes == nullptr) return -1;
  if (platform::Read(from, bytes.get(), size) <= 0) return -1;
  return static_cast<int>(platform::Write(to, bytes.get(), size));
}

// The destination is not shortened first, on purpose: a longer one keeps its tail.
int CopyFileTo(const std::string& source, const std::string& destination) {
  platform::FileStat stat;
  if (platform::Stat(source, stat) < 0 || stat.size > FileImage::kLargestFile) return -1;
  const int from = platform::Open(source, platform::kOpenExisting);
  if (from < 0) return -1;
  const int to = platform::Open(destination, platform::kOpenDatabase);
  int result = -1;
  if (to >= 0) {
    result = CopyOpenFile(from, to, stat.size);
    platform::Close(to);
  }
  platform::Close(from);
  return result;
}

}  // namespace

SiteDB::SiteDB(std::string filePath, bool wholeFile)
    : path(std::move(filePath)), inMemory(wholeFile) {}

SiteDB::~SiteDB() {
  // In direct mode the descriptor stays open, on purpose.
  if (inMemory) Abandon();
}

int SiteDB::Open() {
  if (path.empty()) return -1;
  isFull_ = false;
  return inMemory ? OpenWhole() : OpenDirect();
}

int SiteDB::OpenDescriptor() const {
  return platform::Open(path, readOnly_ ? platform::kOpenReadOnly : platform::kOpenDatabase);
}

int SiteDB::OpenWhole() {
  if (image.isHeld()) return -1;
  platform::FileStat stat;
  if (platform::Stat(path, stat) < 0) stat = {};
  fd = OpenDescriptor();
  if (fd < 0) return -1;
  const bool isCut = readOnly_ && stat.size < kHeaderSize;
  if (isCut || stat.size > FileImage::kLargestFile || image.Load(fd, stat, maps_) < 0) {
    Abandon();
    return -1;
  }
  CompleteHeader();
  return 0;
}

// A header word that is not whole in the file is 0. By now there are bytes up to the end of the
// header.
void SiteDB::CompleteHeader() {
  const std::uint32_t known = image.size();
  if (known < kHeaderSize) {
    char* const head = image.MakeRoom(0, static_cast<std::int32_t>(SizeWithHeader(known)));
    assert(head != nullptr);  // more than this is set aside for every file
    if (known < kMagicSize) std::memcpy(head, kMagic, kMagicSize);
    if (known < kWord2) StoreLE32(head + kWord1, 0);
    StoreLE32(head + kWord2, 0);
  }
  const char* const head = image.Bytes(0, kHeaderSize);
  std::memcpy(magic, head, kMagicSize);
  CheckHeader();
  headerWord1 = LoadLE32(head + kWord1);
  headerWord2 = LoadLE32(head + kWord2);
}

int SiteDB::OpenDirect() {
  fd = OpenDescriptor();
  if (fd < 0) return -1;
  if (ReadHeader() < 0) {
    Abandon();
    return -1;
  }
  return 0;
}

int SiteDB::ReadHeader() {
  if (platform::Seek(fd, 0) < 0) return -1;
  if (platform::Read(fd, magic, kMagicSize) < kMagicSize) {
    std::memcpy(magic, kMagic, kMagicSize);
    if (WriteAt(magic, 0, kMagicSize) != kMagicSize) return -1;
  } else {
    CheckHeader();
  }
  return ReadHeaderWord(headerWord1, kWord1) < 0 || ReadHeaderWord(headerWord2, kWord2) < 0 ? -1
                                                                                            : 0;
}

int SiteDB::ReadHeaderWord(std::int32_t& word, int offset) {
  char bytes[4] = {};
  if (platform::Read(fd, bytes, 4) < 4) {
    std::memset(bytes, 0, sizeof bytes);
    if (WriteAt(bytes, offset, 4) != 4) return -1;
  }
  word = LoadLE32(bytes);
  return 0;
}

int SiteDB::Close(FileImage* kept) {
  if (fd < 0) return 0;
  return inMemory ? CloseWhole(kept) : CloseDirect();
}

int SiteDB::CloseDirect() {
  // Every change of the header words has been written.
  const bool isUnchanged = undo_ != nullptr && !undo_->hasBegun();
  if (!readOnly_ && !isUnchanged) {
    if (platform::Seek(fd, 0) < 0) return -1;
    if (WriteHeader() < 0) {
      platform::FlushAll();
      return -1;
    }
  }
  platform::Close(fd);
  fd = -1;
  return 0;
}

int SiteDB::WriteHeader() {
  char words[8];
  StoreLE32(words, headerWord1);
  StoreLE32(words + 4, headerWord2);
  const bool complete = platform::Write(fd, magic, kMagicSize) == kMagicSize &&
                        platform::Write(fd, words, 4) == 4 &&
                        platform::Write(fd, words + 4, 4) == 4;
  return complete ? 0 : -1;
}

int SiteDB::CloseWhole(FileImage* kept) {
  const int result = image.isChanged() ? SaveImage() : 0;
  if (kept != nullptr) *kept = std::move(image);
  Abandon();
  return result;
}

void SiteDB::StoreHeader(char* bytes, std::int32_t word1, std::int32_t word2) const {
  assert(bytes != nullptr);
  std::memcpy(bytes, magic, kMagicSize);
  StoreLE32(bytes + kWord1, word1);
  StoreLE32(bytes + kWord2, word2);
}

int SiteDB::SaveImage() {
  if (readOnly_ || (undo_ != nullptr && undo_->Begin() < 0)) return -1;
  StoreHeader(image.ChangeBytes(0, kHeaderSize), headerWord1, headerWord2);
  const int result = image.Save(fd);
  platform::FlushAll();
  return result;
}

int SiteDB::ReplaceBy(const std::string& other, FileImage* kept) {
  if (inMemory) {
    platform::Close(fd);  // an open file cannot be removed everywhere
    fd = -1;
  } else if (CloseDirect() < 0) {
    return -1;
  }
  const bool isReady = !isDurable_ || platform::SyncFiles({other}) == 0;
  const int replaced = isReady ? platform::Replace(other, path) : -1;
  if (replaced < 0 && image.isChanged()) {
    fd = platform::Open(path, platform::kOpenDatabase);
    if (fd >= 0) static_cast<void>(SaveImage());  // it has failed in any case
  }
  if (kept != nullptr) *kept = std::move(image);
  Abandon();
  return replaced;
}

void SiteDB::NoteChanges(UndoLog& log) const {
  if (fd < 0 || !inMemory || !image.isChanged()) return;
  log.NotePart(path, 0, kHeaderSize + 4);  // the headers are written with every change
  static_cast<void>(image.ForEachChange(fd, [&](std::size_t from, std::size_t to) {
    log.NotePart(path, from, to);
    return 0;
  }));
}

int SiteDB::RefuseForRoom() {
  isFull_ = true;
  return -1;
}

int SiteDB::OpenOn(FileImage known, std::uint32_t size) {
  fd = platform::Open(path, platform::kOpenDatabase);
  if (fd < 0) return -1;
  image = std::move(known);
  StoreHeader(image.ChangeBytes(0, kHeaderSize), headerWord1, headerWord2);
  image.CutToSaved(size);
  isFull_ = false;
  return 0;
}

void SiteDB::Abandon() {
  image.Drop();
  if (fd >= 0) platform::Close(fd);
  fd = -1;
}

int SiteDB::Flush() {
  if (fd < 0) return 0;
  if (!inMemory) return platform::FlushAll();
  if (!image.isChanged()) return 0;
  if (SaveImage() < 0) return -1;
  image.NoteSaved(fd);
  return 0;
}

int SiteDB::ReadFile(void* destination, std::int32_t offset, std::int32_t length) {
  if (fd < 0 || length < 0 || offset < 0) return -1;
  if (inMemory || platform::Seek(fd, offset) < 0) return -1;
  return static_cast<int>(platform::Read(fd, destination, static_cast<std::size_t>(length)));
}

int SiteDB::WriteFile(const void* source, std::int32_t offset, std::int32_t length) {
  if (fd < 0 || length < 0 || offset < 0) return -1;
  if (inMemory) {
    char* bytes = MakeRoom(offset, length);
    if (bytes == nullptr) return -1;
    std::memcpy(bytes, source, static_cast<std::size_t>(length));
    return length;
  }
  if (std::int64_t{offset} + length > FileImage::kLargestFile) return -1;
  if (undo_ != nullptr && undo_->Begin() < 0) return -1;
  if (platform::Seek(fd, offset) < 0) return -1;
  const std::int64_t written = platform::Write(fd, source, static_cast<std::size_t>(length));
  platform::FlushAll();
  return static_cast<int>(written);
}

std::int64_t SiteDB::Length() const {
  if (inMemory) return image.size();
  const std::int64_t length = platform::SeekEnd(fd);
  return length <= FileImage::kLargestFile ? length : -1;
}

int SiteDB::Backup() {
  return path.empty() ? -1 : Guarded([&] { return CopyFileTo(path, path + kBackupSuffix); });
}

int SiteDB::Restore() {
  if (path.empty() || fd >= 0) return -1;
  return Guarded([&] { return CopyFileTo(path + kBackupSuffix, path); });
}

int SiteDB::Delete() {
  return fd >= 0 ? -1 : platform::Unlink(path);
}

}  // namespace zvrsit
