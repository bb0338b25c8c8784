#include <sqlite3.h>

#include <string_view>

#include "bench/rival_stores.h"

namespace zvrsit::bench {
namespace {

constexpr const char* kSettings =
    "PRAGMA journal_mode=MEMORY; PRAGMA synchronous=OFF; PRAGMA cache_size=-262144;"
    "PRAGMA locking_mode=EXCLUSIVE;";
constexpr const char* kNameTable =
    "CREATE TABLE IF NOT EXISTS entry(number INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE, "
    "words BLOB);";
constexpr const char* kLinkTable =
    "CREATE TABLE IF NOT EXISTS link(number INTEGER PRIMARY KEY, source INTEGER, target INTEGER, "
    "type INTEGER, count INTEGER, text TEXT);"
    "CREATE INDEX IF NOT EXISTS by_source ON link(source);"
    "CREATE INDEX IF NOT EXISTS by_target ON link(target);";
constexpr const char* kAddLink = "INSERT INTO link VALUES(?1, ?2, ?3, 1, 1, ?4)";
constexpr const char* kFindName = "SELECT number FROM entry WHERE name = ?1";
constexpr const char* kListFrom = "SELECT number, text FROM link WHERE source = ?1 ORDER BY number";

struct Blob {
  std::string_view bytes;
};

// A prepared statement, its arguments bound in their order.
class Statement {
 public:
  Statement(sqlite3* database, const char* sql) {
    sqlite3_prepare_v2(database, sql, -1, &statement_, nullptr);
  }
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(Statement&& other) noexcept : statement_(other.statement_) {
    other.statement_ = nullptr;
  }

  // Runs it; it gives no rows.
  template <class... Arguments>
  bool Run(const Arguments&... arguments) {
    if (!BindAll(arguments...)) return false;
    const bool done = sqlite3_step(statement_) == SQLITE_DONE;
    return sqlite3_reset(statement_) == SQLITE_OK && done;
  }
  // The integer in its first row, or -1.
  template <class... Arguments>
  int First(const Arguments&... arguments) {
    if (!BindAll(arguments...)) return -1;
    const int value =
        sqlite3_step(statement_) == SQLITE_ROW ? sqlite3_column_int(statement_, 0) : -1;
    sqlite3_reset(statement_);
    return value;
  }
  // Reads all rows for `argument`; how many have a text in their second column.
  int CountTexts(int argument) {
    if (!BindAll(argument)) return -1;
    int count = 0;
    while (sqlite3_step(statement_) == SQLITE_ROW) {
      if (sqlite3_column_bytes(statement_, 1) > 0) ++count;
    }
    sqlite3_reset(statement_);
    return count;
  }

 private:
  template <class... Arguments>
  bool BindAll(const Arguments&... arguments) {
    int at = 0;
    return (Bind(++at, arguments) && ...);
  }
  bool Bind(int at, int number) { return sqlite3_bind_int(statement_, at, number) == SQLITE_OK; }
  bool Bind(int at, std::string_view text) {
    return sqlite3_bind_text(statement_, at, text.data(), static_cast<int>(text.size()),
                             SQLITE_STATIC) == SQLITE_OK;
  }
  bool Bind(int at, const Blob& blob) {
    return sqlite3_bind_blob(statement_, at, blob.bytes.data(), static_cast<int>(blob.bytes.size()),
                             SQLITE_STATIC) == SQLITE_OK;
  }

  sqlite3_stmt* statement_ = nullptr;
};

// A database with its statements, numbered in the order in which they were prepared.
class Database {
 public:
  ~Database() { Close(); }

  bool Open(const std::string& folder, const std::string& schema,
            std::initializer_list<const char*> statements) {
    if (sqlite3_open((folder + "/store.sqlite").c_str(), &database_) != SQLITE_OK ||
        !Execute(kSettings) || !Execute(schema.c_str()) || !Execute("BEGIN")) {
      return false;
    }
    for (const char* sql : statements) statements_.emplace_back(database_, sql);
    return true;
  }
  Statement& operator[](int statement) { return statements_[static_cast<std::size_t>(statement)]; }
  bool Commit() { return Execute("COMMIT; BEGIN"); }
  bool Pack() { return Execute("COMMIT; VACUUM; BEGIN"); }
  bool Close() {
    if (database_ == nullptr) return true;
    statements_.clear();
    const bool committed = Execute("COMMIT");
    const bool closed = sqlite3_close(database_) == SQLITE_OK;
    database_ = nullptr;
    return committed && closed;
  }

 private:
  bool Execute(const char* sql) {
    return sqlite3_exec(database_, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
  }

  sqlite3* database_ = nullptr;
  std::vector<Statement> statements_;
};

// What both kinds of numbered entries share.
template <class Store>
class Entries : public Store {
 public:
  bool Touch(int number) override { return database_[kTouch].Run(number); }
  bool Delete(int number) override { return database_[kDelete].Run(number); }
  int Count() override { return database_[kCount].First(); }
  bool Commit() override { return database_.Commit(); }
  bool Pack() override { return database_.Pack(); }
  bool Close() override { return database_.Close(); }

 protected:
  enum { kTouch, kDelete, kCount, kAdd, kFind, kFrom, kTo };

  Database database_;
};

class Names : public Entries<RivalStore> {
 public:
  Names(const std::vector<std::string>& names, int recordBytes)
      : names_(names), record_(static_cast<std::size_t>(recordBytes), '\0') {}

  bool Open(const std::string& folder) override {
    return database_.Open(folder, kNameTable,
                          {"UPDATE entry SET words = zeroblob(length(words)) WHERE number = ?1",
                           "DELETE FROM entry WHERE number = ?1", "SELECT count(*) FROM entry",
                           "INSERT INTO entry VALUES(?1, ?2, ?3)", kFindName});
  }
  bool Add(int number) override { return database_[kAdd].Run(number, Name(number), Blob{record_}); }
  bool Find(int number) override { return database_[kFind].First(Name(number)) == number; }

 private:
  const std::string& Name(int number) const { return names_[static_cast<std::size_t>(number)]; }

  const std::vector<std::string>& names_;
  const std::string record_;
};

class Links : public Entries<RivalLinks> {
 public:
  explicit Links(const std::vector<Link>& links) : links_(links) {}

  bool Open(const std::string& folder) override {
    return database_.Open(
        folder, kLinkTable,
        {"UPDATE link SET count = count + 1 WHERE number = ?1",
         "DELETE FROM link WHERE number = ?1", "SELECT count(*) FROM link", kAddLink,
         "SELECT number FROM link WHERE source = ?1 AND target = ?2 AND +number >= ?3", kListFrom,
         "SELECT number, text FROM link WHERE target = ?1 ORDER BY number"});
  }
  bool Add(int number) override {
    const Link& link = At(number);
    return database_[kAdd].Run(number, link.from, link.to, link.text);
  }
  bool Find(int number) override {
    const Link& link = At(number);
    return database_[kFind].First(link.from, link.to, number) == number;
  }
  int CountFrom(int page) override { return database_[kFrom].CountTexts(page); }
  int CountTo(int page) override { return database_[kTo].CountTexts(page); }

 private:
  const Link& At(int number) const { return links_[static_cast<std::size_t>(number)]; }

  const std::vector<Link>& links_;
};

class Site : public RivalSite {
 public:
  bool Open(const std::string& folder) override {
    return database_.Open(folder, std::string(kNameTable) + kLinkTable,
                          {kFindName, "INSERT INTO entry VALUES(?1, ?2, NULL)",
                           "DELETE FROM link WHERE source = ?1", kAddLink, kListFrom});
  }
  int NumberOf(const std::string& name) override {
    const int known = database_[kLook].First(name);
    if (known >= 0) return known;
    return database_[kAddName].Run(names_, name) ? names_++ : -1;
  }
  bool ReplaceLinks(int page, const std::vector<Link>& links) override {
    bool done = database_[kDeleteFrom].Run(page);
    for (const Link& link : links) {
      done = done && database_[kAdd].Run(links_++, link.from, link.to, link.text);
    }
    return done;
  }
  int CountFrom(int page) override { return database_[kFrom].CountTexts(page); }
  bool Commit() override { return database_.Commit(); }

 private:
  enum { kLook, kAddName, kDeleteFrom, kAdd, kFrom };

  Database database_;
  int names_ = 0;  // numbers given so far
  int links_ = 0;
};

}  // namespace

std::unique_ptr<RivalStore> MakeSqliteNames(const std::vector<std::string>& names,
                                            int recordBytes) {
  return std::make_unique<Names>(names, recordBytes);
}
std::unique_ptr<RivalLinks> MakeSqliteLinks(const std::vector<Link>& links) {
  return std::make_unique<Links>(links);
}
std::unique_ptr<RivalSite> MakeSqliteSite() {
  return std::make_unique<Site>();
}

}  // namespace zvrsit::bench
