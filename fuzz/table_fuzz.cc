// The files of a table, as they may lie on disk: opened, read, searched, written to and closed.
// What was sound is sound afterwards.
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/target.h"
#include "support/temp_folder.h"
#include "tables/site_folder_db.h"
#include "tables/site_link_db.h"
#include "tables/site_path_db.h"
#include "tables/site_rel_db.h"
#include "tables/site_serv_prof_db.h"
#include "tables/site_site_prof_db.h"
#include "tables/site_url_db.h"
#include "tables/table_check.h"
#include "tables/table_dump.h"
#include "util/little_endian.h"

namespace zvrsit::fuzz {
namespace {

// Of an input: which table, and the length of the record file.
constexpr std::size_t kTableHead = 8;

void ReadTextList(SitePathDB& table, SitePathRec& path) {
  std::vector<std::int32_t> ids;
  (void)table.GetList(path, ids);
  std::string text;
  for (const std::int32_t id : ids) table.Text(id, text);
  (void)table.ReleaseTexts(path);
  (void)table.Update(path);
}

void UseTable(SitePathDB& table) {
  std::string text;
  for (int i = table.NextNumber(0); i >= 0; i = table.NextNumber(i + 1)) {
    SitePathRec path;
    if (table.Get(i, path) < 0) continue;
    (void)table.Name(i, text);
    (void)table.GetText(i, &SitePathRec::title, text);
    if (i % 2 == 0) ReadTextList(table, path);
  }
  table.Find("\\site\\a.htm");
  const int added = table.Add("\\site\\new.htm");
  if (added >= 0 && table.Find("\\site\\new.htm") != added) std::abort();
  if (added > 0) (void)table.Delete(added / 2);
}

void UseTable(SiteLinkDB& table) {
  const UrlID page(kKindPath, 0);
  std::vector<int> numbers;
  (void)table.Query(page, kAnyUrlID, numbers);
  for (const int number : numbers) {
    SiteLinkRec link;
    if (table.Get(number, link) == 0) table.TextView(link.text);
  }
  (void)table.Query(kAnyUrlID, page, numbers);
  const int added = table.Add("new.htm", page, page, "text", 0x40);
  if (added > 0) (void)table.Delete(added / 2);
  (void)table.Clear();
}

void UseTable(SiteRelDB& table) {
  const UrlID folder(kKindFolder, 0);
  std::vector<int> numbers;
  (void)table.Query(folder, kAnyUrlID, numbers);
  table.CountTo(folder);
  const int added = table.Add(folder, UrlID(kKindPath, 7));
  if (added > 0) (void)table.Delete(added / 2);
  if (table.Count() > 3) (void)table.Clear();
}

template <class Rec>
void UseTable(NamedTable<Rec>& table) {
  table.Find("http://a/");
  const int added = table.Add("http://b/");
  if (added > 0) (void)table.Delete(0);
  (void)table.Clear();
}

// Every profile is read whole; the first is renamed, the last copied and deleted.
template <class Table>
void UseProfiles(Table& table) {
  if (table.Find("copy") < 0) (void)table.Copy(table.Count() - 1, "copy");
  (void)table.Rename(table.NextNumber(0), "renamed");
  const int added = table.Add("new");
  if (added >= 0 && table.Find("new") != added) std::abort();
  if (added > 0) (void)table.Delete(added - 1);
}
void UseTable(SiteSiteProfDB& table) {
  std::string text;
  SiteTableNames names;
  for (int i = table.NextNumber(0); i >= 0; i = table.NextNumber(i + 1)) {
    (void)table.ReadTableNames(i, names);
    for (int slot = -1; slot <= 10; ++slot) (void)table.GetFolder(i, slot, text);
    (void)table.SetFolder(i, i % 10, "\\site\\");
  }
  UseProfiles(table);
}
void UseTable(SiteServProfDB& table) {
  std::string text;
  for (int i = table.NextNumber(0); i >= 0; i = table.NextNumber(i + 1)) {
    (void)table.GetText(i, &SiteServRec::host, text);
    if (table.GetPassword(i, &SiteServRec::password, text) < 0) continue;
    if (table.SetPassword(i, &SiteServRec::password, text + "x") < 0) continue;
    std::string again;
    if (table.GetPassword(i, &SiteServRec::password, again) < 0 || again != text + "x") {
      std::abort();
    }
  }
  UseProfiles(table);
}

// The faults, with every record read word by word.
TableFaults FaultsOf(TableKind kind, const std::string& path) {
  TableFaults faults;
  TableCheck(kind, path, faults).Check();
  std::vector<TableFault> stopped;
  const auto look = [](const DumpedRecord& record, void* sum) {
    *static_cast<std::size_t*>(sum) += record.words.size();
  };
  std::size_t words = 0;
  DumpRecords(kind, path, true, look, &words, stopped);
  return faults;
}

template <class Table>
void OpenAndUse(TableKind kind, const std::string& path) {
  const bool wasSound = FaultsOf(kind, path).isSound();
  Table table;
  if constexpr (requires { table.Open(path, kOpenRestore); }) {
    if (table.Open(path, kOpenBackUp) < 0) return;
  } else {
    if (table.Open(path) < 0) return;
  }
  UseTable(table);
  (void)table.Pack();
  (void)table.Flush();
  (void)table.Close();
  const TableFaults after = FaultsOf(kind, path);
  if (!wasSound || after.isSound()) return;
  for (const TableFault& fault : after.told)
    std::cerr << fault.offset << ": " << fault.what << "\n";
  std::abort();
}

constexpr void (*kTables[])(TableKind kind, const std::string& path) = {
    &OpenAndUse<SiteUrlDB>,     &OpenAndUse<SitePathDB>, &OpenAndUse<SiteLinkDB>,
    &OpenAndUse<SiteFolderDB>,  &OpenAndUse<SiteRelDB>,  &OpenAndUse<SiteSiteProfDB>,
    &OpenAndUse<SiteServProfDB>};  // by TableKind

// Fills a small table; one input are its files.
void Fill(SitePathDB& table) {
  for (const char* name : {"\\site\\a.htm", "\\site\\b.htm", "\\site\\c.htm"}) {
    const int number = table.Add(name);
    (void)table.SetText(number, &SitePathRec::title, "title");
    SitePathRec path;
    (void)table.Get(number, path);
    const int one = table.strings()->AddString("one");
    (void)table.SetList(path, {one, table.strings()->AddString(name)});
    (void)table.Update(path);
  }
  (void)table.Delete(1);
}
void Fill(SiteLinkDB& table) {
  for (int i = 0; i < 4; ++i) {
    (void)table.Add("x.htm", UrlID(kKindPath, 0), UrlID(kKindPath, i / 2), i == 3 ? "alt" : "",
                    0x40);
    (void)table.Add("y.htm", UrlID(kKindPath, i), UrlID(kKindUrl, i), 0x200);
  }
  (void)table.Delete(0);
}
void Fill(SiteRelDB& table) {
  for (int i = 0; i < 4; ++i) (void)table.Add(UrlID(kKindFolder, i / 2), UrlID(kKindPath, i));
  (void)table.Delete(0);
}
template <class Rec>
void Fill(NamedTable<Rec>& table) {
  for (const char* name : {"http://a/", "http://c/", "mailto:d"}) (void)table.Add(name);
  (void)table.Delete(1);
}
void Fill(SiteSiteProfDB& table) {
  for (const char* name : {"one", "two", "three"}) {
    const int number = table.Add(name);
    (void)table.SetFolder(number, 1, "\\site\\");
    (void)table.SetText(number, &SiteSiteRec::topFile, "\\site\\index.html");
  }
  (void)table.Delete(1);
}
void Fill(SiteServProfDB& table) {
  for (const char* name : {"one", "two"}) {
    const int number = table.Add(name);
    (void)table.SetText(number, &SiteServRec::host, "ftp.example.org");
    (void)table.SetPassword(number, &SiteServRec::password, "secret");
  }
}

template <class Table>
std::string TableSeed(TableKind kind) {
  const test::TempFolder folder;
  Table table;
  if constexpr (requires { table.Open("", kOpenPlain); }) {
    (void)table.Open(folder.path("tR"), kOpenPlain);
  } else {
    (void)table.Open(folder.path("tR"));
  }
  Fill(table);
  (void)table.Close();
  const std::string records = test::ReadWhole(folder.native("tR"));
  return test::Word(static_cast<std::uint32_t>(kind)) +
         test::Word(static_cast<std::uint32_t>(records.size())) + records +
         test::ReadWhole(folder.native("tS"));
}

void ReadTable(std::string_view input) {
  static const test::TempFolder folder;
  if (input.size() < kTableHead) return;
  const auto kind = static_cast<unsigned char>(input[0]) % std::size(kTables);
  const std::string_view files = input.substr(kTableHead);
  const auto length = static_cast<std::uint32_t>(LoadLE32(input.data() + 4));
  const std::size_t cut = std::min<std::size_t>(length, files.size());
  test::WriteWhole(folder.native("tR"), files.substr(0, cut));
  test::WriteWhole(folder.native("tS"), files.substr(cut));
  kTables[kind](static_cast<TableKind>(kind), folder.path("tR"));
}

std::vector<std::string> TableSeeds() {
  return {
      TableSeed<SiteUrlDB>(TableKind::kUrls),        TableSeed<SitePathDB>(TableKind::kFiles),
      TableSeed<SiteLinkDB>(TableKind::kLinks),      TableSeed<SiteFolderDB>(TableKind::kFolders),
      TableSeed<SiteRelDB>(TableKind::kRelations),   TableSeed<SiteSiteProfDB>(TableKind::kSites),
      TableSeed<SiteServProfDB>(TableKind::kServers)};
}

}  // namespace

const Target kTableTarget = {"table", &ReadTable, &TableSeeds};

}  // namespace zvrsit::fuzz
