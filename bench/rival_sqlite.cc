#include "bench/rival_sqlite.h"

namespace zvrsit::bench {
namespace {

constexpr const char* kSettings =
    "PRAGMA journal_mode=MEMORY; PRAGMA synchronous=OFF; PRAGMA cache_size=-262144;"
    "PRAGMA locking_mode=EXCLUSIVE;";

bool BindText(sqlite3_stmt* statement, int at, std::string_view text) {
  return sqlite3_bind_text(statement, at, text.data(), static_cast<int>(text.size()),
                           SQLITE_STATIC) == SQLITE_OK;
}

// Runs a statement that gives no rows.
bool Run(sqlite3_stmt* statement) {
  const bool done = sqlite3_step(statement) == SQLITE_DONE;
  return sqlite3_reset(statement) == SQLITE_OK && done;
}

bool RunWith(sqlite3_stmt* statement, int number) {
  return sqlite3_bind_int(statement, 1, number) == SQLITE_OK && Run(statement);
}

// The integer in the first row, or -1.
int First(sqlite3_stmt* statement) {
  const int value = sqlite3_step(statement) == SQLITE_ROW ? sqlite3_column_int(statement, 0) : -1;
  sqlite3_reset(statement);
  return value;
}

}  // namespace

SqliteDatabase::~SqliteDatabase() {
  Close();
}

bool SqliteDatabase::Open(const std::string& folder, const char* schema) {
  return sqlite3_open((folder + "/store.sqlite").c_str(), &database_) == SQLITE_OK &&
         Execute(kSettings) && Execute(schema) && Execute("BEGIN");
}

bool SqliteDatabase::Execute(const char* sql) {
  return sqlite3_exec(database_, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

sqlite3_stmt* SqliteDatabase::Prepare(const char* sql) {
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(database_, sql, -1, &statement, nullptr);
  statements_.push_back(statement);
  return statement;
}

bool SqliteDatabase::Close() {
  if (database_ == nullptr) return true;
  for (sqlite3_stmt* statement : statements_) sqlite3_finalize(statement);
  statements_.clear();
  const bool committed = Execute("COMMIT");
  const bool closed = sqlite3_close(database_) == SQLITE_OK;
  database_ = nullptr;
  return committed && closed;
}

bool SqliteNames::Open(const std::string& folder) {
  if (!database_.Open(folder,
                      "CREATE TABLE IF NOT EXISTS entry(number INTEGER PRIMARY KEY, "
                      "name TEXT NOT NULL UNIQUE, words BLOB)")) {
    return false;
  }
  add_ = database_.Prepare("INSERT INTO entry VALUES(?1, ?2, ?3)");
  find_ = database_.Prepare("SELECT number FROM entry WHERE name = ?1");
  touch_ = database_.Prepare("UPDATE entry SET words = zeroblob(length(words)) WHERE number = ?1");
  delete_ = database_.Prepare("DELETE FROM entry WHERE number = ?1");
  count_ = database_.Prepare("SELECT count(*) FROM entry");
  return count_ != nullptr;
}

bool SqliteNames::Add(int number) {
  return sqlite3_bind_int(add_, 1, number) == SQLITE_OK &&
         BindText(add_, 2, names_[static_cast<std::size_t>(number)]) &&
         sqlite3_bind_blob(add_, 3, record_.data(), static_cast<int>(record_.size()),
                           SQLITE_STATIC) == SQLITE_OK &&
         Run(add_);
}

bool SqliteNames::Find(int number) {
  return BindText(find_, 1, names_[static_cast<std::size_t>(number)]) && First(find_) == number;
}

bool SqliteNames::Touch(int number) {
  return RunWith(touch_, number);
}
bool SqliteNames::Delete(int number) {
  return RunWith(delete_, number);
}
int SqliteNames::Count() {
  return First(count_);
}

bool SqliteLinks::Open(const std::string& folder) {
  if (!database_.Open(folder,
                      "CREATE TABLE IF NOT EXISTS link(number INTEGER PRIMARY KEY, source INTEGER, "
                      "target INTEGER, type INTEGER, count INTEGER, text TEXT);"
                      "CREATE INDEX IF NOT EXISTS by_source ON link(source);"
                      "CREATE INDEX IF NOT EXISTS by_target ON link(target)")) {
    return false;
  }
  add_ = database_.Prepare("INSERT INTO link VALUES(?1, ?2, ?3, 1, 1, ?4)");
  find_ = database_.Prepare(
      "SELECT number FROM link WHERE source = ?1 AND target = ?2 AND +number >= ?3");
  touch_ = database_.Prepare("UPDATE link SET count = count + 1 WHERE number = ?1");
  delete_ = database_.Prepare("DELETE FROM link WHERE number = ?1");
  from_ = database_.Prepare("SELECT number, text FROM link WHERE source = ?1 ORDER BY number");
  to_ = database_.Prepare("SELECT number, text FROM link WHERE target = ?1 ORDER BY number");
  count_ = database_.Prepare("SELECT count(*) FROM link");
  return count_ != nullptr;
}

bool SqliteLinks::Add(int number) {
  const Link& link = links_[static_cast<std::size_t>(number)];
  return sqlite3_bind_int(add_, 1, number) == SQLITE_OK &&
         sqlite3_bind_int(add_, 2, link.from) == SQLITE_OK &&
         sqlite3_bind_int(add_, 3, link.to) == SQLITE_OK && BindText(add_, 4, link.text) &&
         Run(add_);
}

bool SqliteLinks::Find(int number) {
  const Link& link = links_[static_cast<std::size_t>(number)];
  return sqlite3_bind_int(find_, 1, link.from) == SQLITE_OK &&
         sqlite3_bind_int(find_, 2, link.to) == SQLITE_OK &&
         sqlite3_bind_int(find_, 3, number) == SQLITE_OK && First(find_) == number;
}

bool SqliteLinks::Touch(int number) {
  return RunWith(touch_, number);
}
bool SqliteLinks::Delete(int number) {
  return RunWith(delete_, number);
}
int SqliteLinks::Count() {
  return First(count_);
}

int SqliteLinks::List(sqlite3_stmt* statement, int page) {
  sqlite3_bind_int(statement, 1, page);
  int count = 0;
  while (sqlite3_step(statement) == SQLITE_ROW) {
    if (sqlite3_column_bytes(statement, 1) > 0) ++count;
  }
  sqlite3_reset(statement);
  return count;
}

}  // namespace zvrsit::bench
