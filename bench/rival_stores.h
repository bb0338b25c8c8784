// Names, links and whole sites kept in SQLite and in LMDB, the way a program that cares for speed
// would: one transaction, prepared statements or integer keys, indexes on the keys that our tables
// have. Nothing is synced to the disk, as our tables do not sync either.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "bench/workload.h"

namespace zvrsit::bench {

// What the benchmarks of store_bench.h ask of a store of numbered entries in a folder. Every bool:
// whether it worked.
class RivalStore {
 public:
  virtual ~RivalStore() = default;
  virtual bool Open(const std::string& folder) = 0;
  virtual bool Add(int number) = 0;
  virtual bool Find(int number) = 0;
  virtual bool Touch(int number) = 0;
  virtual bool Delete(int number) = 0;
  virtual int Count() = 0;
  virtual bool Commit() = 0;
  virtual bool Pack() = 0;
  virtual bool Close() = 0;
};

// Entry number k has the k-th name, by which it is found, and `recordBytes` bytes more.
std::unique_ptr<RivalStore> MakeSqliteNames(const std::vector<std::string>& names, int recordBytes);
std::unique_ptr<RivalStore> MakeLmdbNames(const std::vector<std::string>& names, int recordBytes);

// Entry number k is the k-th link, found by both its ends.
class RivalLinks : public RivalStore {
 public:
  // How many links the page has; their numbers are listed and their texts read.
  virtual int CountFrom(int page) = 0;
  virtual int CountTo(int page) = 0;
};
std::unique_ptr<RivalLinks> MakeSqliteLinks(const std::vector<Link>& links);
std::unique_ptr<RivalLinks> MakeLmdbLinks(const std::vector<Link>& links);

// The names and the links of a site in one database.
class RivalSite {
 public:
  virtual ~RivalSite() = default;
  virtual bool Open(const std::string& folder) = 0;
  // The number of a name, given to it when it is new; -1 on failure.
  virtual int NumberOf(const std::string& name) = 0;
  // Deletes the links from a page and adds these in their place.
  virtual bool ReplaceLinks(int page, const std::vector<Link>& links) = 0;
  virtual int CountFrom(int page) = 0;
  virtual bool Commit() = 0;
};
std::unique_ptr<RivalSite> MakeSqliteSite();
std::unique_ptr<RivalSite> MakeLmdbSite();

}  // namespace zvrsit::bench
