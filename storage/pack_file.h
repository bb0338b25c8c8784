// PackFile: the file beside a database file that a compaction writes and then puts in its place.
//
// When it is finished, the file is as if a SiteDB in whole-file mode had written it. A "_pack" file
// that is there already is not emptied, on purpose: what it holds beyond the packed part stays. If
// it is shorter than a header, it first gets the length that opening it would give it.
#pragma once

#include <cassert>
#include <cstdint>
#include <string>
#include <string_view>

#include "storage/file_names.h"

namespace zvrsit {

// Bytes that lie in memory are written in large pieces, so that a file of any size needs little
// extra memory. Bytes that were read from a file are kept until all have been read. So a read that
// fails leaves no file behind.
class PackFile {
 public:
  // The file is `target` followed by "_pack".
  explicit PackFile(const std::string& target) : path_(target + kPackSuffix) {}
  // Removes a file that was not finished, unless it held something before.
  ~PackFile();
  PackFile(const PackFile&) = delete;
  PackFile& operator=(const PackFile&) = delete;
  const std::string& path() const { return path_; }

  // All of these give 0 or -1. The first `headBytes` bytes are left for Finish.
  [[nodiscard]] int Open(int headBytes);
  // Puts bytes at the end. Bytes that lie in memory must stay there until Finish. All others were
  // read from a file, and are copied.
  [[nodiscard]] int Append(std::string_view bytes, bool liesInMemory) {
    assert(fd_ >= 0);
    end_ += static_cast<std::int64_t>(bytes.size());
    if (!liesInMemory || run_.data() + run_.size() != bytes.data()) {
      return Begin(bytes, liesInMemory);
    }
    run_ = {run_.data(), run_.size() + bytes.size()};
    return 0;
  }
  // The length of the packed part so far, the head included.
  std::int64_t end() const { return end_; }
  // Whether the file will hold something after the packed part.
  bool hasTail() const { return end_ < sizeAtOpen_; }
  // Writes what is left, then the head (as many bytes as Open was told), and closes the file.
  [[nodiscard]] int Finish(std::string_view head);

 private:
  static constexpr std::size_t kPiece = std::size_t{1} << 18;

  [[nodiscard]] int Begin(std::string_view run, bool liesInMemory);
  [[nodiscard]] int WriteRun();
  [[nodiscard]] int WriteCopies();
  [[nodiscard]] int WriteTail();

  std::string path_;
  int fd_ = -1;
  std::uint32_t oldSize_ = 0;  // 0 also where there was no file
  std::int64_t sizeAtOpen_ = 0;
  std::int64_t end_ = 0;
  std::string copies_;        // on their way to the file
  bool holdsCopies_ = false;  // until Finish
  std::string_view run_;      // of bytes that lie in memory, after the copies
  bool mayRemove_ = false;    // nothing is lost with the file
};

}  // namespace zvrsit
