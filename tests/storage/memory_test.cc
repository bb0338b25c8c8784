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

template <class Kind>
class WithoutMemory : public testing::Test {
 protected:
  using File = std::remove_pointer_t<decltype(Kind::Make("", true))>;

  // Each operation with each of its allocations failing, in both modes: afterwards the file holds
  // what was in it, and what was said to be done.
  template <class Operate, class Check>
  void FailEach(Operate operate, Check check) {
    for (const bool wholeFile : {true, false}) {
      Fill(wholeFile ? kMost : kInDirectMode);
      const auto prepare = [&] {
        db_->Close();
        folder_.write("t", bytes_);
        std::filesystem::remove(folder_.native("t_pack"));
        db_.reset(Kind::Make(folder_.path("t"), wholeFile));
        result_ = db_->Open();
      };
      test::FailEachAllocation(
          prepare, [&] { result_ = operate(); },
          [&](int n) {
            SCOPED_TRACE("allocation " + std::to_string(n) + (wholeFile ? " whole" : " direct"));
            check();
            if (db_->isOpen()) {
              EXPECT_EQ(db_->Close(), 0);
            }
            db_.reset(Kind::Make(folder_.path(folder_.has("t") ? "t" : "t_pack"), wholeFile));
            ASSERT_EQ(db_->Open(), 0);
            check();
          });
    }
  }
  // Whether the records are there that were, from `first` on.
  bool HasAllFrom(int first) {
    for (int id = first; id < records_; ++id) {
      if (!Kind::Holds(*db_, id, id)) return false;
    }
    return true;
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
  int result_ = 0;
};
using Kinds = testing::Types<Links, Texts>;
TYPED_TEST_SUITE(WithoutMemory, Kinds);

TYPED_TEST(WithoutMemory, OpeningFails) {
  const auto open = [&] {
    this->db_->Close();
    return this->db_->Open();
  };
  this->FailEach(open, [&] {
    EXPECT_EQ(this->result_ == 0 || this->result_ == -1, true);
    if (this->db_->isOpen()) {
      EXPECT_TRUE(this->HasAllFrom(0));
    }
  });
}

TYPED_TEST(WithoutMemory, AddingAndTakingAwayFail) {
  int removed = 0;
  const auto change = [&] {
    removed = TypeParam::Remove(*this->db_, 0);
    return TypeParam::Add(*this->db_, kMost);
  };
  this->FailEach(change, [&] {
    EXPECT_TRUE(this->HasAllFrom(1));
    if (removed == 0) {
      EXPECT_FALSE(TypeParam::Holds(*this->db_, 0, 0));
    }
    if (this->result_ >= 0) {
      EXPECT_TRUE(TypeParam::Holds(*this->db_, this->result_, kMost));
    }
  });
}

TYPED_TEST(WithoutMemory, PackingFails) {
  const auto pack = [&] {
    TypeParam::Remove(*this->db_, 0);
    return this->db_->Pack();
  };
  this->FailEach(pack, [&] {
    if (this->db_->isOpen()) {
      EXPECT_TRUE(this->HasAllFrom(1));
    }
    if (this->result_ == 0) {
      EXPECT_TRUE(this->db_->isOpen());
    }
  });
}

TYPED_TEST(WithoutMemory, BackingUpFails) {
  this->FailEach([&] { return this->db_->Backup(); }, [&] { EXPECT_TRUE(this->HasAllFrom(0)); });
}

using TextsWithoutMemory = WithoutMemory<Texts>;

TEST_F(TextsWithoutMemory, LookingForThemFails) {
  const std::string_view texts[] = {Texts::TextOf(3), "not there", Texts::TextOf(8)};
  const auto look = [&] {
    db_->LookAhead(texts);
    return db_->MakeStringIndex();
  };
  FailEach(look, [&] { EXPECT_TRUE(HasAllFrom(0)); });
}

}  // namespace
}  // namespace zvrsit
