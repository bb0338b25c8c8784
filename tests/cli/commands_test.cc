// The commands, their options and exit codes.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdlib>

#include "cli/program.h"

namespace zvrsit::test {
namespace {

namespace fs = std::filesystem;

TEST(Commands, SayInOneLineWhatIsWrong) {
  const Program program;
  program.Page("index.html", "<a href=x.html>");
  program.folder.makeFolder("empty");
  ASSERT_EQ(program.Build("demo").code, 0);
  const std::string site = program.folder.native("site");
  const struct {
    Words words;
    int code;
    std::string part;
  } rows[] = {
      {{}, 2, "subcommand"},
      {{"nonsense"}, 2, "nonsense"},
      {{"links"}, 2, "NAME"},
      {{"sites", "--rules", "web"}, 2, "--rules"},
      {{"sites", "--format", "xml"}, 2, "xml"},
      {{"links", "demo", "--from", "a", "--to", "b"}, 2, "--to"},
      {{"links", "nobody"}, 2, "nobody"},
      {{"links", "demo", "--from", "nix.html"}, 2, "nix.html"},
      {{"links", "demo", "--from", ""}, 2, "--from"},
      {{"links", "demo", "--to", "http://nix/"}, 2, "URL"},
      {{"add", "demo", site}, 2, "demo"},
      {{"add", "DEMO", site}, 2, "demo"},
      {{"add", "Legacy", site}, 2, "Legacy"},
      {{"add", "..", site}, 2, ".."},
      {{"add", "a/b", site}, 2, "a/b"},
      {{"add", "", site}, 2, "name"},
      {{"add", "new", site, "--rules", "loose"}, 2, "loose"},
      {{"add", "new", site + "/nix"}, 4, "nix"},
      {{"add", "new", site, "--top", "nix.htm"}, 4, "nix.htm"},
      {{"add", "new", site, "--top", program.folder.native("db/sites.R")}, 2, "outside"},
      {{"add", "new", site, "--doc-root", "/nix"}, 4, "/nix"},
      {{"check", site + "/none.html"}, 4, "none.html"},
      {{"check", program.folder.native("empty")}, 4, "no page"},
      {{"save", "demo", "nix.html"}, 4, "nix.html"},
      {{"save", "demo", site}, 4, "folder"},
      {{"save", "demo", program.folder.native("db/sites.R")}, 2, "outside"},
      {{"mv", "demo", "nix.html", "index.html"}, 2, "nix.html"},
      {{"site", "show", "nobody"}, 2, "nobody"},
      {{"site", "rename", "demo", "a/b"}, 2, "a/b"},
      {{"site", "set", "demo", "--server", "nowhere"}, 2, "nowhere"},
      {{"server", "show", "nowhere"}, 2, "nowhere"},
      {{"server", "set", "new", "--password"}, 2, "password"},
      {{"server", "set", "new", "--lock-dir", "9"}, 2, "--lock-dir"},
      {{"server", "set", "new", "--transfer-type", "-1"}, 2, "--transfer-type"},
      {{"site", "set", "demo", "--base-url", "foo"}, 2, "--base-url"},
      {{"site", "set", "demo", "--page-types", "*.php"}, 2, "--page-types"},
      {{"add", "new", site, "--base-url", "ftp://example.org/"}, 2, "--base-url"},
  };
  for (const auto& row : rows) {
    const Outcome outcome = program.Run(row.words);
    EXPECT_EQ(outcome.code, row.code) << Json(row.words);
    EXPECT_TRUE(outcome.complains(row.part)) << Json(row.words) << outcome.err;
    EXPECT_EQ(outcome.out, "") << Json(row.words);
  }
  EXPECT_EQ(program.Ask({"sites"}).size(), 1u);
}

TEST(Commands, AMissingDatabaseIsNotMade) {
  const Program program;
  const Outcome outcome = program.Run({"sites"});
  EXPECT_EQ(outcome.code, 3);
  EXPECT_TRUE(outcome.complains("no database"));
  EXPECT_FALSE(program.folder.has("db"));
}

TEST(Commands, AnswerInJson) {
  const Program program;
  program.Page("index.html",
               "<title>\"A\"</title>\n<a href=b.html>\n<a href=b.html><img src=no.gif alt=No>"
               "<a href=http://example.org/>");
  program.Page("b.html", "");
  program.Page("alone.html", "");
  ASSERT_EQ(program.Build("demo").code, 0);

  const Json links = program.Ask({"links", "demo"});
  const std::string db = program.folder.native("db");
  const Words before{"--db", db,      "--format",
                     "json", "links", "demo"};  // options before the command
  EXPECT_EQ(Process(program.folder, before).Wait().json(), links);
  ASSERT_EQ(links.size(), 3u);
  EXPECT_EQ(links[0].dump(),
            R"({"from":"index.html","to":"b.html","kind":2,"type":"LT_ANCHOR","code":64,)"
            R"("text":"b.html","alt":"","count":2,"exists":true})");
  EXPECT_EQ(program.Ask({"links", "demo", "--from", "index.html"}), links);
  EXPECT_EQ(program.Ask({"links", "demo", "--to", "b.html"}), Json::array({links[0]}));
  const Json away = program.Ask({"links", "demo", "--to", "http://example.org/"});
  ASSERT_EQ(away.size(), 1u);
  EXPECT_EQ(away[0]["kind"], 3);

  const Outcome broken = program.Run({"broken", "demo", "--format", "json"});
  EXPECT_EQ(broken.code, 1);
  ASSERT_EQ(Rows(broken.json()).size(), 1u);
  const Json row = Rows(broken.json())[0];
  EXPECT_EQ(row["to"], "no.gif");
  EXPECT_EQ(row["line"], 3);

  EXPECT_EQ(program.Ask({"unused", "demo"})[0]["name"], "alone.html");
  EXPECT_EQ(program.Ask({"unused", "demo"}).size(), 1u);
  EXPECT_EQ(program.Run({"unused", "demo", "-0"}).out,
            program.folder.native("site/alone.html") + std::string(1, '\0'));
  EXPECT_EQ(program.Ask({"urls", "demo"}).dump(), R"([{"name":"http://example.org/"}])");
  EXPECT_EQ(program.Ask({"family", "demo"}).size(), 3u);
  EXPECT_EQ(program.Ask({"files", "demo"}).size(), 4u);

  const Outcome check = program.Run({"check", program.folder.native("site"), "--format", "json"});
  EXPECT_EQ(check.code, 1);
  EXPECT_EQ(check.json()["pages"], 3);
  const Json found = Rows(check.json());
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[0]["from"].get<std::string>() + found[0]["rule"].get<std::string>(),
            "alone.htmlorphan-page");
  EXPECT_EQ(found[1], row);
}

// What links say that the server only knows is no finding; everything else is.
TEST(Commands, ReadPagesOfEveryType) {
  const Program program;
  program.Page("index.php",
               "<?php foreach ($a as $k->$v) echo '<a href=\"no1.html\">?>'; ?>\n"
               "<title><?= $title ?></title><a href=\"<?= $x ?>/y.html\"><a href=<?= $x ?>>"
               "<img src=no.gif alt='<?= $x ?>'><a href=a.php?id=1><a href=sub/>"
               "<link rel=stylesheet href='<?= $css ?>.css'>"
               "<p style='background: url(<?= $x ?>.png), url(no.png)'>");
  program.Page("a.php", "<base href='<?= $base ?>/'><a href=no2.html><a href=/no3.html>");
  program.Page("sub/index.php", "");
  program.Page("x.xhtml",
               "<?xml version='1.0'?><html><title/><script src='no.js'/><![CDATA[<a href='no4'>]]>"
               "<a name='x'/><a href='no5.html'>5</a></html>");
  program.Page("x.svg",
               "<?xml version='1.0'?><svg><title>T</title><a href='no6.html'/>"
               "<use xlink:href='no7.svg#a'/><image href='no8.png'/>"
               "<style>a { fill: url(no9.svg#a) }</style></svg>");
  program.Page("a.jsp",
               "<%-- <a href=x> --%><a href='<c:url value=\"/x\"/>'><a href='${x}/y'>"
               "<a href=no10.html>");
  program.Page("b.asp", "<% If a > b Then %><a href=no11.html><% End If %>");
  ASSERT_EQ(program.Build("demo").code, 0);
  EXPECT_EQ(program.Ask({"site", "show", "demo"})["top"], program.folder.native("site/index.php"));
  Words broken;
  const Json found = program.Broken();
  for (const Json& link : found) {
    broken.push_back(link["from"].get<std::string>() + ":" + link["line"].dump() + " " +
                     link["to"].get<std::string>());
  }
  EXPECT_EQ(broken, (Words{"a.jsp:1 no10.html", "a.php:1 no3.html", "b.asp:1 no11.html",
                           "index.php:2 no.gif", "index.php:2 no.png", "x.svg:1 no6.html",
                           "x.svg:1 no7.svg", "x.svg:1 no8.png", "x.svg:1 no9.svg",
                           "x.xhtml:1 no.js", "x.xhtml:1 no5.html"}));
  EXPECT_EQ(program.Ask({"links", "demo", "--to", "sub/index.php"}).size(), 1u);
  EXPECT_EQ(program.Ask({"rebuild", "demo"})["pages"], 6);
  // A page that is read alone is read in the same way.
  const Json links = program.Ask({"links", "demo", "--from", "index.php"});
  EXPECT_EQ(program.Run({"save", "demo", program.folder.native("site/index.php")}).code, 0);
  EXPECT_EQ(program.Ask({"links", "demo", "--from", "index.php"}), links);
}

TEST(Commands, SayWhatPagesAreNotRead) {
  const Program program;
  program.Page("index.html", "<img src=x.dat>");
  program.Page("a.tpl", "<!-- x -->\n<!DOCTYPE HTML>");
  program.Page("b.TPL", "<HTML>");
  program.Page("c", "<html>");
  program.Page("d.svg", "<svg><a href=none.html></svg>");
  program.Page("x.dat", "html");
  const Outcome all = program.Build("demo");
  EXPECT_TRUE(all.complains("1 without extension, 2 .tpl (")) << all.err;
  EXPECT_EQ(program.Run({"broken", "demo"}).code, 1);
  const Json set = program.Ask({"site", "set", "demo", "--page-types", "TPL,php"});
  EXPECT_EQ(set["page_types"], "php tpl");
  EXPECT_EQ(set["state"], "to be rebuilt");
  const Outcome some = program.Run({"rebuild", "demo"});
  EXPECT_TRUE(some.complains("1 without extension, 1 .svg (")) << some.err;
  EXPECT_EQ(some.code, 0);
  EXPECT_EQ(program.Run({"broken", "demo"}).code, 0);
  const Outcome classic =
      program.Run({"check", program.folder.native("site"), "--rules", "classic"});
  EXPECT_EQ(classic.err, "");
}

// A new default document has the pages read anew that link to folders, and no more.
TEST(Commands, ANewDefaultDocumentIsFollowed) {
  const Program program;
  program.Page("index.html", "<a href=sub/>");
  program.Page("other.html", "<a href=index.html>");
  program.Page("sub/index.html", "");
  program.Page("sub/home.html", "");
  ASSERT_EQ(program.Build("demo").code, 0);
  EXPECT_EQ(program.Ask({"links", "demo"})[0]["to"], "sub/index.html");
  const Json set = program.Ask({"site", "set", "demo", "--default-url", "home.html"});
  EXPECT_EQ(set["state"], "rebuilt");
  EXPECT_EQ(set["saved"], Json::array({"index.html"}));
  const Outcome links = program.Run({"links", "demo", "--from", "index.html"});
  EXPECT_EQ(links.err, "");
  EXPECT_EQ(links.out, "index.html -> sub/home.html  LT_ANCHOR\n");
  const std::string site = program.folder.native("site");
  for (const Words& same : {Words{"--default-url", "home.html"}, Words{"--folder", site},
                            Words{"--rules", "web"}, Words{"--base-url", ""}}) {
    const Json again = program.Ask({"site", "set", "demo", same[0], same[1]});
    EXPECT_EQ(again["state"], "rebuilt") << again;
    EXPECT_EQ(again["saved"], Json::array());
  }
}

// Saves, removals and moves told to the database leave it as a rebuild would.
TEST(Commands, FollowChangesOnDisk) {
  const Program program;
  program.Page("index.html", "<a href=a.html><a href=b.html>");
  program.Page("a.html", "");
  program.Page("b.html", "<a href=a.html>");
  ASSERT_EQ(program.Build("demo").code, 0);
  fs::rename(program.folder.native("site/b.html"), program.folder.native("site/c.html"));
  program.Page("index.html", "<a href=a.html> <a href=c.html>");
  const std::string page = program.folder.native("site/index.html");
  EXPECT_EQ(program.Ask({"save", "demo", page})["saved"], Json::array({"index.html"}));
  EXPECT_EQ(program.Run({"broken", "demo"}).code, 0);
  fs::remove(program.folder.native("site/a.html"));
  EXPECT_EQ(program.Run({"rm", "demo", "a.html"}).code, 0);
  EXPECT_EQ(program.Run({"broken", "demo"}).code, 1);
  const Json links = program.Ask({"links", "demo"});
  EXPECT_EQ(links.size(), 3u);
  EXPECT_EQ(program.Run({"rebuild", "demo", "--diff"}).code, 0);
  EXPECT_EQ(program.Ask({"links", "demo"}).size(), links.size());
}

TEST(Commands, UpdateReadsWhatHasChanged) {
  const Program program;
  program.Page("index.html", "<a href=a.html><a href=b.html><a href=gone.html>");
  program.Page("a.html", "<a href=index.html>");
  EXPECT_EQ(program.Run({"update", "demo"}).code, 3) << "there is no database";
  ASSERT_EQ(program.Run({"add", "demo", program.folder.native("site")}).code, 0);
  EXPECT_EQ(program.Run({"update", "nix"}).code, 2);
  EXPECT_EQ(program.Ask({"update", "demo"})["rebuilt"], true) << "it was never read";
  EXPECT_EQ(program.Broken().size(), 2u);
  program.Page("b.html", "<a href=a.html>");
  program.Page("a.html", "<a href=index.html><a href=nowhere.html>");
  const Outcome update = program.Run({"update", "demo"});
  EXPECT_EQ(update.out,
            "1 new, 1 changed, 0 gone; 3 read\n"
            "3 files, 3 pages, 0 style sheets, 6 links, 0 external URLs\n");
  EXPECT_EQ(update.err, "");
  EXPECT_EQ(program.Broken().size(), 2u);
  fs::remove(program.folder.native("site/b.html"));
  const Json gone = program.Ask({"update", "demo"});
  EXPECT_EQ(gone["gone"], 1);
  EXPECT_EQ(gone["rebuilt"], false);
  EXPECT_EQ(gone["links"], 5);
  ASSERT_EQ(program.Run({"site", "set", "demo", "--default-url", "a.html"}).code, 0);
  EXPECT_EQ(program.Ask({"update", "demo"})["rebuilt"], true) << "another profile";
  ASSERT_EQ(program.Run({"rebuild", "demo"}).code, 0);
  EXPECT_EQ(program.Ask({"update", "demo"})["rebuilt"], false);
}

TEST(Commands, ShowAndChangeProfiles) {
  const Program program;
  program.Page("index.html", "<a href=/a.html>");
  program.Page("a.html", "");
  ASSERT_EQ(program.Build("demo", {"--rules", "classic"}).code, 0);
  const Outcome set = program.Run({"server", "set", "host", "--host", "ftp.example.org",
                                   "--transfer-type", "2", "--password", "--format", "json"},
                                  "the secret\n");
  EXPECT_EQ(set.json()["password"], true);
  EXPECT_EQ(program.Ask({"server", "list"}), Json::array({set.json()}));
  for (const Words& words : {Words{"server", "list"}, Words{"server", "show", "host"}}) {
    const Outcome shown = program.Run(words);
    EXPECT_NE(shown.out.find("ftp.example.org"), std::string::npos);
    EXPECT_EQ(shown.out.find("secret"), std::string::npos);
  }
  EXPECT_EQ(program.folder.read("db/servers.S").find("secret"), std::string::npos);

  const Json site = program.Ask({"site", "show", "demo"});
  EXPECT_EQ(site["rules"], "classic");
  EXPECT_EQ(site["state"], "rebuilt");
  EXPECT_EQ(program.Ask({"site", "set", "demo", "--server", "host"})["state"], "rebuilt");
  EXPECT_EQ(program.Ask({"site", "rename", "demo", "moved"})["server"], "host");
  fs::rename(program.folder.native("site"), program.folder.native("elsewhere"));
  EXPECT_EQ(program.Run({"rebuild", "moved"}).code, 4);
  const Json moved =
      program.Ask({"site", "set", "moved", "--folder", program.folder.native("elsewhere")});
  EXPECT_EQ(moved["top"], program.folder.native("elsewhere/index.html"));
  EXPECT_EQ(moved["base_url"], "");
  EXPECT_EQ(moved["state"], "to be rebuilt");
  EXPECT_TRUE(program.Run({"links", "moved"}).complains("rebuild"));
  EXPECT_EQ(program.Run({"rebuild", "moved"}).code, 0);
  EXPECT_EQ(program.Ask({"files", "moved"}).size(), 2u);
  const Outcome used = program.Run({"server", "delete", "host"});
  EXPECT_EQ(used.code, 2);
  EXPECT_TRUE(used.complains("moved"));
  EXPECT_EQ(program.Ask({"site", "show", "moved"})["server"], "host");
  EXPECT_EQ(program.Run({"server", "delete", "host", "--force"}).code, 0);
  EXPECT_EQ(program.Ask({"site", "show", "moved"})["server"], "");
  EXPECT_EQ(program.Ask({"server", "list"}), Json::array());
  EXPECT_EQ(program.Run({"site", "delete", "moved"}).code, 0);
  EXPECT_FALSE(program.folder.has("db/moved"));
  EXPECT_EQ(program.Ask({"sites"}), Json::array());
}

// Interrupts a rebuild of "demo" when its new tables begin to fill.
void InterruptAtTheFirstSight(const Program& program) {
  Process rebuild(program.folder, {"rebuild", "demo", "--db", program.folder.native("db")});
  while (!program.folder.has("db/demo/new")) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  rebuild.Interrupt();
  const Outcome outcome = rebuild.Wait();
  EXPECT_EQ(outcome.code, 130);
  EXPECT_NE(outcome.err.find("interrupted"), std::string::npos);
}

TEST(Commands, AnInterruptedRebuildLeavesWhatThereWas) {
  const Program program;
  program.Page("index.html", "<a href=p0.html>");
  ASSERT_EQ(program.Build("demo").code, 0);
  const Outcome before = program.Run({"links", "demo"});
  std::string links;
  for (int i = 0; i < 300; ++i) links += "<a href=p" + std::to_string(i) + ".html>";
  for (int i = 0; i < 1500; ++i) program.Page("p" + std::to_string(i) + ".html", links);
  InterruptAtTheFirstSight(program);
  fs::remove_all(program.folder.native("site"));
  program.Page("index.html", "<a href=p0.html>");
  EXPECT_EQ(program.Run({"broken", "demo"}).code, 1);
  EXPECT_EQ(program.Run({"links", "demo"}).out, before.out);
  EXPECT_EQ(program.Ask({"sites"})[0]["state"], "rebuilt");
  EXPECT_FALSE(program.folder.has("db/demo/new"));
}

TEST(Commands, SayWhatIsLikelyMeant) {
  const Program program;
  program.Page("index.html", "");
  const struct {
    Words words;
    const char* meant;
  } rows[] = {{{"chekc"}, "\"check\"?"},
              {{"legacy", "brokn"}, "\"broken\"?"},
              {{"check", "--qiuet"}, "\"--quiet\"?"},
              {{"check", "--fromat", "json"}, "\"--format\"?"},
              {{"check", "--rule", "missing-fil=off"}, "\"missing-file\"?"},
              {{"check", "--root", program.folder.native("site"), "index.html"}, "/index.html\"?"}};
  for (const auto& row : rows) {
    const Outcome outcome = program.Run(row.words);
    EXPECT_NE(outcome.code, 0);
    EXPECT_TRUE(outcome.complains("did you mean ")) << outcome.err;
    EXPECT_TRUE(outcome.complains(row.meant)) << outcome.err;
  }
}

TEST(Commands, SayWhenTheirOutputIsLost) {
  const Program program;
  program.Page("index.html", "<a href=x>");
  ASSERT_EQ(program.Build("demo").code, 0);
  const Outcome outcome =
      Process(program.folder, {"links", "demo", "--db", program.folder.native("db")}, "", "",
              "/dev/full")
          .Wait();
  EXPECT_EQ(outcome.code, 4);
  EXPECT_TRUE(outcome.complains("output cannot be written: No space left")) << outcome.err;
}

// Their numbers go to no file of the database, which would be printed into.
TEST(Commands, RunWithTheirStandardStreamsClosed) {
  const Program program;
  program.Page("index.html", "<a href=x>");
  ASSERT_EQ(program.Build("demo").code, 0);
  const std::string command = ZVRSIT_PROGRAM " --db " + program.folder.native("db");
  for (const char* rest :
       {" links demo <&- >&-", " broken demo <&- >&-", " rebuild demo >&- 2>&-"}) {
    const int status = std::system((command + rest + " 2>/dev/null").c_str());
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 4) << rest;
  }
  EXPECT_EQ(program.folder.read("db/lock"), "");
  EXPECT_EQ(program.Ask({"links", "demo"}).size(), 1u);
}

}  // namespace
}  // namespace zvrsit::test
