// A file's whole content in memory.
#pragma once

#include <cstddef>
#include <string>

#include "platform/api.h"
#include "platform/large_memory.h"

namespace zvrsit {

namespace platform {
class NearbyFiles;
}

// The content is read, not mapped: another program that cuts the file short cannot take bytes
// away from under us. The buffer stays with the object from file to file.
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
  // The same for one of the files that an operation reads one after another.
  bool open(const std::string& path, platform::NearbyFiles& nearby);

  // The content of the open file, good until close() or the next open(); kTextPadding zeros follow
  // it. Not null, even when the file is empty; without an open file, null and 0.
  const char* top() const { return open_ ? buffer_.get() : nullptr; }
  std::size_t size() const { return open_ ? size_ : 0; }

  void close();

 private:
  bool ReadAndClose(int fd);
  bool Read(int fd);

  platform::LargeBuffer buffer_;
  std::size_t size_ = 0;
  bool open_ = false;
};

}  // namespace zvrsit
