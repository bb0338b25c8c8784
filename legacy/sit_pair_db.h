// A file of pairs: the links or the relations of a site.
//
// Pair file, little-endian signed 32-bit words:
//
//   offset    size  meaning
//        0       4  number of record slots allocated since the last packing: the next new id
//        4       4  number of live records, never written below 0
//   8 + 36n     36  record n (SitPairRec)
//
// Texts of the records stand in a string file (sit_str_db.h) whose path is the pair file's with
// its last character replaced by "S".
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "legacy/sit_file.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_pair_index.h"
#include "legacy/sit_str_db.h"
#include "util/url_id.h"

namespace zvrsit {

// A record, its words in file order (36 bytes). As constructed it is a scratch record.
struct SitPairRec {
  std::int32_t id = -1;         // its slot; -1 marks a deleted record
  std::int32_t linkType = 1;    // 1 to 13 (sit_link_type.h)
  std::int32_t asIsUrlId = -1;  // string: the target as written in the document; -1 none
  std::int32_t imgAltId = -1;   // string: the alternative text; -1 none
  UrlID from;
  UrlID to;
  std::int32_t refCount = 1;  // how many times the pair was added and not yet removed
};

// A query: two ends, (-1, -1) standing for any.
struct PairQuery {
  UrlID from = kAnyUrlID;
  UrlID to = kAnyUrlID;
  bool operator==(const PairQuery&) const = default;
};

// All pair stores of the process share the memory of the last query. This sets it to the null pair,
// as at the start.
void ForgetLastPairQuery();

class SitPairDB {
 public:
  static constexpr int kLinkFile = 0;
  static constexpr int kRelationFile = 1;

  // Opens as Open does. `history` (not owned, may be null) gets a cell for each change.
  SitPairDB(const std::string& path, int kind, SitHist* history = nullptr);
  ~SitPairDB() { Close(); }
  SitPairDB(const SitPairDB&) = delete;
  SitPairDB& operator=(const SitPairDB&) = delete;

  // Opens or creates both files and loads the index. 0, or -1 when the file cannot be opened or
  // its header is short or holds a negative count; with such a header the store is usable and
  // holds nothing, with no file everything on it fails. `kind` sets the store tag; a kind that is
  // not known leaves it.
  int Open(const std::string& path, int kind);
  // Closes both files and frees the index; 0, or -1 when closing one has failed. May be called
  // twice.
  int Close();

  // The next record of the pair, where (-1, -1) matches any end; null when there is none after the
  // cursor. Calls with the same pair give its records in file order, then null once, and then start
  // again. All stores of the process share one memory of the last pair: a call with another pair
  // sets the cursor of this store to the start. A deleted record that was loaded from the file
  // matches too: it gives null, and the cursor moves on.
  std::unique_ptr<SitPairRec> Find(const UrlID& from, const UrlID& to);
  // Sets the cursor to a position of the index; PairIndex::kNone for none.
  void ResetCursor(int position) { cursor_ = position; }

  // Adds a pair, or raises the count of its record. Gives the record id, also when a write has
  // failed; -1 for a null end. A new record gets the number that the header counts. A damaged
  // header may put it far beyond the end of the file, or on records that it hides; then the record
  // is not written.
  int Add(const UrlID& from, const UrlID& to);
  // Takes one from the count of a record, or all with `force`. Gives the count that is left; 0 when
  // the record is gone or its count was below 1; -1 when a write failed. The slot of the record's
  // id is written.
  int Delete(SitPairRec& record, bool force);
  // The record in a slot, deleted or not; null when there is none.
  std::unique_ptr<SitPairRec> Read(int id);
  // Rewrites the slot of the record's id; the bytes written or -1.
  int Write(const SitPairRec& record);
  // The first header word as the file has it; -1 when it cannot be read.
  int Count();

  // How many of these slots the file really has.
  int Slots();

  // Strings of the companion; each change goes to the history.
  std::optional<std::string> GetString(int id);
  int AddString(const char* text, int wanted = 0);  // `wanted` as SitStrDB::Add
  int DeleteString(int id);

  // Compacts both files through copies under "_pack". Records get the numbers 0, 1, 2 and so on;
  // string ids stay. Gives the number of records kept. -1 leaves the pair file as it was: a call
  // has failed, or one of the files is not whole. Afterwards the store is closed, unless `reopen`.
  // The history is told the new numbers.
  int Pack(bool reopen);
  // Deletes both files and opens the store again, empty; 0, or -1 with the store left closed.
  int Remove();

  // The ids of all live records of a pair in file order, where (-1, -1) matches any end. This
  // neither uses nor changes the memory of Find.
  std::vector<int> Matching(const UrlID& from, const UrlID& to) const;
  // Whether `isEntry` holds for both ends of all live records.
  template <class IsEntry>
  bool HasAllEnds(IsEntry isEntry) const {
    for (int at = index_.Head(); at != PairIndex::kNone; at = index_.Next(at)) {
      const PairIndex::Node& pair = index_.At(at);
      if (pair.id >= 0 && !(isEntry(pair.from) && isEntry(pair.to))) return false;
    }
    return true;
  }

  bool IsOpen() const { return file_.IsOpen(); }
  // Whether Open has read both files to their ends and found what their headers count, each record
  // in its own slot. There may be one record that the header does not count yet.
  bool IsWhole() const { return whole_ && inSlots_ && strings_.IsWhole(); }
  int failedWrites() const { return file_.failedWrites() + strings_.failedWrites(); }
  const std::string& path() const { return path_; }
  int lastErrno() const { return file_.lastErrno(); }
  std::uint32_t storeTag() const { return storeTag_; }
  int cursor() const { return cursor_; }

 private:
  [[nodiscard]] bool Load();
  std::int32_t SlotsInFile();  // whole ones
  int MatchFromCursor(const PairQuery& query) const;
  void ChangeLiveCount(int by);
  void RemoveFromIndex(const SitPairRec& record);
  bool WriteSlot(const SitPairRec& record, std::int32_t id);
  void RecordChange(std::uint32_t operation, const SitPairRec& record);
  [[nodiscard]] bool CopyLiveRecords(SitPackWriter& copy, std::vector<std::int32_t>& numbers,
                                     std::int32_t& kept);
  bool MayPlace(std::int32_t id) const;

  std::string path_;
  SitFile file_;
  SitStrDB strings_;
  PairIndex index_;
  int cursor_ = PairIndex::kNone;
  int lastMatch_ = PairIndex::kNone;  // the node that lastMatchQuery_ gave last
  PairQuery lastMatchQuery_;
  std::int32_t nextId_ = 0;
  std::int64_t liveCount_ = 0;
  bool whole_ = false;
  bool inSlots_ = true;      // no record has the number of another slot
  std::int32_t hidden_ = 0;  // slots that a damaged header keeps from being loaded
  std::int32_t slots_ = 0;   // slots up to the highest that the file has
  SitHist* history_;
  std::uint32_t storeTag_ = kTagLink;
};

}  // namespace zvrsit
