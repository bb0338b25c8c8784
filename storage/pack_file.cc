#include "storage/pack_file.h"

#include <limits>
#include <utility>

#include "platform/file.h"
#include "storage/site_db.h"

namespace zvrsit {

namespace {

int WriteAll(int fd, std::string_view bytes) {
  const auto length = static_cast<std::int64_t>(bytes.size());
  return platform::Write(fd, bytes.data(), bytes.size()) == length ? 0 : -1;
}

}  // namespace

PackFile::~PackFile() {
  if (fd_ >= 0) platform::Close(fd_);
  if (mayRemove_) platform::Unlink(path_);
}

int PackFile::Open(int headBytes) {
  platform::FileStat stat;
  oldSize_ = platform::Stat(path_, stat) < 0 ? 0 : stat.size;
  if (oldSize_ > std::numeric_limits<std::int32_t>::max()) return -1;
  fd_ = platform::Open(path_, platform::kOpenDatabase);
  if (fd_ < 0) return -1;
  mayRemove_ = oldSize_ == 0;
  sizeAtOpen_ = SiteDB::SizeWithHeader(oldSize_);
  end_ = headBytes;
  return platform::Seek(fd_, headBytes) < 0 ? -1 : 0;
}

// Bytes that do not follow those before them.
int PackFile::Begin(std::string_view run, bool liesInMemory) {
  if (WriteRun() < 0) return -1;
  run_ = run;
  if (liesInMemory) return 0;
  holdsCopies_ = true;
  return WriteRun();
}

int PackFile::WriteRun() {
  const std::string_view run = std::exchange(run_, {});
  if (!holdsCopies_ && copies_.size() + run.size() > kPiece && WriteCopies() < 0) return -1;
  if (!holdsCopies_ && run.size() > kPiece) return WriteAll(fd_, run);
  copies_.append(run);
  return 0;
}

int PackFile::WriteCopies() {
  if (WriteAll(fd_, copies_) < 0) return -1;
  copies_.clear();
  return 0;
}

// The opening of a file that had only a part of a header may have made it longer than that part and
// the packed bytes.
int PackFile::WriteTail() {
  if (!hasTail() || oldSize_ >= SiteDB::kHeaderSize) return 0;
  return WriteAll(fd_, std::string(static_cast<std::size_t>(sizeAtOpen_ - end_), '\0'));
}

int PackFile::Finish(std::string_view head) {
  if (WriteRun() < 0 || WriteCopies() < 0 || WriteTail() < 0) return -1;
  if (platform::Seek(fd_, 0) < 0 || WriteAll(fd_, head) < 0) return -1;
  if (platform::Close(std::exchange(fd_, -1)) < 0) return -1;
  mayRemove_ = false;
  return 0;
}

}  // namespace zvrsit
