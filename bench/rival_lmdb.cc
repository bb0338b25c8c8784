#include "bench/rival_lmdb.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstring>

namespace zvrsit::bench {
namespace {

constexpr std::size_t kMapBytes = std::size_t{4} << 30;
constexpr unsigned kNumbers = MDB_INTEGERKEY;
constexpr unsigned kNumberLists = MDB_INTEGERKEY | MDB_DUPSORT | MDB_DUPFIXED | MDB_INTEGERDUP;

MDB_val Value(std::string_view bytes) {
  return {bytes.size(), const_cast<char*>(bytes.data())};
}

std::string_view Bytes(const MDB_val& value) {
  return {static_cast<const char*>(value.mv_data), value.mv_size};
}

// The bytes of an integer, as LMDB wants keys that are one.
std::string_view Bytes(const std::uint32_t& number) {
  return {reinterpret_cast<const char*>(&number), sizeof number};
}

struct LinkWords {
  std::int32_t from, to, type, count;
};

}  // namespace

LmdbDatabase::~LmdbDatabase() {
  Close();
}

bool LmdbDatabase::Open(const std::string& folder) {
  folder_ = folder;
  return mdb_env_create(&environment_) == 0 && mdb_env_set_mapsize(environment_, kMapBytes) == 0 &&
         mdb_env_set_maxdbs(environment_, 4) == 0 &&
         mdb_env_open(environment_, folder.c_str(), MDB_NOSYNC, 0644) == 0 && Begin();
}

bool LmdbDatabase::Part(const char* name, unsigned flags, MDB_dbi& part) {
  return mdb_dbi_open(transaction_, name, flags | MDB_CREATE, &part) == 0;
}

bool LmdbDatabase::Commit() {
  return mdb_txn_commit(transaction_) == 0 && Begin();
}

bool LmdbDatabase::Pack() {
  const std::string copy = folder_ + "/copy";
  if (mkdir(copy.c_str(), 0755) != 0 || mdb_txn_commit(transaction_) != 0) return false;
  transaction_ = nullptr;
  const bool copied = mdb_env_copy2(environment_, copy.c_str(), MDB_CP_COMPACT) == 0;
  return Close() && copied &&
         std::rename((copy + "/data.mdb").c_str(), (folder_ + "/data.mdb").c_str()) == 0 &&
         std::remove(copy.c_str()) == 0;
}

bool LmdbDatabase::Close() {
  if (environment_ == nullptr) return true;
  const bool committed = transaction_ == nullptr || mdb_txn_commit(transaction_) == 0;
  mdb_env_close(environment_);
  transaction_ = nullptr;
  environment_ = nullptr;
  return committed;
}

bool LmdbDatabase::Put(MDB_dbi part, std::string_view key, std::string_view value, unsigned flags) {
  MDB_val k = Value(key), v = Value(value);
  return mdb_put(transaction_, part, &k, &v, flags) == 0;
}

bool LmdbDatabase::Get(MDB_dbi part, std::string_view key, std::string_view& value) {
  MDB_val k = Value(key), v;
  if (mdb_get(transaction_, part, &k, &v) != 0) return false;
  value = Bytes(v);
  return true;
}

bool LmdbDatabase::Delete(MDB_dbi part, std::string_view key, std::string_view value) {
  MDB_val k = Value(key), v = Value(value);
  return mdb_del(transaction_, part, &k, value.empty() ? nullptr : &v) == 0;
}

int LmdbDatabase::Count(MDB_dbi part) {
  MDB_stat stat;
  return mdb_stat(transaction_, part, &stat) == 0 ? static_cast<int>(stat.ms_entries) : -1;
}

bool LmdbNames::Open(const std::string& folder) {
  return database_.Open(folder) && database_.Part("names", 0, byName_) &&
         database_.Part("records", kNumbers, records_);
}

bool LmdbNames::Add(int number) {
  const std::string& name = names_[static_cast<std::size_t>(number)];
  const auto key = static_cast<std::uint32_t>(number);
  return database_.Put(byName_, name, Bytes(key), MDB_NOOVERWRITE) &&
         database_.Put(records_, Bytes(key), record_ + name, MDB_APPEND);
}

bool LmdbNames::Find(int number) {
  std::string_view value;
  const auto key = static_cast<std::uint32_t>(number);
  return database_.Get(byName_, names_[static_cast<std::size_t>(number)], value) &&
         value == Bytes(key);
}

bool LmdbNames::Touch(int number) {
  const auto key = static_cast<std::uint32_t>(number);
  std::string_view value;
  return database_.Get(records_, Bytes(key), value) &&
         database_.Put(records_, Bytes(key), std::string(value));
}

bool LmdbNames::Delete(int number) {
  const auto key = static_cast<std::uint32_t>(number);
  std::string_view value;
  if (!database_.Get(records_, Bytes(key), value)) return false;
  return database_.Delete(byName_, std::string(value.substr(record_.size()))) &&
         database_.Delete(records_, Bytes(key));
}

bool LmdbLinks::Open(const std::string& folder) {
  return database_.Open(folder) && database_.Part("sources", kNumberLists, bySource_) &&
         database_.Part("targets", kNumberLists, byTarget_) &&
         database_.Part("records", kNumbers, records_);
}

bool LmdbLinks::Add(int number) {
  const Link& link = links_[static_cast<std::size_t>(number)];
  const auto key = static_cast<std::uint32_t>(number);
  const auto from = static_cast<std::uint32_t>(link.from);
  const auto to = static_cast<std::uint32_t>(link.to);
  const LinkWords words = {link.from, link.to, 1, 1};
  std::string record(reinterpret_cast<const char*>(&words), sizeof words);
  record += link.text;
  return database_.Put(records_, Bytes(key), record, MDB_APPEND) &&
         database_.Put(bySource_, Bytes(from), Bytes(key), MDB_APPENDDUP) &&
         database_.Put(byTarget_, Bytes(to), Bytes(key));
}

bool LmdbLinks::Find(int number) {
  const Link& link = links_[static_cast<std::size_t>(number)];
  MDB_cursor* cursor = nullptr;
  if (mdb_cursor_open(database_.transaction(), bySource_, &cursor) != 0) return false;
  const auto from = static_cast<std::uint32_t>(link.from);
  MDB_val key = Value(Bytes(from)), value;
  bool found = false;
  for (int got = mdb_cursor_get(cursor, &key, &value, MDB_SET_KEY); got == 0 && !found;
       got = mdb_cursor_get(cursor, &key, &value, MDB_NEXT_DUP)) {
    std::uint32_t each;
    std::memcpy(&each, value.mv_data, sizeof each);
    std::string_view record;
    LinkWords words;
    if (!database_.Get(records_, Bytes(each), record)) break;
    std::memcpy(&words, record.data(), sizeof words);
    found = words.to == link.to && each == static_cast<std::uint32_t>(number);
  }
  mdb_cursor_close(cursor);
  return found;
}

bool LmdbLinks::Touch(int number) {
  const auto key = static_cast<std::uint32_t>(number);
  std::string_view value;
  return database_.Get(records_, Bytes(key), value) &&
         database_.Put(records_, Bytes(key), std::string(value));
}

bool LmdbLinks::Delete(int number) {
  const auto key = static_cast<std::uint32_t>(number);
  std::string_view record;
  LinkWords words;
  if (!database_.Get(records_, Bytes(key), record)) return false;
  std::memcpy(&words, record.data(), sizeof words);
  const auto from = static_cast<std::uint32_t>(words.from);
  const auto to = static_cast<std::uint32_t>(words.to);
  return database_.Delete(bySource_, Bytes(from), Bytes(key)) &&
         database_.Delete(byTarget_, Bytes(to), Bytes(key)) &&
         database_.Delete(records_, Bytes(key));
}

int LmdbLinks::List(MDB_dbi part, int page) {
  MDB_cursor* cursor = nullptr;
  if (mdb_cursor_open(database_.transaction(), part, &cursor) != 0) return -1;
  const auto end = static_cast<std::uint32_t>(page);
  MDB_val key = Value(Bytes(end)), value;
  int count = 0;
  for (int got = mdb_cursor_get(cursor, &key, &value, MDB_SET_KEY); got == 0;
       got = mdb_cursor_get(cursor, &key, &value, MDB_NEXT_DUP)) {
    std::uint32_t number;
    std::memcpy(&number, value.mv_data, sizeof number);
    std::string_view record;
    if (database_.Get(records_, Bytes(number), record) && record.size() > sizeof(LinkWords)) {
      ++count;
    }
  }
  mdb_cursor_close(cursor);
  return count;
}

}  // namespace zvrsit::bench
