// SiteTable: what all seven tables are: a fixed-record file at a path, and a variable-record file
// for its texts at the same path with its last character replaced by "S".
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "storage/site_fix_rec_db.h"
#include "storage/site_var_rec_db.h"
#include "tables/name_index.h"

namespace zvrsit {

// A table object is opened once, a closed one is not opened again. Every operation gives -1 on
// failure, also for want of memory, and leaves what was done. Nothing is thrown but the
// std::out_of_range that some say.
class SiteTable {
 public:
  // Destroys both files: what was not closed or flushed is lost in whole-file mode.
  virtual ~SiteTable();
  SiteTable(const SiteTable&) = delete;
  SiteTable& operator=(const SiteTable&) = delete;

  // Before the table is opened: both files are only read (SiteDB::SetReadOnly says more).
  void SetReadOnly() { readOnly_ = true; }

  // Closes the record file, then the string store; each that is closed is gone. 0 or -1. A name
  // index stays.
  int Close();
  // Brings both files up to date on disk; 0 or -1.
  int Flush();
  // Removes dead records and texts from both files; numbers do not change. 0 or -1.
  int Pack();
  // Whether more than a quarter of either file is dead.
  bool IsWorthPacking() const;

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
  // Makes and opens both files, the record file first; 0 or -1, which leaves none. A path whose
  // string file would be the record file itself is refused.
  int OpenFiles(const std::string& path, int recordLength, int recordType, bool wholeFile);
  void DropFiles();
  bool wasOpened() const { return wasOpened_; }
  // Gives back a text that a record referred to, -1 for none; 0 or -1.
  int ReleaseText(int reference);

  std::unique_ptr<SiteVarRecDB> strings_;
  std::unique_ptr<SiteFixRecDB> records_;
  std::unique_ptr<NameIndex> index_;  // of a table that is searched by name

 private:
  int MakeFiles(const std::string& path, int recordLength, int recordType, bool wholeFile);
  int CloseStrings();

  bool wasOpened_ = false;
  bool readOnly_ = false;
};

}  // namespace zvrsit
