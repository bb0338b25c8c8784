// A small site: it is read, asked, changed and brought up to date. The tables of an update are
// those of a rebuild, and so is what is wrong with the site; what a move would change can be
// applied; and nothing is damaged.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "findings/compare.h"
#include "findings/output.h"
#include "findings/site_findings.h"
#include "fuzz/target.h"
#include "repair/file_edits.h"
#include "repair/repair_plan.h"
#include "support/site_tables.h"

namespace zvrsit::fuzz {
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

// All rules on: what is wrong with the open site.
class Wrong {
 public:
  Wrong(SiteMgr& manager, const SiteProfile& profile)
      : folder_(profile.folders[kSlotSiteFolder]), findings_(manager, Site(profile), AllOn()) {}

  void Collect() {
    if (!findings_.Collect()) std::abort();
  }
  // What Collect would find now, after this update, is told place by place.
  void Follow(const SiteUpdates& updates) {
    std::vector<Finding> kept = findings_.List();
    std::vector<Finding> before;
    std::vector<Finding> after;
    if (!findings_.Follow(updates, before, after)) std::abort();
    std::vector<Finding> now = findings_.List();
    TakeOutShared(kept, now);
    TakeOutShared(before, after);
    if (TextOf(kept) != TextOf(before) || TextOf(now) != TextOf(after)) {
      std::cerr << "gone:\n" << TextOf(kept) << "told as gone:\n" << TextOf(before);
      std::cerr << "new:\n" << TextOf(now) << "told as new:\n" << TextOf(after);
      std::abort();
    }
  }
  std::string Text() const { return TextOf(findings_.List()); }

 private:
  static FoundSite Site(const SiteProfile& profile) {
    const auto typeOf = [](const std::string& native) {
      std::error_code error;
      return fs::status(native, error).type();
    };
    return {profile.folders[kSlotSiteFolder], profile.topFile, typeOf, {}};
  }
  static Severities AllOn() {
    Severities all;
    for (std::size_t i = 0; i < kRuleCount; ++i) all.Set(static_cast<Rule>(i), Severity::kError);
    return all;
  }
  std::string TextOf(std::vector<Finding> findings) const {
    FindingReport report;
    report.folder = folder_;
    report.findings = std::move(findings);
    return FormatFindings(report, FindingFormat::kJsonl);
  }

  const std::string folder_;
  SiteFindings findings_;
};

// The tables after an update, and what is wrong then, beside those after a rebuild.
void NeedAsRebuilt(const test::SiteTables& kept, const Wrong& wrong, const test::TempFolder& folder,
                   const SiteProfile& profile) {
  test::SiteTables fresh(folder, "fresh", profile);
  fresh.Rebuild();
  Wrong anew(*fresh.mgr, profile);
  anew.Collect();
  std::vector<std::string> have = kept.Dump();
  std::vector<std::string> want = fresh.Dump();
  have.push_back(wrong.Text());
  want.push_back(anew.Text());
  if (have == want) return;
  const auto [a, b] = std::ranges::mismatch(have, want);
  std::cerr << "after the update: " << (a != have.end() ? *a : "")
            << "\nafter a rebuild:  " << (b != want.end() ? *b : "") << "\n";
  std::abort();
}

void Live(const Script& script, const test::TempFolder& folder, const SiteProfile& profile) {
  Write(folder, script.before);
  test::SiteTables kept(folder, "kept", profile);
  kept.Rebuild();
  Ask(*kept.mgr);
  PlanMoves(*kept.mgr, folder);
  kept.mgr->KeepPageIds(true);
  {
    Wrong wrong(*kept.mgr, profile);
    wrong.Collect();
    Write(folder, script.after);
    SiteUpdates updates;
    const int result = kept.mgr->SiteUpdate(updates, nullptr);
    if (result != 0 && result != SiteMgr::kMustRebuild) std::abort();
    if (result == 0) {
      if (kept.mgr->FlushUpdated() != 0) std::abort();
      wrong.Follow(updates);
      NeedAsRebuilt(kept, wrong, folder, profile);
    }
  }
  kept.mgr->SiteClose();
  NeedSound(*kept.mgr);
}

// The bits of the first byte choose the profile.
SiteProfile ProfileFor(unsigned bits, const test::TempFolder& folder) {
  SiteProfile profile =
      test::ProfileOf(folder, (bits & 3) == 0 ? LinkRules::Classic : LinkRules::Web);
  if ((bits & 4) != 0) profile.folders[kSlotFallbackExtensions] = "html";
  if ((bits & 8) != 0) profile.folders[kSlotLiveUrl] = "http://h/x/";
  if ((bits & 64) != 0) profile.defaultUrl = "a.html,index.html";
  return profile;
}

std::string File(unsigned what, const std::string& content) {
  return std::string{static_cast<char>(what), static_cast<char>(content.size()),
                     static_cast<char>(content.size() >> 8)} +
         content;
}

void ReadSite(std::string_view input) {
  if (input.empty()) return;
  const test::TempFolder folder;
  folder.write("site/index.html", "");
  folder.makeFolder("kept");
  folder.makeFolder("fresh");
  Live(Script(input.substr(1)), folder, ProfileFor(static_cast<unsigned char>(input[0]), folder));
}

std::vector<std::string> SiteSeeds() {
  return {
      "1" +
          File(0x00,
               "<a href=a.html#x><img srcset='i.png 1x, d/i.png 2x'><link rel=stylesheet "
               "href=s.css>") +
          File(0x21, "<p id=x><a href=d/>") + File(0x34, "<base href=e/><a href=b.html>") +
          File(0x06, "@import 'd/t.css';b{background:url(i.png)}") +
          File(0x17, "b{background:url(../i.png)}"),
      "5" + File(0x10, "<a href=a><a href=http://h/x/d/><a href=d/a#x>") + File(0x23, "<p id=x>") +
          File(0x14, "<a href=a#x>") + File(0x31, "<a href=d>"),
      "E" + File(0x00, "<a href=d/#x><a href=d>") + File(0x13, "<p id=x><p id=x>") +
          File(0x24, "<p id=y>") + File(0x2F, ""),
      "I" + File(0x30, "<a href=http://h/x/A.html><a href=http://h/x/caf%C3%A9.html#a>") +
          File(0x22, "<p id=a>") + File(0x1F, "<p id=a><a href=../x/a.html>"),
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

}  // namespace

const Target kSiteTarget = {"site", &ReadSite, &SiteSeeds};

}  // namespace zvrsit::fuzz
