// What pages and sheets refer to, written into the tables of a site on disk.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "css/css_control.h"
#include "dom/dom.h"
#include "links/link_type.h"
#include "manager_base/inside.h"
#include "registration/site_css_util.h"
#include "registration/site_dom_util.h"
#include "support/temp_folder.h"
#include "tables/site_link_db.h"
#include "tables/site_path_db.h"
#include "tables/site_site_prof_db.h"
#include "tables/site_url_db.h"

namespace zvrsit {
namespace {

// A site on disk, open in the base of a manager, with what was registered as text.
class OpenSite : public testing::Test {
 protected:
  // Lets a test say when an operation begins and ends.
  class Manager : public SiteMgrBase {
   public:
    using SiteMgrBase::Operation;
  };

  void Open(LinkRules rules, const std::string& defaultUrl = "") {
    manager_.CloseSite();
    folder_.write("site/index.htm", "<p>");
    folder_.makeFolder("db/s");
    manager_.setDom(&dom_);
    manager_.setDB((folder_.path("db") + "\\").c_str(), "sites.R", "servers.R", 0);
    SiteSiteProfDB& profiles = *manager_.GetSiteProf();
    if (profiles.Find("s") < 0) (void)profiles.Add("s");
    ASSERT_EQ(profiles.SetFolder(0, kSlotSiteFolder, siteFolder_), 0);
    ASSERT_EQ(profiles.SetText(0, &SiteSiteRec::topFile, siteFolder_ + "index.htm"), 0);
    ASSERT_EQ(profiles.SetText(0, &SiteSiteRec::defaultUrl, defaultUrl), 0);
    ASSERT_EQ(profiles.SetNumber(0, &SiteSiteRec::linkRules, static_cast<int>(rules)), 0);
    ASSERT_EQ(manager_.OpenSite(0, 0), 0);
    ASSERT_GE(manager_.AddFolder(siteFolder_, 0), 0);
  }

  // What `use(document)` gives for a page of this text.
  template <class Use>
  int WithDocument(const std::string& html, Use use) {
    Document* const document = dom_.createDocument("HTML");
    document->createNodes(html.data(), static_cast<int>(html.size()), nullptr, true);
    const int result = use(document);
    dom_.deleteDocument(document);
    return result;
  }

  // The file of a site by its name in the site, one beside it behind "..\".
  std::string Name(const UrlID& id) {
    if (id.kind == kKindUrl) return std::string(manager_.GetUrlDB()->NameView(id.id));
    const std::string path(manager_.GetPathDB()->NameView(id.id));
    if (path.starts_with(siteFolder_)) return path.substr(siteFolder_.size());
    return path.starts_with(folder_.path()) ? ".." + path.substr(folder_.path().size()) : path;
  }

  SitePathRec Record(const std::string& name) {
    SitePathRec rec;
    SitePathDB& paths = *manager_.GetPathDB();
    EXPECT_EQ(paths.Get(paths.Find(folder_.path("site/" + name)), rec), 0);
    return rec;
  }

  // `line(link, type)` for each link in the order of the records, the type without its "LT_".
  template <class Line>
  std::string Lines(Line line) {
    std::string lines;
    SiteLinkDB& links = *manager_.GetLinkDB();
    for (int i = links.NextNumber(0); i >= 0; i = links.NextNumber(i + 1)) {
      SiteLinkRec link;
      EXPECT_EQ(links.Get(i, link), 0);
      const std::string type = LinkTypeName(static_cast<std::uint32_t>(link.type));
      lines += line(link, type.substr(3)) + '\n';
    }
    return lines;
  }

  test::TempFolder folder_;
  const std::string siteFolder_ = folder_.path("site") + "\\";
  DOM dom_;
  Manager manager_;
};

class SiteDOMUtilTest : public OpenSite {
 protected:
  void SetUp() override {
    for (const char* name :
         {"site/other.htm", "site/img/x.gif", "site/classes/A.class", "site/classes/B.class",
          "site/sub/index.htm", "site/sub/home.htm", "outside.htm"}) {
      folder_.write(name, "<p>");
    }
    folder_.makeFolder("site/classes/deeper");
  }

  // Collects a parsed page, with `root` as what "/" names.
  int CollectFrom(Document* document, const std::string& page, const std::string& root) {
    SiteDOMUtil util(&manager_, &dom_, manager_.GetPathDB(), manager_.GetUrlDB(),
                     manager_.GetLinkDB(), siteFolder_ + page);
    return util.CollectLinks(root, document, siteFolder_);
  }

  // Registers the page and collects what `html` holds.
  int Collect(const std::string& html, const std::string& page = "index.htm") {
    manager_.AddPath(siteFolder_ + page, siteFolder_, 0);
    return WithDocument(
        html, [&](Document* document) { return CollectFrom(document, page, siteFolder_); });
  }

  // The links as type, text, target ("!" when it is not there), alternative text, and the count
  // when it is not 1.
  std::string Links() {
    return Lines([this](const SiteLinkRec& link, const std::string& type) {
      const SiteLinkDB& links = *manager_.GetLinkDB();
      std::string line =
          type + ' ' + std::string(links.TextView(link.text)) + " -> " + Target(link.to);
      if (link.alternative >= 0) line += " [" + std::string(links.TextView(link.alternative)) + ']';
      return link.count == 1 ? line : line + " x" + std::to_string(link.count);
    });
  }

  std::string Target(const UrlID& id) {
    SitePathRec rec;
    if (id.kind == kKindPath) (void)manager_.GetPathDB()->Get(id.id, rec);
    return Name(id) + (id.kind == kKindUrl || rec.exists ? "" : "!");
  }

  std::string PathText(std::int32_t reference) {
    return std::string(manager_.GetPathDB()->TextView(reference));
  }
};

TEST_F(SiteDOMUtilTest, StoresWhatThePageSaysOfItself) {
  Open(LinkRules::Classic);
  const std::string page = R"(<title>A &amp; B</title><meta name=Keywords content=old>
      <meta name=keywords content=new><meta http-equiv=expires content=never>
      <a name=one><a name="two"><a name="">)";
  ASSERT_EQ(Collect(page), 0);
  const SitePathRec rec = Record("index.htm");
  EXPECT_EQ(PathText(rec.title), "A & B");
  EXPECT_EQ(PathText(rec.keywords), "new");
  EXPECT_EQ(PathText(rec.expires), "never");
  EXPECT_EQ(rec.description, -1);
  EXPECT_EQ(rec.metaText, -1);
  std::vector<std::int32_t> anchors;
  ASSERT_EQ(manager_.GetPathDB()->GetList(rec, anchors), 0);
  ASSERT_EQ(anchors.size(), 2U);
  EXPECT_EQ(PathText(anchors[1]), "two");
  // Texts that are no longer used are given back.
  EXPECT_EQ(manager_.GetPathDB()->strings()->FindString("old"), -1);
  ASSERT_EQ(Collect("<title>Other</title>"), 0);
  EXPECT_EQ(manager_.GetPathDB()->strings()->FindString("A & B"), -1);
  EXPECT_EQ(manager_.GetPathDB()->strings()->FindString("one"), -1);
  EXPECT_EQ(Record("index.htm").listCount, 0);
}

TEST_F(SiteDOMUtilTest, EntersClassicTargets) {
  Open(LinkRules::Classic);
  ASSERT_EQ(Collect(R"(<meta http-equiv=refresh content="other.htm">
      <a href="#top"><a href="other.htm#x"><a href="index.htm#y"><a href="index.htm"><a href="">
      <a href="missing.htm"><a href="../../../../../../../../x.htm"><a href="HTTP://h/?q">
      <a href="OTHER.htm"><img src=img/x.gif alt=X><img src=img/x.gif alt=X><img src=img/x.gif>
      <img src=img/x.gif ismap mapfile=no.map>)"),
            0);
  EXPECT_EQ(Links(),
            "META_REFRESH other.htm -> other.htm\n"
            "SELF_ANCHOR #top -> index.htm\n"
            "ANCHOR other.htm#x -> other.htm\n"
            "SELF_ANCHOR index.htm#y -> index.htm\n"
            "ANCHOR index.htm -> index.htm\n"
            "ANCHOR missing.htm -> missing.htm!\n"
            "ANCHOR HTTP://h/?q -> HTTP://h/?q\n"
            "ANCHOR OTHER.htm -> OTHER.htm!\n"
            "IMG img/x.gif -> img\\x.gif [X] x2\n"
            "IMG img/x.gif -> img\\x.gif\n"
            "IMG_ISMAP img/x.gif -> img\\x.gif\n"
            "IMG_MAPFILE no.map -> no.map!\n");
}

TEST_F(SiteDOMUtilTest, AppendsTheDefaultNameByTheClassicRules) {
  Open(LinkRules::Classic, "home.htm");
  ASSERT_EQ(Collect(R"(<a href="sub/"><a href="sub"><a href="http://h/"><a href="sub/#x">
      <a href="sub/#/../y.htm"><meta http-equiv=refresh content="http://g/"><img src=img/x.gif ismap mapfile="sub/">
      <applet code="classes/">)"),
            0);
  EXPECT_EQ(Links(),
            "META_REFRESH http://g/ -> http://g/\n"
            "ANCHOR sub/ -> sub\\home.htm\n"
            "ANCHOR sub -> sub!\n"
            "ANCHOR http://h/ -> http://h/home.htm\n"
            "ANCHOR sub/#x -> sub\\!\n"
            "ANCHOR sub/#/../y.htm -> sub\\y.htm!\n"
            "IMG_ISMAP img/x.gif -> img\\x.gif\n"
            "IMG_MAPFILE sub/ -> sub\\home.htm\n"
            "APPLET classes/ -> classes\\!\n"
            "APPLET_FILE A.class -> classes\\A.class\n"
            "APPLET_FILE B.class -> classes\\B.class\n"
            "APPLET_FILE deeper -> classes\\deeper!\n");
}

TEST_F(SiteDOMUtilTest, LosesTheRestOfAClassicPageAtAFileOutside) {
  Open(LinkRules::Classic);
  const std::string page = "<a href=other.htm><a href=../outside.htm><a href=img/x.gif>";
  EXPECT_EQ(Collect(page), -1);
  EXPECT_EQ(Links(), "ANCHOR other.htm -> other.htm\n");
  // Once its folders are there, the same file stops no page again.
  EXPECT_EQ(Collect(page), 0);
  EXPECT_EQ(Links(),
            "ANCHOR other.htm -> other.htm x2\nANCHOR ../outside.htm -> ..\\outside.htm!\n"
            "ANCHOR img/x.gif -> img\\x.gif\n");
}

TEST_F(SiteDOMUtilTest, GoesOnUnderTheWebRules) {
  Open(LinkRules::Web);
  folder_.write("site/dir/index.htm", "<p>");
  ASSERT_EQ(Collect(R"(<a href="../../outside.htm"><a href="sub"><a href="sub/#x"><a href="dir/">
      <a href="./#y"><a href="/"><a href="none/"><a href="img"><a href="javascript:go"><a href="">
      <a href="https://h/x#y"><a href=" img/x.gif "><a href="a%00b"><a href="img/%78.gif?v=1">
      <img src="a%2Fb" ismap mapfile=other.htm><img srcset="img/x.gif 1x, img/y.gif 2x">
      <applet codebase=classes code=A.class>)",
                    "other.htm"),
            0);
  EXPECT_EQ(Links(),
            "ANCHOR ../../outside.htm -> outside.htm!\n"
            "ANCHOR sub -> sub\\index.htm\n"
            "ANCHOR sub/#x -> sub\\index.htm\n"
            "ANCHOR dir/ -> dir\\index.htm\n"
            "ANCHOR ./#y -> index.htm\n"
            "ANCHOR / -> index.htm\n"
            "ANCHOR none/ -> none\\index.html!\n"
            "ANCHOR img -> img\\index.html!\n"
            "ANCHOR https://h/x#y -> https://h/x#y\n"
            "ANCHOR  img/x.gif  -> img\\x.gif\n"
            "ANCHOR a%00b -> a%00b\\!\n"
            "ANCHOR img/%78.gif?v=1 -> img\\x.gif\n"
            "IMG_ISMAP a%2Fb -> a%2Fb\\!\n"
            "IMG_MAPFILE other.htm -> other.htm\n"
            "SRCSET img/x.gif -> img\\x.gif\n"
            "SRCSET img/y.gif -> img\\y.gif!\n"
            "APPLET classes/A.class -> classes\\A.class\n"
            "APPLET_FILE A.class -> classes\\A.class\n"
            "APPLET_FILE B.class -> classes\\B.class\n");
}

TEST_F(SiteDOMUtilTest, MarksAFileOutsideOfTheSiteAsNotThere) {
  Open(LinkRules::Web);
  manager_.AddPath(siteFolder_ + "index.htm", siteFolder_, 0);
  const auto collect = [&](Document* document) {
    return CollectFrom(document, "index.htm", folder_.path() + "\\");
  };
  EXPECT_EQ(WithDocument("<a href=/outside.htm><a href=/site/other.htm>", collect), 0);
  EXPECT_EQ(Links(),
            "ANCHOR /outside.htm -> ..\\outside.htm!\nANCHOR /site/other.htm -> other.htm\n");
  SitePathRec outside;
  SitePathDB& paths = *manager_.GetPathDB();
  ASSERT_EQ(paths.Get(paths.Find(folder_.path("outside.htm")), outside), 0);
  EXPECT_EQ(outside.size, 3);
}

TEST_F(SiteDOMUtilTest, RefusesAPageThatIsNotRegistered) {
  Open(LinkRules::Classic);
  const std::string page = siteFolder_ + "index.htm";
  Document document;
  const auto collect = [&](DOM* dom, const std::string& path, Document* read) {
    SiteMgrBase& m = manager_;
    SiteDOMUtil util(&m, dom, m.GetPathDB(), m.GetUrlDB(), m.GetLinkDB(), path);
    return util.CollectLinks(siteFolder_, read);
  };
  EXPECT_EQ(collect(&dom_, page, &document), -1);
  manager_.AddPath(page, siteFolder_, 0);
  EXPECT_EQ(collect(&dom_, page, &document), 0);
  EXPECT_EQ(collect(nullptr, page, &document), -1);
  EXPECT_EQ(collect(&dom_, page, nullptr), -1);
  EXPECT_EQ(collect(&dom_, "", &document), -1);
}

// What the object knows of its page wins over what CheckPath finds out about it on the way; a link
// of another page looks again at what the page's own copy has set back.
TEST_F(SiteDOMUtilTest, WritesItsOwnCopyOfThePageRecord) {
  Open(LinkRules::Classic);
  manager_.AddPath(siteFolder_ + "late.htm", siteFolder_, 0);
  folder_.write("site/late.htm", "<p>");
  const Manager::Operation operation(manager_);
  ASSERT_EQ(Collect("<a href=late.htm><a href='late.htm#x'>", "late.htm"), 0);
  EXPECT_EQ(Record("late.htm").exists, 0);
  ASSERT_EQ(Collect("<a href=late.htm>", "other.htm"), 0);
  EXPECT_EQ(Record("late.htm").exists, 1);
}

class SiteDOMUtilMemory : public SiteDOMUtilTest, public testing::WithParamInterface<bool> {};

// Pages of several folders that repeat their targets, with and without the memory of an operation.
TEST_P(SiteDOMUtilMemory, GivesTheSameTablesWithAMemory) {
  const auto run = [this](bool remember) {
    std::string all;
    const auto collect = [&] {
      for (int round = 0; round < 2; ++round) {
        for (const char* page : {"index.htm", "other.htm", "sub/home.htm", "sub/index.htm"}) {
          std::string file = page;
          if (file[3] == '/') file[3] = '\\';
          all += std::to_string(
              Collect("<base href='" + std::string(round == 1 ? "sub/" : "") + "'>" +
                          R"(<a href="#x"><a href="index.htm#x"><a href="index.htm"><a href="?q">
              <a href="sub/"><a href="sub/#x"><a href="sub/#/../y"><a href="../other.htm#x">
              <a href="http://h/#x"><a href="http://h/#y"><a href="http://h/"><a href="//h/#x">
              <a href="missing.htm"><a href="missing.htm#x"><a href="../../out.htm">
              <meta http-equiv=refresh content="sub/"><applet code="sub/">)",
                      file));
        }
      }
    };
    if (remember) {
      const Manager::Operation operation(manager_);
      collect();
    } else {
      collect();
    }
    all += '\n' + Links();
    for (int i = 0; i < manager_.GetPathDB()->Count(); ++i) all += Target({kKindPath, i}) + '\n';
    for (int i = 0; i < manager_.GetUrlDB()->Count(); ++i) all += Target({kKindUrl, i}) + '\n';
    return all;
  };
  Open(GetParam() ? LinkRules::Web : LinkRules::Classic, "home.htm");
  const std::string plain = run(false);
  manager_.CloseSite();
  std::filesystem::remove_all(folder_.native("db/s"));
  folder_.makeFolder("db/s");
  ASSERT_EQ(manager_.OpenSite(0, 0), 0);
  ASSERT_GE(manager_.AddFolder(siteFolder_, 0), 0);
  EXPECT_EQ(run(true), plain);
  EXPECT_NE(plain.find("sub\\home.htm"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Rules, SiteDOMUtilMemory, testing::Bool(),
                         [](const auto& rules) { return rules.param ? "Web" : "Classic"; });

class SiteCssUtil : public OpenSite {
 protected:
  void SetUp() override { Open(LinkRules::Classic); }

  int CollectPage(const std::string& name, const std::string& html) {
    return WithDocument(html, [&](Document* page) {
      return SiteCSSUtil(&manager_, siteFolder_).CollectPage(folder_.path("site/" + name), page);
    });
  }
  int CollectSheet(const std::string& name) {
    return SiteCSSUtil(&manager_, siteFolder_).CollectSheet(folder_.path("site/" + name));
  }
  // The links as "p.htm LINK a.css", a count above one as " 2".
  std::string Links() {
    return Lines([this](const SiteLinkRec& link, const std::string& type) {
      return Name(link.from) + " " + type.substr(4) + " " + Name(link.to) +
             (link.count > 1 ? " " + std::to_string(link.count) : "");
    });
  }
};

TEST_F(SiteCssUtil, RegistersEachFileFromItself) {
  folder_.write("site/a.css", "@import 'b.css'; p { background: url(1.gif), url(1.gif) }");
  folder_.write("site/b.css", "p { src: url(f.woff); content: url(http://h/2.gif) }");
  EXPECT_EQ(CollectPage("p.htm", "<link rel=stylesheet href=a.css><p style='cursor:url(c.cur)'>"),
            0);
  EXPECT_EQ(Links(),
            "p.htm LINK a.css\n"
            "p.htm IMAGE c.cur\n"
            "a.css IMPORT b.css\n"
            "a.css IMAGE 1.gif 2\n"
            "b.css OTHER f.woff\n"
            "b.css IMAGE http://h/2.gif\n");
  EXPECT_EQ(Record("a.css").exists, 1);
  EXPECT_EQ(Record("1.gif").exists, 0);
}

TEST_F(SiteCssUtil, SheetIsRegisteredOnceHoweverManyPagesAndRootsReachIt) {
  folder_.write("site/a.css", "@import 'a.css'; p { background: url(1.gif) }");
  const std::string ofSheet = "a.css IMPORT a.css\na.css IMAGE 1.gif\n";
  const std::string html = "<link rel=stylesheet href=a.css>";
  {
    Manager::Operation operation(manager_);
    EXPECT_EQ(CollectPage("p.htm", html), 0);
    EXPECT_EQ(CollectPage("q.htm", html), 0);
    EXPECT_EQ(CollectSheet("a.css"), 0);
  }
  EXPECT_EQ(CollectSheet("a.css"), 0);
  EXPECT_EQ(CollectPage("r.htm", html), 0);
  EXPECT_EQ(Links(), "p.htm LINK a.css\n" + ofSheet + "q.htm LINK a.css\nr.htm LINK a.css\n");
}

// As when the sheet is saved while others are being collected.
TEST_F(SiteCssUtil, SheetWhoseLinksWereRemovedIsRegisteredAgain) {
  folder_.write("site/a.css", "p { background: url(1.gif) }");
  Manager::Operation operation(manager_);
  EXPECT_EQ(CollectPage("p.htm", "<link rel=stylesheet href=a.css>"), 0);
  EXPECT_EQ(manager_.DelLink(1), 0);
  EXPECT_EQ(Links(), "p.htm LINK a.css\n");
  EXPECT_EQ(CollectSheet("a.css"), 0);
  EXPECT_EQ(Links(), "p.htm LINK a.css\na.css IMAGE 1.gif\n");
}

// The page's own link to it is made with the links of its other tags.
TEST_F(SiteCssUtil, SheetOfALinkWithMoreWordsIsRegisteredWithoutAStyleLinkToIt) {
  folder_.write("site/a.css", "p { background: url(1.gif) }");
  EXPECT_EQ(CollectPage("p.htm", "<link rel='stylesheet alternate' href=a.css>"), 0);
  EXPECT_EQ(Links(), "a.css IMAGE 1.gif\n");
}

TEST_F(SiteCssUtil, ChildThatCannotBeRegisteredGetsNoLink) {
  // No folder above it is known, so that its folder chain ends at a root that is not there.
  folder_.write("out/1.gif", "GIF");
  folder_.write("site/a.css", "p { content: url(../out/1.gif), url(2.gif) }");
  EXPECT_EQ(CollectSheet("a.css"), 0);
  EXPECT_EQ(Links(), "a.css IMAGE 2.gif\n");
}

// What the first time could not be added in full is found by the second: the same links.
TEST_F(SiteCssUtil, WebRulesKeepFilesOutsideAndLookAgainAtMissingOnes) {
  SiteSiteProfDB* const sites = manager_.GetSiteProf();
  EXPECT_GE(sites->SetFolder(0, kSlotDocumentRoot, folder_.path() + "\\"), 0);
  EXPECT_GE(sites->SetNumber(0, &SiteSiteRec::useDocRoot, 1), 0);
  Open(LinkRules::Web);
  folder_.write("out/1.gif", "GIF");
  folder_.write("site/a.css", "p { content: url(/out/1.gif), url(2.gif) }");
  EXPECT_EQ(CollectSheet("a.css"), 0);
  EXPECT_EQ(Links(), "a.css IMAGE ..\\out\\1.gif\na.css IMAGE 2.gif\n");
  SiteLinkRec link;
  EXPECT_EQ(manager_.GetLinkDB()->Get(1, link), 0);
  EXPECT_EQ(link.offset, 30);

  folder_.write("site/2.gif", "GIF");
  EXPECT_EQ(CollectPage("p.htm", "<p style='content:url(2.gif)'>"), 0);
  EXPECT_EQ(Record("2.gif").exists, 1);
}

TEST_F(SiteCssUtil, FailsWithoutAnOpenSite) {
  EXPECT_EQ(CollectSheet("missing.css"), 0);
  manager_.CloseSite();
  EXPECT_EQ(CollectPage("p.htm", ""), -1);
  EXPECT_EQ(CollectSheet("a.css"), -1);
  EXPECT_EQ(SiteCSSUtil(nullptr, siteFolder_).CollectSheet("a.css"), -1);
}

}  // namespace
}  // namespace zvrsit
