// SiteDB: one database file, a 24-byte header and an array of bytes behind it.
//
//   offset  size  field
//   0       16    magic "ZVR4.00-SITE0.01", no terminating zero; written, never checked
//   16      4     first header word, little-endian; owned by the class above
//   20      4     second header word, likewise
//   24      ...   body, owned by the class above
//
// Two modes, chosen at construction. Whole-file: Open reads the file into a buffer, Close writes
// it back if it changed: in one piece, or only the changed parts of a large file that nobody else
// has written meanwhile. Direct: every read and write goes to the file at once.
//
// Every operation gives a negative number (-1) on failure, also for want of memory, and throws
// nothing but the std::out_of_range that some say. One thread at a time.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "platform/file.h"
#include "platform/large_memory.h"
#include "storage/changed_blocks.h"

namespace zvrsit {

class SiteDB {
 public:
  static constexpr int kMagicSize = 16;
  static constexpr int kHeaderSize = 24;
  // No file hands out more numbers than this.
  static constexpr int kMostIds = 1 << 26;

  // How long a file of `size` bytes is once opening has given it what it lacks of the header. Each
  // part is added to the size as it stands, on purpose: a file of 1 to 15 bytes stays that much
  // longer than its new magic.
  static constexpr std::uint32_t SizeWithHeader(std::uint32_t size) {
    if (size < kMagicSize) size += kMagicSize;
    if (size < kHeaderSize - 4) size += 4;
    return size < kHeaderSize ? size + 4 : size;
  }

  // The bytes of a file, which outlive its closing.
  struct Image {
    platform::LargeBuffer bytes;
    std::uint32_t size = 0;  // of the file
  };

  SiteDB(std::string filePath, bool wholeFile);
  // Whole-file mode: closes without writing, on purpose: only an explicit Close saves. Direct mode:
  // leaves the descriptor alone.
  virtual ~SiteDB();
  SiteDB(const SiteDB&) = delete;
  SiteDB& operator=(const SiteDB&) = delete;

  // From then on nothing is written: opening makes no file and mends no header, but gives -1 where
  // that would be needed. Changes of a whole file stay in memory; Flush and Close then give -1.
  void SetReadOnly() { readOnly_ = true; }

  // Opens the file, making it when it is missing. 0 or -1; a failed open leaves it closed. An open
  // file gives -1 in whole-file mode; in direct mode its first descriptor is lost, so no one does.
  int Open();
  // Writes what is due and closes. 0 or -1; 0 when not open. A failure in whole-file mode still
  // closes the file; in direct mode it leaves it open. Whole-file mode: `kept`, when given, takes
  // over what was in memory.
  int Close(Image* kept = nullptr);
  // Writes a changed buffer to the file (whole-file mode) or flushes the streams (direct mode),
  // and stays open. 0 or -1.
  int Flush();

  // Read and write at an absolute offset: the number of bytes, or -1. A read past the end is all
  // or nothing in whole-file mode, on purpose, and short in direct mode. No file grows past 2^31-1
  // bytes.
  int ReadAt(void* destination, std::int32_t offset, std::int32_t length) {
    const char* bytes = Bytes(offset, length);
    if (bytes == nullptr) return ReadFile(destination, offset, length);
    std::memcpy(destination, bytes, static_cast<std::size_t>(length));
    return length;
  }
  int WriteAt(const void* source, std::int32_t offset, std::int32_t length) {
    char* bytes = ChangeBytes(offset, length);
    if (bytes == nullptr) return WriteFile(source, offset, length);
    std::memcpy(bytes, source, static_cast<std::size_t>(length));
    return length;
  }

  // Copies the file on disk to its path followed by "_bak"; bytes written, or -1 (an empty file).
  int Backup();
  // Copies that backup over the file; only while closed. Neither copy shortens its destination.
  int Restore();
  // Unlinks the file; only while closed.
  int Delete();

  bool isInMemory() const { return inMemory; }
  bool isOpen() const { return fd >= 0; }
  const std::string& filePath() const { return path; }

 protected:
  // Whole-file mode: the bytes [offset, offset + length) of the file, good until the next write;
  // null in direct mode, while closed, or when they are not all in memory.
  const char* Bytes(std::int64_t offset, std::int64_t length) const {
    return offset < 0 || length < 0 || offset + length > size ? nullptr : buffer.get() + offset;
  }
  // The same for changing them in place; the file counts as changed from then on.
  char* ChangeBytes(std::int64_t offset, std::int64_t length) {
    const char* const bytes = Bytes(offset, length);
    if (bytes == nullptr) return nullptr;
    dirty = true;
    changed_.Mark(offset, length);
    return const_cast<char*>(bytes);
  }
  // Whole-file mode: makes the file reach to `offset` + `length` and gives the bytes from `offset`
  // on, to be filled by the caller; null when it cannot grow so far.
  char* MakeRoom(std::int32_t offset, std::int32_t length) {
    const std::int64_t end = std::int64_t{offset} + length;
    if (offset < 0 || length < 0 || offset > static_cast<std::int64_t>(size) || end > capacity ||
        static_cast<std::size_t>(end) > buffer.length()) {
      return Extend(offset, length);
    }
    size = std::max(size, static_cast<std::uint32_t>(end));
    dirty = true;
    changed_.Mark(offset, length);
    return buffer.get() + offset;
  }
  // Closes the file, removes it and gives its name to the file at the path `other`; 0 or -1. What
  // was changed in memory is written only where the file could not be removed. Whole-file mode:
  // `kept`, when given, takes over what was in memory.
  int ReplaceBy(const std::string& other, Image* kept = nullptr);
  // Whole-file mode: opens the file, of which `image` is known to be what it holds but for the two
  // words of the header, and takes it over instead of reading; 0 or -1.
  int OpenOn(Image image);
  // The header of a file with these words.
  void StoreHeader(char* bytes, std::int32_t word1, std::int32_t word2) const;
  // Closes without writing anything: after an open that failed further up.
  void Abandon();
  // The length of the file: of the buffer, or (direct mode) on disk; -1 on failure, and for a file
  // that is too long for its offsets.
  std::int64_t Length() const;

  char magic[kMagicSize] = {};
  std::string path;
  int fd = -1;
  std::int32_t headerWord1 = 0;
  std::int32_t headerWord2 = 0;
  const bool inMemory;
  bool dirty = false;            // whole-file mode: the buffer differs from the file
  platform::LargeBuffer buffer;  // whole-file mode, null while closed; it grows by doubling
  std::uint32_t size = 0;        // length of the file, 0 while closed and in direct mode
  std::uint32_t capacity = 0;    // what it may grow to for now, in steps of 4096; 0 while closed

 private:
  char* Extend(std::int32_t offset, std::int32_t length);
  // What the buffer alone does not answer.
  int ReadFile(void* destination, std::int32_t offset, std::int32_t length);
  int WriteFile(const void* source, std::int32_t offset, std::int32_t length);
  int OpenWhole();
  int OpenDirect();
  void CompleteHeader();
  int CloseWhole(Image* kept);
  int CloseDirect();
  int ReadHeader();
  int ReadHeaderWord(std::int32_t& word, int offset);
  int WriteHeader();
  void FollowChanges(const platform::FileStat& onDisk);
  void FollowWritten();
  bool IsAsLeft() const;
  int WriteImage();
  int WriteBytes(std::size_t from, std::size_t to);
  bool Reserve(std::uint32_t end);
  int CheckHeader() const { return 0; }  // accepts any 16 bytes, on purpose

  int OpenDescriptor() const;

  bool readOnly_ = false;
  // Whole-file mode: what changed since the file was read or written, and how it was left then.
  ChangedBlocks changed_;
  platform::FileStat onDisk_;
};

}  // namespace zvrsit
