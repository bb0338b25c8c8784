#include "storage/pack_file.h"

#include <limits>
#include <utility>

#include "platform/file.h"

namespace zvrsit {

namespace {

int WriteAll(int fd, std::string_view bytes) {
  const auto length = static_cast<std::int64_t>(bytes.size());
  return platform::Write(fd, bytes.data(), bytes.size()) == length ? 0 : -1;
}

}  // namespace

PackFile::~PackFile() {
  if (fd_ >= 0) platform::Close(fd_);
}

int PackFile::Open(int headBytes) {
  platform::FileStat stat;
  oldSize_ = platform::Stat(path_, stat) < 0 ? 0 : stat.size;
  if (oldSize_ > std::numeric_limits<std::int32_t>::max()) return -1;
  fd_ = platform::Open(path_, platform::kOpenDatabase);
  end_ = headBytes;
  return fd_ >= 0 && platform::Seek(fd_, headBytes) >= 0 ? 0 : -1;
}

// Bytes that do not follow those before them.
int PackFile::Begin(std::string_view run, bool isLasting) {
  if (WriteRun() < 0) return -1;
  run_ = run;
  return isLasting ? 0 : WriteRun();
}

int PackFile::WriteRun() {
  if (copies_.size() + run_.size() > kPiece && WriteCopies() < 0) return -1;
  const std::string_view run = std::exchange(run_, {});
  if (run.size() > kPiece) return WriteAll(fd_, run);
  copies_.append(run);
  return 0;
}

int PackFile::WriteCopies() {
  if (WriteAll(fd_, copies_) < 0) return -1;
  copies_.clear();
  return 0;
}

int PackFile::Finish(std::string_view head) {
  if (WriteRun() < 0 || WriteCopies() < 0 || platform::Seek(fd_, 0) < 0) return -1;
  if (WriteAll(fd_, head) < 0) return -1;
  const int fd = std::exchange(fd_, -1);
  return platform::Close(fd) < 0 ? -1 : 0;
}

}  // namespace zvrsit
