// TableCheck: what is wrong with the two files of one table.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "storage/id_table.h"
#include "storage/record_words.h"
#include "tables/raw_table.h"
#include "tables/table_faults.h"

namespace zvrsit {

// Time and memory are linear in the size of the files, whatever they hold.
class TableCheck {
 public:
  // Faults are added to `faults`.
  TableCheck(TableKind kind, const std::string& recordFile, TableFaults& faults)
      : table_(kind, recordFile), faults_(faults) {}

  // Reads both files and looks at everything that they tell without other tables.
  void Check();

  const RawTable& table() const { return table_; }
  bool Has(std::int32_t number) const { return SlotOf(number) >= 0; }
  // Of a record that is there.
  const char* Slot(std::int32_t number) const { return table_.records().Slot(SlotOf(number)); }
  // Empty for a record that is not there.
  std::string_view NameOf(std::int32_t number) const {
    return Has(number) ? table_.NameOf(Slot(number)) : std::string_view();
  }
  int liveCount() const { return live_; }
  // Calls visit(number, slot) for each record that readers find, by number.
  template <class Visit>
  void ForEachRecord(Visit visit) const {
    slots_.FindSet([&](std::size_t number, std::int32_t slot) {
      visit(static_cast<std::int32_t>(number), table_.records().Slot(slot - 1));
      return false;
    });
  }

  // Tells of a fault of a record that is there, and of the whole record file.
  void TellOf(std::int32_t number, const std::string& what);
  void Tell(const std::string& what) { TellAt(table_.recordFile(), 0, what); }

 private:
  std::int32_t SlotOf(std::int32_t number) const {
    const bool isNumber = number >= 0 && static_cast<std::size_t>(number) < slots_.size();
    return isNumber ? slots_.at(static_cast<std::size_t>(number)) - 1 : -1;
  }
  void TellAt(const std::string& file, std::int64_t offset, const std::string& what,
              bool isWaste = false);

  bool CheckHeader(const RawFile& file, const std::string& name);
  void CheckSlots();
  void CheckSlot(std::int32_t slot);
  void CheckEntries();
  void CheckEntry(const RawTexts::Entry& entry);
  void CheckWords(std::int32_t number, const char* slot);
  void UseText(std::int32_t number, const RecordWord& word, std::int32_t id);
  void UseList(std::int32_t number, const RecordWord& word, std::int32_t id, std::int32_t count);
  void CountUse(std::int32_t id);
  void CheckUses();
  void CheckEqualTexts();
  void CheckKeys();
  std::string KeyOf(const char* slot) const;

  RawTable table_;
  TableFaults& faults_;
  int toldHere_ = 0;
  int live_ = 0;
  IdTable<std::int32_t> slots_;  // by number: the slot plus 1, 0 for none
  IdTable<std::int32_t> uses_;   // by number of a text: how many words refer to it
};

}  // namespace zvrsit
