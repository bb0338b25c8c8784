// A site lives through edits on disk that are reported through Save, Remove and Move; now and then
// its tables must say, by name, what those of a fresh rebuild of the same tree say.
//
// What rightly differs, and is left out on both sides:
//   - files that are not there and that nothing links to: an entry stays when the last page that
//     linked to it is saved without the link or removed;
//   - the size and times of a file that is not there: an entry that Remove keeps has those last
//   seen;
//   - URLs that nothing links to: they are only cleared by a rebuild;
//   - relations to a file that is not there: Remove keeps them with the entry;
//   - folders without a file in them or below: they stay after their last file is removed, and one
//     that was made empty is only met by the walk of a rebuild.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <random>
#include <set>

#include "manager/answers.h"
#include "platform/native_path.h"
#include "support/code_page_scope.h"
#include "support/test_site.h"

namespace zvrsit {
namespace {

namespace fs = std::filesystem;
using Facts = std::multiset<std::string>;

// What the tables of the open site say by name, a line each.
class FactsOf {
 public:
  FactsOf(SiteMgr& mgr, const std::string& dir) : mgr_(mgr), dir_(dir) {
    AddFiles();
    AddRelations();
    AddLinks();
  }
  const Facts& all() const { return facts_; }

 private:
  std::string Name(const UrlID& id) {
    std::string name = test::Take(id.kind == kKindFolder ? mgr_.FolderName(id.id)
                                  : id.kind == kKindPath ? mgr_.UrlPath(id.id)
                                                         : mgr_.UrlUrl(id.id));
    return name.starts_with(dir_) ? "." + name.substr(dir_.size() - 1) : name;
  }

  void AddFiles() {
    const SitePathDB& paths = *mgr_.GetPathDB();
    for (int n = paths.NextNumber(0); n >= 0; n = paths.NextNumber(n + 1)) {
      SitePathRec rec;
      EXPECT_GE(paths.Get(n, rec), 0);
      const UrlID id(kKindPath, n);
      std::string native;
      platform::ToNativePath(test::Take(mgr_.UrlPath(n)), native);
      EXPECT_EQ(rec.exists != 0, fs::is_regular_file(native)) << native;
      if (rec.exists == 0 && mgr_.GetLinkDB()->CountTo(id) == 0) continue;
      std::ostringstream line;
      line << "file " << Name(id) << " type " << rec.fileType << " marks " << rec.membership;
      if (rec.exists != 0) {
        line << " size " << rec.size << " title '" << paths.TextView(rec.title) << "' keywords '"
             << paths.TextView(rec.keywords) << "' anchors " << rec.listCount;
      }
      facts_.insert(line.str());
      if (rec.exists != 0) NoteFoldersOf(Name(id));
    }
  }

  void NoteFoldersOf(std::string name) {
    for (auto end = name.rfind('\\'); end != std::string::npos; end = name.rfind('\\')) {
      name.erase(end);
      filled_.insert(name + "\\");
    }
  }

  void AddRelations() {
    const SiteRelDB& relations = *mgr_.GetRelDB();
    for (int n = relations.NextNumber(0); n >= 0; n = relations.NextNumber(n + 1)) {
      SiteRelRec rel;
      EXPECT_GE(relations.Get(n, rel), 0);
      SitePathRec file;
      const bool holdsFile = rel.to.kind == kKindPath
                                 ? mgr_.GetPathDB()->Get(rel.to.id, file) == 0 && file.exists != 0
                                 : filled_.contains(Name(rel.to));
      if (holdsFile) facts_.insert("folder " + Name(rel.from) + " holds " + Name(rel.to));
    }
  }

  void AddLinks() {
    SiteLink link;
    for (const int n : test::Take(mgr_.EnumLink())) {
      EXPECT_EQ(mgr_.GetLink(n, link), 0);
      std::ostringstream line;
      line << "link " << Name(link.from) << " -> " << Name(link.to) << " type " << std::hex
           << link.type << std::dec << " text '" << link.text << "' alt '" << link.alt << "' count "
           << link.count << " at " << link.offset << " exists " << link.exists;
      facts_.insert(line.str());
    }
  }

  SiteMgr& mgr_;
  const std::string dir_;
  std::set<std::string> filled_;  // folders with a file in them or below
  Facts facts_;
};

// The lines that only one of the two has.
std::string Difference(const Facts& kept, const Facts& fresh) {
  std::string lines;
  Facts only;
  std::ranges::set_difference(kept, fresh, std::inserter(only, only.end()));
  for (const std::string& line : only) lines += "kept only:  " + line + "\n";
  only.clear();
  std::ranges::set_difference(fresh, kept, std::inserter(only, only.end()));
  for (const std::string& line : only) lines += "fresh only: " + line + "\n";
  return lines;
}

struct Life {
  LinkRules rules;
  unsigned seed;
  bool named;               // the profile names the default document
  bool doubleByte = false;  // one-letter names are characters of Shift_JIS, where there are such
  // The server takes names without their extensions; and has rules, or else a sitemap.
  bool served = false;
};

class WholeFlow : public testing::TestWithParam<Life> {
 protected:
  WholeFlow()
      : page_(IsDoubleByte() ? 932 : test::PageOfFileNames()),
        site_(GetParam().rules),
        random_(GetParam().seed) {
    for (const char* folder : {"", "a/", "a/b/", "c/"}) {
      for (const char* name : {"index.html", "p.htm", "q.htm", "s.css", "t.css", "g.gif"}) {
        names_.push_back(Spelled(std::string(folder) + name));
      }
      if (!GetParam().named) names_.push_back(Spelled(std::string(folder) + "index.htm"));
    }
    if (GetParam().served) {
      names_.push_back(GetParam().named ? "_redirects" : "sitemap.xml");
      EXPECT_EQ(site_.mgr->SetSiteProfDir(kSlotFallbackExtensions, "htm,html", 0), 0);
    }
    for (const std::string& name : names_) {
      if (name == "index.html" || Chance(70)) Write(name);
    }
    EXPECT_EQ(site_.mgr->SetSiteProfDefaultUrl(GetParam().named ? "index.html" : "", 0), 0);
    EXPECT_EQ(site_.Open(), 0);
    EXPECT_EQ(site_.mgr->SiteRebuildComplete(nullptr), 0);
  }

  static bool IsDoubleByte() {
#if defined(_WIN32)
    return false;
#else
    return GetParam().doubleByte;
#endif
  }

  // Names of one letter become characters whose trail bytes look like separators, or like one
  // letter in two cases.
  static std::string Spelled(const std::string& text) {
    const std::map<char, const char*> characters = {
        {'a', "\x94\x5C"}, {'p', "\x83\x41"}, {'q', "\x83\x61"}, {'s', "\x95\x5C"}};
    std::string spelled;
    for (std::size_t i = 0; i < text.size(); ++i) {
      const bool isName = (i == 0 || text[i - 1] == '/') &&
                          (i + 1 == text.size() || text[i + 1] == '/' || text[i + 1] == '.');
      const auto found = characters.find(text[i]);
      const bool changes = IsDoubleByte() && isName && found != characters.end();
      spelled += changes ? found->second : std::string(1, text[i]);
    }
    return spelled;
  }

  int Roll(int sides) {
    return static_cast<int>(random_() % static_cast<unsigned>(sides));
  }
  bool Chance(int percent) {
    return Roll(100) < percent;
  }
  bool IsThere(const std::string& name) {
    return fs::exists(site_.native(name));
  }

  // A name that is there, or not, other than the top file's; empty when there is none.
  std::string Pick(bool there) {
    std::vector<std::string> fitting;
    for (const std::string& name : names_) {
      if (name != "index.html" && IsThere(name) == there) fitting.push_back(name);
    }
    return fitting.empty() ? "" : fitting[static_cast<std::size_t>(Roll(int(fitting.size())))];
  }

  // Any known name of that ending, as `from` writes it.
  std::string Target(const std::string& from, const std::string& ending) {
    std::string name;
    do {
      name = names_[static_cast<std::size_t>(Roll(int(names_.size())))];
    } while (!name.ends_with(ending));
    return fs::path(name)
        .lexically_relative(fs::path("./" + from).lexically_normal().parent_path())
        .generic_string();
  }

  std::string Sheet(const std::string& name) {
    std::string css = IsDoubleByte() ? "@charset \"shift_jis\";\n" : "";
    if (Chance(50)) css += "@import \"" + Target(name, ".css") + "\";\n";
    if (Chance(30)) css += "@import url(" + Target(name, ".css") + ");\n";
    for (int rules = Roll(3); rules > 0; --rules) {
      css += "p { background: url(" + Target(name, ".gif") + ") }\n";
    }
    return css;
  }

  std::string Element(const std::string& page) {
    switch (Roll(10)) {
      case 0:
        return "<img src='" + Target(page, ".gif") + "' alt=pic>";
      case 1:
        return "<link rel=stylesheet href=" + Target(page, ".css") + ">";
      case 2:
        return "<style>" + Sheet(page) + "</style>";
      case 3:
        return "<a href=http://host/" + std::to_string(Roll(5)) + ">far</a>";
      case 4:
        return "<a name=n" + std::to_string(Roll(3)) + "></a><a href=#n1>here</a>";
      case 5:
        return "<table background=" + Target(page, ".gif") + "></table>";
      case 6:
        return "<a href=" + Target(page, "index.html") + "#top>top</a>";
      case 7:
        if (GetParam().served && Chance(70)) return ServedLink();
        if (Chance(50) && GetParam().rules == LinkRules::Web) return FolderLink();
        return "<a href=missing" + std::to_string(Roll(4)) + ".html>gone</a>";
      default:
        return "<a href=" + Target(page, ".htm") + ">near</a>";
    }
  }

  // A link whose meaning depends on what there is.
  std::string ServedLink() {
    constexpr const char* kTexts[] = {"p",          "/q?x=1", "/a/p#n1", "/c/p",
                                      "/a/b/q",     "/new/p", "/new",    "/far/x",
                                      "/old/q.htm", "/old/b", "/loop",   "/a/index"};
    return std::string("<a href='") + kTexts[Roll(std::size(kTexts))] + "'>served</a>";
  }

  std::string Redirects() {
    constexpr const char* kRules[] = {"/old/* /a/:splat",
                                      "/old/:x /c/:x.htm 302",
                                      "/far/* http://host/:splat",
                                      "/loop /loop2",
                                      "/loop2 /loop",
                                      "/missing0.html /a/p",
                                      "/g.gif /a/g.gif",
                                      "/c/* /a/:splat",
                                      "/p.htm /q.htm 301!",
                                      "/q x=:x /missing:x.html",
                                      "/a/g.gif http://host/g.gif",
                                      "/* /index.html 200",
                                      "/a/* /nothing 404",
                                      "/missing1.html /missing2.html"};
    std::string text;
    for (int rules = Roll(6); rules > 0; --rules) {
      text += std::string(kRules[Roll(std::size(kRules))]) + "\n";
    }
    return text;
  }

  std::string FolderLink() {
    constexpr const char* kTexts[] = {"a/",   "a", "/a/b", "/c/#x", ".",         "..",
                                      "./?q", "b", "/new", "/new1", "/new/deep", "/a/new"};
    return "<a href='" + Spelled(kTexts[Roll(std::size(kTexts))]) + "'>folder</a>";
  }

  void Write(const std::string& name) {
    if (name.ends_with(".css")) return site_.write(name, Sheet(name));
    if (name == "_redirects") return site_.write(name, Redirects());
    if (name == "sitemap.xml") {
      return site_.write(name, "<urlset><loc>" + Target(name, ".htm") + "</loc></urlset>");
    }
    if (name.ends_with(".gif")) return site_.write(name, std::string(1 + Roll(50), 'G'));
    std::string page = IsDoubleByte() ? "<meta charset=shift_jis>" : "";
    page += "<title>" + std::to_string(Roll(100)) + "</title>";
    if (Chance(30)) page += "<meta name=keywords content=k" + std::to_string(Roll(9)) + ">";
    if (Chance(20)) page += "<body background=" + Target(name, ".gif") + ">";
    for (int elements = Roll(8); elements > 0; --elements) page += Element(name) + "\n";
    site_.write(name, page);
  }

  void Save(const std::string& name) {
    Write(name);
    ASSERT_EQ(site_.mgr->Save(site_.path(name), nullptr), 0) << name;
  }

  // Another default document of the site, and its report.
  void ChangeDefault() {
    constexpr const char* kNames[] = {"", "index.htm", "", "p.htm", ""};
    const std::string name = Spelled(kNames[Roll(std::size(kNames))]);
    ASSERT_EQ(site_.mgr->SetSiteProfDefaultUrl(name), 0);
    ASSERT_EQ(site_.mgr->ReflectDefaultUrl(""), 0);
  }

  // Takes away the folders of a file that has gone, as far up as they hold no file.
  void RemoveEmptyFolders(const std::string& name) {
    const auto isFile = [](const fs::directory_entry& entry) { return entry.is_regular_file(); };
    for (fs::path folder = fs::path(name).parent_path(); !folder.empty();
         folder = folder.parent_path()) {
      const fs::path native = site_.native(folder.string());
      if (std::ranges::any_of(fs::recursive_directory_iterator(native), isFile)) return;
      fs::remove_all(native);
    }
  }

  // One edit, and its report.
  void Edit() {
    if (!GetParam().named && Chance(4)) return ChangeDefault();
    const std::string there = Pick(true);
    const std::string missing = Pick(false);
    const int kind = Roll(10);
    if (kind < 3 || there.empty()) {
      Save("index.html");
    } else if (kind < 5) {
      Save(there);
    } else if (kind < 6 && !missing.empty()) {
      Save(missing);
    } else if (kind < 7 && !missing.empty() &&
               fs::path(missing).extension() == fs::path(there).extension()) {
      fs::create_directories(fs::path(site_.native(missing)).parent_path());
      fs::rename(site_.native(there), site_.native(missing));
      RemoveEmptyFolders(there);
      ASSERT_EQ(site_.mgr->Move(site_.path(there), site_.path(missing)), 0) << there;
    } else if (kind < 8) {
      fs::remove(site_.native(there));
      RemoveEmptyFolders(there);
      ASSERT_EQ(site_.mgr->Remove(site_.path(there), 0), 0) << there;
    } else {
      constexpr const char* kFolders[] = {"new/", "new/deep/", "new1/", "a/new/", "a/new/deep/"};
      const std::string folder = Spelled(kFolders[Roll(std::size(kFolders))]);
      fs::create_directories(site_.native(folder + "empty"));
      names_.push_back(folder + Spelled("p.htm"));
      Save(names_.back());
    }
  }

  // Taken from the pages while they were read, if IDs are kept; else the pages are read again.
  static std::vector<std::string> PlacesOfBrokenLinks(SiteMgr& manager) {
    const std::unique_ptr<std::vector<int>> links(manager.EnumBrokenLink());
    std::vector<std::vector<LinkPlace>> places;
    EXPECT_EQ(manager.FindLinkPlaces(*links, places), 0);
    std::vector<std::string> told;
    for (std::size_t i = 0; i < places.size(); ++i) {
      std::string line = "link " + std::to_string((*links)[i]);
      for (const LinkPlace& place : places[i]) {
        line += " " + std::to_string(place.line) + ":" + std::to_string(place.column);
      }
      told.push_back(std::move(line));
    }
    return told;
  }

  Facts FactsOfFreshRebuild(int number) {
    SiteProfile profile;
    EXPECT_EQ(site_.mgr->GetSiteProf("demo", profile), 0);
    DOM dom;
    SiteMgr fresh;
    fresh.setDom(&dom);
    const std::string db = "fresh" + std::to_string(number);
    fresh.setDB((site_.folder().path(db) + "\\").c_str(), "sites.R", "servers.R", 0);
    EXPECT_EQ(fresh.SetSiteProf("fresh", profile), 0);
    EXPECT_EQ(fresh.SiteOpen("fresh", 0), 0);
    fresh.KeepPageIds(true);
    EXPECT_EQ(fresh.SiteRebuildComplete(nullptr), 0);
    const std::vector<std::string> kept = PlacesOfBrokenLinks(fresh);
    fresh.KeepPageIds(false);
    EXPECT_EQ(kept, PlacesOfBrokenLinks(fresh));
    Facts facts = FactsOf(fresh, site_.dir()).all();
    fresh.SiteClose();
    return facts;
  }

  const test::CodePageScope page_;
  test::TestSite site_;
  std::mt19937 random_;
  std::vector<std::string> names_;
};

TEST_P(WholeFlow, TablesStayThoseOfAFreshRebuild) {
  for (int number = 1; number <= 100; ++number) {
    Edit();
    if (HasFatalFailure()) return;
    if (number % 10 != 0) continue;
    ASSERT_EQ(site_.mgr->UpdateLinkFamily(), 0);
    if (Chance(30)) {
      site_.Start();
      ASSERT_EQ(site_.Open(), 0);
    }
    ASSERT_EQ(site_.mgr->FlushSite(), 0);
    TableFaults faults;
    ASSERT_EQ(site_.mgr->VerifySite("demo", faults), 0);
    for (const TableFault& fault : faults.told) ADD_FAILURE() << fault.file << ": " << fault.what;
    const Facts kept = FactsOf(*site_.mgr, site_.dir()).all();
    ASSERT_EQ(Difference(kept, FactsOfFreshRebuild(number)), "") << "after edit " << number;
    ASSERT_GT(kept.size(), 30U);
    const auto isFollowed = [target = "-> .\\" + Spelled("a") + "\\"](const std::string& fact) {
      return fact.find(target) != std::string::npos && fact.ends_with("exists 1");
    };
    ASSERT_TRUE(std::ranges::any_of(kept, isFollowed)) << number;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Lives, WholeFlow,
    testing::Values(Life{LinkRules::Classic, 1, true}, Life{LinkRules::Classic, 2, true},
                    Life{LinkRules::Web, 1, true}, Life{LinkRules::Web, 2, true},
                    Life{LinkRules::Web, 3, false}, Life{LinkRules::Web, 4, false},
                    Life{LinkRules::Classic, 5, true, true}, Life{LinkRules::Web, 6, false, true},
                    Life{LinkRules::Web, 7, true, false, true},
                    Life{LinkRules::Web, 8, false, false, true}),
    [](const auto& life) {
      return std::string(life.param.rules == LinkRules::Web ? "Web" : "Classic") +
             std::to_string(life.param.seed);
    });

}  // namespace
}  // namespace zvrsit
