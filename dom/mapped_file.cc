#include "dom/mapped_file.h"

#include <cstdint>

#include "platform/file.h"

namespace zvrsit {
namespace {

constexpr std::uint32_t kLargest = 0x7FFFFFFF;
// A buffer beyond this size is given back when its file is closed.
constexpr std::size_t kKeptBytes = std::size_t{4} << 20;

}  // namespace

MappedFile::MappedFile() = default;
MappedFile::~MappedFile() = default;

bool MappedFile::open(const std::string& path, int mode) {
  close();
  if (mode != 0) return false;
  const int fd = platform::Open(path, platform::kOpenReadOnly);
  if (fd < 0) return false;
  open_ = Read(fd);
  platform::Close(fd);
  return open_;
}

bool MappedFile::Read(int fd) {
  platform::FileStat stat;
  if (platform::StatOpen(fd, stat) != 0 || !stat.isRegular() || stat.size > kLargest) return false;
  if (buffer_ == nullptr || stat.size > capacity_) {
    // One byte at least, so that an empty file has a top, too.
    capacity_ = stat.size + stat.size / 4 + 1;
    buffer_ = std::make_unique_for_overwrite<char[]>(capacity_);
  }
  const std::int64_t count = platform::Read(fd, buffer_.get(), stat.size);
  if (count < 0) return false;
  size_ = static_cast<std::size_t>(count);
  return true;
}

void MappedFile::close() {
  open_ = false;
  size_ = 0;
  if (capacity_ > kKeptBytes) {
    buffer_.reset();
    capacity_ = 0;
  }
}

}  // namespace zvrsit
