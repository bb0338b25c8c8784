// A file's whole content in memory.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "platform/api.h"

namespace zvrsit {

namespace platform {
class LargeBuffer;
}  // namespace platform

// The content is read, not mapped: when another program cuts the file short, the bytes stay
// readable. The buffer stays with the object from file to file.
class ZVRSIT_API MappedFile {
 public:
  MappedFile();
  ~MappedFile();
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;

  // Reads the file at the `\` path. `mode` is 0, for reading; every other mode fails. False when
  // there is no such file, it is no regular file, it cannot be read, or it is larger than 2^31-1
  // bytes. A file that was open before is closed in any case.
  bool open(const std::string& path, int mode);

  // The content of the open file, good until close() or the next open(); kTextPadding zeros follow
  // it. Not null, even when the file is empty; without an open file, null and 0.
  const char* top() const { return top_; }
  std::size_t size() const { return size_; }

  void close();

 private:
  ZVRSIT_LOCAL bool ReadAndClose(int fd);
  ZVRSIT_LOCAL bool Read(int fd);

  std::unique_ptr<platform::LargeBuffer> buffer_;
  const char* top_ = nullptr;  // in buffer_ while a file is open
  std::size_t size_ = 0;
};

}  // namespace zvrsit
