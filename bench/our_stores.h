// The tables of this library behind the face that the rivals have too; see rival_stores.h.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "bench/workload.h"
#include "platform/native_path.h"
#include "tables/site_link_db.h"
#include "tables/site_rel_db.h"
#include "util/url_id.h"

namespace zvrsit::bench {

// The path of a table's files below a native folder.
inline std::string TablePath(const std::string& folder) {
  std::string path;
  return platform::FromNativePath(folder + "/PR", path) ? path : std::string();
}

// A table of named records, in whole-file mode or, for the profiles of sites, in direct mode.
template <class Table, class Rec>
class NamedStore {
 public:
  explicit NamedStore(const std::vector<std::string>& names) : names_(names) {}

  bool Open(const std::string& folder) {
    table_ = std::make_unique<Table>();
    if constexpr (requires { table_->Open(folder, 0); }) {
      return table_->Open(TablePath(folder), 0) == 0;
    } else {
      return table_->Open(TablePath(folder)) == 0;
    }
  }
  bool Add(int number) { return table_->Add(Name(number)) == number; }
  bool Find(int number) { return table_->Find(Name(number)) == number; }
  bool Touch(int number) {
    Rec record;
    return table_->Get(number, record) == 0 && table_->Update(record) == 0;
  }
  bool Delete(int number) { return table_->Delete(number) == 0; }
  int Count() { return table_->records()->liveCount(); }
  bool Commit() { return table_->Flush() == 0; }
  bool Pack() { return table_->Pack() == 0; }
  bool Close() { return table_->Close() == 0; }

 private:
  const std::string& Name(int number) const { return names_[static_cast<std::size_t>(number)]; }

  const std::vector<std::string>& names_;
  std::unique_ptr<Table> table_;
};

// What the tables of links and of relations share.
template <class Table, class Rec>
class PairStore {
 public:
  explicit PairStore(const std::vector<Link>& links) : links_(links) {}

  bool Open(const std::string& folder) {
    table_ = std::make_unique<Table>();
    return table_->Open(TablePath(folder)) == 0;
  }
  bool Add(int number) {
    const Link& link = links_[static_cast<std::size_t>(number)];
    if constexpr (requires { table_->Add(Page(0), Page(0)); }) {
      return table_->Add(Page(link.from), Page(link.to)) == number;
    } else {
      return table_->Add(link.text, Page(link.from), Page(link.to), 1) == number;
    }
  }
  bool Find(int number) {
    const Link& link = links_[static_cast<std::size_t>(number)];
    if (table_->Query(Page(link.from), Page(link.to), numbers_) < 0) return false;
    for (const int each : numbers_) {
      if (each == number) return true;
    }
    return false;
  }
  bool Touch(int number) {
    Rec record;
    return table_->Get(number, record) == 0 && table_->Update(record) == 0;
  }
  bool Delete(int number) { return table_->Delete(number) == 0; }
  int Count() { return table_->records()->liveCount(); }
  int CountFrom(int page) { return List(Page(page), kAnyUrlID); }
  int CountTo(int page) { return List(kAnyUrlID, Page(page)); }
  bool Commit() { return table_->Flush() == 0; }
  bool Pack() { return table_->Pack() == 0; }
  bool Close() { return table_->Close() == 0; }

 private:
  static UrlID Page(int number) { return UrlID(kKindPath, number); }

  // Lists the links and reads their texts.
  int List(const UrlID& from, const UrlID& to) {
    int count = 0;
    if (table_->Query(from, to, numbers_) < 0) return -1;
    for (const int number : numbers_) {
      Rec record;
      if (table_->Get(number, record) != 0) return -1;
      if constexpr (requires { record.text; }) {
        if (table_->TextView(record.text).empty()) return -1;
      }
      ++count;
    }
    return count;
  }

  const std::vector<Link>& links_;
  std::vector<int> numbers_;
  std::unique_ptr<Table> table_;
};

using LinkStore = PairStore<SiteLinkDB, SiteLinkRec>;
using RelStore = PairStore<SiteRelDB, SiteRelRec>;

}  // namespace zvrsit::bench
