// A record file in a temporary folder, opened in either mode; what the tests of both kinds share.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <string>

#include "support/file_fault.h"
#include "support/temp_folder.h"

namespace zvrsit::test {

inline std::string Words(std::initializer_list<int> words) {
  std::string bytes;
  for (const int word : words) bytes += Word(static_cast<std::uint32_t>(word));
  return bytes;
}

template <class File>
class RecordFile : public testing::TestWithParam<bool> {
 protected:
  // `how` stands between the path and the mode of the file's constructor.
  template <class... How>
  void Reopen(How... how) {
    if (db_ != nullptr) {
      EXPECT_EQ(db_->Close(), 0);
    }
    db_ = std::make_unique<File>(folder_.path("t"), how..., GetParam());
    ASSERT_EQ(db_->Open(), 0);
  }
  // Opens the same object on a file of these bytes.
  void OpenOn(const std::string& bytes) {
    (void)db_->Close();
    folder_.write("t", bytes);
    ASSERT_EQ(db_->Open(), 0);
  }
  std::string Closed() {
    EXPECT_EQ(db_->Close(), 0);
    return folder_.read("t");
  }
  // The start of a file: the magic, then these words.
  static std::string Head(std::initializer_list<int> words) {
    return "ZVR4.00-SITE0.01" + Words(words);
  }
  // Opens a file of these bytes, changes it and packs it with each call of that failing. Behind its
  // head it must then be `whole`, as after the change, or what `packed` is, in the file or, where
  // that is gone, in the one with "_pack" behind its name; and that is all of `packed` if it is
  // left.
  template <class Change>
  void FailEachCallOfPack(const std::string& bytes, Change change, const std::string& whole,
                          const std::string& packed) {
    const auto prepare = [&] {
      std::filesystem::remove(folder_.native("t_pack"));
      OpenOn(bytes);
      EXPECT_EQ(change(), 0);
    };
    FailEachCall(
        prepare, [&] { (void)db_->Pack(); },
        [&](const FailedRun& run) {
          (void)db_->Close();
          const std::string left = folder_.read(folder_.has("t") ? "t" : "t_pack");
          EXPECT_TRUE(left.ends_with(whole) || left.ends_with(packed.substr(28))) << run.call;
          EXPECT_TRUE(!folder_.has("t_pack") || folder_.read("t_pack") == packed) << run.call;
        });
  }

  // Packs a file without anything live over a "_pack" of 0, 1, 2 ... bytes: the rule for a header
  // that is cut applies to it first, then `head` is written.
  void PackOverLeftovers(const std::string& head) {
    for (std::size_t length = 0; length < 40; ++length) {
      std::size_t completed = length;
      if (completed < 16) completed += 16;
      if (completed < 20) completed += 4;
      if (completed < 24) completed += 4;
      std::string expected(length, 'x');
      expected.resize(std::max(completed, head.size()));
      expected.replace(0, head.size(), head);
      OpenOn(head);
      folder_.write("t_pack", std::string(length, 'x'));
      ASSERT_EQ(db_->Pack(), 0);
      EXPECT_EQ(Closed(), expected) << length;
    }
  }

  TempFolder folder_;
  std::unique_ptr<File> db_;
};

// Names of the two modes, for INSTANTIATE_TEST_SUITE_P.
inline const char* ModeName(const testing::TestParamInfo<bool>& mode) {
  return mode.param ? "Whole" : "Direct";
}

}  // namespace zvrsit::test
