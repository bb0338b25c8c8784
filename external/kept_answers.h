// Answers kept on disk, in a SQLite database of their own.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "external/answer.h"

struct sqlite3;
struct sqlite3_stmt;

namespace zvrsit {

// Several processes may use one file. What it holds can always be asked again: a file that is
// damaged, or of another version, is made anew. Where it cannot be used, nothing is kept, and
// fault() says why.
class KeptAnswers {
 public:
  // Opens or makes the file; an empty name keeps nothing. Forgets answers older than a year.
  explicit KeptAnswers(const std::string& file);
  ~KeptAnswers();  // writes what is not written
  KeptAnswers(const KeptAnswers&) = delete;
  KeptAnswers& operator=(const KeptAnswers&) = delete;

  // What is kept of a URL, with the fragments that were ever looked for; nothing for none.
  std::optional<Answer> Find(const std::string& url);
  // Keeps an answer in place of the one before. It is on disk, and found, after the next Write.
  // Until then the file is free for others.
  void Keep(const std::string& url, const Answer& answer);
  // Writes what is not written, if this was not done in the last half second.
  void WriteSometimes();

  // Why nothing can be kept, in words; empty when all is well.
  const std::string& fault() const { return fault_; }

 private:
  struct Closer {
    void operator()(sqlite3* database) const;
    void operator()(sqlite3_stmt* statement) const;
  };
  using Statement = std::unique_ptr<sqlite3_stmt, Closer>;

  bool Open(const std::string& file);
  bool MakeTables();
  [[nodiscard]] bool Execute(const char* sql);
  bool Prepare(const char* sql, Statement& statement);
  bool Step(sqlite3_stmt* statement);  // false: no row
  void Write();
  void WriteOne(const std::string& url, const Answer& answer);
  void Fail();

  std::unique_ptr<sqlite3, Closer> database_;  // null: nothing is kept
  Statement find_, findFragments_, keep_, keepFragment_, dropFragments_;
  std::vector<std::pair<std::string, Answer>> unwritten_;
  std::chrono::steady_clock::time_point lastWritten_{};
  std::string fault_;
};

}  // namespace zvrsit
