#include "dom/mapped_file.h"

#include <cstdint>
#include <new>

#include "platform/file.h"

namespace zvrsit {
namespace {

constexpr std::uint32_t kLargest = 0x7FFFFFFF;
// A buffer beyond this size is given back when its file is closed.
constexpr std::size_t kKeptBytes = std::size_t{4} << 20;

// A buffer of at least `capacity` bytes, which tells how many there are; null when a file is larger
// than the memory for it, which a process of 32 bits has little of.
std::unique_ptr<char[]> MakeBuffer(std::size_t& capacity) {
  const std::size_t least = capacity + 1;  // so that an empty file has a top, too
  capacity = least + least / 4;
  std::unique_ptr<char[]> buffer(new (std::nothrow) char[capacity]);
  if (buffer == nullptr) {
    capacity = least;
    buffer.reset(new (std::nothrow) char[capacity]);
  }
  return buffer;
}

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
    buffer_.reset();
    capacity_ = stat.size;
    buffer_ = MakeBuffer(capacity_);
    if (buffer_ == nullptr) return false;
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
