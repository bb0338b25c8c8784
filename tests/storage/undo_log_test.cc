#include <gtest/gtest.h>

#include "platform/file.h"
#include "storage/undo_log.h"
#include "support/file_fault.h"
#include "support/temp_folder.h"

namespace zvrsit::test {
namespace {

constexpr const char* kFiles[] = {"whole", "parts", "none", "moved/in", "back/in"};

// A change of two files in place, of one that was not there, and of the name of a folder.
class Change {
 public:
  Change() {
    folder_.write("whole", std::string(5000, 'w'));
    folder_.write("parts", std::string(1200000, 'p'));
    folder_.write("moved/in", "in");
  }

  std::string Path(const std::string& name) const { return folder_.path(name); }
  std::vector<std::string> Contents() const {
    std::vector<std::string> contents;
    for (const char* file : kFiles) {
      contents.push_back(folder_.has(file) ? folder_.read(file) : "missing");
    }
    contents.push_back(folder_.has("log") ? "log" : "");
    return contents;
  }
  // As far as the calls go well; the log stays behind if it does not come to its end.
  bool Make() {
    UndoLog log(Path("log"));
    log.NoteFile(Path("whole"));
    log.NoteFile(Path("none"));
    log.NotePart(Path("parts"), 4096, 1100000);
    log.NotePart(Path("parts"), 1190000, 4000000);
    log.NoteRename(Path("moved"), Path("back"));
    return log.Begin() == 0 && log.Begin() == 0 && Write("whole", 100, "short", 105) &&
           Write("none", 0, "new", 3) && Write("parts", 5000, std::string(1050000, 'x'), -1) &&
           Write("parts", 1199000, std::string(9000, 'y'), -1) &&
           platform::Rename(Path("moved"), Path("back")) == 0 && log.End() == 0;
  }
  bool Undo() const { return UndoLog::Undo(Path("log")) == 0; }
  void CutLog(std::size_t size) const { folder_.write("log", folder_.read("log").substr(0, size)); }

 private:
  bool Write(const char* name, std::int64_t at, const std::string& bytes, std::int64_t length) {
    const int fd = platform::Open(Path(name), platform::kOpenDatabase);
    const auto size = static_cast<std::int64_t>(bytes.size());
    const bool isWritten = fd >= 0 && platform::Seek(fd, at) >= 0 &&
                           platform::Write(fd, bytes.data(), bytes.size()) == size &&
                           (length < 0 || platform::SetLength(fd, length) == 0);
    return fd >= 0 && platform::Close(fd) == 0 && isWritten;
  }

  TempFolder folder_;
};

// A change that stops at any call is undone, also when the undoing stops at any call and begins
// anew; one that came to its end stays.
TEST(UndoLog, UndoesWhatDidNotComeToItsEnd) {
  const std::vector<std::string> before = Change().Contents();
  std::vector<std::string> after;
  {
    Change change;
    ASSERT_TRUE(change.Make());
    after = change.Contents();
    EXPECT_TRUE(change.Undo());
    EXPECT_EQ(change.Contents(), after);
  }
  ASSERT_NE(before, after);
  std::unique_ptr<Change> change;
  bool isMade = false;
  int undone = 0;
  FailEachCall([&] { change = std::make_unique<Change>(); }, [&] { isMade = change->Make(); },
               [&](const FailedRun& run) {
                 // When only the last wait for the disk failed, the log is gone all the same.
                 const bool counts = isMade || change->Contents() == after;
                 for (int n = 1;; n += 5) {
                   FileFault fault(n);
                   static_cast<void>(change->Undo());
                   if (!fault.fired()) break;
                 }
                 EXPECT_TRUE(change->Undo()) << run.call;
                 EXPECT_EQ(change->Contents(), counts ? after : before) << run.call;
                 undone += isMade ? 0 : 1;
               });
  EXPECT_GT(undone, 20);
}

// A log that is not whole was never waited for: nothing was changed after it.
TEST(UndoLog, TakesNoLogThatIsNotWhole) {
  for (const std::size_t size : {0u, 1u, 14u, 22u, 30u, 5000u}) {
    const Change change;
    const std::vector<std::string> before = change.Contents();
    UndoLog log(change.Path("log"));
    log.NoteFile(change.Path("whole"));
    ASSERT_EQ(log.Begin(), 0);
    change.CutLog(size);
    EXPECT_TRUE(change.Undo()) << size;
    EXPECT_EQ(change.Contents(), before) << size;
  }
}

}  // namespace
}  // namespace zvrsit::test
