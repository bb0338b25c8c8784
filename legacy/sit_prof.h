// The profile stores of the older generation: the list of sites and the list of servers.
//
// Both files, little-endian signed 32-bit words:
//
//   offset        size  meaning
//        0           4  number of record slots: record numbers run from 0 to this less 1
//        4           4  number of live records
//   8 + size·n    size  record n, 88 bytes for a site (SiteRec), 68 for a server (ServRec)
//
// The texts of the records stand in a string file (sit_str_db.h) at the path followed by "_S".
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "legacy/sit_file.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_str_db.h"

namespace zvrsit {

// A site, its words in file order. Words that name no number are string ids, -1 for none. A
// deleted profile keeps its slot, with -1 for its number and in every string.
struct SiteRec {
  std::int32_t number = -1;
  std::int32_t rebuild = 0;  // a number: 1 from the start of a rebuild to its end
  std::int32_t name = -1;
  std::int32_t topFile = -1;
  std::array<std::int32_t, 10> dir{-1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
  std::int32_t servProf = -1;
  std::int32_t urlDB = -1;
  std::int32_t junkDB = -1;
  std::int32_t linkDB = -1;
  std::int32_t folderDB = -1;
  std::int32_t relDB = -1;
  std::int32_t useDocRoot = 0;  // a number
  std::int32_t lastUsedDir = -1;

  std::array<std::int32_t*, 19> strings();
};

// A server, in the same manner.
struct ServRec {
  std::int32_t number = -1;
  std::int32_t name = -1;
  std::int32_t host = -1;
  std::int32_t user = -1;
  std::int32_t password = -1;  // scrambled
  std::int32_t dir = -1;
  std::int32_t firewall = 0;  // a number
  std::int32_t firewallHost = -1;
  std::int32_t firewallUser = -1;
  std::int32_t firewallPassword = -1;  // scrambled
  std::int32_t fxferType = 0;          // a number
  std::int32_t initDirMode = 0;        // a number
  std::int32_t initRemoteDir = -1;
  std::int32_t mruDirRemote = -1;
  std::int32_t mruDirLocal = -1;
  std::int32_t lockDir = 0;  // a number
  std::int32_t asciiSuffix = -1;

  std::array<std::int32_t*, 12> strings();
};

// One store; `Rec` is SiteRec or ServRec.
template <class Rec>
class SitProf {
 public:
  // Opens or creates both files. `history` (not owned, may be null) gets a cell for each change.
  SitProf(const std::string& path, SitHist* history);
  virtual ~SitProf();
  SitProf(const SitProf&) = delete;
  SitProf& operator=(const SitProf&) = delete;

  bool IsOpen() const { return file_.IsOpen(); }
  int lastErrno() const { return file_.lastErrno(); }
  int failedWrites() const { return file_.failedWrites() + strings_.failedWrites(); }

  // The first header word as the file has it; -1 when it cannot be read.
  int Num();
  // How many of these slots the file really has; 0 for a damaged header.
  int Slots();

  // Each gives 0 or -1; the first two fill `record`.
  int Read(int number, Rec& record);
  int Find(const std::string& name, Rec& record,
           int* number = nullptr);  // letter case matters
  int Write(int number, const Rec& record);

  // Appends `record`, whose number is set to its slot; the number or -1.
  int Add(Rec& record);
  // Marks a record as deleted and deletes its strings; 0 or -1.
  int Delete(int number);

  // What Add and Delete did is taken back: the slot goes when it is the last one, else it counts
  // as deleted; the record is put back into its slot. 0 or -1.
  [[nodiscard]] int TakeBackAdd(int number);
  [[nodiscard]] int TakeBackDelete(int number, const Rec& record);

  std::optional<std::string> GetString(int id);
  int AddString(const std::string& text);
  int DeleteString(int id);
  // Adds a text under the id that it had, or near it; the id or -1.
  int RestoreString(int id, const std::string& text);

 private:
  void RecordChange(std::uint32_t operation, int number, const Rec& record);
  bool WriteSlot(int number, const Rec& record);
  void ChangeLiveCount(int by);

  SitFile file_;
  SitStrDB strings_;
  SitHist* history_;
};

extern template class SitProf<SiteRec>;
extern template class SitProf<ServRec>;

// The two stores under names that can be declared alone.
class SitSiteProf final : public SitProf<SiteRec> {
 public:
  using SitProf::SitProf;
};
class SitServProf final : public SitProf<ServRec> {
 public:
  using SitProf::SitProf;
};

}  // namespace zvrsit
