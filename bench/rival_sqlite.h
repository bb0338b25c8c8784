// Names and links kept in SQLite, the way a program that cares for speed would: one transaction,
// prepared statements, indexes on the keys that our tables have. Nothing is synced to the disk, as
// our tables do not sync either.
#pragma once

#include <sqlite3.h>

#include <string>
#include <string_view>
#include <vector>

#include "bench/workload.h"

namespace zvrsit::bench {

class SqliteDatabase {
 public:
  SqliteDatabase() = default;
  ~SqliteDatabase();
  SqliteDatabase(const SqliteDatabase&) = delete;
  SqliteDatabase& operator=(const SqliteDatabase&) = delete;

  // Every bool of this file: whether it worked.
  bool Open(const std::string& folder, const char* schema);
  bool Execute(const char* sql);
  sqlite3_stmt* Prepare(const char* sql);
  bool Commit() { return Execute("COMMIT; BEGIN"); }
  bool Pack() { return Execute("COMMIT; VACUUM; BEGIN"); }
  bool Close();

 private:
  sqlite3* database_ = nullptr;
  std::vector<sqlite3_stmt*> statements_;
};

// Entry number k has the k-th name. The stores of one kind share these methods; see store_bench.h.
class SqliteNames {
 public:
  SqliteNames(const std::vector<std::string>& names, int recordBytes)
      : names_(names), record_(static_cast<std::size_t>(recordBytes), '\0') {}

  bool Open(const std::string& folder);
  bool Add(int number);
  bool Find(int number);
  bool Touch(int number);
  bool Delete(int number);
  int Count();
  bool Commit() { return database_.Commit(); }
  bool Pack() { return database_.Pack(); }
  bool Close() { return database_.Close(); }

 private:
  const std::vector<std::string>& names_;
  std::string record_;
  SqliteDatabase database_;
  sqlite3_stmt* add_ = nullptr;
  sqlite3_stmt* find_ = nullptr;
  sqlite3_stmt* touch_ = nullptr;
  sqlite3_stmt* delete_ = nullptr;
  sqlite3_stmt* count_ = nullptr;
};

class SqliteLinks {
 public:
  explicit SqliteLinks(const std::vector<Link>& links) : links_(links) {}

  bool Open(const std::string& folder);
  bool Add(int number);
  bool Find(int number);  // by both ends
  bool Touch(int number);
  bool Delete(int number);
  int Count();
  // How many links the page has; their numbers are listed and their texts read.
  int CountFrom(int page) { return List(from_, page); }
  int CountTo(int page) { return List(to_, page); }
  bool Commit() { return database_.Commit(); }
  bool Pack() { return database_.Pack(); }
  bool Close() { return database_.Close(); }

 private:
  int List(sqlite3_stmt* statement, int page);

  const std::vector<Link>& links_;
  SqliteDatabase database_;
  sqlite3_stmt* add_ = nullptr;
  sqlite3_stmt* find_ = nullptr;
  sqlite3_stmt* touch_ = nullptr;
  sqlite3_stmt* delete_ = nullptr;
  sqlite3_stmt* from_ = nullptr;
  sqlite3_stmt* to_ = nullptr;
  sqlite3_stmt* count_ = nullptr;
};

}  // namespace zvrsit::bench
