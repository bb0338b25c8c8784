// Sites with random lives: whatever moves, all links lead where they led.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <random>
#include <set>

#include "links/link_type.h"
#include "repair/moved_site.h"

namespace zvrsit {
namespace {

using test::Files;
using test::MovedSite;

// A site of random files in which much refers to each other.
class RandomSite {
 public:
  RandomSite(unsigned seed, LinkRules rules)
      : random_(seed), isWeb_(rules == LinkRules::Web), site_(rules) {
    const bool hasUrl = isWeb_ && Chance(40);
    url_ = hasUrl ? Pick<std::string>({"https://example.org/", "http://example.org/docs/"}) : "";
    extensions_ = isWeb_ && Chance(30) ? "html" : "";
    const std::string names = isWeb_ ? Pick<std::string>({"", "index.html", "b.html,index.html"})
                                     : Pick<std::string>({"", "index.html"});
    site_.SetProfile(url_, extensions_, names);
    Choose();
    for (const std::string& name : files_) Write(name);
    if (!files_.contains("index.html")) Write("index.html");
    files_.insert("index.html");
  }

  MovedSite& site() { return site_; }

  // A move to a place where nothing is; false when none was found.
  bool ChooseMove(std::string& from, std::string& to) {
    const Files all = site_.ReadAll();
    std::vector<std::string> names;
    std::set<std::string> folders;
    for (const auto& [name, bytes] : all) {
      // These count in the folder of the site only; elsewhere they refer to nothing.
      if (name != "_redirects" && name != "robots.txt") names.push_back(name);
      for (std::size_t at = 0; (at = name.find('/', at)) != name.npos; ++at) {
        folders.insert(name.substr(0, at + 1));
      }
    }
    const bool isFolder = !folders.empty() && Chance(30);
    from =
        isFolder ? PickOf(std::vector<std::string>(folders.begin(), folders.end())) : PickOf(names);
    for (int attempt = 0; attempt < 20; ++attempt) {
      to = Chance(80) ? RandomFolder() : "";
      to += isFolder ? PickOf(Folders()) + "/" : Chance(30) ? NameIn(from) : PickOf(Names());
      const bool isFree = !std::filesystem::exists(site_.native(to)) &&
                          std::ranges::none_of(all, [&](const auto& file) {
                            return file.first == to ||
                                   file.first.starts_with(isFolder ? to : to + "/") ||
                                   to.starts_with(file.first + "/");
                          });
      if (isFree && !to.starts_with(from) && (isFolder || KindOf(to) == KindOf(from))) return true;
    }
    return false;
  }

 private:
  bool Chance(int percent) { return static_cast<int>(random_() % 100) < percent; }
  template <class T>
  T Pick(std::initializer_list<T> all) {
    return *(all.begin() + random_() % all.size());
  }
  std::string PickOf(const std::vector<std::string>& all) { return all[random_() % all.size()]; }

  static std::string NameIn(const std::string& path) { return path.substr(path.rfind('/') + 1); }
  static std::string FolderIn(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1);
  }
  static std::string KindOf(const std::string& path) {
    const std::string name = NameIn(path);
    if (name == "robots.txt" || name == "_redirects" || name == "sitemap.xml") return name;
    const std::string extension = name.substr(std::min(name.rfind('.'), name.size()));
    return extension == ".htm" ? ".html" : extension;
  }

  // On Windows without the names that files cannot have there, or that its code page lacks.
  static std::vector<std::string> NamesOfThisSystem(std::vector<std::string> names) {
#if defined(_WIN32)
    std::erase_if(names, [](const std::string& name) {
      return std::ranges::any_of(name, [](char c) {
        return static_cast<unsigned char>(c) >= 0x80 ||
               std::string_view("\":?").find(c) != std::string_view::npos;
      });
    });
#endif
    return names;
  }

  std::vector<std::string> Folders() const {
    if (!isWeb_) return NamesOfThisSystem({"d", "e", "f g", "\xE8\xA1\xA8"});
    return NamesOfThisSystem({"d", "e", "f g", "\xE8\xA1\xA8", "h%20", "i,j"});
  }
  std::vector<std::string> Names() const {
    std::vector<std::string> names{
        "index.html",        "index.htm", "a.html",     "b.html",     "c d.html",
        "caf\xC3\xA9.html",  "p.png",     "q'&\".png",  "s.css",      "t (1).css",
        "\xE8\xA1\xA8.html", "m.js",      "x&amp.html", "drawing.svg"};
    if (isWeb_) {
      for (const char* name : {"#1.png", "100%.png", "%41.html", "z;?.png", "app.webmanifest",
                               "e.php", "c:d.html", "y,.png", "\\u0041.js"}) {
        if (std::string_view(name).find('\\') == std::string_view::npos) names.emplace_back(name);
      }
    }
    return NamesOfThisSystem(std::move(names));
  }
  std::string RandomFolder() {
    std::string folder;
    for (int depth = static_cast<int>(random_() % 3); depth >= 0; --depth) {
      folder += PickOf(Folders()) + "/";
    }
    return folder;
  }

  void Choose() {
    for (int i = 0; i < 9; ++i) files_.insert((Chance(60) ? RandomFolder() : "") + PickOf(Names()));
    if (!isWeb_) return;
    for (const char* name : {"_redirects", "robots.txt", "sitemap.xml"}) {
      if (Chance(30)) files_.insert(name);
    }
  }

  std::string Percent(const std::string& text, bool all) {
    const bool lower = Chance(20);
    std::string out;
    for (const char c : text) {
      const auto byte = static_cast<unsigned char>(c);
      const bool must = std::string_view("%#?").find(c) != std::string_view::npos;
      const bool may =
          byte >= 0x80 || std::string_view(" \"'<>(),&;:").find(c) != std::string_view::npos;
      char hex[4];
      std::snprintf(hex, sizeof hex, lower ? "%%%02x" : "%%%02X", byte);
      out += must || (may && all) ? hex : std::string(1, c);
    }
    return out;
  }

  // A reference from `page` to `target`, of any kind that leads there.
  std::string Refer(const std::string& page, std::string target, bool encodes) {
    if (target == page && Chance(50)) return Pick<std::string>({"#x", isWeb_ ? "?q" : "#", "#"});
    const bool isIndex = NameIn(target) == "index.html";
    if (isIndex && Chance(60)) target = FolderIn(target);
    if (!extensions_.empty() && target.ends_with(".html") && Chance(50)) {
      target.resize(target.size() - 5);
    }
    std::string text;
    const int kind = static_cast<int>(random_() % 10);
    if (kind == 0 && !url_.empty()) {
      text = url_ + target;
      text = url_ + (isWeb_ ? Percent(target, encodes) : target);
    } else if (kind == 1) {
      text =
          (url_.ends_with("docs/") ? "/docs/" : "/") + (isWeb_ ? Percent(target, encodes) : target);
    } else {
      std::string folder = FolderIn(page);
      std::string rest = target;
      for (std::size_t end; (end = folder.find('/')) != folder.npos && Chance(90) &&
                            rest.starts_with(folder.substr(0, end + 1));) {
        rest = rest.substr(end + 1);
        folder = folder.substr(end + 1);
      }
      for (const char c : folder) text += c == '/' ? "../" : "";
      text += isWeb_ ? Percent(rest, encodes) : rest;
      if (text.empty()) text = isWeb_ ? Pick<std::string>({".", "./"}) : "./";
      if (kind == 2 || text.substr(0, text.find('/')).find(':') != text.npos) text.insert(0, "./");
    }
    if (Chance(20)) text += "?q=1&r";
    if (Chance(20)) text += "#x";
    return text;
  }

  static std::string Escaped(const std::string& text, char quote) {
    std::string out;
    for (const char c : text) {
      if (c == '&') {
        out += "&amp;";
      } else if (c == quote) {
        out += quote == '"' ? "&quot;" : "&#39;";
      } else {
        out += c;
      }
    }
    return out;
  }
  static std::string InCss(const std::string& text) {
    std::string out;
    for (const char c : text) {
      if (std::string_view(" \"'()\\").find(c) != std::string_view::npos) out += '\\';
      out += c;
    }
    return out;
  }
  static std::string InJson(const std::string& text) {
    std::string out;
    for (const char c : text)
      out += c == '"' || c == '\\' ? std::string{'\\', c} : std::string(1, c);
    return out;
  }
  static bool Holds(const std::string& text, std::string_view any) {
    return text.find_first_of(any) != std::string::npos;
  }

  std::string Css(const std::string& page, bool encodes) {
    const std::string text = Refer(page, Target(), encodes);
    switch (random_() % 4) {
      case 0:
        return "p{background:url(" + InCss(text) + ")}";
      case 1:
        return "p{background:url(\"" + InCss(text) + "\")}";
      case 2:
        return "p{background:image-set('" + InCss(text) + "' 1x)}";
      default:
        return "p{src:url( " + InCss(text) + " )}";
    }
  }

  std::string Target() {
    const std::vector<std::string> all(files_.begin(), files_.end());
    return Chance(90) ? PickOf(all) : RandomFolder() + "missing.html";
  }

  // A page that is taken for a sheet is read twice, or not, as the order of the pages has it.
  std::string Sheet() {
    const std::string target = Target();
    return target.ends_with(".css") ? target : "d/missing.css";
  }

  std::string Element(const std::string& page, bool encodes, int depth = 0) {
    const std::string text = Refer(page, Target(), encodes);
    const char quote = Pick({'"', '\''});
    const std::string value = quote + Escaped(text, quote) + quote;
    switch (random_() % (isWeb_ ? 18 : 8)) {
      case 0:
        if (!Holds(text, " \"'<>=`") && !text.empty()) return "<a href=" + Escaped(text, '"') + ">";
        return "<a href = " + value + ">";
      case 1:
        return "<img class=c src=" + value + " alt='p.png'>";
      case 2:
        return "<link rel=stylesheet href='" + Escaped(Refer(page, Sheet(), encodes), '\'') + "'>";
      case 3:
        return "<style>@import \"" + InCss(Refer(page, Sheet(), encodes)) + "\";" +
               Css(page, encodes) + "</style>";
      case 4: {
        std::string css = Css(page, encodes);
        css = css.substr(2, css.size() - 3);
        return "<p style=" + std::string(1, quote) + Escaped(css, quote) + quote + ">";
      }
      case 5:
        return "<script src=" + value + "></script>";
      case 6:
        return "<area href=" + value + "><form action=" + value + "></form>";
      case 7:
        return "<a href=" + value + ">";
      case 8: {
        std::string set = Percent(text, true);
        if (set.empty() || set.back() == ',' || set.front() == ',') set = "p.png";
        return "<img srcset='" + Escaped(set, '\'') + " 2x, " + Escaped(set, '\'') + " 1x'>";
      }
      case 9:
        return "<video src=" + value + " poster=" + value + "></video>";
      case 10:
        return "<svg><use href=" + value + "/><image xlink:href=" + value + "/></svg>";
      case 11: {
        if (depth > 1) return "<p>";
        const std::string inner =
            Element(page, encodes, depth + 1) + Element(page, encodes, depth + 1);
        return "<iframe srcdoc=\"" + Escaped(inner, '"') + "\"></iframe>";
      }
      case 12:
        return "<script type='application/ld+json'>{\"url\":\"" + InJson(text) + "\"}</script>";
      case 13:
        return "<script type=importmap>{\"imports\":{\"m\":\"" + InJson(text) + "\"}}</script>";
      case 14:
        return "<div><template shadowrootmode=open><a href=" + value + "></template></div>";
      case 15:
        return "<meta property='og:image' content=" + value + ">";
      case 16:
        if (Holds(text, "'\"")) return "<q cite=" + value + ">";
        return "<meta http-equiv=refresh content=\"1; url=" + Escaped(text, '"') + "\">";
      default:
        return Chance(50) ? "<base href=" + value + ">" : "<q cite=" + value + ">";
    }
  }

  std::string Page(const std::string& name, bool encodes) {
    std::string page = "<p id=x>";
    for (int i = static_cast<int>(random_() % 7); i >= 0; --i) {
      page += Element(name, encodes) +
              Pick<std::string>({"", "\n", "\r\n", " text\n", " text \xC3\xA9\n"});
    }
    return page;
  }

  static std::string Utf16(const std::string& ascii) {
    std::string bytes = "\xFE\xFF";
    for (const char c : ascii) bytes.append({'\0', c});
    return bytes;
  }
  static bool IsAscii(const std::string& text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  }

  void Write(const std::string& name) {
    const std::string kind = KindOf(name);
    const auto refer = [&] { return Refer(name, Target(), true); };
    std::string bytes;
    if (kind == ".html" || kind == ".svg") {
      bytes = Page(name, Chance(60));
      const int charset = static_cast<int>(random_() % (IsAscii(bytes) ? 4 : 2));
      if (charset == 1) bytes.insert(0, "\xEF\xBB\xBF");
      if (charset == 2) bytes = Utf16(bytes);
      if (charset == 3) {
        bytes.insert(0, Pick<std::string>({"<meta charset=shift_jis><p>\x95\x5C\n",
                                           "<meta charset=latin1><p>\xE9\n"}));
      }
    } else if (kind == ".php") {
      bytes = Page(name, true) + "<?php echo \"<a href='x'>\" ?><a href='<?= $x ?>'>";
    } else if (kind == ".css") {
      bytes = "@import '" + InCss(Refer(name, Sheet(), true)) + "';" + Css(name, Chance(50)) +
              Css(name, true);
      // Without a charset it would have that of any of the pages that link it.
      if (!IsAscii(bytes)) bytes.insert(0, "@charset \"utf-8\";");
    } else if (kind == ".webmanifest") {
      bytes = "{\"start_url\":\"" + InJson(refer()) + "\",\"scope\":\"" +
              InJson(Percent(RandomFolder(), true)) + "\"}";
    } else if (kind == "robots.txt") {
      bytes = "Sitemap: " + Percent(Refer(name, "sitemap.xml", true), true) + "\r\n";
    } else if (kind == "sitemap.xml") {
      bytes = "<urlset><url><loc>" + Escaped(refer(), '"') + "</loc></url></urlset>";
    } else if (kind == "_redirects") {
      bytes = "/old /" + Percent(Target(), true) + " 301\n/older.html /old\n/k/* /d/:splat\n";
      bytes += "/" + Percent(Target(), true) + " /" + Percent(Target(), true) + "\n";
    }
    site_.write(name, bytes);
  }

  std::mt19937 random_;
  const bool isWeb_;
  MovedSite site_;
  std::string url_;
  std::string extensions_;
  std::set<std::string> files_;
};

struct LinkEnds {
  std::string from;
  std::string to;
  int type = 0;
  auto operator<=>(const LinkEnds&) const = default;
};

// What all links lead to, each as often as it occurs; and of those to files that are not there how
// many there are.
struct SiteLinks {
  std::map<LinkEnds, int> good;
  int brokenCount = 0;
  int missingFragments = 0;
};

SiteLinks LinksOf(MovedSite& site, const std::function<std::string(const std::string&)>& moved) {
  SiteLinks links;
  const std::unique_ptr<std::vector<int>> numbers(site.mgr->EnumLink());
  const auto nameOf = [&](const UrlID& id) {
    std::string name;
    if (id.kind == kKindPath) (void)site.mgr->GetPathDB()->Name(id.id, name);
    if (id.kind == kKindUrl) (void)site.mgr->GetUrlDB()->Name(id.id, name);
    return id.kind == kKindPath ? moved(name) : name;
  };
  for (const int number : *numbers) {
    SiteLink link;
    if (site.mgr->GetLink(number, link) != 0 || link.type == LT_APPLET_FILE) continue;
    if (link.exists) {
      links.good[{nameOf(link.from), nameOf(link.to), static_cast<int>(link.type)}] += link.count;
    } else {
      links.brokenCount += link.count;
    }
  }
  std::vector<MissingFragment> missing;
  EXPECT_EQ(site.mgr->FindMissingFragments(missing), 0);
  links.missingFragments = static_cast<int>(missing.size());
  return links;
}

struct Tally {
  double seconds = 0;  // of the last plan
  int moves = 0;
  int refused = 0;  // moves, for symbolic links that would lead elsewhere
  int edits = 0;
  int kept = 0;
  int files = 0;     // that a move changed
  int undone = 0;    // files changed by moves that were then undone by another move
  int restored = 0;  // of these, files that had their bytes of before

  void Tell() const {
    std::cout << moves << " moves, " << refused << " refused, " << files << " files changed, "
              << edits << " edits, " << kept << " kept; of " << undone
              << " files changed there and back " << restored << " are as before\n";
  }
};

// The links of before lead to the same files, each by its name of now.
void Compare(const SiteLinks& before, const SiteLinks& after, const RepairPlan& plan,
             const std::function<std::string(const std::string&)>& moved) {
  std::set<std::string> kept;
  for (const KeptReference& one : plan.kept) kept.insert(moved(one.path));
  for (const auto& [link, count] : before.good) {
    if (kept.contains(link.from)) continue;
    const auto found = after.good.find(link);
    const int now = found != after.good.end() ? found->second : 0;
    EXPECT_GE(now, count) << link.from << " -> " << link.to << " " << std::hex << link.type;
  }
  if (!kept.empty()) return;
  EXPECT_LE(after.brokenCount, before.brokenCount);
  EXPECT_LE(after.missingFragments, before.missingFragments);
}

void Print(const Files& files, const RepairPlan& plan) {
  for (const auto& [name, bytes] : files) {
    if (bytes.size() < 1500) std::cout << "== " << name << "\n" << bytes << "\n";
  }
  for (const FileEdits& file : plan.files) {
    for (const TextEdit& edit : file.edits) {
      std::cout << file.path << ": " << edit.before << " => " << edit.after << "\n";
    }
  }
  for (const KeptReference& one : plan.kept) {
    std::cout << "kept " << one.path << ": " << one.text << " " << one.why << "\n";
  }
}

void MoveAndCompare(MovedSite& site, const std::string& from, const std::string& to, Tally& tally,
                    RepairPlan& plan) {
  SCOPED_TRACE(from + " => " + to);
  const std::string fromPath = site.path(from);
  const auto moved = [&](const std::string& path) {
    const bool isFolder = from.ends_with('/');
    if (isFolder && path + "\\" == fromPath) return site.path(to.substr(0, to.size() - 1));
    const bool isOf = isFolder ? path.starts_with(fromPath) : path == fromPath;
    return isOf ? site.path(to) + path.substr(fromPath.size()) : path;
  };
  const SiteLinks before = LinksOf(site, moved);
  const auto begin = std::chrono::steady_clock::now();
  ASSERT_EQ(site.Plan(from, to, plan), 0);
  tally.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  if (!site.Change(plan, from, to)) {
    ++tally.refused;
    return;
  }
  ASSERT_TRUE(site.Rebuild());
  Compare(before, LinksOf(site, [](const std::string& path) { return path; }), plan, moved);
  // By the web rules every name can be written everywhere, but for what only the server knows.
  for (const KeptReference& one : plan.kept) {
    const bool isWeb = site.mgr->GetLinkRules() == LinkRules::Web;
    EXPECT_TRUE(!isWeb || one.why == "holds server code") << one.path << " " << one.text;
  }
  ++tally.moves;
  tally.files += static_cast<int>(plan.files.size());
  tally.kept += static_cast<int>(plan.kept.size());
  for (const FileEdits& file : plan.files) tally.edits += static_cast<int>(file.edits.size());
}

// How many of the files that a move has changed have their bytes again after the move back.
void CountRestored(const MovedSite& site, const Files& files, const RepairPlan& plan,
                   Tally& tally) {
  const Files now = site.ReadAll();
  for (const FileEdits& file : plan.files) {
    const std::string name = site.NameOf(file.path);
    ++tally.undone;
    if (now.at(name) == files.at(name)) ++tally.restored;
  }
}

void LiveOn(RandomSite& random, int moves, Tally& tally) {
  MovedSite& site = random.site();
  ASSERT_TRUE(site.Rebuild());
  for (int i = 0; i < moves && !testing::Test::HasFailure(); ++i) {
    std::string from;
    std::string to;
    if (!random.ChooseMove(from, to)) return;
    const Files files = site.ReadAll();
    RepairPlan plan;
    MoveAndCompare(site, from, to, tally, plan);
    if (i % 2 == 0 && !testing::Test::HasFailure()) {
      RepairPlan back;
      MoveAndCompare(site, to, from, tally, back);
      CountRestored(site, files, plan, tally);
      if (testing::Test::HasFailure()) Print({}, back);
    }
    if (testing::Test::HasFailure()) Print(files, plan);
  }
}

// ZVRSIT_LIVES sets how many sites there are, and ZVRSIT_SEED the first of them.
unsigned NumberOf(const char* name, unsigned usual) {
  const char* const text = std::getenv(name);
  return text != nullptr ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : usual;
}

void Live(LinkRules rules) {
  const unsigned first = NumberOf("ZVRSIT_SEED", 1);
  const unsigned last = first + NumberOf("ZVRSIT_LIVES", platform::kNamesIgnoreCase ? 8 : 30);
  Tally tally;
  for (unsigned seed = first; seed < last; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomSite site(seed, rules);
    LiveOn(site, 6, tally);
    if (testing::Test::HasFailure()) return;
  }
  tally.Tell();
}

// ZVRSIT_TREE is a folder of pages to be copied; ZVRSIT_LIVES how many moves there are in it.
TEST(RandomMoves, InAGivenTree) {
  const char* const tree = std::getenv("ZVRSIT_TREE");
  if (tree == nullptr) GTEST_SKIP() << "no tree is given";
  MovedSite site(LinkRules::Web);
  std::filesystem::copy(tree, site.native(""),
                        std::filesystem::copy_options::recursive |
                            std::filesystem::copy_options::copy_symlinks |
                            std::filesystem::copy_options::overwrite_existing);
  ASSERT_TRUE(site.Rebuild());
  std::mt19937 random(NumberOf("ZVRSIT_SEED", 1));
  Tally tally;
  for (unsigned i = 0; i < NumberOf("ZVRSIT_LIVES", 30); ++i) {
    const Files files = site.ReadAll();
    const auto pick = [&] {
      return std::next(files.begin(), static_cast<int>(random() % files.size()));
    };
    std::string from = pick()->first;
    const bool isFolder = random() % 4 == 0 && from.find('/') != from.npos;
    if (isFolder) from.resize(from.rfind('/') + 1);
    std::string to = pick()->first;
    to.resize(to.rfind('/') + 1);
    to += "moved " + std::to_string(i);
    to += isFolder ? "/" : from.substr(std::min(from.rfind('.'), from.size()));
    if (to.starts_with(from)) continue;
    RepairPlan plan;
    RepairPlan back;
    MoveAndCompare(site, from, to, tally, plan);
    std::cout << from << " => " << to << ": " << plan.files.size() << " files, " << plan.kept.size()
              << " kept, planned in " << tally.seconds << " s\n";
    if (i % 2 == 0 && !std::filesystem::exists(site.native(from))) {
      MoveAndCompare(site, to, from, tally, back);
      CountRestored(site, files, plan, tally);
    }
    if (HasFailure()) return Print({}, plan);
  }
  tally.Tell();
}

TEST(RandomMoves, ByTheWebRules) {
  Live(LinkRules::Web);
}
TEST(RandomMoves, ByTheClassicRules) {
  Live(LinkRules::Classic);
}

}  // namespace
}  // namespace zvrsit
