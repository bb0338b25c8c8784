// PairTable: a table of records that join two entries, found by either end or both.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tables/end_index.h"
#include "tables/site_table.h"
#include "util/little_endian.h"

namespace zvrsit {

// The part that does not depend on the record class. Each index over an end is made when walks over
// the table would cost more, and is then kept in step.
class PairTableBase : public SiteTable {
 public:
  // Puts the numbers of the records that join `from` and `to` into `numbers`, ascending, in place
  // of what it held. Either end may be kAnyUrlID. Gives how many they are, or -1.
  [[nodiscard]] int Query(const UrlID& from, const UrlID& to, std::vector<int>& numbers);
  // The smallest number that Query would give, or -1.
  int First(const UrlID& from, const UrlID& to);
  // How many records have this end, without listing them; -1 when not open.
  int CountFrom(const UrlID& from);
  int CountTo(const UrlID& to);
  // 1 when a record goes to this end, else 0; -1 when not open.
  int IsTarget(const UrlID& to);

 protected:
  enum class End { kFrom, kTo };

  [[nodiscard]] int OpenPairs(const std::string& path, int recordLength, int recordType);
  EndIndex& MadeIndex(End which);
  void EnterEnds(const UrlID& from, const UrlID& to, int number);
  void RemoveEnds(const SiteRelRec& record);
  void ForgetEnds();

 private:
  template <class Visit>
  void ForEachMatch(const UrlID& from, const UrlID& to, Visit visit);

  // An index costs as much as five walks over all records. So the first questions are answered by
  // walks. When these have looked at each record four times, the index is made. Then walks and
  // index together cost at most about twice as much as the better of the two alone.
  bool MayWalk(const EndIndex& index) const {
    return !index.isMade() && walked_ <= kWalksBeforeIndex * records_->liveCount();
  }
  bool ComesFrom(int number, const UrlID& from) const;
  bool GoesTo(int number, const UrlID& to) const;

  static constexpr std::int64_t kWalksBeforeIndex = 4;

  EndIndex fromIndex_;
  EndIndex toIndex_;
  std::int64_t walked_ = 0;  // records that walks have looked at
};

// Delete of the tables below throws for number 0 of a table that has handed out none, as their file
// does.
template <class Rec>
class PairTable : public PairTableBase {
 public:
  // Opens or makes both files in whole-file mode; 0 or -1.
  [[nodiscard]] int Open(const std::string& path) {
    return OpenPairs(path, Rec::kSlotLength, Rec::kRecordType);
  }
  // Reads a record, or writes it back (its ends must not have changed); 0 or -1. Never throws.
  [[nodiscard]] int Get(int number, Rec& record) const {
    return IsNumber(number) ? records_->Get(number, &record) : -1;
  }
  // Reads only where a record goes; 0 or -1.
  [[nodiscard]] int Target(int number, UrlID& to) const {
    const char* const slot = IsNumber(number) ? records_->Slot(number) : nullptr;
    if (slot == nullptr) return -1;
    to = {LoadLE32(slot + Rec::kToAt), LoadLE32(slot + Rec::kToAt + 4)};
    return 0;
  }
  [[nodiscard]] int Update(const Rec& record) {
    return IsNumber(record.id) ? records_->Update(&record) : -1;
  }

 protected:
  bool IsNumber(int number) const { return isOpen() && number >= 0 && number < Count(); }

  // Adds the record and enters its ends; its number or -1.
  [[nodiscard]] int AddRecord(Rec& record) {
    const int number = records_->Add(&record);
    if (number >= 0) EnterEnds(record.from, record.to, number);
    return number;
  }
};

}  // namespace zvrsit
