// A database file of the older generation: reads and writes at offsets, the error number of the
// last failing call, and the two helpers that loading and packing need. A `bool` of a call here
// says whether it succeeded. The stores above turn it into what their callers are promised: 0 or
// -1.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/file.h"

namespace zvrsit {

class SitFile {
 public:
  SitFile() = default;
  ~SitFile() { Close(); }
  SitFile(const SitFile&) = delete;
  SitFile& operator=(const SitFile&) = delete;

  // Opens `path`, and closes what was open. The path is kept also when this fails.
  bool Open(const std::string& path, int flags = platform::kOpenDatabase);
  // True for a file that is closed already.
  bool Close();

  bool IsOpen() const { return fd_ >= 0; }
  const std::string& path() const { return path_; }
  // The error number of the last failing call; 0 when none has failed since the opening.
  int lastErrno() const { return lastErrno_; }
  // How many writes and closings have failed since the object was made.
  int failedWrites() const { return failedWrites_; }

  // The length of the file, or -1.
  std::int64_t Size();
  // Up to `length` bytes from `offset`; how many came, or -1.
  [[nodiscard]] std::int64_t ReadSome(std::int64_t offset, void* destination, std::size_t length);
  // All of `length` bytes, or false.
  [[nodiscard]] bool ReadAt(std::int64_t offset, void* destination, std::size_t length);
  // False when the call fails, and for any byte beyond 2^31-1, which no database file reaches.
  bool WriteAt(std::int64_t offset, const void* source, std::size_t length);
  [[nodiscard]] bool ReadWord(std::int64_t offset, std::int32_t& word);
  bool WriteWord(std::int64_t offset, std::int32_t word);
  // Counts a write that is not even tried as one that failed with `error`. Gives false.
  bool RefuseWrite(int error);

 private:
  bool Fail();
  bool FailWrite();

  std::string path_;
  int fd_ = -1;
  int lastErrno_ = 0;
  int failedWrites_ = 0;
};

// Reads a file from an offset onwards through a buffer of its own.
class SitFileScan {
 public:
  SitFileScan(SitFile& file, std::int64_t offset) : file_(file), offset_(offset) {}

  // The next `length` bytes; false when fewer are left, or they cannot be read.
  [[nodiscard]] bool Take(void* destination, std::size_t length);
  void Skip(std::int64_t length) { offset_ += length; }
  // Where the next byte will come from.
  std::int64_t offset() const { return offset_; }

 private:
  SitFile& file_;
  std::int64_t offset_;
  std::int64_t bufferStart_ = 0;
  std::vector<char> buffer_;
};

// Writes the packed copy of a file from front to back. If the copy does not replace the file, it is
// deleted at the end.
class SitPackWriter {
 public:
  // The copy is `path` followed by "_pack"; its first `headerSize` bytes are left for Finish.
  SitPackWriter(const std::string& path, std::size_t headerSize);
  ~SitPackWriter();

  bool IsOpen() const { return file_.IsOpen(); }
  // Where the next byte will go.
  std::int64_t offset() const { return written_ + static_cast<std::int64_t>(pending_.size()); }
  void Append(const void* bytes, std::size_t length);
  // Writes the header and closes the copy; false when any write has failed.
  [[nodiscard]] bool Finish(const void* header, std::size_t headerSize);
  // Puts the finished copy in the place of the file, which must be closed; false when it cannot.
  [[nodiscard]] bool Replace();

 private:
  void Flush();

  SitFile file_;
  bool made_;
  std::string target_;
  std::string pending_;
  std::int64_t written_ = 0;
  bool failed_ = false;
  bool replaced_ = false;
};

}  // namespace zvrsit
