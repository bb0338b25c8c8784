// The two kinds of record files as they lie on the disk, for those who look for damage. A file that
// Open refuses is read here as far as it goes. Nothing is written.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "util/little_endian.h"

namespace zvrsit {

// The bytes of a file, in memory while the object lives.
class RawFile {
 public:
  static constexpr int kHeaderSize = 24;

  // Reads the file; false when it is not there, or cannot be read to its end.
  [[nodiscard]] bool Read(const std::string& path);

  bool hasHeader() const { return bytes_.size() >= kHeaderSize; }
  bool hasMagic() const;
  std::int64_t size() const { return static_cast<std::int64_t>(bytes_.size()); }
  // As the header has it; 0 without one.
  std::int32_t idCount() const { return hasHeader() ? LoadLE32(bytes_.data() + 16) : 0; }
  // Numbers that may have been handed out, whatever the header says.
  std::int32_t ids() const;
  bool IsNumber(std::int32_t id) const { return id >= 0 && id < ids(); }

 protected:
  std::int32_t secondWord() const { return hasHeader() ? LoadLE32(bytes_.data() + 20) : 0; }
  // `length` bytes from `offset` on, all of which are there.
  const char* At(std::int64_t offset) const { return bytes_.data() + offset; }

 private:
  std::string bytes_;
};

// A file of records (site_fix_rec_db.h).
class RawRecords : public RawFile {
 public:
  explicit RawRecords(int slotLength) : slotLength_(slotLength) {}

  int slotLength() const { return slotLength_; }
  std::int32_t slotCount() const { return secondWord(); }
  // How many of them lie in the file whole.
  std::int32_t slots() const;
  std::int64_t OffsetOf(std::int32_t slot) const {
    return kHeaderSize + std::int64_t{slot} * slotLength_;
  }
  // Slot number 0 to slots() - 1.
  const char* Slot(std::int32_t slot) const { return At(OffsetOf(slot)); }

 private:
  const int slotLength_;
};

// A file of texts and blocks (site_var_rec_db.h).
class RawTexts : public RawFile {
 public:
  struct Entry {
    std::int64_t offset = 0;
    std::int32_t id = -1;
    std::int32_t references = 0;
    std::int32_t kind = 0;
    std::string_view data;  // of a string: with its terminating zero
    bool isString() const { return kind == 1; }
    std::string_view text() const { return data.substr(0, data.empty() ? 0 : data.size() - 1); }
  };

  std::int32_t entryCount() const { return secondWord(); }
  bool hasEnd() const { return size() >= kFirstEntry; }
  // As the header has it.
  std::int32_t endOffset() const { return hasEnd() ? LoadLE32(At(24)) : 0; }
  // Where the walk over the entries has to end: the end offset, or less in a file that is cut.
  std::int64_t end() const { return std::min<std::int64_t>(endOffset(), size()); }

  // Calls visit(entry) for each entry that lies whole before end(), at most entryCount() of them.
  // Gives the offset at which it stopped.
  template <class Visit>
  std::int64_t ForEachEntry(Visit visit) const {
    std::int64_t at = kFirstEntry;
    Entry entry;
    for (std::int32_t k = 0; k < entryCount() && ReadEntry(at, entry); ++k) {
      visit(entry);
      at += kHeadSize + static_cast<std::int64_t>(entry.data.size());
    }
    return at;
  }
  // The entry at that offset; false when none lies there whole.
  bool ReadEntry(std::int64_t offset, Entry& entry) const;

  static constexpr int kFirstEntry = 28;

 private:
  static constexpr int kHeadSize = 16;
};

}  // namespace zvrsit
