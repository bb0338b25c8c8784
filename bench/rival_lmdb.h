// Names and links kept in LMDB: one write transaction, integer keys where the keys are integers,
// nothing synced to the disk. See rival_sqlite.h.
#pragma once

#include <lmdb.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "bench/workload.h"

namespace zvrsit::bench {

class LmdbDatabase {
 public:
  LmdbDatabase() = default;
  ~LmdbDatabase();
  LmdbDatabase(const LmdbDatabase&) = delete;
  LmdbDatabase& operator=(const LmdbDatabase&) = delete;

  bool Open(const std::string& folder);
  bool Part(const char* name, unsigned flags, MDB_dbi& part);
  bool Commit();
  // Writes a copy without free pages and puts it in the file's place, which closes it.
  bool Pack();
  bool Close();

  bool Put(MDB_dbi part, std::string_view key, std::string_view value, unsigned flags = 0);
  bool Get(MDB_dbi part, std::string_view key, std::string_view& value);
  // `value` names the one to delete of a key with several; empty for all.
  bool Delete(MDB_dbi part, std::string_view key, std::string_view value = {});
  int Count(MDB_dbi part);
  MDB_txn* transaction() const { return transaction_; }

 private:
  bool Begin() { return mdb_txn_begin(environment_, nullptr, 0, &transaction_) == 0; }

  std::string folder_;
  MDB_env* environment_ = nullptr;
  MDB_txn* transaction_ = nullptr;
};

class LmdbNames {
 public:
  LmdbNames(const std::vector<std::string>& names, int recordBytes)
      : names_(names), record_(static_cast<std::size_t>(recordBytes), '\0') {}

  bool Open(const std::string& folder);
  bool Add(int number);
  bool Find(int number);
  bool Touch(int number);
  bool Delete(int number);
  int Count() { return database_.Count(records_); }
  bool Commit() { return database_.Commit(); }
  bool Pack() { return database_.Pack(); }
  bool Close() { return database_.Close(); }

 private:
  const std::vector<std::string>& names_;
  std::string record_;
  LmdbDatabase database_;
  MDB_dbi byName_ = 0;   // name: number
  MDB_dbi records_ = 0;  // number: words, name
};

class LmdbLinks {
 public:
  explicit LmdbLinks(const std::vector<Link>& links) : links_(links) {}

  bool Open(const std::string& folder);
  bool Add(int number);
  bool Find(int number);  // by both ends
  bool Touch(int number);
  bool Delete(int number);
  int Count() { return database_.Count(records_); }
  int CountFrom(int page) { return List(bySource_, page); }
  int CountTo(int page) { return List(byTarget_, page); }
  bool Commit() { return database_.Commit(); }
  bool Pack() { return database_.Pack(); }
  bool Close() { return database_.Close(); }

 private:
  int List(MDB_dbi part, int page);

  const std::vector<Link>& links_;
  LmdbDatabase database_;
  MDB_dbi bySource_ = 0;  // source: numbers
  MDB_dbi byTarget_ = 0;  // target: numbers
  MDB_dbi records_ = 0;   // number: source, target, type, count, text
};

}  // namespace zvrsit::bench
