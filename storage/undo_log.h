// UndoLog: what files held before they are changed in place, so that a change that was cut off, by
// a killed process or a power cut, can be undone.
//
//   1. Whoever changes the files names them: whole files, parts of files, renamings.
//   2. Begin writes what they hold to the log and waits until it is on the disk.
//   3. The files are changed.
//   4. End waits until the files are on the disk, and removes the log. Now the change counts.
//
// A log that is found later was left by a change that did not come so far: Undo makes the files
// what they were. Undo can itself be cut off and begun again. One process at a time: whoever uses
// the files and their log holds a lock on both.
//
// The log is a file: this line, a hash of the rest, and the entries. Numbers have eight bytes,
// little-endian; a text has its length before it. A file's path is relative to the folder of the
// log if the file lies there.
//
//   ZVRSIT-UNDO 1\n
//   file:     0, path, size (all bits set: it was not there), and for each part 1, offset, bytes
//   renaming: 2, from, to
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zvrsit {

class UndoLog {
 public:
  // `path` is that of the log.
  explicit UndoLog(std::string path) : path_(std::move(path)) {}
  UndoLog(const UndoLog&) = delete;
  UndoLog& operator=(const UndoLog&) = delete;

  // What may change after Begin: a file, or the bytes [from, to) of it and its length; what lies at
  // `from` may get the path `to`. May throw when there is no memory.
  void NoteFile(const std::string& file) { files_[file].isWhole = true; }
  void NotePart(const std::string& file, std::uint64_t from, std::uint64_t to) {
    files_[file].parts.emplace_back(from, to);
  }
  void NoteRename(const std::string& from, const std::string& to) {
    renames_.emplace_back(from, to);
  }

  bool isEmpty() const { return files_.empty() && renames_.empty(); }
  bool hasBegun() const { return hasBegun_; }
  // 0, also when it has begun already; -1 when the log cannot be written: nothing may be changed
  // then.
  [[nodiscard]] int Begin();
  // 0, also when it has not begun. -1 when the files, or that the log is gone, may not be on the
  // disk: the change counts if there is no log any more. Renamings are over; for files the object
  // can be used again.
  [[nodiscard]] int End();

  // Undoes what the log at that path is about, and removes it. 0, also when there is none; or -1
  // with the log still there. A log that is not whole never began.
  [[nodiscard]] static int Undo(const std::string& path);

 private:
  struct Noted {
    bool isWhole = false;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> parts;
  };
  class Writer;

  [[nodiscard]] int WriteLog(const std::string& path) const;
  [[nodiscard]] int WriteFile(Writer& writer, const std::string& file, const Noted& noted) const;

  const std::string path_;
  bool hasBegun_ = false;
  std::map<std::string, Noted> files_;
  std::vector<std::pair<std::string, std::string>> renames_;
};

}  // namespace zvrsit
