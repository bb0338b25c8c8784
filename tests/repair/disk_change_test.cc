#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <map>

#include "platform/file_fault.h"
#include "repair/disk_change.h"
#include "support/damage.h"
#include "support/file_fault.h"
#include "support/temp_folder.h"
#include "util/hash.h"

namespace zvrsit {
namespace {

namespace fs = std::filesystem;

using Content = std::map<std::string, std::string>;  // of a folder; a folder has the content "/"

// From file call N on nothing works any more: the process has stopped.
class Stopped {
 public:
  explicit Stopped(int call) : call_(call) { platform::SetFileFaultHook(Ask, this); }
  Stopped(const Stopped&) = delete;
  Stopped& operator=(const Stopped&) = delete;
  ~Stopped() { platform::SetFileFaultHook(nullptr, nullptr); }

  bool fired() const { return calls_ >= call_; }

 private:
  static bool Ask(platform::FileCall, void* context) {
    auto* self = static_cast<Stopped*>(context);
    return ++self->calls_ >= self->call_;
  }

  int call_;
  int calls_ = 0;
};

// Pages that refer to a folder with two files, which moves into a folder that is not there yet; and
// a folder that is removed.
class ChangedFolder : public testing::Test {
 protected:
  void Begin() {
    fs::remove_all(folder_.native("site"));
    fs::remove(folder_.native("journal"));
    folder_.write("site/index.html", "<a href=old/a.html>a</a> <a href=\"old/b.html#x\">b</a>");
    folder_.write("site/page.html", "nothing");
    folder_.write("site/old/a.html", "<a href=../index.html>");
    folder_.write("site/old/b.html", "b");
    folder_.write("site/gone/deep/c.html", "c");
  }

  FileEdits Edits(const std::string& name,
                  const std::vector<std::pair<std::string, std::string>>& edits) {
    const std::string bytes = folder_.read("site/" + name);
    FileEdits file;
    file.path = folder_.path("site/" + name);
    file.size = static_cast<std::int64_t>(bytes.size());
    file.hash = HashBytes(bytes);
    for (const auto& [before, after] : edits) {
      TextEdit edit;
      edit.offset = static_cast<std::int64_t>(bytes.find(before));
      edit.length = static_cast<std::int64_t>(before.size());
      edit.text = after;
      file.edits.push_back(edit);
    }
    return file;
  }

  DiskChange Change() {
    DiskChange change;
    change.files = {
        Edits("index.html", {{"old/a.html", "new/place/a.html"}, {"old/b.html#x", "n#x"}}),
        Edits("old/a.html", {{"../index.html", "../../index.html"}})};
    change.moves = {{folder_.path("site/old") + "\\", folder_.path("site/new/place") + "\\"}};
    change.removals = {folder_.path("site/gone") + "\\"};
    return change;
  }

  Content ReadAll() const {
    Content content;
    for (const auto& entry : fs::recursive_directory_iterator(folder_.native("site"))) {
      const std::string name = fs::relative(entry.path(), folder_.native("site")).generic_string();
      content[name] = entry.is_directory() ? "/" : test::ReadWhole(entry.path().string());
    }
    return content;
  }

  int Do(DiskFault& fault, OpenFiles* open = nullptr) {
    return ChangeDisk(Change(), journal(), open, fault);
  }
  std::string journal() const { return folder_.path("journal"); }

  const Content after_ = {
      {"index.html", "<a href=new/place/a.html>a</a> <a href=\"n#x\">b</a>"},
      {"page.html", "nothing"},
      {"new", "/"},
      {"new/place", "/"},
      {"new/place/a.html", "<a href=../../index.html>"},
      {"new/place/b.html", "b"},
  };
  test::TempFolder folder_;
};

TEST_F(ChangedFolder, IsChangedAsAWholeOrNotAtAll) {
  Begin();
  const Content before = ReadAll();
  DiskFault fault;
  int result = 0;
  int undone = 0;
  const auto check = [&](const test::FailedRun& run) {
    SCOPED_TRACE("call " + std::to_string(run.call));
    RecoveryReport report;
    if (result == 0) {
      EXPECT_EQ(EndRepair(journal()), 0);
      EXPECT_EQ(ReadAll(), after_);
      return;
    }
    EXPECT_FALSE(fault.path.empty());
    EXPECT_EQ(RecoverRepair(journal(), report), result == -1 ? Recovery::kNone : Recovery::kUndone);
    EXPECT_EQ(ReadAll(), before);
    ++undone;
  };
  EXPECT_GT(test::FailEachCall([&] { Begin(); }, [&] { result = Do(fault); }, check), 40);
  EXPECT_GT(undone, 20);
}

TEST_F(ChangedFolder, IsPutInOrderAfterEveryStop) {
  Begin();
  const Content before = ReadAll();
  int finished = 0;
  int undone = 0;
  for (int call = 1;; ++call) {
    SCOPED_TRACE("stopped at call " + std::to_string(call));
    Begin();
    DiskFault fault;
    {
      const Stopped stopped(call);
      if (Do(fault) == 0) EndRepair(journal());
      if (!stopped.fired()) break;
    }
    RecoveryReport report;
    const Recovery recovery = RecoverRepair(journal(), report);
    EXPECT_TRUE(report.left.empty());
    if (recovery == Recovery::kFinished) {
      ++finished;
      EXPECT_EQ(EndRepair(journal()), 0);
    }
    if (recovery == Recovery::kUndone) ++undone;
    fs::remove(folder_.native("journal.new"));
    ASSERT_NE(recovery, Recovery::kFailed);
    const Content now = ReadAll();
    ASSERT_TRUE(now == before || now == after_);
    EXPECT_FALSE(folder_.has("journal"));
  }
  EXPECT_GT(finished, 1);
  EXPECT_GT(undone, 10);
  EXPECT_EQ(ReadAll(), after_);
}

// Recovering itself may stop or fail at any call, and goes on the next time.
TEST_F(ChangedFolder, IsPutInOrderThoughThatStopsToo) {
  Begin();
  const Content before = ReadAll();
  const auto prepare = [&] {
    Begin();
    DiskFault fault;
    const Stopped stopped(38);
    EXPECT_EQ(Do(fault), -2);
  };
  RecoveryReport report;
  const auto check = [&](const test::FailedRun&) {
    RecoverRepair(journal(), report);
    EXPECT_EQ(ReadAll(), before);
    EXPECT_FALSE(folder_.has("journal"));
  };
  EXPECT_GT(test::FailEachCall(
                prepare, [&] { RecoverRepair(journal(), report); }, check),
            10);
}

TEST_F(ChangedFolder, LeavesWhatSomebodyChangesMeanwhile) {
  Begin();
  DiskChange change = Change();
  folder_.write("site/index.html", "another page");
  DiskFault fault;
  EXPECT_EQ(ChangeDisk(change, journal(), nullptr, fault), -1);
  EXPECT_EQ(fault.path, folder_.path("site/index.html"));
  EXPECT_EQ(fault.reason, 0);
  EXPECT_TRUE(folder_.has("site/old/a.html"));

  Begin();
  {
    const Stopped stopped(38);
    EXPECT_EQ(Do(fault), -2);
  }
  folder_.write("site/old/a.html", "another page");
  RecoveryReport report;
  EXPECT_EQ(RecoverRepair(journal(), report), Recovery::kUndone);
  EXPECT_EQ(report.left, std::vector<std::string>{folder_.path("site/old/a.html")});
  EXPECT_EQ(folder_.read("site/old/a.html"), "another page");
}

TEST_F(ChangedFolder, RefusesWhatCannotBe) {
  struct Row {
    const char* from;
    const char* to;
  };
  for (const Row& row : {Row{"none.html", "x.html"}, Row{"page.html", "index.html"}}) {
    Begin();
    const Content before = ReadAll();
    DiskChange change;
    change.moves = {{folder_.path(std::string("site/") + row.from),
                     folder_.path(std::string("site/") + row.to)}};
    DiskFault fault;
    EXPECT_EQ(ChangeDisk(change, journal(), nullptr, fault), -1) << row.from;
    EXPECT_NE(fault.reason, 0);
    EXPECT_EQ(ReadAll(), before);
  }
}

TEST_F(ChangedFolder, LeavesOpenFilesToTheApplication) {
  struct Editor : OpenFiles {
    explicit Editor(std::string file) : path(std::move(file)) {}
    bool IsOpen(const std::string& file) override { return file == path; }
    void Change(const FileEdits& edits) override { changed += edits.path + "|"; }
    std::string path;
    std::string changed;
  };
  Begin();
  const std::string index = folder_.read("site/index.html");
  Editor editor(folder_.path("site/index.html"));
  DiskFault fault;
  EXPECT_EQ(Do(fault, &editor), 0);
  EXPECT_EQ(editor.changed, editor.path + "|");
  EXPECT_EQ(folder_.read("site/index.html"), index);
  EXPECT_EQ(folder_.read("site/new/place/a.html"), after_.at("new/place/a.html"));
}

TEST_F(ChangedFolder, ADamagedJournalIsToldAndChangesNothing) {
  Begin();
  DiskFault fault;
  {
    const Stopped stopped(38);
    EXPECT_EQ(Do(fault), -2);
  }
  const std::string whole = folder_.read("journal");
  const Content now = ReadAll();
  const auto damage = [&](std::string_view bytes) {
    folder_.write("journal", bytes);
    RecoveryReport report;
    ASSERT_EQ(RecoverRepair(journal(), report), Recovery::kFailed);
    ASSERT_EQ(report.fault.path, journal());
  };
  test::CutAtEveryByte(whole, damage);
  test::FlipEveryByte(whole, [&](std::string_view bytes, std::size_t) { damage(bytes); });
  EXPECT_EQ(ReadAll(), now);
}

#if !defined(_WIN32)
// A file with two names has one text.
TEST_F(ChangedFolder, LinksHaveTheTextOfTheirFile) {
  struct Row {
    const char* to;    // the new name of the link; if empty, the page is changed as well
    const char* text;  // in place of old/a.html, under the name of the link
    int result;
  };
  const Row rows[] = {
      {"", "new/place/a.html", 0}, {"", "other.html", -1},     {"twin2.html", "", 0},
      {"twin2.html", "other", -1}, {"deep/twin.html", "", -1},
  };
  for (const Row& row : rows) {
    Begin();
    const std::string twin = folder_.path("site/twin.html");
    fs::create_symlink("index.html", folder_.native("site/twin.html"));
    DiskChange change;
    const std::string to = row.to;
    if (to.empty()) change.files = {Edits("index.html", {{"old/a.html", "new/place/a.html"}})};
    if (*row.text != '\0') change.files.push_back(Edits("twin.html", {{"old/a.html", row.text}}));
    if (!to.empty()) change.moves = {{twin, folder_.path("site/" + to)}};
    const Content before = ReadAll();
    DiskFault fault;
    EXPECT_EQ(ChangeDisk(change, journal(), nullptr, fault), row.result) << row.to << row.text;
    if (row.result == 0) continue;
    EXPECT_EQ(fault.path, twin);
    EXPECT_EQ(fault.reason, EMLINK);
    EXPECT_EQ(ReadAll(), before);
  }
}

TEST_F(ChangedFolder, KeepsPermissionsLinksAndTimes) {
  Begin();
  fs::rename(folder_.native("site/index.html"), folder_.native("real.html"));
  fs::create_symlink("../real.html", folder_.native("site/index.html"));
  fs::permissions(folder_.native("real.html"), fs::perms::owner_read | fs::perms::group_read);
  const fs::file_time_type old = fs::file_time_type::clock::now() - std::chrono::hours(50);
  fs::last_write_time(folder_.native("site/old/b.html"), old);
  DiskFault fault;
  EXPECT_EQ(Do(fault), 0);
  EXPECT_EQ(EndRepair(journal()), 0);
  EXPECT_TRUE(fs::is_symlink(folder_.native("site/index.html")));
  EXPECT_EQ(folder_.read("site/index.html"), after_.at("index.html"));
  EXPECT_EQ(fs::status(folder_.native("real.html")).permissions(),
            fs::perms::owner_read | fs::perms::group_read);
  EXPECT_EQ(fs::last_write_time(folder_.native("site/new/place/b.html")), old);
}
#endif

}  // namespace
}  // namespace zvrsit
