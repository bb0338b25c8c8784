// An export as a database of SQLite.
#include <sqlite3.h>

#include <memory>
#include <utility>

#include "exports/new_file.h"
#include "exports/rows.h"
#include "platform/code_page.h"

namespace zvrsit {
namespace {

struct CloseDatabase {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
};
struct FinalizeStatement {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

const char* TypeOf(ExportColumn::Kind kind) {
  return kind == ExportColumn::Kind::kId       ? " INTEGER PRIMARY KEY"
         : kind == ExportColumn::Kind::kNumber ? " INTEGER"
                                               : " TEXT";
}

std::string CreateTable(const ExportTable& table) {
  std::string sql = std::string("CREATE TABLE ") + table.name + " (";
  const char* separator = "";
  for (const ExportColumn& column : table.columns) {
    sql += std::string(separator) + "\"" + column.name + "\"" + TypeOf(column.kind);
    if (column.table != nullptr) sql += std::string(" REFERENCES ") + column.table + "(id)";
    separator = ", ";
  }
  return sql + ")";
}

std::string InsertRow(const ExportTable& table) {
  std::string values;
  for (std::size_t i = 0; i < table.columns.size(); ++i) values += i == 0 ? "?" : ",?";
  return std::string("INSERT INTO ") + table.name + " VALUES (" + values + ")";
}

class SqliteRows : public ExportRows {
 public:
  explicit SqliteRows(const OutputPath& file) : file_(file) {
    sqlite3* opened = nullptr;
    const int result = sqlite3_open(platform::ToUtf8(file_.newName()).c_str(), &opened);
    database_.reset(opened);
    Need(result);
    // The file takes its place only when it is whole, so nothing need be undone in it.
    Do("PRAGMA journal_mode=OFF");
    Do("PRAGMA synchronous=OFF");
    Do("BEGIN");
  }

  void Begin(const ExportTable& table) override {
    Do(CreateTable(table));
    for (const ExportColumn& column : table.columns) {
      if (!column.isIndexed) continue;
      indexes_ += std::string("CREATE INDEX ") + table.name + "_" + column.name + " ON " +
                  table.name + "(\"" + column.name + "\");";
    }
    sqlite3_stmt* prepared = nullptr;
    Need(sqlite3_prepare_v2(database_.get(), InsertRow(table).c_str(), -1, &prepared, nullptr));
    insert_.reset(prepared);
  }

  void Add(const ExportRow& row) override {
    int place = 0;
    for (const ExportValue& value : row) Bind(++place, value);
    if (sqlite3_step(insert_.get()) != SQLITE_DONE) Fail();
    Need(sqlite3_reset(insert_.get()));
  }

  // Indexes are made at once when all rows are there: that is quicker.
  void Finish() override {
    insert_.reset();
    Do(indexes_);
    Do("COMMIT");
    if (sqlite3_close(database_.get()) != SQLITE_OK) Fail();
    static_cast<void>(database_.release());
    file_.Commit();
  }

 private:
  void Bind(int place, const ExportValue& value) {
    if (const auto* const text = std::get_if<std::string>(&value)) {
      Need(sqlite3_bind_text(insert_.get(), place, text->data(), static_cast<int>(text->size()),
                             SQLITE_STATIC));
    } else if (const auto* const number = std::get_if<std::int64_t>(&value)) {
      Need(sqlite3_bind_int64(insert_.get(), place, *number));
    } else {
      Need(sqlite3_bind_null(insert_.get(), place));
    }
  }
  void Do(const std::string& sql) {
    Need(sqlite3_exec(database_.get(), sql.c_str(), nullptr, nullptr, nullptr));
  }
  void Need(int result) const {
    if (result != SQLITE_OK) Fail();
  }
  [[noreturn]] void Fail() const {
    throw ExportError(file_.name() + ": " + sqlite3_errmsg(database_.get()));
  }

  NewFile file_;
  std::unique_ptr<sqlite3, CloseDatabase> database_;
  std::unique_ptr<sqlite3_stmt, FinalizeStatement> insert_;
  std::string indexes_;
};

}  // namespace

std::unique_ptr<ExportRows> MakeSqlite(const OutputPath& file) {
  return std::make_unique<SqliteRows>(file);
}

}  // namespace zvrsit
