#include "storage/site_var_rec_db.h"

#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/file_fault.h"
#include "support/temp_folder.h"

namespace zvrsit {
namespace {

using namespace std::string_literals;
using test::TempFolder;
using test::Word;

class VariableFile : public testing::TestWithParam<bool> {
 protected:
  VariableFile() { Reopen(); }
  void Reopen() {
    if (db_ != nullptr) {
      EXPECT_EQ(db_->Close(), 0);
    }
    db_ = std::make_unique<SiteVarRecDB>(folder_.path("t"), GetParam());
    ASSERT_EQ(db_->Open(), 0);
  }
  std::string Text(int id) {
    std::string text = "(none)";
    db_->GetString(id, text);
    return text;
  }
  std::string Closed() {
    EXPECT_EQ(db_->Close(), 0);
    return folder_.read("t");
  }
  static std::string Head(int ids, int entries, int end) {
    return "ZVR4.00-SITE0.01" + Word(static_cast<std::uint32_t>(ids)) +
           Word(static_cast<std::uint32_t>(entries)) + Word(static_cast<std::uint32_t>(end));
  }
  static std::string Entry(int id, int references, int kind, const std::string& data) {
    return Word(static_cast<std::uint32_t>(id)) + Word(static_cast<std::uint32_t>(data.size())) +
           Word(static_cast<std::uint32_t>(references)) + Word(static_cast<std::uint32_t>(kind)) +
           data;
  }

  TempFolder folder_;
  std::unique_ptr<SiteVarRecDB> db_;
};
INSTANTIATE_TEST_SUITE_P(Modes, VariableFile, testing::Bool(),
                         [](const auto& mode) { return mode.param ? "Whole" : "Direct"; });

TEST_P(VariableFile, IsMadeWithAnEndOffsetBehindItsHeader) {
  EXPECT_EQ(Closed(), Head(0, 0, 28));
}

TEST_P(VariableFile, SharesEqualStringsUntilTheLastReferenceIsGivenBack) {
  EXPECT_EQ(db_->AddString("a"), 0);
  EXPECT_EQ(db_->AddString("A"), 1);
  EXPECT_EQ(db_->AddString("a"), 0);
  EXPECT_EQ(db_->FindString("a"), 0);
  EXPECT_EQ(db_->FindString("A"), 1);
  EXPECT_EQ(db_->FindString("b"), -1);
  EXPECT_EQ(db_->ReleaseString(0), 0);
  EXPECT_EQ(Text(0), "a");
  EXPECT_EQ(db_->ReleaseString(0), 0);
  EXPECT_EQ(db_->FindString("a"), -1);
  EXPECT_EQ(Text(0), "(none)");
  EXPECT_EQ(db_->ReleaseString(0), 0);
  EXPECT_EQ(db_->AddString("new"), 0);
  EXPECT_EQ(Closed(), Head(2, 3, 84) + Entry(-1, 1, 1, "a\0"s) + Entry(1, 1, 1, "A\0"s) +
                          Entry(0, 1, 1, "new\0"s));
}

TEST_P(VariableFile, KeepsBlocksApartFromStrings) {
  const std::string block = "ab\0"s;
  EXPECT_EQ(db_->AddData(block.data(), 3), 0);
  EXPECT_EQ(db_->AddString("ab"), 1);
  EXPECT_EQ(db_->AddData("", 0), 2);
  char bytes[3];
  EXPECT_EQ(db_->DataLength(0), 3);
  EXPECT_EQ(db_->GetData(0, bytes), 0);
  EXPECT_EQ(std::string(bytes, 3), block);
  EXPECT_EQ(db_->GetData(2, bytes), -1);
  EXPECT_EQ(db_->DeleteData(0), 0);
  EXPECT_EQ(db_->DeleteData(0), 0);
  EXPECT_EQ(db_->deadBytes(), 16 + 3);
  EXPECT_EQ(db_->GetData(0, bytes), -1);
  EXPECT_EQ(db_->AddString("cd"), 3);  // the number of a deleted block is not handed out again
  EXPECT_EQ(db_->FindString("ab"), 1);
  Reopen();
  EXPECT_EQ(db_->AddString("ef"), 0);  // until the file is opened anew
  EXPECT_EQ(db_->AddData(nullptr, 1), -1);
  EXPECT_EQ(db_->AddData(block.data(), -1), -1);
}

TEST_P(VariableFile, HandsOutFreeNumbersInTheirOrder) {
  for (const char* text : {"0", "1", "2", "3", "4"}) db_->AddString(text);
  for (const int id : {3, 1, 4}) db_->ReleaseString(id);
  EXPECT_EQ(db_->AddString("x"), 3);
  Reopen();
  db_->ReleaseString(0);
  EXPECT_EQ(db_->AddString("a"), 1);  // without an entry at open, ascending
  EXPECT_EQ(db_->AddString("b"), 4);
  EXPECT_EQ(db_->AddString("c"), 0);  // then those released since
  EXPECT_EQ(db_->AddString("d"), 5);
}

TEST_P(VariableFile, RefusesWhatItCannotAnswer) {
  char bytes[4];
  EXPECT_EQ(db_->AddString(""), -1);
  EXPECT_EQ(db_->GetData(0, bytes), -1);
  EXPECT_EQ(db_->ReleaseString(0), 0);
  db_->AddString("a");
  EXPECT_EQ(db_->GetData(0, nullptr), -1);
  for (const int id : {-1, 1, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(db_->GetData(id, bytes), -1);
    EXPECT_EQ(db_->ReleaseString(id), -1);
    EXPECT_EQ(db_->DeleteData(id), -1);
    EXPECT_TRUE(db_->View(id).empty());
  }
  ASSERT_EQ(db_->Close(), 0);
  EXPECT_EQ(db_->Close(), 0);
  EXPECT_EQ(db_->AddString("b"), -1);
  EXPECT_EQ(db_->AddData("b", 1), -1);
  EXPECT_EQ(db_->FindString("a"), -1);
  EXPECT_EQ(db_->GetData(0, bytes), -1);
  EXPECT_EQ(db_->Pack(), -1);
}

TEST_P(VariableFile, PacksLiveEntriesInTheOrderOfTheirNumbers) {
  for (const char* text : {"zero", "one", "two", "three"}) db_->AddString(text);
  db_->AddString("three");
  db_->AddData("block", 5);
  db_->ReleaseString(0);
  db_->AddString("later");
  db_->ReleaseString(1);
  db_->AddData("", 0);
  db_->AddData("gone", 4);
  db_->DeleteData(5);
  ASSERT_EQ(db_->Pack(), 0);
  EXPECT_EQ(Text(2), "two");
  EXPECT_EQ(db_->FindString("three"), 3);
  EXPECT_EQ(Closed(), Head(6, 4, 28 + 22 + 20 + 22 + 21) + Entry(0, 1, 1, "later\0"s) +
                          Entry(2, 1, 1, "two\0"s) + Entry(3, 2, 1, "three\0"s) +
                          Entry(4, 0, 2, "block"));
}

TEST_P(VariableFile, FindsTheLaterOfTwoEqualStringsInAFile) {
  ASSERT_EQ(db_->Close(), 0);
  folder_.write("t", Head(2, 2, 64) + Entry(0, 1, 1, "a\0"s) + Entry(1, 1, 1, "a\0"s));
  ASSERT_EQ(db_->Open(), 0);
  EXPECT_EQ(db_->FindString("a"), 1);
  EXPECT_EQ(db_->ReleaseString(0), 0);  // takes the text out of the index, whoever holds it
  EXPECT_EQ(db_->FindString("a"), -1);
}

TEST_P(VariableFile, AddsAStringThatLiesInItsOwnBuffer) {
  db_->AddString("0123456789");
  for (int i = 0; i < 2000; ++i) {
    const std::string_view own = db_->View(i);
    ASSERT_EQ(db_->AddData(own.data(), static_cast<int>(own.size())), i + 1) << i;
    ASSERT_EQ(db_->ViewData(i + 1).substr(0, 1), "0");
    if (db_->ViewData(i + 1).size() < 3) break;
  }
}

// Against a store told in the simplest way, through random lives.
TEST_P(VariableFile, AnswersAsAMapDoesThroughRandomLives) {
  struct Held {
    std::string text;
    int references = 0;
  };
  std::mt19937 random(11);
  std::vector<Held> model;
  std::deque<int> free;
  for (int step = 0; step < 4000; ++step) {
    const auto choice = random() % 100;
    const std::string text = "text " + std::to_string(random() % 60);
    if (choice < 50) {
      int id = 0;
      while (id < static_cast<int>(model.size()) &&
             model[static_cast<std::size_t>(id)].text != text)
        ++id;
      if (id == static_cast<int>(model.size())) {
        if (!free.empty()) {
          id = free.front();
          free.pop_front();
        } else {
          model.emplace_back();
        }
        model[static_cast<std::size_t>(id)].text = text;
      }
      ++model[static_cast<std::size_t>(id)].references;
      ASSERT_EQ(db_->AddString(text), id);
    } else if (choice < 97 && !model.empty()) {
      const auto id = random() % model.size();
      ASSERT_EQ(db_->ReleaseString(static_cast<int>(id)), 0);
      if (model[id].references > 0 && --model[id].references == 0) {
        model[id].text.clear();
        free.push_back(static_cast<int>(id));
      }
    } else {
      if (choice == 97) {
        ASSERT_EQ(db_->Pack(), 0);
      }
      Reopen();
      free.clear();
      for (std::size_t id = 0; id < model.size(); ++id) {
        if (model[id].references == 0) free.push_back(static_cast<int>(id));
      }
    }
  }
  for (std::size_t id = 0; id < model.size(); ++id) {
    const int found = static_cast<int>(id);
    ASSERT_EQ(db_->View(found), model[id].text);
    if (!model[id].text.empty()) {
      ASSERT_EQ(db_->FindString(model[id].text), found);
    }
  }
}

// Whatever call fails, a pack says so and loses no entry: they are in the file or its "_pack".
TEST_P(VariableFile, PackLosesNothingWhenACallFails) {
  const std::string entries = Entry(0, 1, 1, "a\0"s) + Entry(1, 1, 1, "b\0"s);
  const std::string bytes = Head(2, 2, 28 + static_cast<int>(entries.size())) + entries;
  const auto prepare = [&] {
    db_->Close();
    folder_.write("t", bytes);
    std::filesystem::remove(folder_.native("t_pack"));
    ASSERT_EQ(db_->Open(), 0);
  };
  test::FailEachCall(
      prepare, [&] { db_->Pack(); },
      [&](const test::FailedRun& run) {
        db_->Close();
        const std::string left = folder_.has("t") ? folder_.read("t") : folder_.read("t_pack");
        EXPECT_EQ(left.substr(28), entries) << "call " << run.call;
      });
}

// Whatever write fails, the add says so, and the file opens again with what it had before.
TEST_P(VariableFile, KeepsItsStringsWhenAWriteFails) {
  int result = 0;
  const auto prepare = [&] {
    db_->Close();
    folder_.write("t", Head(1, 1, 46) + Entry(0, 1, 1, "a\0"s));
    ASSERT_EQ(db_->Open(), 0);
  };
  const auto operate = [&] {
    result = db_->AddString("b") < 0 || db_->AddString("a") < 0 || db_->Close() < 0 ? -1 : 0;
  };
  test::FailEachCall(prepare, operate, [&](const test::FailedRun& run) {
    if (run.failedCall != platform::FileCall::kClose) {
      EXPECT_EQ(result, -1) << run.call;
    }
    db_->Close();
    ASSERT_EQ(db_->Open(), 0) << run.call;
    EXPECT_EQ(Text(0), "a");
  });
}

}  // namespace
}  // namespace zvrsit
