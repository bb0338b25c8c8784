// A small site: it is read, asked, changed and brought up to date. The tables of an update are
// those of a rebuild; what a move would change can be applied; and nothing is damaged.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/target.h"
#include "repair/file_edits.h"
#include "repair/repair_plan.h"
#include "support/site_tables.h"

namespace zvrsit {
namespace {

namespace fs = std::filesystem;
using Files = std::map<std::string, std::string>;

constexpr const char* kNames[] = {
    "index.html", "a.html",      "A.html",        "d/a.html",        "d/index.html", "d/e/b.html",
    "s.css",      "d/t.css",     "i.png",         "x.svg",           "x.php",        "_redirects",
    "robots.txt", "sitemap.xml", "manifest.json", "caf\xC3\xA9.html"};

// Files, each a byte for the name, two for the length, and the content; as many as there are.
// The high half of the first byte says what becomes of the file afterwards.
class Script {
 public:
  explicit Script(std::string_view input) {
    while (input.size() >= 3) {
      const auto what = static_cast<unsigned char>(input[0]);
      const std::size_t length =
          static_cast<unsigned char>(input[1]) + 256 * static_cast<std::size_t>(input[2] & 0x0F);
      const std::string content(input.substr(3, length));
      input.remove_prefix(std::min(input.size(), 3 + length));
      const std::string name = kNames[what % std::size(kNames)];
      const unsigned fate = what >> 4;
      if (fate != 1) before[name] = content;  // 1: it is new
      if (fate == 2) continue;                // it is removed
      after[name] = fate == 3 ? content + "<a href=i.png>" : content;
    }
  }
  Files before;
  Files after;
};

void Write(const test::TempFolder& folder, const Files& files) {
  static int second = 0;
  for (const auto& entry : fs::recursive_directory_iterator(folder.native("site"))) {
    const std::string name = fs::relative(entry.path(), folder.native("site")).generic_string();
    if (entry.is_regular_file() && name != "index.html" && !files.contains(name)) {
      fs::remove(entry.path());
    }
  }
  for (const auto& [name, content] : files) {
    const std::string path = folder.native("site/" + name);
    if (fs::exists(path) && test::ReadWhole(path) == content) continue;
    test::WriteWhole(path, content);
    fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(100) +
                                  std::chrono::seconds(++second % 100000));
  }
}

void Ask(SiteMgr& manager) {
  std::vector<MissingFragment> missing;
  if (manager.FindMissingFragments(missing) != 0) std::abort();
  const std::unique_ptr<vec<SiteRecCell>> files(manager.EnumPath());
  if (files == nullptr) std::abort();
  for (const SiteRecCell& file : *files) {
    std::vector<PageId> ids;
    (void)manager.ListPageIds(file.GetName(), ids);
    manager.DeleteVecRecCell(manager.GetForeLinks(std::string(file.GetName())));
    manager.DeleteVecRecCell(manager.GetBackLinks(std::string(file.GetName())));
  }
}

void PlanMoves(SiteMgr& manager, const test::TempFolder& folder) {
  const std::pair<const char*, const char*> moves[] = {{"site/index.html", "site/d/moved.html"},
                                                       {"site/d\\", "site/f\\"},
                                                       {"site/s.css", "site/d/u.css"}};
  for (const auto& [from, to] : moves) {
    RepairPlan plan;
    if (PlanMove(manager, folder.path(from), folder.path(to), plan) != 0) continue;
    for (const FileEdits& file : plan.files) {
      std::string changed;
      std::string native;
      const bool isRead = platform::ToNativePath(file.path, native);
      if (!isRead || !ApplyEdits(test::ReadWhole(native), file, changed)) std::abort();
    }
  }
}

void NeedSound(SiteMgr& manager) {
  TableFaults faults;
  if (manager.VerifySite("demo", faults) != 0 || !faults.isSound()) std::abort();
}

void Live(const Script& script, LinkRules rules) {
  const test::TempFolder folder;
  folder.write("site/index.html", "");
  folder.makeFolder("kept");
  folder.makeFolder("fresh");
  const SiteProfile profile = test::ProfileOf(folder, rules);
  Write(folder, script.before);
  test::SiteTables kept(folder, "kept", profile);
  kept.Rebuild();
  Ask(*kept.mgr);
  PlanMoves(*kept.mgr, folder);
  Write(folder, script.after);
  SiteUpdates updates;
  const int result = kept.mgr->SiteUpdate(updates, nullptr);
  if (result != 0 && result != SiteMgr::kMustRebuild) std::abort();
  if (result == 0) {
    if (kept.mgr->FlushUpdated() != 0) std::abort();
    test::SiteTables fresh(folder, "fresh", profile);
    fresh.Rebuild();
    const std::vector<std::string> have = kept.Dump();
    const std::vector<std::string> want = fresh.Dump();
    if (have != want) {
      const auto [a, b] = std::ranges::mismatch(have, want);
      std::cerr << "after the update: " << (a != have.end() ? *a : "")
                << "\nafter a rebuild:  " << (b != want.end() ? *b : "") << "\n";
      std::abort();
    }
  }
  kept.mgr->SiteClose();
  NeedSound(*kept.mgr);
}

std::string File(unsigned what, const std::string& content) {
  return std::string{static_cast<char>(what), static_cast<char>(content.size()),
                     static_cast<char>(content.size() >> 8)} +
         content;
}

}  // namespace
}  // namespace zvrsit

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zvrsit;
  if (size == 0) return 0;
  const Script script({reinterpret_cast<const char*>(data) + 1, size - 1});
  Live(script, data[0] % 4 == 0 ? LinkRules::Classic : LinkRules::Web);
  return 0;
}

std::vector<std::string> FuzzSeeds() {
  using zvrsit::File;
  return {
      "1" +
          File(0x00,
               "<a href=a.html#x><img srcset='i.png 1x, d/i.png 2x'><link rel=stylesheet "
               "href=s.css>") +
          File(0x21, "<p id=x><a href=d/>") + File(0x34, "<base href=e/><a href=b.html>") +
          File(0x06, "@import 'd/t.css';b{background:url(i.png)}") +
          File(0x17, "b{background:url(../i.png)}"),
      "4" + File(0x30, "<frameset><frame src=a.html></frameset>") +
          File(0x11, "<a href=/index.html>"),
      "1" + File(0x0B, "/old /a.html 301\n/d/* /:splat\n") +
          File(0x00, "<a href=old><a href=d/a.html>") +
          File(0x11, "<meta http-equiv=refresh content='0;url=d/'>") +
          File(0x0E, "{\"start_url\":\"a.html\",\"scope\":\"d/\"}"),
      "2" + File(0x0D, "<urlset><url><loc>a.html</loc></url></urlset>") +
          File(0x0C, "Sitemap: sitemap.xml\n") + File(0x0F, "<title>x</title>") +
          File(0x39, "<svg><use href=#a /><a xlink:href=x.php></a></svg>") +
          File(0x2A, "<? echo ?><a href=<?= $x ?>>"),
  };
}
