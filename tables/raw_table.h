// RawTable: the two files of a table as they lie on the disk, whether or not they can be opened.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "storage/id_table.h"
#include "storage/raw_files.h"
#include "tables/table_faults.h"

namespace zvrsit {

// The shape of a table's records.
struct TableShape {
  int recordType;
  int slotLength;
};
TableShape ShapeOf(TableKind kind);

class RawTable {
 public:
  // The record file has that `\` path.
  RawTable(TableKind kind, std::string recordFile);

  TableKind kind() const { return kind_; }
  const std::string& recordFile() const { return recordFile_; }
  std::string textFile() const;

  // Reads a file; false when it is not there or cannot be read.
  [[nodiscard]] bool ReadRecords() { return records_.Read(recordFile_); }
  [[nodiscard]] bool ReadTexts();
  const RawRecords& records() const { return records_; }
  const RawTexts& texts() const { return texts_; }
  // Where the walk over the texts stopped; it came to its end when this is texts().end().
  std::int64_t walked() const { return walked_; }

  // The text or block of a number. When several entries have the number, the last one, which is
  // also what readers find. False when there is none.
  bool FindEntry(std::int32_t id, RawTexts::Entry& entry) const;
  // The text of a number; false when there is none.
  bool FindText(std::int32_t id, std::string_view& text) const;
  // The name of a record that has one, by its slot; empty for none.
  std::string_view NameOf(const char* slot) const;

 private:
  const TableKind kind_;
  const std::string recordFile_;
  RawRecords records_;
  RawTexts texts_;
  IdTable<std::int32_t> entries_;  // by number: the offset of the entry, 0 for none
  std::int64_t walked_ = 0;
};

}  // namespace zvrsit
