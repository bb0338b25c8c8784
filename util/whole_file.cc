#include "util/whole_file.h"

#include "platform/file.h"

namespace zvrsit {

int ReadWholeFile(const std::string& path, std::string& bytes) {
  const int file = platform::Open(path, platform::kOpenReadOnly);
  if (file < 0) return -1;
  const std::int64_t size = platform::SeekEnd(file);
  bool isRead = size >= 0 && platform::Seek(file, 0) == 0;
  if (isRead) {
    bytes.resize(static_cast<std::size_t>(size));
    isRead = platform::Read(file, bytes.data(), bytes.size()) == size;
  }
  return platform::Close(file) == 0 && isRead ? 0 : -1;
}

int WriteWholeFile(const std::string& path, std::string_view bytes) {
  const int file = platform::Open(path, platform::kOpenPack);
  if (file < 0) return -1;
  const auto written = platform::Write(file, bytes.data(), bytes.size());
  const bool isWritten = written == static_cast<std::int64_t>(bytes.size());
  return platform::Close(file) == 0 && isWritten ? 0 : -1;
}

}  // namespace zvrsit
