// A record file in a temporary folder, opened in either mode; what the tests of both kinds share.
#pragma once

#include <gtest/gtest.h>

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
    db_->Close();
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
  // Opens a file of these bytes, changes it and packs it with each call of that failing. The body
  // must then be `whole`, as after the change, or `packed`, in the file or, where that is gone, in
  // the one with "_pack" behind its name.
  template <class Change>
  void FailEachCallOfPack(const std::string& bytes, Change change, const std::string& whole,
                          const std::string& packed) {
    const auto prepare = [&] {
      std::filesystem::remove(folder_.native("t_pack"));
      OpenOn(bytes);
      EXPECT_EQ(change(), 0);
    };
    FailEachCall(
        prepare, [&] { db_->Pack(); },
        [&](const FailedRun& run) {
          db_->Close();
          const std::string left = folder_.read(folder_.has("t") ? "t" : "t_pack");
          const std::string body = left.substr(bytes.size() - whole.size());
          EXPECT_TRUE(body == whole || body == packed) << "call " << run.call;
        });
  }

  TempFolder folder_;
  std::unique_ptr<File> db_;
};

// Names of the two modes, for INSTANTIATE_TEST_SUITE_P.
inline const char* ModeName(const testing::TestParamInfo<bool>& mode) {
  return mode.param ? "Whole" : "Direct";
}

}  // namespace zvrsit::test
