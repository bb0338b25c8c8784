#include "external/kept_answers.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>

namespace zvrsit {
namespace {

constexpr int kVersion = 1;         // of the tables
constexpr int kLongestLock = 3000;  // milliseconds
constexpr std::chrono::milliseconds kBetweenWrites{500};

void BindText(sqlite3_stmt* statement, int place, const std::string& text) {
  sqlite3_bind_text(statement, place, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

std::string ColumnText(sqlite3_stmt* statement, int column) {
  const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
  return text != nullptr ? text : "";
}

}  // namespace

void KeptAnswers::Closer::operator()(sqlite3* database) const {
  sqlite3_close(database);
}

void KeptAnswers::Closer::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

KeptAnswers::KeptAnswers(const std::string& file) {
  if (file.empty() || Open(file)) return;
  const int code = database_ != nullptr ? sqlite3_errcode(database_.get()) & 0xFF : SQLITE_NOMEM;
  database_.reset();
  if (code == SQLITE_CORRUPT || code == SQLITE_NOTADB) {
    std::remove(file.c_str());
    std::remove((file + "-journal").c_str());
    if (Open(file)) return;
  }
  Fail();
}

KeptAnswers::~KeptAnswers() {
  Write();
}

bool KeptAnswers::Open(const std::string& file) {
  // Made here, as SQLite would let everyone read it.
  const int made = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (made >= 0) close(made);
  sqlite3* database = nullptr;
  const int opened =
      sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
  database_.reset(database);
  if (opened != SQLITE_OK) return false;
  sqlite3_busy_timeout(database, kLongestLock);
  return Execute("PRAGMA synchronous=NORMAL") && MakeTables() &&
         Prepare(
             "SELECT time, status, fault, detail, moved_to, ended_at, is_login FROM answers"
             " WHERE url = ?1",
             find_) &&
         Prepare("SELECT fragment, state FROM fragments WHERE url = ?1", findFragments_) &&
         Prepare("INSERT OR REPLACE INTO answers VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)", keep_) &&
         Prepare("INSERT OR REPLACE INTO fragments VALUES (?1, ?2, ?3)", keepFragment_) &&
         Prepare("DELETE FROM fragments WHERE url = ?1", dropFragments_);
}

bool KeptAnswers::MakeTables() {
  Statement version;
  if (!Prepare("PRAGMA user_version", version) || !Step(version.get())) return false;
  const bool isOurs = sqlite3_column_int(version.get(), 0) == kVersion;
  version.reset();
  if (!isOurs &&
      !Execute("BEGIN IMMEDIATE; DROP TABLE IF EXISTS answers; DROP TABLE IF EXISTS fragments;"
               "CREATE TABLE answers (url TEXT PRIMARY KEY, time INTEGER NOT NULL,"
               " status INTEGER NOT NULL, fault INTEGER NOT NULL, detail TEXT NOT NULL,"
               " moved_to TEXT NOT NULL, ended_at TEXT NOT NULL, is_login INTEGER NOT NULL)"
               " WITHOUT ROWID;"
               "CREATE TABLE fragments (url TEXT NOT NULL, fragment TEXT NOT NULL,"
               " state INTEGER NOT NULL, PRIMARY KEY (url, fragment)) WITHOUT ROWID;"
               "PRAGMA user_version = 1; COMMIT")) {
    return false;
  }
  // Nobody links to them any more, or they would have been asked again.
  return Execute(
      "DELETE FROM answers WHERE time < strftime('%s') - 31536000;"
      "DELETE FROM fragments WHERE url NOT IN (SELECT url FROM answers)");
}

bool KeptAnswers::Execute(const char* sql) {
  return sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

bool KeptAnswers::Prepare(const char* sql, Statement& statement) {
  sqlite3_stmt* prepared = nullptr;
  const int code = sqlite3_prepare_v2(database_.get(), sql, -1, &prepared, nullptr);
  statement.reset(prepared);
  return code == SQLITE_OK;
}

bool KeptAnswers::Step(sqlite3_stmt* statement) {
  const int code = sqlite3_step(statement);
  if (code != SQLITE_ROW && code != SQLITE_DONE) Fail();
  return code == SQLITE_ROW;
}

// From here on nothing is kept. The statements stay until the end: one of them may be at work.
void KeptAnswers::Fail() {
  if (!fault_.empty()) return;
  fault_ = database_ != nullptr ? sqlite3_errmsg(database_.get()) : "it cannot be opened";
}

std::optional<Answer> KeptAnswers::Find(const std::string& url) {
  if (database_ == nullptr || !fault_.empty()) return std::nullopt;
  std::optional<Answer> answer;
  BindText(find_.get(), 1, url);
  if (Step(find_.get())) {
    answer.emplace();
    answer->time = sqlite3_column_int64(find_.get(), 0);
    answer->status = sqlite3_column_int(find_.get(), 1);
    const int fault = sqlite3_column_int(find_.get(), 2);
    const bool isKnown = fault >= 0 && fault < static_cast<int>(ExternalFault::kOwnNetwork);
    answer->fault = isKnown ? static_cast<ExternalFault>(fault) : ExternalFault::kResponse;
    answer->detail = ColumnText(find_.get(), 3);
    answer->movedTo = ColumnText(find_.get(), 4);
    answer->endedAt = ColumnText(find_.get(), 5);
    answer->isLogin = sqlite3_column_int(find_.get(), 6) != 0;
  }
  sqlite3_reset(find_.get());
  if (!answer) return answer;
  BindText(findFragments_.get(), 1, url);
  while (Step(findFragments_.get())) {
    const int state = sqlite3_column_int(findFragments_.get(), 1);
    answer->fragments.emplace_back(
        ColumnText(findFragments_.get(), 0),
        state == 0 || state == 1 ? static_cast<FragmentState>(state) : FragmentState::kUnknown);
  }
  sqlite3_reset(findFragments_.get());
  return answer;
}

void KeptAnswers::Keep(const std::string& url, const Answer& answer) {
  if (database_ != nullptr && fault_.empty()) unwritten_.emplace_back(url, answer);
}

void KeptAnswers::WriteOne(const std::string& url, const Answer& answer) {
  sqlite3_stmt* const keep = keep_.get();
  BindText(keep, 1, url);
  sqlite3_bind_int64(keep, 2, answer.time);
  sqlite3_bind_int(keep, 3, answer.status);
  sqlite3_bind_int(keep, 4, static_cast<int>(answer.fault));
  BindText(keep, 5, answer.detail);
  BindText(keep, 6, answer.movedTo);
  BindText(keep, 7, answer.endedAt);
  sqlite3_bind_int(keep, 8, answer.isLogin ? 1 : 0);
  BindText(dropFragments_.get(), 1, url);
  for (sqlite3_stmt* const one : {keep, dropFragments_.get()}) {
    Step(one);
    sqlite3_reset(one);
  }
  for (const auto& [fragment, state] : answer.fragments) {
    BindText(keepFragment_.get(), 1, url);
    BindText(keepFragment_.get(), 2, fragment);
    sqlite3_bind_int(keepFragment_.get(), 3, static_cast<int>(state));
    Step(keepFragment_.get());
    sqlite3_reset(keepFragment_.get());
  }
}

void KeptAnswers::WriteSometimes() {
  const auto now = std::chrono::steady_clock::now();
  if (now - lastWritten_ < kBetweenWrites) return;
  lastWritten_ = now;
  Write();
}

void KeptAnswers::Write() {
  const auto answers = std::exchange(unwritten_, {});
  if (answers.empty() || !fault_.empty()) return;
  if (!Execute("BEGIN IMMEDIATE")) return Fail();
  for (const auto& [url, answer] : answers) WriteOne(url, answer);
  if (!Execute("COMMIT")) {
    Fail();
    sqlite3_exec(database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
}

}  // namespace zvrsit
