// The block record engine: the URL, junk and folder files of a site.
//
// All integers are little-endian signed 32-bit words. A file is a header and blocks after it:
//
//   offset  size  meaning
//        0     8  "ZVSITBLK"
//        8     4  version of the format, 1
//       12     4  kind of the file: 0 URL, 1 junk, 2 folder
//       16     4  number of entries ever added: the index of the next one
//       20     4  number of live entries
//       24   ...  blocks, one after another
//
//   in a block:
//        0     4  index of the entry
//        4     4  capacity: bytes between this head and the next block
//        8     4  length of the record in it; -1 for a block that holds none
//       12   ...  the record, then bytes without meaning up to the capacity
//
//   a record:
//        0    32  eight words: file type, size, times of creation, modification and access, status
//                 word, publishing membership, time of the last check
//       32   ...  eight texts, each a word with its length and its bytes: the key (path, URL or
//                 folder), title, and the META texts last_modified, expires, generator, keywords,
//                 description, content-type
//
// Every index below the number of entries has a block, even when its entry is deleted. So a count
// in a damaged file cannot ask for more memory than the file is large. When a crash has left two
// blocks of one entry, the later one counts. The two counts of the header are written on closing,
// if they have changed. When the blocks hold more entries than the header says, the blocks are
// right.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "legacy/elf_key_index.h"
#include "legacy/sit_file.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_url_rec.h"

namespace zvrsit {

// The bytes of a record as above, and back; false for bytes that are no record.
std::string EncodeUrlRec(const SitUrlRec& record);
[[nodiscard]] bool DecodeUrlRec(const char* bytes, std::size_t length, SitUrlRec& record);

class SitBlockDB {
 public:
  static constexpr int kUrlFile = 0;
  static constexpr int kJunkFile = 1;
  static constexpr int kFolderFile = 2;
  static constexpr int kBuckets = 10067;

  // `history` (not owned, may be null) gets a cell for each change.
  explicit SitBlockDB(SitHist* history = nullptr) : history_(history) {}
  ~SitBlockDB() { Close(); }
  SitBlockDB(const SitBlockDB&) = delete;
  SitBlockDB& operator=(const SitBlockDB&) = delete;

  // Opens or creates a file of `kind`, its keys in that many hash buckets. 0, or -1 with the store
  // closed: the file cannot be opened, or is none of this kind.
  int Open(const std::string& path, int kind, int bucketCount);
  // Writes the counts and closes; 0 or -1. May be called twice.
  int Close();
  bool IsOpen() const { return file_.IsOpen(); }
  // Whether Open has read only good blocks, up to the end of the file, and at least as many entries
  // as the header says. Entries after a damaged block are not found. They stay in the file: no
  // block is written after it, and the file is not packed.
  bool IsWhole() const { return whole_; }
  int failedWrites() const { return file_.failedWrites(); }
  const std::string& path() const { return file_.path(); }

  // Entries are numbered from 0 to Num() - 1, deleted ones among them; no number is used twice.
  int Num() const { return static_cast<int>(entries_.size()); }
  int LiveNum() const { return live_; }
  // The entry of a key, compared byte for byte; -1 for none.
  int Find(const std::string& key) const { return keys_.Find(key); }
  // kSitOk for a live entry, kSitNotFound for a deleted one, kSitPastEnd for any other number.
  int State(int index) const;
  // The key of a live entry, else empty.
  const std::string& Key(int index) const { return keys_.KeyOf(index); }

  // The new entry's index; -1 when its key is empty or taken, or it cannot be written.
  int Add(const SitUrlRec& record);
  // These give kSitOk, what State gives, or kSitNotFound (Read: damaged), kSitWriteFailed (Write),
  // kSitBadArgument (Write: the new key is empty or another entry's), kSitDeleteFailed (Delete).
  int Read(int index, SitUrlRec& record);
  int Write(int index, const SitUrlRec& record);
  int Delete(int index);

  // Undoes an Add or a Delete; 0 or -1. After an Add, the last entry is removed, and any other
  // becomes a deleted one. After a Delete, the entry is put back under its index.
  [[nodiscard]] int TakeBackAdd(int index);
  [[nodiscard]] int TakeBackDelete(int index, const SitUrlRec& record);

  // Removes dead bytes through a copy under "_pack"; entries keep their indexes. Gives the number
  // of live entries. -1 leaves the file as it was, perhaps still open. Afterwards it is closed,
  // unless `reopen`.
  int Pack(bool reopen);
  // Deletes the file and opens it again, empty; 0 or -1.
  int Remove();

 private:
  struct Block {
    std::int32_t offset = -1;  // -1: none yet
    std::int32_t capacity = 0;
    std::int32_t length = -1;
  };

  [[nodiscard]] bool LoadHeader();
  void Load();
  [[nodiscard]] bool LoadBlock(SitFileScan& scan, std::int32_t index, const Block& block,
                               std::string& bytes);
  bool CloseFile();
  [[nodiscard]] bool WriteBlock(int index, const Block& block, const std::string& bytes);
  [[nodiscard]] bool Store(int index, const std::string& bytes);
  bool Kill(int index);
  [[nodiscard]] bool CopyBlocks(SitPackWriter& copy);
  void RecordChange(std::uint32_t operation, int index, const SitUrlRec& record);
  void StoreCounts(unsigned char* header) const;
  Block& At(int index) { return entries_[static_cast<std::size_t>(index)]; }

  SitFile file_;
  SitHist* history_;
  int kind_ = kUrlFile;
  int bucketCount_ = kBuckets;
  bool whole_ = false;
  std::array<std::int32_t, 2> counted_{};  // the counts as the header has them
  std::vector<Block> entries_;
  ElfKeyIndex keys_;
  int live_ = 0;
  std::int64_t end_ = 0;        // where the next block goes
  std::int64_t deadBytes_ = 0;  // what packing would drop
};

}  // namespace zvrsit
