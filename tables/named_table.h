// NamedTable: a table whose records are found by the text of their name word.
#pragma once

#include <string>
#include <string_view>

#include "storage/guarded.h"
#include "tables/site_table.h"

namespace zvrsit {

// The part that does not depend on the record class.
class NamedTableBase : public SiteTable {
 public:
  // The number of the record of that name, compared byte by byte, or -1. The index outlives Close,
  // on purpose: a closed table still answers, and cannot be opened again.
  int Find(std::string_view name) const;
  // The name of a record; 0 or -1.
  [[nodiscard]] int Name(int number, std::string& name) const;
  // The same without a copy, good until the table next changes; empty when there is none.
  std::string_view NameView(int number) const;
  // Deletes the record, then gives back its name; 0 or -1. If the name cannot be given back, its
  // text stays in the store. Number 0 of a table that has handed out no number throws, as its file
  // does.
  [[nodiscard]] int Delete(int number);
  // Deletes every record in one pass. The result is the same as when they are deleted one by one in
  // the order of their numbers. Records that could not be deleted stay. 0, or -1 when not open.
  [[nodiscard]] int Clear();

 protected:
  // Opens the files and reads every name. When two names are equal, the later record is found, on
  // purpose. -1 when the path is empty or the table was opened before.
  [[nodiscard]] int OpenNamed(const std::string& path, int recordLength, int recordType,
                              bool wholeFile);
  [[nodiscard]] int MakeIndex();
  // Adds a text that is about to be entered in the index as well; its number or -1.
  [[nodiscard]] int AddName(std::string_view name);
  // Enters the name of a record in the index.
  void EnterName(std::string_view name, const SiteNodeRec& record);
};

template <class Rec>
class NamedTable : public NamedTableBase {
 public:
  // Opens or makes both files in whole-file mode; 0 or -1.
  [[nodiscard]] int Open(const std::string& path) {
    return OpenNamed(path, Rec::kSlotLength, Rec::kRecordType, true);
  }
  // Adds a record of that name with default words; its number or -1. It does not look whether the
  // name is there: when it is, the new record is found from then on.
  [[nodiscard]] int Add(std::string_view name) {
    Rec record;
    return Guarded([&] { return AddRecord(name, record); });
  }

  // Reads a record, or writes it back; 0 or -1. Never throws.
  [[nodiscard]] int Get(int number, Rec& record) const {
    return IsNumber(number) ? records_->Get(number, &record) : -1;
  }
  [[nodiscard]] int Update(const Rec& record) {
    return IsNumber(record.id) ? records_->Update(&record) : -1;
  }

  // A text field of a record, such as &SitePathRec::title. Setting it adds and stores the new text
  // first, then gives the old one back; an empty text unsets it. Getting one that is not set gives
  // -1 and leaves `text` alone.
  [[nodiscard]] int SetText(int number, std::int32_t Rec::*field, std::string_view text) {
    return SetTextAt(number, text, [field](Rec& record) -> std::int32_t& { return record.*field; });
  }
  [[nodiscard]] int GetText(int number, std::int32_t Rec::*field, std::string& text) const {
    Rec record;
    return Get(number, record) < 0 ? -1 : Text(record.*field, text);
  }
  // A number field of a record; 0 or -1.
  [[nodiscard]] int SetNumber(int number, std::int32_t Rec::*field, std::int32_t value) {
    Rec record;
    if (Get(number, record) < 0) return -1;
    record.*field = value;
    return Update(record);
  }
  [[nodiscard]] int GetNumber(int number, std::int32_t Rec::*field, std::int32_t& value) const {
    Rec record;
    if (Get(number, record) < 0) return -1;
    value = record.*field;
    return 0;
  }

 protected:
  bool IsNumber(int number) const { return isOpen() && number >= 0 && number < Count(); }

  // Adds `record` under that name; its id and name word are set.
  [[nodiscard]] int AddRecord(std::string_view name, Rec& record) {
    if (!isOpen()) return -1;
    record.name = AddName(name);
    if (record.name < 0) return -1;
    const int number = records_->Add(&record);
    if (number >= 0) EnterName(name, record);
    return number;
  }

  // `word(record)` is the text word to set.
  template <class Word>
  [[nodiscard]] int SetTextAt(int number, std::string_view text, Word word) {
    Rec record;
    if (Get(number, record) < 0) return -1;
    const int added = text.empty() ? -1 : strings_->AddString(text);
    if (added < 0 && !text.empty()) return -1;
    const int old = word(record);
    word(record) = added;
    if (Update(record) < 0) return -1;
    return ReleaseText(old);
  }
};

}  // namespace zvrsit
