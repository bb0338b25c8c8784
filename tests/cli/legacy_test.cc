// The commands of the older generation.
#include <gtest/gtest.h>

#include "cli/program.h"
#include "legacy/sit_mgr.h"

namespace zvrsit::test {
namespace {

// A page with two broken links and one to a page that links back, added as the older site "demo"
// and rebuilt.
class OlderSite : public ::testing::Test {
 protected:
  OlderSite() {
    program.Page("index.html",
                 "<a href=b.html><a href=no.html><img src=x.gif alt=X><a href=http://e.org/>");
    program.Page("b.html", "<a href=index.html>");
    EXPECT_EQ(program.Run({"legacy", "add", "demo", program.folder.native("site")}).code, 0);
    EXPECT_EQ(program.Ask({"legacy", "rebuild", "demo"}).dump(),
              R"({"files":2,"links":5,"broken":2,"urls":1})");
  }

  Program program;
};

TEST_F(OlderSite, AnswersAboutLinksAndFiles) {
  const Json links = program.Ask({"legacy", "links", "demo"});
  EXPECT_EQ(links.size(), 5u);
  const Json from = program.Ask({"legacy", "links", "demo", "--from", "index.html"});
  ASSERT_EQ(from.size(), 4u);
  EXPECT_EQ(from[3].dump(), R"({"from":"index.html","to":"x.gif","kind":2,"type":"image",)"
                            R"("code":2,"text":"x.gif","alt":"X","exists":false})");
  EXPECT_EQ(program.Ask({"legacy", "links", "demo", "--to", "http://e.org/"}).size(), 1u);
  const Outcome broken = program.Run({"legacy", "broken", "demo"});
  EXPECT_EQ(broken.code, 1);
  EXPECT_EQ(broken.out,
            "index.html -> no.html  anchor  missing\nindex.html -> x.gif  image  missing\n");
  EXPECT_EQ(program.Ask({"legacy", "peek", "demo"})["files"].size(), 4u);
  EXPECT_EQ(program.Ask({"legacy", "peek", program.folder.native("site/b.html")}).dump(),
            R"({"sites":["demo"]})");
  EXPECT_EQ(program.Ask({"legacy", "peek", "nowhere.html"}).dump(), R"({"sites":[]})");
}

TEST_F(OlderSite, EntersFoldersAtTheirOwnPlace) {
  program.Page("top/page.html", "<a href=none.html>");
  program.folder.write("beside/page.html", "<a href=none.html>");
  for (const char* name : {"a", "top-link"}) {
    std::filesystem::create_directory_symlink("top", program.folder.native("site/") + name);
  }
  std::filesystem::create_directory_symlink("../beside", program.folder.native("site/out"));
  EXPECT_EQ(program.Ask({"legacy", "rebuild", "demo"})["files"], 3);
  EXPECT_EQ(program.Ask({"legacy", "links", "demo", "--from", "top/page.html"}).size(), 1u);
}

TEST_F(OlderSite, TakesBackChangesOfOneRun) {
  const Json before = program.Ask({"legacy", "links", "demo", "--from", "index.html"});
  program.Page("c d.html", "<a href=none.html><a href=index.html>");
  const Outcome outcome =
      program.Run({"legacy", "undo", "demo"}, "rm b.html\nsave \"c d.html\"\n\nundo\nundo\n");
  EXPECT_EQ(outcome.out,
            "rm b.html: 1 file, 4 links, 3 broken, 1 external URL\n"
            "save \"c d.html\": 2 files, 6 links, 4 broken, 1 external URL\n"
            "undo: 1 file, 4 links, 3 broken, 1 external URL\n"
            "undo: 2 files, 5 links, 2 broken, 1 external URL\n")
      << outcome.err;
  EXPECT_EQ(program.Ask({"legacy", "links", "demo", "--from", "index.html"}), before);
}

TEST_F(OlderSite, AnswersOnlyFromWholeFiles) {
  const struct {
    const char* file;
    const char* what;
    std::string part;
  } rows[] = {
      {"Link.db", "lost", "Link.db: this file is missing"},
      {"Link.dS", "lost", "Link.dS: this file is missing"},
      {"Url.db", "lost", "Url.db: this file is missing"},
      {"Link.db", "cut", "damaged"},
      {"Link.dS", "cut", "damaged"},
      {"Url.db", "cut", "damaged"},
      {"Junk.db", "no database at all, but long enough", "cannot be opened"},
  };
  for (const auto& row : rows) {
    const std::string file = std::string("db/legacy/demo/") + row.file;
    const std::string bytes = program.folder.read(file);
    program.folder.write(file, row.what == std::string("cut") ? bytes.substr(0, bytes.size() - 40)
                                                              : std::string(row.what));
    if (row.what == std::string("lost")) std::filesystem::remove(program.folder.native(file));
    for (const char* command : {"links", "broken", "undo", "import"}) {
      const Outcome outcome = program.Run({"legacy", command, "demo"});
      EXPECT_EQ(outcome.code, 3) << row.file << row.what << command;
      EXPECT_TRUE(outcome.complains(row.part)) << outcome.err;
      EXPECT_NE(outcome.err.find("zvrsit legacy rebuild demo"), std::string::npos) << outcome.err;
    }
    // Only the file of the entries is looked into.
    const int peeped = row.file == std::string("Url.db") ? 3 : 0;
    for (const std::string& asked : {std::string("demo"), program.folder.native("site/b.html")}) {
      const Outcome outcome = program.Run({"legacy", "peek", asked});
      EXPECT_EQ(outcome.code, peeped) << row.file << row.what << asked;
      EXPECT_TRUE(peeped == 0 || outcome.complains("Url.db")) << outcome.err;
    }
    EXPECT_EQ(program.folder.has(file), row.what != std::string("lost")) << file;
    const Outcome rebuilt = program.Run({"legacy", "rebuild", "demo"});
    EXPECT_EQ(rebuilt.out, "2 files, 5 links, 2 broken, 1 external URL\n") << rebuilt.err;
    EXPECT_EQ(program.Run({"legacy", "broken", "demo"}).code, 1) << row.file << row.what;
  }
  EXPECT_EQ(program.Run({"legacy", "add", "new", program.folder.native("site")}).code, 0);
  for (const Words& words : {Words{"legacy", "broken", "new"}, Words{"legacy", "peek", "new"},
                             Words{"legacy", "peek", program.folder.native("site/b.html")}}) {
    const Outcome never = program.Run(words);
    EXPECT_EQ(never.code, 3) << words[1];
    EXPECT_TRUE(never.complains("zvrsit legacy rebuild new")) << never.err;
    EXPECT_EQ(never.out, words[2] == "new" ? "" : "demo\n");
  }
}

// Of the other sites nothing is copied: here they would not fit.
TEST_F(OlderSite, IsAskedFromACopyOfItsOwnFiles) {
  program.folder.write("db/legacy/other/Url.db", std::string(1 << 20, 'x'));
  for (const Words& words : {Words{"legacy", "links", "demo"}, Words{"legacy", "peek", "demo"}}) {
    const Outcome outcome = program.RunOnFullDisk(words, 1 << 19);
    EXPECT_EQ(outcome.code, 0) << outcome.err;
  }
}

TEST_F(OlderSite, ComesOverWithItsServerAndMarks) {
  std::string db;
  ASSERT_TRUE(platform::FromNativePath(program.folder.native("db/legacy"), db));
  {
    SitMgr manager;
    ASSERT_EQ(manager.setDB(db + "\\", "sites", "servers"), 0);
    SitServProperty server;
    server.host = "ftp.example.org";
    server.password = "made up";
    server.fxferType = 2;
    ASSERT_EQ(manager.SetServProf("home", server), 0);
    SitSiteProperty site;
    site.servProf = "home";
    site.dir[9] = "http://e.org/";
    ASSERT_EQ(manager.SetSiteProf("demo", site), 0);
    ASSERT_EQ(manager.SiteOpen("demo"), 0);
    std::string page;
    ASSERT_TRUE(platform::FromNativePath(program.folder.native("site/b.html"), page));
    UrlID id;
    ASSERT_EQ(manager.UrlFind(page, id), 0);
    ASSERT_EQ(manager.SetUrlFtpMember(id, kMemberMarked), 0);
    ASSERT_EQ(manager.SiteClose(), 0);
  }
  const Outcome outcome = program.Run({"legacy", "import", "demo"});
  EXPECT_EQ(outcome.code, 0) << outcome.err;
  const Json site = program.Ask({"site", "show", "demo"});
  EXPECT_EQ(site["server"], "home");
  EXPECT_EQ(site["base_url"], "http://e.org/");
  EXPECT_EQ(site["state"], "rebuilt");
  const Json server = program.Ask({"server", "show", "home"});
  EXPECT_EQ(server["host"], "ftp.example.org");
  EXPECT_EQ(server["transfer_type"], 2);
  EXPECT_EQ(server["password"], true);
  EXPECT_EQ(program.Ask({"links", "demo"}).size(), 5u);
  // A file that the user marked stays in the site when it is gone, and nothing links to it.
  program.Page("index.html", "");
  std::filesystem::remove(program.folder.native("site/b.html"));
  EXPECT_EQ(program.Run({"rebuild", "demo", "--diff"}).code, 0);
  const Json files = program.Ask({"files", "demo"});
  ASSERT_EQ(files.size(), 2u) << files;
  EXPECT_EQ(files[0]["name"], "b.html");
}

TEST_F(OlderSite, SaysInOneLineWhatIsWrong) {
  ASSERT_EQ(program.Run({"legacy", "import", "demo"}).code, 0);
  const std::string site = program.folder.native("site");
  const struct {
    Words words;
    int code;
    std::string part;
    std::string input;
  } rows[] = {
      {{"legacy"}, 2, "subcommand", ""},
      {{"legacy", "add", "demo", site}, 2, "demo", ""},
      {{"legacy", "add", "a/b", site}, 2, "a/b", ""},
      {{"legacy", "add", "new", site + "/nix"}, 4, "nix", ""},
      {{"legacy", "rebuild", "nobody"}, 2, "nobody", ""},
      {{"legacy", "links", "demo", "--from", "nix.html"}, 2, "nix.html", ""},
      {{"legacy", "undo", "demo"}, 2, "line 2", "undo\nsave\n"},
      {{"legacy", "undo", "demo"}, 4, "nix.html", "save nix.html\n"},
      {{"legacy", "import", "demo"}, 2, "demo", ""},
      {{"legacy", "nonsense"}, 2, "nonsense", ""},
  };
  for (const auto& row : rows) {
    const Outcome outcome = program.Run(row.words, row.input);
    EXPECT_EQ(outcome.code, row.code) << Json(row.words);
    EXPECT_TRUE(outcome.complains(row.part)) << Json(row.words) << outcome.err;
  }
  const Outcome undo = program.Run({"legacy", "undo", "demo", "--format", "json"}, "undo\nsave\n");
  EXPECT_EQ(undo.code, 2);
  EXPECT_EQ(undo.json().size(), 1u);
  std::filesystem::rename(site, site + "2");
  const Outcome gone = program.Run({"legacy", "rebuild", "demo"});
  EXPECT_EQ(gone.code, 4);
  EXPECT_TRUE(gone.complains(site)) << gone.err;
  std::filesystem::remove(program.folder.native("db/legacy/sites_S"));
  for (const Words& words : {Words{"legacy", "sites"}, Words{"legacy", "add", "new", site + "2"}}) {
    const Outcome nameless = program.Run(words);
    EXPECT_EQ(nameless.code, 3) << words[1];
    EXPECT_TRUE(nameless.complains("sites_S: this file is missing")) << nameless.err;
  }
  const Program empty;
  EXPECT_EQ(empty.Run({"legacy", "links", "demo"}).code, 3);
  EXPECT_FALSE(empty.folder.has("db"));
}

}  // namespace
}  // namespace zvrsit::test
