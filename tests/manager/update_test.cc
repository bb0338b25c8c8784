// An update of a site beside a complete rebuild of the same files into empty tables, over random
// lives of small sites. They have all that makes the links of a page depend on other files.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "platform/window.h"
#include "support/dialog_recorder.h"
#include "support/folder_link.h"
#include "support/site_tables.h"

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace zvrsit::test {
namespace {

namespace fs = std::filesystem;

// One site that is edited at random.
class Life {
 public:
  explicit Life(unsigned seed) : random_(seed) {
    write("index.html", Page());
    folder.makeFolder("kept");
    profile = ProfileOf(folder, Chance(70) ? LinkRules::Web : LinkRules::Classic);
    if (Chance(20)) profile.defaultUrl = Pick({"index.htm", "default.htm,index.html", "p1.html"});
    if (Chance(20)) profile.folders[kSlotFallbackExtensions] = "html,htm";
    if (Chance(10)) profile.folders[kSlotLiveUrl] = "http://x.example/";
    // What makes rebuilds necessary is rare, and in other sites not there at all.
    odd_ = Chance(25) ? static_cast<int>(random_() % 5) : -1;
    leadsOut_ = Chance(20);
    for (int i = 0; i < 12; ++i) Edit();
  }

  // Some edits, as between two updates.
  void EditSome() {
    for (unsigned count = 1 + random_() % 4; count > 0; --count) Edit();
  }
  bool Chance(unsigned percent) { return random_() % 100 < percent; }

  TempFolder folder;
  SiteProfile profile;
  // Since the last update: what was done; and which files were written or removed.
  std::vector<std::string> edits;
  std::vector<std::string> written;

 private:
  std::string Pick(const std::vector<std::string>& from) { return from[random_() % from.size()]; }

  std::string File() {
    const std::string name =
        Pick({"index.html", "index.htm",  "default.htm", "p1.html", "p2.html",       "p3.html",
              "P1.html",    "about.html", "about",       "i.gif",   "j.gif",         "s1.css",
              "s2.css",     "s3.css",     "q.svg",       "x.php",   "manifest.json", "sitemap.xml",
              "robots.txt", "n.txt",      "r#1.html"});
    return Folder() + name;
  }
  std::string Folder() {
    return Pick({"", "", "", "a/", "a/", "b/", "a/c/", "about/", "p2.html/"});
  }

  // A reference from anywhere.
  std::string Reference() {
    std::string target = Chance(25) ? Folder() : File();
    if (Chance(20))
      target = Folder() + Pick({"about", "p1", "a", "b", "c", "p2.html", ".", "..", ""});
    if (Chance(15)) target = "../" + target;
    if (Chance(20)) target = "/" + target;
    if (Chance(8)) target = Pick({"http://x.example/", "http://y.example/z"}) + target;
    if (leadsOut_ && Chance(10)) target = "../" + Pick({"out.html", "out.gif", "nowhere.gif", "o"});
    if (Chance(15)) target += Pick({"#", "?"}) + Pick({"x", "y"});
    if (const auto hash = target.find("r#1"); hash != std::string::npos) {
      target.replace(hash + 1, 1, "%23");
    }
    return target.empty() ? "." : target;
  }

  std::string Element() {
    const std::string to = Reference();
    switch (random_() % 14) {
      case 0:
        return "<img src=\"" + to + "\" alt=\"" + Pick({"", "A", "B"}) + "\">";
      case 1:
        return "<img srcset=\"" + to + " 1x, " + Reference() + " 2x\">";
      case 2:
        return "<link rel=stylesheet href=\"" + Folder() + Pick({"s1", "s2", "s3"}) + ".css\">";
      case 3:
        return "<style>@import '" + Pick({"s1", "s2", "a/s1"}) + ".css'; b{background:url(\"" + to +
               "\")}</style>";
      case 4:
        return "<title>" + Pick({"One", "Two"}) + "</title>";
      case 5:
        return "<meta name=description content=" + Pick({"x", "y"}) +
               "><meta charset=" + Pick({"utf-8", "windows-1252", "shift_jis"}) + ">";
      case 6:
        return "<a name=" + Pick({"x", "y"}) + "></a><p style=\"background:url('" + to + "')\">";
      case 7:
        return "<meta http-equiv=refresh content='1;url=" + to + "'>";
      case 8:
        return Chance(30) ? "<base href=\"" + to + "\">" : "<p>";
      case 9:
        return odd_ == 0 ? "<applet code=\"" + Pick({"i.gif", "p1.html"}) + "\" codebase=\"" +
                               Folder() + "\"></applet>"
                         : "<i>";
      case 10:
        return odd_ == 1
                   ? "<script type=importmap>{\"imports\":{\"k/\":\"./" + Folder() + "\"}}</script>"
                   : "<b>";
      case 11:
        return odd_ == 2 ? "<link rel=\"" + Pick({"stylesheet", "alternate stylesheet"}) +
                               "\" href=\"" + Folder() + Pick({"x.php", "n.txt", "s1.css"}) + "\">"
                         : "<s>";
      default:
        return "<a href=\"" + to + "\">" + Pick({"one", "two", "caf\xC3\xA9"}) + "</a>";
    }
  }
  std::string Page() {
    std::string text;
    for (unsigned i = random_() % 6; i > 0; --i) text += Element() + "\n";
    return text;
  }
  std::string Sheet() {
    std::string text = odd_ == 3 && Chance(50) ? "/* \xE3\x81\x82 */" : "";
    if (Chance(10)) text += "@charset \"utf-8\";";
    if (Chance(40)) text += "@import \"" + Folder() + Pick({"s1", "s2", "s3"}) + ".css\";";
    if (Chance(70)) text += "b{background:url(\"" + Reference() + "\")}";
    return text;
  }
  std::string Content(const std::string& name) {
    if (name.ends_with(".css")) return Sheet();
    if (name.ends_with(".gif")) return std::string(random_() % 3, 'g');
    if (name.ends_with("manifest.json"))
      return "{\"start_url\":\"" + Reference() + "\",\"scope\":\"" + (odd_ == 1 ? Folder() : "q") +
             "\"}";
    if (name.ends_with("sitemap.xml"))
      return "<urlset><url><loc>http://x.example/" + File() + "</loc></url></urlset>";
    if (name.ends_with("robots.txt")) return "Sitemap: http://x.example/" + File() + "\n";
    if (name.ends_with("_redirects")) return "/" + File() + " /" + File() + "\n/b/* /a/:splat\n";
    return Page();
  }

  // Times a second apart in the past, so that a change shows; sometimes the time of today.
  void write(const std::string& name, const std::string& content) {
    const fs::path path = folder.native("site/" + name);
    std::error_code error;
    for (fs::path above = path.parent_path(); above != folder.native("site");
         above = above.parent_path()) {
      const fs::file_status status = fs::symlink_status(above, error);
      if (fs::exists(status) && !fs::is_directory(above, error)) return;
    }
    if (fs::is_directory(path, error)) return;
    WriteWhole(path.string(), content);
    if (!Chance(10)) SetTime(path);
    written.push_back(name);
    edits.push_back("write " + name + ": " + content);
  }
  void SetTime(const fs::path& path) {
    std::error_code ignored;
    fs::last_write_time(
        path,
        fs::file_time_type::clock::now() - std::chrono::hours(1000) + std::chrono::seconds(++time_),
        ignored);
  }

  void Edit() {
    const std::string name = File();
    const fs::path path = folder.native("site/" + name);
    std::error_code error;
    switch (random_() % 16) {
      case 0:
        if (name != "index.html") fs::remove_all(path, error);
        written.push_back(name);
        edits.push_back("remove " + name);
        break;
      case 1: {  // the same bytes but one
        std::string bytes = fs::is_regular_file(path, error) ? ReadWhole(path.string()) : "";
        if (bytes.empty()) break;
        bytes[random_() % bytes.size()] = 'a';
        const auto before = fs::last_write_time(path, error);
        write(name, bytes);
        // Its old time again; Windows does not tell of that.
        if (Chance(50) && !platform::kNamesIgnoreCase) fs::last_write_time(path, before, error);
        break;
      }
      case 2:
        if (fs::exists(path, error)) SetTime(path);
        edits.push_back("touch " + name);
        break;
      case 3:
        Rename(name, File());
        break;
      case 4: {
        const std::string gone = Folder();
        if (!gone.empty() && Chance(40))
          fs::remove_all(folder.native("site/" + gone.substr(0, gone.size() - 1)), error);
        edits.push_back("remove " + gone);
        break;
      }
      case 5: {
        const std::string from = Folder(), to = Folder();
        if (!from.empty() && !to.empty() && Chance(40))
          Rename(from.substr(0, from.size() - 1), to.substr(0, to.size() - 1));
        break;
      }
      case 6: {
        const std::string made = Folder();
        fs::create_directories(folder.native("site/" + made), error);
        edits.push_back("folder " + made);
        break;
      }
      case 7: {
        const std::string out = Pick({"out.html", "out.gif", "o/index.html"});
        if (!leadsOut_) break;
        if (Chance(60))
          folder.write(out, "out");
        else
          fs::remove(folder.native(out), error);
        edits.push_back("outside " + out);
        break;
      }
      case 8:
        if (odd_ != 4) break;
        if (Chance(50))
          write("_redirects", Content("_redirects"));
        else
          fs::remove(folder.native("site/_redirects"), error);
        break;
      case 9:
        if (odd_ != 3 || !Chance(50)) break;
        if (!fs::exists(fs::symlink_status(folder.native("site/b"), error)))
          LinkFolder("a", folder.native("site/b"));
        edits.push_back("link b to a");
        break;
      default:
        write(name, Content(name));
    }
  }
  void Rename(const std::string& from, const std::string& to) {
    std::error_code error;
    if (from == "index.html" || to == "index.html") return;
    fs::rename(folder.native("site/" + from), folder.native("site/" + to), error);
    edits.push_back("rename " + from + " to " + to + (error ? " (not done)" : ""));
  }

  std::mt19937 random_;
  int odd_ = -1;  // which of the things that make a rebuild necessary the site may have
  bool leadsOut_ = false;
  int time_ = 0;
};

std::string FirstDifference(const std::vector<std::string>& a, const std::vector<std::string>& b) {
  std::string text;
  std::vector<std::string> only;
  std::ranges::set_difference(a, b, std::back_inserter(only));
  for (const std::string& line : only) text += "  only after the update:  " + line + "\n";
  only.clear();
  std::ranges::set_difference(b, a, std::back_inserter(only));
  for (const std::string& line : only) text += "  only after the rebuild: " + line + "\n";
  return text;
}

// The folders of a site with all that the system tells of what is in them.
using Folders = std::map<std::string, std::string>;

Folders ListFolders(const TempFolder& folder) {
  Folders all{{"", ""}};
  const fs::path root = folder.native("site");
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
    const std::string name = entry.path().lexically_relative(root).generic_string();
    const bool isFolder = entry.is_directory() && !entry.is_symlink();
    if (isFolder) all[name + "/"];
    std::string& listing = all[name.substr(0, name.rfind('/') + 1)];
    listing += name;
    if (isFolder) continue;
#if !defined(_WIN32)
    struct stat found;
    EXPECT_EQ(lstat(entry.path().c_str(), &found), 0);
    for (const timespec& time : {found.st_mtim, found.st_ctim}) {
      listing += " " + std::to_string(time.tv_sec) + "." + std::to_string(time.tv_nsec);
    }
    listing += " " + std::to_string(found.st_ino);
#endif
    if (entry.is_regular_file()) listing += " " + ReadWhole(entry.path().string());
  }
  return all;
}

// Those that differ; no value when folders have come or gone.
std::optional<std::vector<std::string>> ChangedFolders(const TempFolder& folder,
                                                       const Folders& before,
                                                       const Folders& after) {
  std::vector<std::string> changed;
  for (const auto& [name, listing] : before) {
    const auto now = after.find(name);
    if (now == after.end()) return std::nullopt;
    if (now->second != listing) changed.push_back(folder.path("site/" + name));
  }
  if (after.size() != before.size()) return std::nullopt;
  return changed;
}

class Updating : public testing::Test {
 protected:
  // Lives one life; false at the first difference.
  bool Live(unsigned seed, int batches) {
    SCOPED_TRACE(seed);
    Life life(seed);
    SiteTables kept(life.folder, "kept", life.profile);
    kept.Rebuild();
    Folders seen;
    for (int batch = 0; batch < batches; ++batch) {
      life.edits.clear();
      life.written.clear();
      life.EditSome();
      if (life.Chance(20)) {
        SaveOneByOne(life, kept);
        life.EditSome();
      }
      // In half of the lives as one who is told which folders change.
      Folders now;
      std::optional<std::vector<std::string>> changed;
      if (!platform::kNamesIgnoreCase && seed % 2 == 0) {
        now = ListFolders(life.folder);
        changed = ChangedFolders(life.folder, seen, now);
        kept.mgr->KeepPageIds(true);
      }
      SiteUpdates updates;
      const int result = changed ? kept.mgr->SiteUpdateFolders(*changed, updates, nullptr)
                                 : kept.mgr->SiteUpdate(updates, nullptr);
      told_ += changed ? 1 : 0;
      seen = std::move(now);
      ++(result == 0 ? updated_ : rebuilt_);
      if (result == 0) {
        EXPECT_EQ(kept.mgr->FlushUpdated(), 0);
      } else {
        EXPECT_EQ(result, SiteMgr::kMustRebuild);
        kept.Rebuild();
      }
      SiteTables fresh(life.folder, "fresh", life.profile);
      fresh.Rebuild();
      const std::vector<std::string> have = kept.Dump(), want = fresh.Dump();
      if (have != want) {
        std::string told;
        for (const std::string& edit : life.edits) told += "  " + edit + "\n";
        ADD_FAILURE() << "seed " << seed << ", batch " << batch << "\n"
                      << told << FirstDifference(have, want);
        return false;
      }
      if (life.Chance(30)) {
        kept.mgr->SiteClose();
        kept.Start();
        kept.Open();
      }
    }
    return true;
  }

  // As an application that reports each change, though it may forget some.
  static void SaveOneByOne(const Life& life, SiteTables& kept) {
    std::vector<std::string> paths;
    for (const std::string& name : life.written) {
      paths.push_back(life.folder.path("site/" + name));
      const bool isThere = fs::is_regular_file(life.folder.native("site/" + name));
      if (isThere) {
        EXPECT_EQ(kept.mgr->Save(paths.back(), nullptr), 0) << name;
      } else {
        kept.mgr->Remove(paths.back(), 0);
      }
    }
    EXPECT_EQ(kept.mgr->FlushSaved(paths), 0);
  }

  int updated_ = 0;
  int rebuilt_ = 0;
  int told_ = 0;  // updates that were told where to look
};

// ZVRSIT_UPDATE_SECONDS asks for more; ZVRSIT_UPDATE_SEED for one life.
TEST_F(Updating, GivesWhatARebuildGives) {
  const char* const asked = std::getenv("ZVRSIT_UPDATE_SECONDS");
  const char* const only = std::getenv("ZVRSIT_UPDATE_SEED");
  const auto end = std::chrono::steady_clock::now() +
                   std::chrono::seconds(asked != nullptr ? std::atoi(asked) : 0);
  // A file call takes many times as long on Windows; life 25 has found a fault there.
  const int lives = platform::kNamesIgnoreCase ? 10 : 30;
  unsigned seed = platform::kNamesIgnoreCase ? 20 : 1;
  if (only != nullptr) seed = static_cast<unsigned>(std::atoi(only));
  if (asked != nullptr && only == nullptr) seed = std::random_device()();
  int failures = 0;
  for (int life = 0; life < lives || std::chrono::steady_clock::now() < end; ++life, ++seed) {
    if (!Live(seed, 12) && ++failures == 3) break;
    if (only != nullptr) break;
  }
  std::cout << updated_ << " updates, " << rebuilt_ << " rebuilds, told " << told_ << "\n";
  if (only == nullptr) {
    // Where names ignore letter case, more of the lives have to be rebuilt.
    EXPECT_GT(updated_, platform::kNamesIgnoreCase ? rebuilt_ : 2 * rebuilt_);
    EXPECT_TRUE(platform::kNamesIgnoreCase || told_ > 20);
  }
}

// Tables that somebody else has written, or read by another profile, are not trusted; nor is a
// note that is not whole.
TEST_F(Updating, TrustsNoOtherTables) {
  TempFolder folder;
  folder.write("site/index.html", "<a href=a.html>");
  folder.makeFolder("kept");
  const SiteProfile profile = ProfileOf(folder, LinkRules::Web);
  SiteTables kept(folder, "kept", profile);
  const auto update = [&] {
    SiteUpdates updates;
    return kept.mgr->SiteUpdate(updates, nullptr);
  };
  const auto reopen = [&] {
    kept.mgr->SiteClose();
    kept.Start();
    kept.Open();
  };
  kept.Open();
  EXPECT_EQ(update(), SiteMgr::kMustRebuild) << "never rebuilt";
  EXPECT_EQ(kept.mgr->FlushUpdated(), -1);

  const std::vector<std::pair<std::string, std::function<void()>>> changes = {
      {"a save", [&] { kept.mgr->Save(folder.path("site/index.html"), nullptr); }},
      {"a mark",
       [&] {
         kept.mgr->SetFtpFamily({kKindPath, 0}, 4);
       }},
      {"a default document", [&] { kept.mgr->SetSiteProfDefaultUrl("a.html"); }},
      {"an address", [&] { kept.mgr->SetSiteProfDir(kSlotLiveUrl, "http://x.example/"); }},
      {"a top file", [&] { kept.mgr->SetSiteProfTopFile(folder.path("site/index.html") + "x"); }},
      {"rules", [&] { kept.mgr->SetSiteProfLinkRules(0); }},
  };
  for (const auto& [name, change] : changes) {
    kept.Rebuild();
    reopen();
    EXPECT_EQ(update(), 0) << name;
    change();
    if (name != "a top file") reopen();
    EXPECT_EQ(update(), SiteMgr::kMustRebuild) << name;
    kept.mgr->SetSiteProf("demo", profile);
  }

  kept.Rebuild();
  const std::string note = folder.read("kept/demo/NOTE");
  for (std::size_t length = 0; length < note.size(); ++length) {
    folder.write("kept/demo/NOTE", note.substr(0, length));
    ASSERT_EQ(update(), SiteMgr::kMustRebuild) << length;
  }
  folder.write("kept/demo/NOTE", note);
  EXPECT_EQ(update(), 0);
  EXPECT_EQ(kept.mgr->FlushUpdated(), 0);
  kept.mgr->SiteClose();
  EXPECT_EQ(kept.mgr->RenameSiteProf("demo", "other"), 0);
  EXPECT_EQ(kept.mgr->SiteOpen("other", 0), 0);
  EXPECT_EQ(update(), 0) << "the note goes with the tables";
  kept.mgr->SiteClose();
  EXPECT_EQ(kept.mgr->DeleteSiteProf("other"), 0);
  EXPECT_FALSE(folder.has("kept/other"));
}

// Does something when the update names the file that it is about to read.
class BeforeReading : public CWnd {
 public:
  explicit BeforeReading(std::function<void()> act) : act_(std::move(act)) {
    dialog.fileNameText = this;
  }
  void SetWindowTextA(const char*) override {
    if (act_) std::exchange(act_, nullptr)();
  }

  CZvrSiteRebuildProgressDlg dialog;

 private:
  std::function<void()> act_;
};

// What is not there when the folders are walked may be there when a page that links to it is read.
TEST_F(Updating, FilesMayComeMeanwhile) {
  TempFolder folder;
  folder.write("site/index.html", "<a href=new/a.html><a href=new/b.gif><a href=c.gif>");
  folder.makeFolder("kept");
  const SiteProfile profile = ProfileOf(folder, LinkRules::Web);
  SiteTables kept(folder, "kept", profile);
  kept.Rebuild();
  folder.write("site/index.html",
               "<a href=new/a.html><a href=new/b.gif><a href=c.gif><a href=d.gif>");
  BeforeReading window([&] {
    for (const char* const name : {"new/a.html", "new/b.gif", "c.gif", "d.gif"}) {
      folder.write(std::string("site/") + name, "");
    }
  });
  SiteUpdates updates;
  ASSERT_EQ(kept.mgr->SiteUpdate(updates, &window.dialog), 0);
  ASSERT_EQ(kept.mgr->FlushUpdated(), 0);
  ASSERT_EQ(kept.mgr->SiteUpdate(updates, nullptr), 0);
  SiteTables fresh(folder, "fresh", profile);
  fresh.Rebuild();
  const std::vector<std::string> have = kept.Dump(), want = fresh.Dump();
  EXPECT_TRUE(have == want) << FirstDifference(have, want);
}

// The user's marks stay, and keep the entry of a file that is gone.
TEST_F(Updating, KeepsMarks) {
  TempFolder folder;
  folder.write("site/index.html", "");
  folder.write("site/a.html", "");
  folder.makeFolder("kept");
  const SiteProfile profile = ProfileOf(folder, LinkRules::Classic);
  SiteTables kept(folder, "kept", profile);
  kept.Rebuild();
  const auto mark = [&](const std::string& name) {
    const int number = kept.mgr->FindPath(folder.path("site/" + name));
    return number < 0 ? -1 : kept.mgr->GetUrlFtpMember({kKindPath, number});
  };
  EXPECT_EQ(kept.mgr->SiteRebuildDB(1, nullptr), 0);
  for (const char* name : {"a.html", "index.html"}) {
    const int number = kept.mgr->FindPath(folder.path(std::string("site/") + name));
    EXPECT_EQ(kept.mgr->SetFtpFamily({kKindPath, number}, 8), 0);
  }
  EXPECT_EQ(kept.mgr->FlushUpdated(), 0);
  fs::remove(folder.native("site/a.html"));
  folder.write("site/index.html", "<a href=b.html>");
  SiteUpdates updates;
  EXPECT_EQ(kept.mgr->SiteUpdate(updates, nullptr), 0);
  EXPECT_EQ(updates.gone, (std::vector<std::string>{folder.path("site/a.html")}));
  EXPECT_EQ(mark("a.html"), 8);
  EXPECT_EQ(mark("index.html"), 9);
}

}  // namespace
}  // namespace zvrsit::test
