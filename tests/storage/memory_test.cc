// Operations that get no memory: they fail as others do, throw nothing, and lose nothing.
#include "support/memory_fault.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "storage/record_file.h"
#include "storage/site_fix_rec_db.h"
#include "storage/site_var_rec_db.h"

namespace zvrsit {
namespace {

// In memory enough for passes over tags, and for several pieces of a table.
constexpr int kMost = 1200;
constexpr int kInDirectMode = 20;

// A record file of `kMost` links, or a string file of as many texts, with all that is done to
// it.
struct Links {
  static SiteFixRecDB* Make(const std::string& path, bool wholeFile) {
    return new SiteFixRecDB(path, SiteLinkRec::kSlotLength, SiteLinkRec::kRecordType, wholeFile);
  }
  static int Add(SiteFixRecDB& db, int number) {
    SiteLinkRec link;
    link.from = {kKindPath, number};
    return db.Add(&link);
  }
  static int Remove(SiteFixRecDB& db, int id) { return db.Delete(id); }
  static bool Holds(SiteFixRecDB& db, int id, int number) {
    SiteLinkRec link;
    return db.Get(id, &link) == 0 && link.from.id == number;
  }
};
struct Texts {
  static SiteVarRecDB* Make(const std::string& path, bool wholeFile) {
    return new SiteVarRecDB(path, wholeFile);
  }
  // Made before any memory is refused.
  static const std::string& TextOf(int number) {
    static const std::vector<std::string> texts = [] {
      std::vector<std::string> made;
      for (int i = 0; i <= kMost; ++i) made.push_back("a text that needs " + std::to_string(i));
      return made;
    }();
    return texts[static_cast<std::size_t>(number)];
  }
  static int Add(SiteVarRecDB& db, int number) { return db.AddString(TextOf(number)); }
  static int Remove(SiteVarRecDB& db, int id) { return db.ReleaseString(id); }
  static bool Holds(SiteVarRecDB& db, int id, int number) {
    return db.View(id) == TextOf(number) && db.FindString(TextOf(number)) == id;
  }
};

// With each of its allocations failing, in both modes, an operation leaves in the file what was in
// it from record `first` on, and the record that it says it has added.
template <class Kind>
class WithoutMemory : public testing::Test {
 protected:
  using File = std::remove_pointer_t<decltype(Kind::Make("", true))>;

  template <class Operate>
  void FailEach(int first, Operate operate) {
    for (const bool wholeFile : {true, false}) {
      Fill(wholeFile ? kMost : kInDirectMode);
      const auto prepare = [&] {
        (void)db_->Close();
        folder_.write("t", bytes_);
        std::filesystem::remove(folder_.native("t_pack"));
        db_.reset(Kind::Make(folder_.path("t"), wholeFile));
        added_ = db_->Open();
      };
      test::FailEachAllocation(
          prepare, [&] { added_ = operate(*db_); },
          [&](int n) {
            SCOPED_TRACE("allocation " + std::to_string(n) + (wholeFile ? " whole" : " direct"));
            Check(first);
            EXPECT_EQ(db_->Close(), 0);
            db_.reset(Kind::Make(folder_.path(folder_.has("t") ? "t" : "t_pack"), wholeFile));
            ASSERT_EQ(db_->Open(), 0);
            Check(first);
          });
    }
  }

 private:
  void Check(int first) {
    if (!db_->isOpen()) return;
    int id = first;
    while (id < records_ && Kind::Holds(*db_, id, id)) ++id;
    EXPECT_EQ(id, records_);
    if (added_ >= 0 && first > 0) {
      EXPECT_TRUE(Kind::Holds(*db_, added_, kMost));
    }
  }

  void Fill(int records) {
    records_ = records;
    folder_.write("t", "");
    db_.reset(Kind::Make(folder_.path("t"), true));
    EXPECT_EQ(db_->Open(), 0);
    for (int id = 0; id < records; ++id) EXPECT_EQ(Kind::Add(*db_, id), id);
    EXPECT_EQ(db_->Close(), 0);
    bytes_ = folder_.read("t");
  }

  test::TempFolder folder_;
  std::string bytes_;  // of a file of so many records
  int records_ = 0;
  std::unique_ptr<File> db_;
  int added_ = -1;
};
using Kinds = testing::Types<Links, Texts>;
TYPED_TEST_SUITE(WithoutMemory, Kinds);

TYPED_TEST(WithoutMemory, OperationsFailAndLoseNothing) {
  this->FailEach(0, [](auto& db) {
    (void)db.Close();
    return db.Open();
  });
  this->FailEach(0, [](auto& db) { return db.Backup(); });
  this->FailEach(1, [](auto& db) {
    TypeParam::Remove(db, 0);
    return TypeParam::Add(db, kMost);
  });
  this->FailEach(1, [](auto& db) {
    TypeParam::Remove(db, 0);
    EXPECT_TRUE(db.Pack() != 0 || db.isOpen());
    return -1;
  });
}

using TextsWithoutMemory = WithoutMemory<Texts>;

TEST_F(TextsWithoutMemory, LookingForThemFails) {
  const std::string_view texts[] = {Texts::TextOf(3), "not there", Texts::TextOf(8)};
  FailEach(0, [&](SiteVarRecDB& db) {
    db.LookAhead(texts);
    return db.MakeStringIndex();
  });
}

}  // namespace
}  // namespace zvrsit
