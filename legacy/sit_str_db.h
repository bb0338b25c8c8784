// The file of strings beside a record file of the older generation: texts of any length under ids.
//
// Little-endian signed 32-bit words:
//
//   offset  size  meaning
//        0     4  live bytes: length of all bodies appended since the last packing (a deletion
//                 does not lower it)
//        4     4  dead bytes: length of all bodies deleted since the last packing
//        8   ...  entries, one after another
//
//   in an entry:
//        0     4  the file offset of this entry
//        4     4  string id; -1 marks a deleted entry
//        8     4  length of the body, its NUL included
//       12   ...  body: the text and a NUL; a deleted body is "*"s and a NUL
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "legacy/sit_file.h"
#include "legacy/sit_id_set.h"

namespace zvrsit {

class SitStrDB {
 public:
  SitStrDB() = default;
  ~SitStrDB() { Close(); }

  // Opens or creates the file and indexes its live entries. 0; or -1 when it cannot be opened, and
  // then every later operation fails. An entry counts if its head holds its own place and its body
  // ends inside the file. After anything else the next such entry is searched for.
  int Open(const std::string& path);
  // Writes the two counters and closes; 0, or -1 when one of these fails. May be called twice.
  int Close();
  // Closes without writing the counters: the file is to be deleted or replaced. Whether closing
  // succeeded.
  bool Discard();

  // The text of an id; none when the id is negative or unknown or the body cannot be read.
  std::optional<std::string> Get(int id);
  // Adds a text (up to its first NUL) at the end of the file. It gets the id `wanted`, or one near
  // it that SitIdSet::Allocate chooses. Gives the id; -1 for a null text, and when the entry cannot
  // be written.
  int Add(const char* text, int wanted);
  // Overwrites the body with "*"s and releases the id; 0 or -1.
  int Delete(int id);
  // Gives an id another text. If it fits, it is written in place, and bytes of the old text may
  // follow its NUL. Else the entry is deleted and added again, with the same id if possible. The id
  // or -1.
  int Update(int id, const char* text);
  // Copies the live entries, with their ids, into the path followed by "_pack", and puts that in
  // the place of the file. Afterwards the file is closed, unless `reopen`. 0; -1 keeps the old
  // file: a call has failed, or the file is not whole or no longer whole.
  int Pack(bool reopen);

  bool IsOpen() const { return file_.IsOpen(); }
  // Whether Open has read only entries, up to the end of the file, and at least as many bytes of
  // bodies as the header says.
  bool IsWhole() const { return whole_; }
  int failedWrites() const { return file_.failedWrites(); }
  const std::string& path() const { return file_.path(); }
  std::int32_t liveBytes() const { return liveBytes_; }
  std::int32_t deadBytes() const { return deadBytes_; }

 private:
  struct Entry {
    std::int32_t offset;
    std::int32_t length;
  };

  void Load(std::int64_t size);
  [[nodiscard]] std::int64_t LoadEntries(std::int64_t size);
  bool WriteEntry(const Entry& entry, int id, const std::string& body);
  [[nodiscard]] bool CopyLiveEntries(SitPackWriter& copy, std::int64_t& bodyBytes);

  SitFile file_;
  bool whole_ = false;
  std::int32_t liveBytes_ = 0;
  std::int32_t deadBytes_ = 0;
  std::int64_t end_ = 0;  // where the next entry goes
  std::unordered_map<int, Entry> entries_;
  SitIdSet used_;
};

}  // namespace zvrsit
