// What is about to change on the disk, written down before anything does, so that it can be undone.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zvrsit {

// The content of a file, as far as it must be told from another one.
struct ContentMark {
  std::uint64_t size = 0;
  std::uint64_t hash = 0;  // FNV-1a of all bytes: the same in every process

  static ContentMark Of(std::string_view bytes);
  bool operator==(const ContentMark&) const = default;
};

// A part of a file before and after.
struct JournalEdit {
  std::uint64_t offset = 0;  // in the file before
  std::string before;
  std::string after;
};

// A file that gets new content. Paths are `\` paths, from before anything moves.
struct JournalFile {
  std::string path;
  std::string temporary;  // beside it: where its new content is written
  ContentMark before;
  ContentMark after;
  std::vector<JournalEdit> edits;

  // The content after the edits, or before them again; false when these are not its bytes.
  bool Apply(std::string_view bytes, std::string& result) const;
  bool Undo(std::string_view bytes, std::string& result) const;
};

// A file or folder that gets another path. What is removed is renamed first; when all else is done,
// it is deleted.
struct JournalRename {
  std::string from;
  std::string to;
  bool isRemoval = false;
};

struct Journal {
  std::vector<std::string> folders;  // that have to be made; each after the one that it lies in
  std::vector<JournalFile> files;
  std::vector<JournalRename> renames;  // after the files, in this order
};

// Puts the journal at `path` in one step, and waits until it is on the disk. 0 or -1.
[[nodiscard]] int WriteJournal(const std::string& path, const Journal& journal);

enum class JournalState { kNone, kWhole, kDamaged, kUnreadable };
JournalState ReadJournal(const std::string& path, Journal& journal);

}  // namespace zvrsit
