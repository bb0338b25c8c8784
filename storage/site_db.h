// SiteDB: one database file, a 24-byte header and an array of bytes after it.
//
//   offset  size  field
//   0       16    magic "ZVR4.00-SITE0.01", no terminating zero; written, never checked
//   16      4     first header word, little-endian; owned by the class above
//   20      4     second header word, likewise
//   24      ...   body, owned by the class above
//
// There are two modes, chosen at construction. Whole-file: Open reads the file into memory, and
// Close writes it back if it has changed. file_image.h says how, and when only parts of it are
// written. Direct: every read and write goes to the file at once.
//
// Every operation gives a negative number (-1) when it fails, also when it gets no memory. Nothing
// is thrown but std::out_of_range, and only where it is said. One thread at a time.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

#include "storage/file_image.h"

namespace zvrsit {

class UndoLog;

class SiteDB {
 public:
  static constexpr char kMagic[] = "ZVR4.00-SITE0.01";
  static constexpr int kMagicSize = 16;
  static constexpr int kHeaderSize = 24;
  // No file hands out more numbers than this.
  static constexpr int kMostIds = 1 << 26;

  // How long a file of `size` bytes is after it was opened. Each part of the header that is missing
  // adds its whole length, on purpose: a file of 5 bytes gets 16 more for its magic, and so keeps 5
  // bytes after it.
  static constexpr std::uint32_t SizeWithHeader(std::uint32_t size) {
    if (size < kMagicSize) size += kMagicSize;
    if (size < kHeaderSize - 4) size += 4;
    return size < kHeaderSize ? size + 4 : size;
  }

  SiteDB(std::string filePath, bool wholeFile);
  // Whole-file mode: closes without writing, on purpose; only an explicit Close saves. Direct mode:
  // does not close the descriptor.
  virtual ~SiteDB();
  SiteDB(const SiteDB&) = delete;
  SiteDB& operator=(const SiteDB&) = delete;

  // From now on nothing is written. Open makes no file and completes no header; where it would have
  // to, it gives -1. In whole-file mode changes stay in memory, and Flush and Close give -1 after
  // one.
  void SetReadOnly() { readOnly_ = true; }
  // Whole-file mode: a large file is mapped by Open, not read. Only for a caller who keeps
  // everybody else from changing the file while it is open: another process that cut it would end
  // this one.
  void SetMapped() { maps_ = true; }

  // Before Open: nothing is written in place before `log`, which outlives this object, has begun.
  void SetUndo(UndoLog* log) { undo_ = log; }
  // Before Open: a packed file is on the disk before it takes the place of this one.
  void SetDurable() { isDurable_ = true; }
  // Whole-file mode: gives `log` the parts that the next Flush will write.
  void NoteChanges(UndoLog& log) const;

  // Opens the file; makes it when it is missing. 0, or -1, which leaves it closed. For a file that
  // is open already: whole-file mode gives -1; direct mode opens it again and never closes the
  // first descriptor, so no caller does this.
  [[nodiscard]] int Open();
  // Writes what has changed and closes. 0 or -1; 0 when not open. When it fails, the file is closed
  // in whole-file mode and stays open in direct mode. Whole-file mode: `kept`, if given, receives
  // what was in memory.
  [[nodiscard]] int Close(FileImage* kept = nullptr);
  // Writes what has changed in memory (whole-file mode) or flushes the streams (direct mode), and
  // stays open. 0 or -1.
  [[nodiscard]] int Flush();

  // Read and write at an absolute offset: the number of bytes, or -1. A read past the end fails in
  // whole-file mode, on purpose; in direct mode it gives the bytes that there are. No file grows
  // beyond 2^31-1 bytes.
  [[nodiscard]] int ReadAt(void* destination, std::int32_t offset, std::int32_t length) {
    const char* bytes = Bytes(offset, length);
    if (bytes == nullptr) return ReadFile(destination, offset, length);
    std::memcpy(destination, bytes, static_cast<std::size_t>(length));
    return length;
  }
  [[nodiscard]] int WriteAt(const void* source, std::int32_t offset, std::int32_t length) {
    char* bytes = ChangeBytes(offset, length);
    if (bytes == nullptr) return WriteFile(source, offset, length);
    std::memcpy(bytes, source, static_cast<std::size_t>(length));
    return length;
  }

  // Copies the file on disk to its path followed by "_bak"; bytes written, or -1 (an empty file).
  [[nodiscard]] int Backup();
  // Copies that backup over the file; only while closed. Neither copy shortens a longer
  // destination.
  [[nodiscard]] int Restore();
  // Unlinks the file; only while closed.
  [[nodiscard]] int Delete();

  bool isInMemory() const { return inMemory; }
  bool isOpen() const { return fd >= 0; }
  // Whether a record or a text was refused since the file was opened or packed, because the file
  // would become too long for its offsets, or has handed out all numbers.
  bool isFull() const { return isFull_; }
  const std::string& filePath() const { return path; }

 protected:
  // Whole-file mode: as those of FileImage. They give null in direct mode and while closed.
  const char* Bytes(std::int64_t offset, std::int64_t length) const {
    return image.Bytes(offset, length);
  }
  char* ChangeBytes(std::int64_t offset, std::int64_t length) {
    return image.ChangeBytes(offset, length);
  }
  char* MakeRoom(std::int32_t offset, std::int32_t length) {
    return image.MakeRoom(offset, length);
  }
  // Closes the file and puts the file at the path `other` in its place, in one step; 0 or -1. What
  // was changed in memory is written only when that failed. Whole-file mode: `kept`, if given,
  // receives what was in memory.
  [[nodiscard]] int ReplaceBy(const std::string& other, FileImage* kept = nullptr);
  // Whole-file mode: opens the file without reading it. The caller knows that it holds the first
  // `size` bytes of `known`, and in its header the two header words of this object. 0 or -1.
  [[nodiscard]] int OpenOn(FileImage known, std::uint32_t size);
  // Notes that something was refused for that reason. Gives -1.
  [[nodiscard]] int RefuseForRoom();
  // The header of a file with these words.
  void StoreHeader(char* bytes, std::int32_t word1, std::int32_t word2) const;
  // Closes without writing anything: after an open that failed further up.
  void Abandon();
  // The length of the file: in memory, or (direct mode) on disk; -1 on failure, and for a file
  // that is too long for its offsets.
  std::int64_t Length() const;

  char magic[kMagicSize] = {};
  std::string path;
  int fd = -1;
  std::int32_t headerWord1 = 0;
  std::int32_t headerWord2 = 0;
  const bool inMemory;
  FileImage image;  // whole-file mode, while open

 private:
  // What the image alone does not answer.
  [[nodiscard]] int ReadFile(void* destination, std::int32_t offset, std::int32_t length);
  [[nodiscard]] int WriteFile(const void* source, std::int32_t offset, std::int32_t length);
  [[nodiscard]] int OpenWhole();
  [[nodiscard]] int OpenDirect();
  void CompleteHeader();
  [[nodiscard]] int CloseWhole(FileImage* kept);
  [[nodiscard]] int CloseDirect();
  [[nodiscard]] int ReadHeader();
  [[nodiscard]] int ReadHeaderWord(std::int32_t& word, int offset);
  [[nodiscard]] int WriteHeader();
  [[nodiscard]] int SaveImage();
  int CheckHeader() const { return 0; }  // accepts any 16 bytes, on purpose

  [[nodiscard]] int OpenDescriptor() const;

  bool readOnly_ = false;
  bool isFull_ = false;
  bool maps_ = false;
  bool isDurable_ = false;
  UndoLog* undo_ = nullptr;
};

}  // namespace zvrsit
