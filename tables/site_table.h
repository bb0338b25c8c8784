// SiteTable: what all seven tables have: a fixed-record file at a path, and a variable-record file
// for its texts at the same path with "S" in place of the last character.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "storage/site_fix_rec_db.h"
#include "storage/site_var_rec_db.h"
#include "tables/name_index.h"

namespace zvrsit {

// A table object is opened once; after it was closed it is not opened again. Every operation gives
// -1 on failure, also when there is no memory; what it has done by then stays. Nothing is thrown
// but std::out_of_range, and only where this is said.
class SiteTable {
 public:
  // Destroys both files: what was not closed or flushed is lost in whole-file mode.
  virtual ~SiteTable();
  SiteTable(const SiteTable&) = delete;
  SiteTable& operator=(const SiteTable&) = delete;

  // Before the table is opened: both files are only read (SiteDB::SetReadOnly says more).
  void SetReadOnly() { readOnly_ = true; }
  // Before the table is opened: large files are mapped (SiteDB::SetMapped says for whom).
  void SetMapped() { maps_ = true; }
  // Likewise: SiteDB::SetUndo and SetDurable for both.
  void SetUndo(UndoLog* log) { undo_ = log; }
  void SetDurable() { isDurable_ = true; }

  // Closes the record file, then the string store, and frees each one that was closed. 0 or -1. The
  // index over names stays.
  [[nodiscard]] int Close();
  // Brings both files up to date on disk; 0 or -1.
  [[nodiscard]] int Flush();
  // Gives `log` what the next Flush will write.
  void NoteChanges(UndoLog& log) const;
  // Removes dead records and texts from both files; numbers do not change. 0 or -1.
  [[nodiscard]] int Pack();
  // Whether more than a quarter of either file is dead.
  bool IsWorthPacking() const;
  // Whether either file has refused something for want of room (SiteDB::isFull).
  bool IsFull() const;

  // Record numbers handed out so far, deleted ones among them; -1 while closed.
  int Count() const;
  // The smallest live record number from `number` on, or -1. Never throws.
  int NextNumber(int number) const;

  // The two files, owned by the table; null while closed.
  SiteFixRecDB* records() const { return records_.get(); }
  SiteVarRecDB* strings() const { return strings_.get(); }

  // The text that a text word refers to; 0 or -1 (`text` is then left alone).
  int Text(int reference, std::string& text) const;
  // The same without a copy, good until the table next changes; empty when there is none.
  std::string_view TextView(int reference) const;

 protected:
  SiteTable() = default;

  bool isOpen() const {
    return records_ != nullptr && records_->isOpen() && strings_ != nullptr && strings_->isOpen();
  }
  // Makes and opens both files, the record file first; 0, or -1 with none of them open. A path is
  // refused if its string file would be the record file itself.
  [[nodiscard]] int OpenFiles(const std::string& path, int recordLength, int recordType,
                              bool wholeFile);
  void DropFiles();
  bool wasOpened() const { return wasOpened_; }
  // Gives back a text that a record referred to, -1 for none; 0 or -1.
  [[nodiscard]] int ReleaseText(int reference);

  std::unique_ptr<SiteVarRecDB> strings_;
  std::unique_ptr<SiteFixRecDB> records_;
  std::unique_ptr<NameIndex> index_;  // of a table that is searched by name

 private:
  [[nodiscard]] int MakeFiles(const std::string& path, int recordLength, int recordType,
                              bool wholeFile);
  [[nodiscard]] int CloseStrings();

  bool wasOpened_ = false;
  bool readOnly_ = false;
  bool maps_ = false;
  bool isDurable_ = false;
  UndoLog* undo_ = nullptr;
};

}  // namespace zvrsit
