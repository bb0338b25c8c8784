#include "tables/site_check.h"

#include <unordered_map>

#include "platform/file.h"
#include "storage/records.h"
#include "tables/site_folder_db.h"
#include "tables/site_link_db.h"
#include "tables/site_path_db.h"
#include "tables/site_rel_db.h"
#include "tables/site_url_db.h"
#include "tables/table_check.h"
#include "util/hash.h"
#include "util/mb_string.h"

namespace zvrsit {
namespace {

UrlID EndAt(const char* slot, int at) {
  return {LoadLE32(slot + at), LoadLE32(slot + at + 4)};
}

// Opens a table as its readers do; false when that fails, and told. Damage that was told before
// explains what a reader misses, so only sound files are opened.
template <class Table>
bool OpenToCompare(TableCheck& check, Table& table) {
  table.SetReadOnly();
  if (table.Open(check.table().recordFile()) == 0) {
    if (table.records()->liveCount() == check.liveCount()) return true;
    check.Tell("readers find " + std::to_string(table.records()->liveCount()) + " records, not " +
               std::to_string(check.liveCount()));
  } else {
    check.Tell("the table cannot be opened");
  }
  return false;
}

// Whether each record is found by its name.
template <class Table>
void CompareNames(TableCheck& check) {
  Table table;
  if (!OpenToCompare(check, table)) return;
  check.ForEachRecord([&](std::int32_t number, const char* slot) {
    if (table.Find(check.table().NameOf(slot)) != number) {
      check.TellOf(number, "is not found by its name");
    }
  });
}

// Whether as many records are found by each end as have it.
template <class Table>
void CompareEnds(TableCheck& check) {
  Table table;
  if (!OpenToCompare(check, table)) return;
  struct HashOfEnd {
    std::size_t operator()(const UrlID& end) const {
      return static_cast<std::size_t>(
          HashWords(static_cast<std::uint32_t>(end.kind), static_cast<std::uint32_t>(end.id)));
    }
  };
  struct Found {
    int records = 0;
    std::int32_t first = 0;
  };
  for (const int at : {SiteRelRec::kFromAt, SiteRelRec::kToAt}) {
    std::unordered_map<UrlID, Found, HashOfEnd> ends;
    check.ForEachRecord([&](std::int32_t number, const char* slot) {
      Found& found = ends[EndAt(slot, at)];
      if (found.records++ == 0) found.first = number;
    });
    check.ForEachRecord([&](std::int32_t number, const char* slot) {
      const UrlID end = EndAt(slot, at);
      const Found& found = ends[end];
      if (found.first != number) return;
      const int count = at == SiteRelRec::kFromAt ? table.CountFrom(end) : table.CountTo(end);
      if (count != found.records) check.TellOf(number, "is not found by its ends");
    });
  }
}

class SiteCheck {
 public:
  SiteCheck(const SiteTableNames& files, TableFaults& faults)
      : urls_(TableKind::kUrls, files[0], faults),
        paths_(TableKind::kFiles, files[1], faults),
        links_(TableKind::kLinks, files[2], faults),
        folders_(TableKind::kFolders, files[3], faults),
        relations_(TableKind::kRelations, files[4], faults),
        faults_(faults) {}

  void Check() {
    for (TableCheck* const check : {&urls_, &paths_, &links_, &folders_, &relations_}) {
      check->Check();
    }
    links_.ForEachRecord([this](std::int32_t number, const char* slot) {
      CheckEnd(links_, number, EndAt(slot, SiteRelRec::kFromAt), {&paths_});
      CheckEnd(links_, number, EndAt(slot, SiteRelRec::kToAt), {&paths_, &urls_});
    });
    relations_.ForEachRecord(
        [this](std::int32_t number, const char* slot) { CheckRelation(number, slot); });
    if (faults_.isSound()) CompareWithReaders();
  }

 private:
  // Whether the end is a record of one of these tables.
  bool CheckEnd(TableCheck& check, std::int32_t number, const UrlID& end,
                std::initializer_list<const TableCheck*> tables) {
    for (const TableCheck* const table : tables) {
      if (KindOf(*table) == end.kind && table->Has(end.id)) return true;
    }
    check.TellOf(number, "leads to or from entry " + std::to_string(end.id) + " of kind " +
                             std::to_string(end.kind) + ", which is not there");
    return false;
  }
  std::int32_t KindOf(const TableCheck& table) const {
    return &table == &urls_ ? kKindUrl : &table == &paths_ ? kKindPath : kKindFolder;
  }

  void CheckRelation(std::int32_t number, const char* slot) {
    const UrlID parent = EndAt(slot, SiteRelRec::kFromAt);
    const UrlID child = EndAt(slot, SiteRelRec::kToAt);
    if (!CheckEnd(relations_, number, parent, {&folders_}) ||
        !CheckEnd(relations_, number, child, {&folders_, &paths_})) {
      return;
    }
    std::string_view name = (child.kind == kKindFolder ? folders_ : paths_).NameOf(child.id);
    if (child.kind == kKindFolder) name.remove_suffix(name.empty() ? 0 : 1);
    if (FolderOf(name) != folders_.NameOf(parent.id)) {
      relations_.TellOf(number, "joins a folder with what does not lie in it");
    }
  }

  void CompareWithReaders() {
    CompareNames<SiteUrlDB>(urls_);
    CompareNames<SitePathDB>(paths_);
    CompareNames<SiteFolderDB>(folders_);
    CompareEnds<SiteLinkDB>(links_);
    CompareEnds<SiteRelDB>(relations_);
  }

  TableCheck urls_;
  TableCheck paths_;
  TableCheck links_;
  TableCheck folders_;
  TableCheck relations_;
  TableFaults& faults_;
};

bool IsThere(const std::string& path) {
  platform::FileStat found;
  return platform::Stat(path, found) == 0;
}

}  // namespace

void CheckSiteTables(const SiteTableNames& recordFiles, TableFaults& faults) {
  SiteCheck(recordFiles, faults).Check();
}

void CheckProfileTables(const std::string& siteFile, const std::string& serverFile,
                        TableFaults& faults) {
  TableCheck sites(TableKind::kSites, siteFile, faults);
  sites.Check();
  sites.ForEachRecord([&](std::int32_t number, const char* slot) {
    constexpr int kFirstFileAt = 72;
    int at = kFirstFileAt;
    for (const SiteTableFile& file : kSiteTableFiles) {
      std::string_view name;
      // The next one is checked even if this one is wrong.
      const bool isThere = sites.table().FindText(LoadLE32(slot + at), name);
      if (isThere && name != std::string(sites.NameOf(number)).append(file.suffix)) {
        sites.TellOf(number, "has the tables of another site");
      }
      at += 4;
    }
  });
  if (IsThere(serverFile) || IsThere(TextFileOf(serverFile))) {
    TableCheck(TableKind::kServers, serverFile, faults).Check();
  }
}

}  // namespace zvrsit
