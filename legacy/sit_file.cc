#include "legacy/sit_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "util/little_endian.h"

namespace zvrsit {

namespace {

constexpr std::int64_t kLargestFile = 0x7FFFFFFF;
constexpr std::size_t kBufferSize = 64 * 1024;

}  // namespace

bool SitFile::Open(const std::string& path, int flags) {
  Close();
  path_ = path;
  lastErrno_ = 0;
  fd_ = platform::Open(path, flags, platform::kOwnerReadWrite);
  return fd_ >= 0 || Fail();
}

bool SitFile::Close() {
  if (fd_ < 0) return true;
  const int result = platform::Close(fd_);
  fd_ = -1;
  return result >= 0 || FailWrite();
}

bool SitFile::Fail() {
  lastErrno_ = platform::LastError();
  return false;
}

bool SitFile::FailWrite() {
  return RefuseWrite(platform::LastError());
}

bool SitFile::RefuseWrite(int error) {
  lastErrno_ = error;
  ++failedWrites_;
  return false;
}

std::int64_t SitFile::Size() {
  if (fd_ < 0) return -1;
  const std::int64_t size = platform::SeekEnd(fd_);
  if (size < 0) Fail();
  return size;
}

std::int64_t SitFile::ReadSome(std::int64_t offset, void* destination, std::size_t length) {
  if (fd_ < 0 || offset < 0) return -1;
  std::int64_t count = -1;
  if (platform::Seek(fd_, offset) >= 0) count = platform::Read(fd_, destination, length);
  if (count < 0) Fail();
  return count;
}

bool SitFile::ReadAt(std::int64_t offset, void* destination, std::size_t length) {
  return ReadSome(offset, destination, length) == static_cast<std::int64_t>(length);
}

bool SitFile::WriteAt(std::int64_t offset, const void* source, std::size_t length) {
  if (fd_ < 0) return RefuseWrite(lastErrno_);
  const std::int64_t end = offset + static_cast<std::int64_t>(length);
  if (offset < 0 || end > kLargestFile) return RefuseWrite(offset < 0 ? EINVAL : EFBIG);
  if (platform::Seek(fd_, offset) < 0) return FailWrite();
  return platform::Write(fd_, source, length) == static_cast<std::int64_t>(length) || FailWrite();
}

bool SitFile::ReadWord(std::int64_t offset, std::int32_t& word) {
  unsigned char bytes[4];
  if (!ReadAt(offset, bytes, sizeof bytes)) return false;
  word = LoadLE32(bytes);
  return true;
}

bool SitFile::WriteWord(std::int64_t offset, std::int32_t word) {
  unsigned char bytes[4];
  StoreLE32(bytes, word);
  return WriteAt(offset, bytes, sizeof bytes);
}

bool SitFileScan::Take(void* destination, std::size_t length) {
  const auto need = static_cast<std::int64_t>(length);
  const auto bufferEnd = bufferStart_ + static_cast<std::int64_t>(buffer_.size());
  if (offset_ < bufferStart_ || offset_ + need > bufferEnd) {
    buffer_.resize(std::max(length, kBufferSize));
    const std::int64_t count = file_.ReadSome(offset_, buffer_.data(), buffer_.size());
    buffer_.resize(static_cast<std::size_t>(std::max<std::int64_t>(count, 0)));
    bufferStart_ = offset_;
    if (count < need) return false;
  }
  std::memcpy(destination, buffer_.data() + (offset_ - bufferStart_), length);
  offset_ += need;
  return true;
}

SitPackWriter::SitPackWriter(const std::string& path, std::size_t headerSize)
    : target_(path), written_(static_cast<std::int64_t>(headerSize)) {
  made_ = file_.Open(path + "_pack", platform::kOpenPack);
}

SitPackWriter::~SitPackWriter() {
  file_.Close();
  if (made_ && !replaced_) platform::Unlink(file_.path());
}

void SitPackWriter::Append(const void* bytes, std::size_t length) {
  pending_.append(static_cast<const char*>(bytes), length);
  if (pending_.size() >= kBufferSize) Flush();
}

void SitPackWriter::Flush() {
  if (pending_.empty()) return;
  if (!file_.WriteAt(written_, pending_.data(), pending_.size())) failed_ = true;
  written_ += static_cast<std::int64_t>(pending_.size());
  pending_.clear();
}

bool SitPackWriter::Finish(const void* header, std::size_t headerSize) {
  Flush();
  if (!file_.WriteAt(0, header, headerSize)) failed_ = true;
  if (!file_.Close()) failed_ = true;
  return !failed_;
}

bool SitPackWriter::Replace() {
  replaced_ = !failed_ && platform::Replace(file_.path(), target_) >= 0;
  return replaced_;
}

}  // namespace zvrsit
