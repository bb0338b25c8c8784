// PackFile: the file beside a database file that a compaction writes and then puts in its place.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zvrsit {

// Bytes go out in large pieces, and those that lie in memory side by side as they are, so that a
// file of any size needs little memory.
class PackFile {
 public:
  // The file is `target` followed by "_pack". One that is there is opened as it is, not
  // emptied, on purpose: what it held beyond the packed part stays behind that.
  explicit PackFile(const std::string& target) : path_(PathFor(target)) {}
  ~PackFile();
  PackFile(const PackFile&) = delete;
  PackFile& operator=(const PackFile&) = delete;
  static std::string PathFor(const std::string& target) { return target + "_pack"; }

  // 0 or -1, as all of these. The first `headBytes` bytes are left for Finish.
  int Open(int headBytes);
  // Puts bytes at the end. Lasting ones stay as they are until Finish.
  int Append(std::string_view bytes, bool isLasting) {
    end_ += static_cast<std::int64_t>(bytes.size());
    if (!isLasting || run_.data() + run_.size() != bytes.data()) return Begin(bytes, isLasting);
    run_ = {run_.data(), run_.size() + bytes.size()};
    return 0;
  }
  // The length of the packed part so far, the head included.
  std::int64_t end() const { return end_; }
  // Whether the file will hold something behind the packed part.
  bool hasTail() const { return end_ < oldSize_; }
  // Writes what is due, then the head, as long as Open was told, and closes the file.
  int Finish(std::string_view head);

 private:
  static constexpr std::size_t kPiece = std::size_t{1} << 18;

  int Begin(std::string_view run, bool isLasting);
  int WriteRun();
  int WriteCopies();

  std::string path_;
  int fd_ = -1;
  std::int64_t oldSize_ = 0;
  std::int64_t end_ = 0;
  std::string copies_;    // small runs on their way
  std::string_view run_;  // of lasting bytes, behind those
};

}  // namespace zvrsit
