#include "storage/site_db.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <thread>

#include "storage/record_file.h"
#include "support/file_fault.h"
#include "support/temp_folder.h"

namespace zvrsit {
namespace {

using test::TempFolder;
using test::Word;

const std::string kMagic = "ZVR4.00-SITE0.01";
const std::string kEmpty = kMagic + Word(0) + Word(0);

class DatabaseFile : public testing::TestWithParam<bool> {
 protected:
  bool wholeFile() const { return GetParam(); }
  SiteDB Make() const { return SiteDB(folder_.path("t"), wholeFile()); }
  std::string OnDisk() const { return folder_.read("t"); }

  TempFolder folder_;
};
INSTANTIATE_TEST_SUITE_P(Modes, DatabaseFile, testing::Bool(), test::ModeName);

TEST_P(DatabaseFile, ReadsPastItsEndByTheRuleOfItsMode) {
  SiteDB db = Make();
  ASSERT_EQ(db.Open(), 0);
  char bytes[8];
  EXPECT_EQ(db.ReadAt(bytes, 22, 4), wholeFile() ? -1 : 2);
  EXPECT_EQ(db.ReadAt(bytes, 16, 8), 8);
  EXPECT_EQ(db.ReadAt(bytes, 0, -1), -1);
  EXPECT_EQ(db.WriteAt(bytes, 0, -1), -1);
  EXPECT_EQ(db.ReadAt(bytes, -8, 4), -1);
  EXPECT_EQ(db.WriteAt(bytes, -8, 4), -1);
  EXPECT_EQ(db.WriteAt(bytes, INT32_MAX, 4), -1);
  EXPECT_EQ(db.WriteAt("end", 30, 3), 3);
  ASSERT_EQ(db.Close(), 0);
  EXPECT_EQ(OnDisk(), kEmpty + std::string(6, '\0') + "end");
  EXPECT_EQ(db.ReadAt(bytes, 0, 4), -1);
  EXPECT_EQ(db.WriteAt(bytes, 0, 4), -1);
}

TEST_P(DatabaseFile, RefusesAnEmptyPathAndCallsThatItsStateForbids) {
  SiteDB unnamed("", wholeFile());
  EXPECT_EQ(unnamed.Open(), -1);
  EXPECT_EQ(unnamed.Backup(), -1);
  EXPECT_EQ(unnamed.Restore(), -1);
  SiteDB db = Make();
  EXPECT_EQ(db.Close(), 0);
  ASSERT_EQ(db.Open(), 0);
  if (wholeFile()) {
    EXPECT_EQ(db.Open(), -1);
  }
  EXPECT_EQ(db.Restore(), -1);
  EXPECT_EQ(db.Delete(), -1);
  ASSERT_EQ(db.Close(), 0);
  EXPECT_EQ(db.Delete(), 0);
  EXPECT_EQ(db.Delete(), -1);
}

TEST_P(DatabaseFile, BacksUpWhatIsOnDiskAndKeepsTheTailOfALongerBackup) {
  SiteDB db = Make();
  folder_.write("t", "");
  EXPECT_EQ(db.Backup(), -1);
  folder_.write("t", kEmpty + "new");
  folder_.write("t_bak", std::string(40, 'x'));
  ASSERT_EQ(db.Open(), 0);
  ASSERT_EQ(db.WriteAt("NEW", 24, 3), 3);
  EXPECT_EQ(db.Backup(), 27);
  const std::string seen = wholeFile() ? "new" : "NEW";
  EXPECT_EQ(folder_.read("t_bak"), kEmpty + seen + std::string(13, 'x'));
  ASSERT_EQ(db.Close(), 0);
  folder_.write("t", "lost");
  EXPECT_EQ(db.Restore(), 40);
  EXPECT_EQ(OnDisk(), kEmpty + seen + std::string(13, 'x'));
}

// What a failure leaves behind: whole-file mode closes whatever happens, direct mode stays open.
TEST_P(DatabaseFile, CloseThatFailsClosesInWholeFileModeOnly) {
  std::unique_ptr<SiteDB> db;
  const auto prepare = [&] {
    folder_.write("t", kEmpty);
    db = std::make_unique<SiteDB>(folder_.path("t"), wholeFile());
    EXPECT_GE(db->Open(), 0);
    EXPECT_GE(db->WriteAt("x", 24, 1), 0);
  };
  int result = 0;
  const int calls = test::FailEachCall(
      prepare, [&] { result = db->Close(); },
      [&](const test::FailedRun& run) {
        if (run.failedCall == platform::FileCall::kClose) return;
        EXPECT_EQ(result, -1);
        EXPECT_EQ(db->isOpen(), !wholeFile());
        EXPECT_EQ(db->Close(), 0);
      });
  EXPECT_EQ(calls, wholeFile() ? 3 : 5);
}

// Any sixteen bytes are a magic, which is kept.
TEST(WholeFile, CompletesACutHeadByAddingToItsLength) {
  struct Row {
    std::string bytes;
    std::string after;
  };
  const std::string tail = "0123456789abcdef";
  const Row rows[] = {
      {"", kEmpty},
      {"12345", kEmpty + std::string(1, '\0')},
      {"12345678", kEmpty},
      {tail.substr(0, 15), kMagic + std::string(15, '\0')},
      {tail + "xy", tail + Word(0) + Word(0) + std::string(2, '\0')},
      {tail + Word(5), tail + Word(5) + Word(0)},
      {tail + Word(7) + Word(9) + "body", tail + Word(7) + Word(9) + "body"},
      {tail + Word(5) + "xy", tail + Word(5) + Word(0) + std::string(2, '\0')},
  };
  for (const Row& row : rows) {
    TempFolder folder;
    folder.write("t", row.bytes);
    SiteDB db(folder.path("t"), true);
    ASSERT_EQ(db.Open(), 0);
    ASSERT_EQ(db.Close(), 0);
    EXPECT_EQ(test::ToHex(folder.read("t")), test::ToHex(row.after)) << row.bytes;
  }
}

TEST(WholeFile, IsLeftAloneWhenNothingChangedOrNothingWasClosed) {
  TempFolder folder;
  folder.write("t", kEmpty + "old");
  {
    SiteDB db(folder.path("t"), true);
    ASSERT_EQ(db.Open(), 0);
    ASSERT_EQ(db.WriteAt("new", 24, 3), 3);
  }
  EXPECT_EQ(folder.read("t"), kEmpty + "old");
  SiteDB db(folder.path("t"), true);
  ASSERT_EQ(db.Open(), 0);
  folder.write("t", "changed by another");
  ASSERT_EQ(db.Close(), 0);
  EXPECT_EQ(folder.read("t"), "changed by another");
}

// A file that is large enough to be written in parts.
class LargeFile : public testing::Test {
 protected:
  LargeFile() { Reset(); }
  void Reset() {
    bytes_ = kEmpty + std::string(5 << 18, 'a');
    EXPECT_GE(db_.Close(), 0);
    folder_.write("t", bytes_);
    OpenLater();
  }
  // Opens the file when another change of it could not get the same time any more.
  void OpenLater() {
    std::this_thread::sleep_for(std::chrono::milliseconds(40));
    EXPECT_EQ(db_.Open(), 0);
  }
  // As another process does it, which may set the file's time back.
  void Overwrite(bool restoresTime) {
    const auto time = std::filesystem::last_write_time(folder_.native("t"));
    folder_.write("t", std::string(bytes_.size(), 'b'));
    if (restoresTime) std::filesystem::last_write_time(folder_.native("t"), time);
  }
  void Write(std::size_t at, const std::string& text) {
    const int length = static_cast<int>(text.size());
    ASSERT_EQ(db_.WriteAt(text.data(), static_cast<int>(at), length), length);
    bytes_.resize(std::max(bytes_.size(), at + text.size()));
    bytes_.replace(at, text.size(), text);
  }
  std::string OnDisk() const { return folder_.read("t"); }
  TempFolder folder_;
  SiteDB db_{folder_.path("t"), true};
  std::string bytes_;  // what the file must have
};

TEST_F(LargeFile, IsOnDiskAsInMemoryWhateverWasChanged) {
  std::mt19937 random(5);
  for (int round = 0; round < 40; ++round) {
    if (round == 20) db_.SetMapped();  // from the next Open on
    for (auto left = random() % 6; left > 0; --left) {
      Write(24 + random() % bytes_.size(), std::string(random() % 9000, "bcdefg"[left]));
    }
    // Beyond the room that a mapped file has.
    if (round % 20 == 19) Write(bytes_.size(), std::string(5 << 20, 'h'));
    ASSERT_EQ(random() % 2 != 0 ? db_.Flush() : db_.Close(), 0);
    ASSERT_TRUE(OnDisk() == bytes_) << round;
    if (!db_.isOpen()) OpenLater();
  }
}

TEST_F(LargeFile, IsWrittenWholeWhenSomebodyElseHasWrittenIt) {
  for (const bool restoresTime : {false, true}) {
    for (const bool isSettled : {true, false}) {
      EXPECT_GE(db_.Close(), 0);
      if (isSettled) {
        OpenLater();
      } else {
        ASSERT_EQ(db_.Open(), 0);
      }
      Write(5000, "x");
      Overwrite(restoresTime);
      EXPECT_EQ(db_.Close(), 0);
      EXPECT_TRUE(OnDisk() == bytes_) << restoresTime << isSettled;
    }
  }
}

TEST_F(LargeFile, IsWrittenWholeWhenSomebodyElseWritesRightAfterAFlush) {
  for (int round = 0; round < 20; ++round) {
    Write(5000, std::to_string(round));
    ASSERT_EQ(db_.Flush(), 0);
    Overwrite(round % 2 != 0);
    Write(1200000, std::to_string(round));
    ASSERT_EQ(db_.Flush(), 0);
    ASSERT_TRUE(OnDisk() == bytes_) << round;
  }
}

// With each call of a flush or a close failing: what it says that it has written is on disk, and
// all of it after the next flush.
TEST_F(LargeFile, IsOnDiskWhateverCallHasFailed) {
  for (const bool closes : {false, true}) {
    int result = 0;
    int failures = 0;
    const auto prepare = [&] {
      Reset();
      Write(50000, "x");
      ASSERT_EQ(closes ? 0 : db_.Flush(), 0);
      Write(1200000, "y");
    };
    const auto check = [&](const test::FailedRun& run) {
      EXPECT_TRUE(result < 0 || OnDisk() == bytes_) << run.call;
      if (result < 0) ++failures;
      EXPECT_EQ(db_.isOpen(), !closes);
      if (closes) return;
      Write(7000, "z");
      EXPECT_EQ(db_.Flush(), 0);
      EXPECT_TRUE(OnDisk() == bytes_) << run.call;
    };
    test::FailEachCall(
        prepare, [&] { result = closes ? db_.Close() : db_.Flush(); }, check);
    // A close has to seek and to write: the header, both changes, and the end.
    EXPECT_TRUE(!closes || failures == 8) << failures;
  }
}

}  // namespace
}  // namespace zvrsit
