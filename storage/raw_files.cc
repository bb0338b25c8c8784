#include "storage/raw_files.h"

#include "platform/file.h"
#include "storage/site_db.h"

namespace zvrsit {
namespace {

bool ReadTo(int fd, std::string& bytes) {
  const std::int64_t size = platform::SeekEnd(fd);
  if (size < 0 || size > FileImage::kLargestFile || platform::Seek(fd, 0) < 0) return false;
  bytes.resize(static_cast<std::size_t>(size));
  return platform::Read(fd, bytes.data(), bytes.size()) == size;
}

}  // namespace

bool RawFile::Read(const std::string& path) {
  const int fd = platform::Open(path, platform::kOpenReadOnly);
  if (fd < 0) return false;
  const bool isWhole = ReadTo(fd, bytes_);
  platform::Close(fd);
  if (!isWhole) bytes_.clear();
  return isWhole;
}

bool RawFile::hasMagic() const {
  return bytes_.starts_with(SiteDB::kMagic);
}

std::int32_t RawFile::ids() const {
  return std::clamp(idCount(), 0, SiteDB::kMostIds);
}

std::int32_t RawRecords::slots() const {
  const std::int64_t room = hasHeader() ? (size() - kHeaderSize) / slotLength_ : 0;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(slotCount(), 0, room));
}

bool RawTexts::ReadEntry(std::int64_t offset, Entry& entry) const {
  if (offset < kFirstEntry || offset + kHeadSize > end()) return false;
  const char* const head = At(offset);
  const std::int32_t length = LoadLE32(head + 4);
  if (length < 0 || offset + kHeadSize + length > end()) return false;
  entry = {offset, LoadLE32(head), LoadLE32(head + 8), LoadLE32(head + 12),
           std::string_view(head + kHeadSize, static_cast<std::size_t>(length))};
  return true;
}

}  // namespace zvrsit
