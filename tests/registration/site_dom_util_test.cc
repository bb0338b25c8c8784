#include "registration/site_dom_util.h"

#include <gtest/gtest.h>

#include "registration/open_site.h"

namespace zvrsit {
namespace {

class SiteDOMUtilTest : public test::OpenSite {
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
    if (id.kind == kKindPath) manager_.GetPathDB()->Get(id.id, rec);
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
    return SiteDOMUtil(&manager_, dom, manager_.GetPathDB(), manager_.GetUrlDB(),
                       manager_.GetLinkDB(), path)
        .CollectLinks(siteFolder_, read);
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

}  // namespace
}  // namespace zvrsit
