// The pair of files of a table: whatever they hold, opening gives -1 or a table that can be asked,
// written to and closed.
#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/target.h"
#include "support/temp_folder.h"
#include "tables/site_folder_db.h"
#include "tables/site_link_db.h"
#include "tables/site_path_db.h"
#include "tables/site_rel_db.h"
#include "tables/site_url_db.h"
#include "util/little_endian.h"

namespace zvrsit {
namespace {

constexpr std::size_t kHead = 8;  // of an input: which table, and the length of the record file

void ReadList(SitePathDB& table, SitePathRec& path) {
  std::vector<std::int32_t> ids;
  (void)table.GetList(path, ids);
  std::string text;
  for (const std::int32_t id : ids) table.Text(id, text);
  (void)table.ReleaseTexts(path);
}

void UsePaths(SitePathDB& table) {
  std::string text;
  for (int i = table.NextNumber(0); i >= 0; i = table.NextNumber(i + 1)) {
    SitePathRec path;
    if (table.Get(i, path) < 0) continue;
    (void)table.Name(i, text);
    (void)table.GetText(i, &SitePathRec::title, text);
    if (i % 2 == 0) ReadList(table, path);
  }
  table.Find("\\site\\a.htm");
  const int added = table.Add("\\site\\new.htm");
  if (added >= 0 && table.Find("\\site\\new.htm") != added) std::abort();
  if (added > 0) (void)table.Delete(added / 2);
}

void UseLinks(SiteLinkDB& table) {
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

void UseNames(SiteUrlDB& table) {
  table.Find("http://a/");
  const int added = table.Add("http://b/");
  if (added > 0) (void)table.Delete(0);
  (void)table.Clear();
}

template <class Table, class Use>
void OpenAndUse(const std::string& path, Use use) {
  Table table;
  if (table.Open(path) < 0) return;
  use(table);
  (void)table.Pack();
  (void)table.Flush();
  (void)table.Close();
}

void UseTable(unsigned which, const std::string& path) {
  switch (which % 3) {
    case 0:
      return OpenAndUse<SitePathDB>(path, UsePaths);
    case 1:
      return OpenAndUse<SiteLinkDB>(path, UseLinks);
    default:
      return OpenAndUse<SiteUrlDB>(path, UseNames);
  }
}

// One input: the files of a small table.
std::string SeedOf(unsigned which, const test::TempFolder& folder) {
  const std::string records = test::ReadWhole(folder.native("tR"));
  return test::Word(which) + test::Word(static_cast<std::uint32_t>(records.size())) + records +
         test::ReadWhole(folder.native("tS"));
}

std::string PathSeed() {
  const test::TempFolder folder;
  SitePathDB table;
  (void)table.Open(folder.path("tR"));
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
  (void)table.Close();
  return SeedOf(0, folder);
}

std::string LinkSeed() {
  const test::TempFolder folder;
  SiteLinkDB table;
  (void)table.Open(folder.path("tR"));
  for (int i = 0; i < 4; ++i) {
    (void)table.Add("x.htm", UrlID(kKindPath, 0), UrlID(kKindPath, i / 2), i == 3 ? "alt" : "",
                    0x40);
    (void)table.Add("y.htm", UrlID(kKindPath, i), UrlID(kKindUrl, i), 0x200);
  }
  (void)table.Delete(0);
  (void)table.Close();
  return SeedOf(1, folder);
}

std::string UrlSeed() {
  const test::TempFolder folder;
  SiteUrlDB table;
  (void)table.Open(folder.path("tR"));
  for (const char* name : {"http://a/", "http://c/", "mailto:d"}) (void)table.Add(name);
  (void)table.Delete(1);
  (void)table.Close();
  return SeedOf(2, folder);
}

}  // namespace
}  // namespace zvrsit

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zvrsit;
  static const test::TempFolder folder;
  if (size < kHead) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::string_view files = bytes.substr(kHead);
  const auto length = static_cast<std::uint32_t>(LoadLE32(data + 4));
  const std::size_t cut = std::min<std::size_t>(length, files.size());
  test::WriteWhole(folder.native("tR"), files.substr(0, cut));
  test::WriteWhole(folder.native("tS"), files.substr(cut));
  UseTable(data[0], folder.path("tR"));
  return 0;
}

std::vector<std::string> FuzzSeeds() {
  return {zvrsit::PathSeed(), zvrsit::LinkSeed(), zvrsit::UrlSeed()};
}
