// FileImage: a whole file held in memory, which knows what of it has to be written back.
//
// What holds between two calls:
//   1. While nothing is held, `bytes_` is null, and `size_` and `capacity_` are 0. Otherwise
//      `bytes_` has at least `size_` bytes.
//   2. While `isChanged_` is false, the image is what the file was when it was last read or saved.
//   3. `changed_` follows the image from a moment at which the image and the file were equal:
//      wherever the image differs from that file, a block is marked or `changed_` does not reach so
//      far. `noted_` has the size and the times of the file at that moment.
//   4. No write of the file after that moment gives it the times in `noted_` again. Where that is
//      not certain, `changed_` follows nothing, and the next Save writes all.
//
// A large file of which little has changed is saved in parts: only its changed blocks are written.
// That is right when the file on disk has not changed since the noted moment. This is how we know:
//   a. Whoever writes a file gives it a new modification time and a new change time.
//   b. A program can set the modification time back afterwards. That alone gives the file a new
//      change time, which no program can set.
//   c. So a file that has the noted size and both noted times was not written since (4), and what
//      is not in a marked block is on disk as it is in the image (3).
//   d. Times have steps. Two writes within one step get the same time. So (4) needs that the step
//      of the noted time is over, or that the file system gives every write a time of its own. The
//      first is seen from the clock (NoteLoaded), the second from two test writes (NoteSaved).
// What this leaves open: a write by somebody else between the last look at the times and our own
// write, or between the two test writes; a clock that was set back and comes to the very time that
// was noted; a file system that tells times late, as over a network, or that keeps no change time
// while another program sets the modification time back; a disk written without the system. Two
// programs that change one site at once need a lock around both.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string_view>

#include "platform/file.h"
#include "platform/large_memory.h"
#include "storage/changed_blocks.h"

namespace zvrsit {

class FileImage {
 public:
  static constexpr std::int64_t kLargestFile = std::numeric_limits<std::int32_t>::max();

  // Reads the open file `fd`, whose status was `onDisk`. A file whose status could not be read is
  // given with size 0. A read that fails leaves an empty image. A read that is short leaves zeros
  // where no bytes came. 0, or -1 without memory. With `maps` a large file is mapped where that can
  // be done: then nobody else may change it before Drop.
  [[nodiscard]] int Load(int fd, const platform::FileStat& onDisk, bool maps = false);
  // Writes to the open file what has changed. 0, or -1; the next Save then writes all.
  [[nodiscard]] int Save(int fd);
  // Calls part(from, to), offsets in bytes, for each part that Save would write now, until one
  // gives -1. 0 or -1.
  template <class Part>
  [[nodiscard]] int ForEachChange(int fd, Part part) const {
    const bool inParts = changed_.AreFew(size_) && IsAsNoted(fd);
    return inParts ? changed_.ForEachPart(size_, part) : part(std::size_t{0}, std::size_t{size_});
  }
  // To be called after a Save when the file stays open: it makes it possible that the next Save
  // writes only parts.
  void NoteSaved(int fd);
  // Holds nothing from now on.
  void Drop();
  // From now on its first `size` bytes are those of the file, and nothing is known of the file's
  // times.
  void CutToSaved(std::uint32_t size);

  bool isHeld() const { return capacity_ != 0; }
  bool isChanged() const { return isChanged_; }
  std::uint32_t size() const { return size_; }
  std::string_view view() const { return {bytes_.get(), size_}; }
  // Whether this lies in its memory, which moves when the file grows.
  bool HasInMemory(std::string_view bytes) const;

  // The bytes [offset, offset + length), good until the next MakeRoom; null when not all are there.
  const char* Bytes(std::int64_t offset, std::int64_t length) const {
    return offset < 0 || length < 0 || offset + length > size_ ? nullptr : bytes_.get() + offset;
  }
  // The same for changing them in place.
  char* ChangeBytes(std::int64_t offset, std::int64_t length) {
    const char* const bytes = Bytes(offset, length);
    if (bytes == nullptr) return nullptr;
    NoteChange(offset, length);
    return const_cast<char*>(bytes);
  }
  // Makes the file reach to `offset` + `length` and gives the bytes from `offset` on, to be filled
  // by the caller; null when it cannot grow so far. A gap before them is filled with zeros.
  char* MakeRoom(std::int32_t offset, std::int32_t length) {
    const std::int64_t end = std::int64_t{offset} + length;
    if (offset < 0 || length < 0 || offset > static_cast<std::int64_t>(size_) || end > capacity_ ||
        static_cast<std::size_t>(end) > bytes_.length()) {
      return Extend(offset, length);
    }
    size_ = std::max(size_, static_cast<std::uint32_t>(end));
    NoteChange(offset, length);
    return bytes_.get() + offset;
  }

 private:
  void NoteChange(std::int64_t offset, std::int64_t length) {
    isChanged_ = true;
    changed_.Mark(offset, length);
  }
  char* Extend(std::int32_t offset, std::int32_t length);
  [[nodiscard]] bool Reserve(std::uint32_t end);
  bool Map(int fd, const platform::FileStat& onDisk);
  void NoteLoaded(const platform::FileStat& onDisk);
  bool IsAsNoted(int fd) const;
  int Write(int fd, std::size_t from, std::size_t to) const;

  bool isChanged_ = false;
  platform::LargeBuffer bytes_;  // grows by doubling
  std::uint32_t size_ = 0;       // length of the file
  std::uint32_t capacity_ = 0;   // what it may grow to for now, in steps of 4096
  ChangedBlocks changed_;
  platform::FileStat noted_;
};

}  // namespace zvrsit
