// SiteFixRecDB: records of one class and one length, found by number.
//
//   offset                   size           meaning
//   16                       4              id count: numbers 0 .. count-1 were handed out
//   20                       4              slot count, live and dead
//   24 + k * record length   record length  slot k: one record, the rest zero
//
// A slot whose record id is -1 is dead; one whose id is not below the id count is ignored. Numbers
// are stable: neither Delete nor Pack changes that of a live record.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <queue>
#include <string>
#include <vector>

#include "storage/id_table.h"
#include "storage/records.h"
#include "storage/site_db.h"
#include "storage/zone_filters.h"
#include "util/little_endian.h"

namespace zvrsit {

class PackFile;

class SiteFixRecDB : public SiteDB {
 public:
  // `recordType` selects the record class (its kRecordType). With any other number, Open finds no
  // slot, and records are written as a SiteBaseRec.
  SiteFixRecDB(std::string filePath, int recordBytes, int recordClass, bool wholeFile);

  // Opens the file and reads which number lies where; 0 or -1. A header that claims more than the
  // file can hold, or more than 2^26 numbers, gives -1.
  [[nodiscard]] int Open();
  [[nodiscard]] int Close();

  // Appends the record and sets its id; the new number or -1. A number that was deleted is handed
  // out again only after a Pack, and only below the slot count, on purpose.
  template <class Rec>
  [[nodiscard]] int Add(Rec* record) {
    return record == nullptr ? -1 : AddSlot(record, WriterFor<Rec>());
  }
  // Writes the record to the slot of its id; 0 or -1.
  template <class Rec>
  [[nodiscard]] int Update(const Rec* record) {
    return record == nullptr ? -1 : UpdateSlot(*record, WriterFor<Rec>());
  }
  // Reads the record `id`; 0 or -1. `Rec` is the class of the file or one of its bases, which gets
  // its own words only. Number 0 of a file that has handed out no number throws std::out_of_range,
  // on purpose; so it does in Update and Delete.
  template <class Rec>
  [[nodiscard]] int Get(int id, Rec* record) {
    if (record == nullptr || !HoldsWordsOf(Rec::kRecordType)) return -1;
    const int offset = SlotOffset(id);
    if (offset < 0) return -1;
    // In place where the slot has all words of the class; else from a copy that ends in zeros.
    const char* slot = recordLength >= Rec::kSlotLength ? Bytes(offset, recordLength) : nullptr;
    if (slot != nullptr) return ReadWords(slot, *record);
    SlotBuffer copy(recordLength);
    return ReadSlotAt(offset, copy) < 0 ? -1 : ReadWords(copy.data(), *record);
  }
  // Reads the word at byte `at` of the slot of record `id`; 0 or -1. It throws as Get does.
  [[nodiscard]] int ReadWord(int id, int at, std::int32_t& word) {
    char bytes[4];
    const int offset = SlotOffset(id);
    if (offset < 0 || at + 4 > recordLength || ReadAt(bytes, offset + at, 4) != 4) return -1;
    word = LoadLE32(bytes);
    return 0;
  }
  // Calls isWanted(record) for the live records in the order of their numbers, until it gives true.
  // Gives whether it did. isWanted must not change the file. Records that cannot be read are left
  // out.
  template <class Rec, class IsWanted>
  bool FindIf(IsWanted isWanted) {
    if (!isOpen() || !HoldsWordsOf(Rec::kRecordType)) return false;
    const bool inPlace = inMemory && HasWords() && recordLength >= Rec::kSlotLength;
    Rec record;
    return slotIndex.FindSet([&](std::size_t id, std::int32_t offset) {
      const char* slot = inPlace ? Bytes(offset, recordLength) : nullptr;
      if (slot != nullptr) {
        record.Deserialize(slot);
      } else if (Get(static_cast<int>(id), &record) < 0) {
        return false;
      }
      return isWanted(record);
    });
  }
  // Whole-file mode, records that join two ends: calls visit(id) for each live record with the
  // source `from`, in the order in which they lie in the file. Gives how many slots it has looked
  // at. For a few searches this costs less than an index.
  template <class Visit>
  int ForEachFrom(const UrlID& from, Visit visit) const {
    int looked = 0;
    const std::int32_t end = SlotsEnd();
    for (std::int32_t offset = NextFrom(kHeaderSize, from); offset < end;) {
      const std::int64_t stop = std::min<std::int64_t>(end, ZoneFilters::ZoneEnd(offset));
      const std::int32_t next = VisitWithWords(offset, stop, SiteRelRec::kFromAt, from, visit);
      looked += (next - offset) / recordLength;
      offset = NextFrom(next, from);
    }
    return looked;
  }
  // The same for the records with the target `to`, which may lie anywhere in the file.
  template <class Visit>
  int ForEachTo(const UrlID& to, Visit visit) const {
    VisitWithWords(kHeaderSize, SlotsEnd(), SiteRelRec::kToAt, to, visit);
    return joinsEnds_ ? headerWord2 : 0;
  }
  // Whole-file mode: the slot of record `id`, good until the next change; null when there is none.
  const char* Slot(int id) const {
    const int offset = SlotOffset(id);
    return offset < 0 ? nullptr : Bytes(offset, recordLength);
  }
  // The same, to change a word of it in place that is not one of its ends.
  char* ChangeSlot(int id) {
    const int offset = SlotOffset(id);
    return offset < 0 ? nullptr : ChangeBytes(offset, recordLength);
  }
  // Whole-file mode, records of 4 bytes and more: makes every record dead. Before that it calls
  // visit(slot) for each one in the order of their numbers; visit may change the slot.
  template <class Visit>
  void DeleteAll(Visit visit) {
    slotIndex.FindSet([&](std::size_t, std::int32_t offset) {
      char* const slot = ChangeBytes(offset, recordLength);
      visit(slot);
      StoreLE32(slot, -1);
      return false;
    });
    slotIndex.Reset(slotIndex.size());
    live_ = 0;
    freed_ = {};
    cursor_ = 0;
    sources_.Clear();
  }
  // Marks the record's slot dead; 0 or -1.
  [[nodiscard]] int Delete(int id);
  using SiteDB::Delete;

  // Copies the live records, in the order of their numbers, into the path followed by "_pack" and
  // puts that in the file's place; 0 or -1. After a failure the file can be closed.
  [[nodiscard]] int Pack();

  int recordBytes() const { return recordLength; }
  int idCount() const { return headerWord1; }
  int slotCount() const { return headerWord2; }
  // Whether `id` has a live record; false for any other number. Never throws.
  bool Has(int id) const {
    return isOpen() && id >= 0 && id < headerWord1 &&
           slotIndex.at(static_cast<std::size_t>(id)) != 0;
  }
  // The smallest live number from `id` on, or -1. A walk over a table is
  //   for (int id = db.NextId(0); id >= 0; id = db.NextId(id + 1))
  int NextId(int id) const { return Has(id) ? id : SearchNextId(id); }
  int liveCount() const { return live_; }
  // Bytes of the file that belong to dead slots.
  std::int64_t deadBytes() const {
    return (static_cast<std::int64_t>(headerWord2) - live_) * recordLength;
  }

 private:
  // The bytes of a slot while it is read or written: on the stack up to 256 bytes.
  class SlotBuffer {
   public:
    explicit SlotBuffer(int length);
    char* data() { return data_; }  // null when there is no memory

   private:
    static constexpr int kFixed = 256;
    static constexpr int kLongestRecord = 96;
    char fixed_[kFixed];
    std::unique_ptr<char[]> large_;
    char* data_;
  };
  // How a record of one class is written to a slot of at least that length.
  struct Writer {
    int (*serialize)(const SiteBaseRec& record, void* slot);
    int slotLength;
  };

  static constexpr int kSourceAt = SiteRelRec::kFromAt + 4;  // the id that a record comes from

  // The writer of a class. It has no function if records of that class cannot be written to this
  // file.
  template <class Rec>
  Writer WriterFor() const {
    if (recordType == Rec::kRecordType) {
      return {[](const SiteBaseRec& record, void* slot) {
                return static_cast<const Rec&>(record).Serialize(slot);
              },
              Rec::kSlotLength};
    }
    if (HasWords()) return {nullptr, 0};
    return {[](const SiteBaseRec& record, void* slot) { return record.Serialize(slot); },
            SiteBaseRec::kSlotLength};
  }
  bool IsKnownType() const { return recordType >= 1 && recordType <= 8; }
  static bool HoldsEnds(int type) {
    return type == SiteRelRec::kRecordType || type == SiteLinkRec::kRecordType;
  }
  // Whether records hold words after their id.
  bool HasWords() const { return recordType >= 2 && recordType <= 8; }
  bool HoldsWordsOf(int classType) const {
    return !HasWords() || classType == recordType || IsBaseOfRecords(classType);
  }
  bool IsBaseOfRecords(int classType) const;
  template <class Rec>
  int ReadWords(const char* slot, Rec& record) const {
    if (HasWords()) {
      record.Deserialize(slot);
    } else {
      record.SiteBaseRec::Deserialize(slot);
    }
    return 0;
  }
  bool IsAcceptable(int id) const { return id == 0 || (id > 0 && id < headerWord1); }
  int SlotOffset(int id) const;
  int SearchNextId(int id) const;
  bool CountsAreSound() const;
  [[nodiscard]] int MakeIndex();
  std::int32_t SlotsEnd() const {
    return joinsEnds_ ? kHeaderSize + headerWord2 * recordLength : kHeaderSize;
  }
  // Among the slots that begin from `offset` on and before `stop`, calls visit(id) for each live
  // record that has these words from byte `at` on. Gives where the next slot begins.
  template <class Visit>
  std::int32_t VisitWithWords(std::int32_t offset, std::int64_t stop, int at, const UrlID& words,
                              Visit& visit) const {
    for (; offset < stop; offset += recordLength) {
      const char* const slot = Bytes(offset, recordLength);
      if (slot == nullptr || LoadLE32(slot + at + 4) != words.id ||
          LoadLE32(slot + at) != words.kind) {
        continue;
      }
      const std::int32_t id = LoadLE32(slot);
      if (Has(id) && slotIndex.at(static_cast<std::size_t>(id)) == offset) visit(id);
    }
    return offset;
  }
  // The first slot from that at `offset` on that may have a record from there.
  std::int32_t NextFrom(std::int32_t offset, const UrlID& from) const {
    const std::int64_t bytes = sources_.Next(offset, from.id) - offset;
    const std::int64_t slots = (bytes + recordLength - 1) / recordLength;
    return static_cast<std::int32_t>(offset + slots * recordLength);
  }
  [[nodiscard]] int AddSlot(SiteBaseRec* record, const Writer& writer);
  [[nodiscard]] int AddNewSlot(SiteBaseRec* record, const Writer& writer);
  [[nodiscard]] int PackSlots();
  [[nodiscard]] int UpdateSlot(const SiteBaseRec& record, const Writer& writer);
  [[nodiscard]] int WriteSlot(int offset, const SiteBaseRec& record, const Writer& writer);
  [[nodiscard]] int ReadSlotAt(int offset, SlotBuffer& slot);
  [[nodiscard]] int MarkSlotDead(int offset);
  [[nodiscard]] int ChooseId();
  [[nodiscard]] int WriteCounts();
  [[nodiscard]] int AppendLiveSlots(PackFile& packed, int& slots, bool& isInOrder);
  [[nodiscard]] int OpenPacked(FileImage kept, int slots);

  const int recordLength;
  const int recordType;
  const bool joinsEnds_;  // whole-file mode, records that join two ends, slots with room for them
  ZoneFilters sources_;   // of those that were there at open: the ids that they come from
  IdTable<std::int32_t> slotIndex;  // by number: offset of the live slot, 0 for none
  int live_ = 0;
  // For the number to hand out next, without a search from 0 each time: all numbers below the
  // cursor are live, except those in `freed_` (smallest first).
  std::priority_queue<int, std::vector<int>, std::greater<int>> freed_;
  int cursor_ = 0;
};

}  // namespace zvrsit
