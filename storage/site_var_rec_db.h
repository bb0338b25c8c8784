// SiteVarRecDB: strings and raw blocks of any length, found by number.
//
//   offset  size  meaning
//   16      4     id count: numbers 0 .. count-1 were handed out
//   20      4     entry count, live and dead
//   24      4     end offset: where the next entry goes; 28 in a new file
//   28      ...   entries, one after another
//
// An entry:
//
//   0       4     id; -1 marks a dead entry
//   4       4     data length (of a string: with its terminating zero)
//   8       4     reference count of a string; 0 for a block
//   12      4     kind: 1 string, 2 raw block
//   16      ...   the data
//
// Strings are shared: adding one that is there raises its reference count and gives its number.
#pragma once

#include <algorithm>
#include <deque>
#include <span>
#include <string>
#include <string_view>

#include "storage/id_table.h"
#include "storage/site_db.h"
#include "storage/string_search.h"
#include "util/little_endian.h"

namespace zvrsit {

class PackFile;

class SiteVarRecDB : public SiteDB {
 public:
  SiteVarRecDB(std::string filePath, bool wholeFile);

  // Opens the file and reads which number lies where; 0 or -1. These give -1: a negative count or
  // length, an id count above 2^26, an end offset or a string beyond the end of the file. Other
  // damage does not. The walk over the entries stops at the end offset. So nothing is lost when the
  // entry count is too high, as failed writes may leave it.
  [[nodiscard]] int Open();
  // Writes the end offset where it differs, and closes; 0 or -1. `kept` as in SiteDB.
  [[nodiscard]] int Close(FileImage* kept = nullptr);
  [[nodiscard]] int Flush();

  // Adds a string, or one reference when an equal string is there; its number, or -1 (also for an
  // empty string). Numbers that were released are handed out again, the earliest released first.
  [[nodiscard]] int AddString(std::string_view text);
  // Adds a block of `length` (0 or more) bytes; its number or -1.
  [[nodiscard]] int AddData(const void* bytes, int length);
  // The number of a string, compared byte by byte; -1 when it is not there.
  int FindString(std::string_view text);

  // Copies the data of `id` to `destination`, which has room for DataLength(id) bytes; 0 or -1.
  [[nodiscard]] int GetData(int id, void* destination);
  // The length of the data in bytes (of a string: with its terminating zero), or -1.
  int DataLength(int id);
  // The string `id` without its terminating zero; 0 or -1 (`text` is then left alone).
  [[nodiscard]] int GetString(int id, std::string& text);
  // The same without a copy, good until the next call that is not a look-up (whole-file mode) or
  // until the next call of any kind (direct mode); empty when there is none.
  std::string_view View(int id);
  // The data of `id`, all of it, on the same terms.
  std::string_view ViewData(int id);
  // Whole-file mode: all bytes of the file, good until the next change; else empty. Each text,
  // released or not, keeps its place in it until the next Pack.
  std::string_view WholeFile() const { return image.view(); }

  // Gives one reference back; the last one makes the entry dead and frees its number. 0 or -1.
  [[nodiscard]] int ReleaseString(int id);
  // The same while a whole table is cleared: the string index is dropped, and made again when it is
  // next needed. Keeping it in step with each string would cost more.
  [[nodiscard]] int ReleaseStringUnindexed(int id);
  // What ReleaseStringUnindexed will read first, for PrefetchMemory; null for nothing.
  const void* EntryOf(int id) const {
    const int offset = Offset(id);
    return offset > 0 ? Bytes(offset, kHeadSize) : nullptr;
  }
  // Makes the entry dead. Its number is not handed out again before the file is next opened, and
  // until then GetData of it fails, on purpose.
  [[nodiscard]] int DeleteData(int id);

  // Copies the live entries, in the order of their numbers, into the path followed by "_pack" and
  // puts that in the file's place; 0 or -1. Numbers do not change.
  [[nodiscard]] int Pack();

  // As FindString; and AddString for a text that Search has looked for.
  FoundString Search(std::string_view text) { return Search(text, {HashOf(text)}); }
  [[nodiscard]] int AddString(std::string_view text, const FoundString& found);

  // For many strings one after another: the three steps of Search. They can be done for several
  // strings in turn, so that one string is fetched from memory while the work is on another.
  static std::uint32_t HashOf(std::string_view text);
  void FetchFor(std::uint32_t hash) const { search_.FetchFor(hash); }
  FoundString GuessOf(std::uint32_t hash) const { return search_.GuessOf(hash); }
  FoundString Search(std::string_view text, const FoundString& guess);

  // To be called before several searches for these texts: together they then cost one pass over a
  // large file (string_search.h).
  void LookAhead(std::span<const std::string_view> texts);
  // Makes the index over all strings now, where many searches are to come; 0 or -1.
  [[nodiscard]] int MakeStringIndex();
  bool hasStringIndex() const { return search_.isIndexMade(); }

  // How often a number was freed so far. While this stays the same, each number keeps its string.
  std::uint32_t releases() const { return releases_; }

  int idCount() const { return headerWord1; }
  int entryCount() const { return headerWord2; }
  int endOffset() const { return end_; }
  // Bytes of the file that belong to dead entries.
  std::int64_t deadBytes() const { return dead_; }

 private:
  friend class StringSearch;

  static constexpr int kFirstEntry = 28;
  static constexpr int kHeadSize = 16;
  // Where words lie in a head, after the id.
  static constexpr int kLengthAt = 4;
  static constexpr int kReferencesAt = 8;
  static constexpr int kKindAt = 12;
  static constexpr int kString = 1;  // a kind

  struct Head {
    std::int32_t id;
    std::int32_t length;
    std::int32_t references;
    std::int32_t kind;
  };
  [[nodiscard]] int UseOpened();
  [[nodiscard]] int OpenEntries();
  [[nodiscard]] int PackEntries();
  void ForgetEntries();
  bool CountsAreSound() const;
  [[nodiscard]] int ReadEnd();
  [[nodiscard]] int WriteEnd();
  // Calls visit(offset, head) for each entry as they lie in the file, until one gives -1.
  template <class Visit>
  [[nodiscard]] int ForEachEntry(Visit visit) {
    std::int64_t at = kFirstEntry;
    for (int k = 0; k < headerWord2 && at < end_; ++k) {
      Head head;
      if (ReadHead(static_cast<int>(at), head) < 0) return -1;
      if (head.length < 0) return -1;
      if (visit(static_cast<int>(at), head) < 0) return -1;
      at += std::int64_t{kHeadSize} + head.length;
    }
    return 0;
  }

  // The file cannot hold more entries than this, whatever its header says.
  int MostEntries() const { return std::min(headerWord2, (end_ - kFirstEntry) / kHeadSize); }
  bool IsAcceptable(int id) const { return id == 0 || (id > 0 && id < headerWord1); }
  int Offset(int id) const;
  // Whole-file mode: whether the entry at `offset`, which once had that number, still has it.
  bool IsEntryOf(int id, int offset) const {
    const char* const head = Bytes(offset, kHeadSize);
    return head != nullptr && LoadLE32(head) == id;
  }
  [[nodiscard]] int ReadHead(int offset, Head& head) {
    char copy[kHeadSize];
    const char* bytes = Bytes(offset, kHeadSize);
    if (bytes == nullptr) {
      if (ReadAt(copy, offset, kHeadSize) != kHeadSize) return -1;
      bytes = copy;
    }
    head = {LoadLE32(bytes), LoadLE32(bytes + kLengthAt), LoadLE32(bytes + kReferencesAt),
            LoadLE32(bytes + kKindAt)};
    return 0;
  }
  [[nodiscard]] int WriteHead(int offset, const Head& head);
  [[nodiscard]] int WriteHeadWord(int offset, int at, std::int32_t word) {
    char bytes[4];
    StoreLE32(bytes, word);
    return WriteAt(bytes, offset + at, 4) == 4 ? 0 : -1;
  }
  [[nodiscard]] int ReadEntry(int id, Head& head);
  bool HasData(int offset, const Head& head) const;
  bool IsInFile(int offset, int length) const {
    return std::int64_t{offset} + kHeadSize + length <= std::max<std::int64_t>(end_, lengthAtOpen_);
  }
  std::string_view DataAt(int offset, int length, std::string& scratch);
  // The data of a string without its terminating zero.
  static std::string_view TextOf(std::string_view data) {
    return data.substr(0, data.empty() ? 0 : data.size() - 1);
  }

  std::string_view TextAt(int offset, int length) {
    return TextOf(DataAt(offset, length, scratch_));
  }
  // Calls visit(id, offset, text) for each string, until one gives -1.
  template <class Visit>
  [[nodiscard]] int ForEachString(Visit visit) {
    return ForEachEntry([&](int offset, const Head& head) {
      if (!IsAcceptable(head.id) || head.kind != kString || head.length < 1) return 0;
      const std::string_view data = DataAt(offset, head.length, scratch_);
      if (data.empty()) return -1;
      visit(head.id, offset, TextOf(data));
      return 0;
    });
  }
  [[nodiscard]] int NoteString(int offset, const Head& head);
  [[nodiscard]] int ChooseId();
  [[nodiscard]] int AddNewString(std::string_view text, const FoundString& found);
  [[nodiscard]] int AddEntry(int kind, std::string_view data);
  static void StoreHead(char* bytes, const Head& head);
  [[nodiscard]] int WriteEntry(const Head& head, std::string_view data);
  [[nodiscard]] int WriteCounts(int newEnd);
  [[nodiscard]] int AddReference(int offset);
  [[nodiscard]] int Release(int id, int offset, bool isNamed);
  [[nodiscard]] int MarkEntryDead(int offset, const Head& head);
  [[nodiscard]] int AppendLiveEntries(PackFile& packed, int& entries,
                                      IdTable<std::int32_t>& offsets);

  std::int32_t end_ = 0;           // end offset
  std::int32_t endInFile_ = 0;     // as it stands at 24
  std::int64_t lengthAtOpen_ = 0;  // of the file
  std::int64_t dead_ = 0;
  // When the file was opened, the walk over the entries came to the end offset, and each live entry
  // had a different number that was handed out.
  bool isSound_ = false;
  std::uint32_t releases_ = 0;
  IdTable<std::int32_t> offsets_;  // by number: offset of the entry, 0 for none
  // Numbers to hand out again: first the numbers below the cursor that had no entry when the file
  // was opened; then those that were released since, from the front.
  std::size_t cursor_ = 0;
  std::deque<int> free_;
  StringSearch search_{*this};
  std::string scratch_;  // direct mode: what was read last
};

}  // namespace zvrsit
