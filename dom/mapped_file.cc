#include "dom/mapped_file.h"

#include <cstdint>
#include <cstring>

#include "dom/byte_search.h"
#include "platform/file.h"
#include "platform/large_memory.h"

namespace zvrsit {
namespace {

constexpr std::uint32_t kLargestFile = 0x7FFFFFFF;
// A buffer beyond this size is given back when its file is closed.
constexpr std::size_t kKeptBufferBytes = std::size_t{4} << 20;

}  // namespace

MappedFile::MappedFile() : buffer_(std::make_unique<platform::LargeBuffer>()) {}
MappedFile::~MappedFile() = default;

bool MappedFile::open(const std::string& path, int mode) {
  close();
  return mode == 0 && ReadAndClose(platform::Open(path, platform::kOpenReadOnly));
}

bool MappedFile::ReadAndClose(int fd) {
  if (fd < 0) return false;
  if (Read(fd)) top_ = buffer_->get();
  platform::Close(fd);
  return top_ != nullptr;
}

bool MappedFile::Read(int fd) {
  platform::FileStat stat;
  if (platform::StatOpen(fd, stat) != 0 || !stat.isRegular() || stat.size > kLargestFile)
    return false;
  const std::size_t wanted = std::size_t{stat.size} + kTextPadding;
  if (wanted > buffer_->length()) {
    buffer_->reset();
    // A process of 32 bits may have less memory than files are long.
    if (!buffer_->Grow(wanted + wanted / 4) && !buffer_->Grow(wanted)) return false;
  }
  const std::int64_t count = platform::Read(fd, buffer_->get(), stat.size);
  if (count < 0) return false;
  size_ = static_cast<std::size_t>(count);
  std::memset(buffer_->get() + size_, 0, kTextPadding);
  return true;
}

void MappedFile::close() {
  top_ = nullptr;
  size_ = 0;
  if (buffer_->length() > kKeptBufferBytes) buffer_->reset();
}

}  // namespace zvrsit
