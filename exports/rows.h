// What a site holds, as tables for other programs. docs/export.md describes them for users.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "exports/new_file.h"

namespace zvrsit {

// Raised when a table or a column changes its meaning or goes; not for new ones.
inline constexpr int kExportVersion = 1;

struct ExportColumn {
  enum class Kind : std::uint8_t { kId, kNumber, kText };

  const char* name;
  Kind kind;
  bool isIndexed = false;
  const char* table = nullptr;  // of which this is an id; null for any other number
};
struct ExportTable {
  const char* name;
  std::span<const ExportColumn> columns;
};

// Nothing; a number; a text in UTF-8, with bytes that are no UTF-8 as in JSON (findings/escapes.h).
using ExportValue = std::variant<std::monostate, std::int64_t, std::string>;
using ExportRow = std::vector<ExportValue>;

// Where an export goes. Nothing is in its place before Finish; without it, nothing stays.
class ExportRows {
 public:
  virtual ~ExportRows() = default;
  // The rows of this table follow, in the order of its columns.
  virtual void Begin(const ExportTable& table) = 0;
  virtual void Add(const ExportRow& row) = 0;
  virtual void Finish() = 0;
};

// Each of these throws ExportError, also while rows are added.
//
// A database of SQLite, in place of a file that may be there.
inline constexpr bool kHasSqlite =
#if defined(ZVRSIT_HAS_SQLITE)
    true;
#else
    false;
#endif
// Throws where kHasSqlite is false.
std::unique_ptr<ExportRows> MakeSqlite(const OutputPath& file);
// A file for each table, in a folder that is made when it is missing (RFC 4180).
std::unique_ptr<ExportRows> MakeCsv(const OutputPath& folder);
// An object a line; on stdout for an empty name.
std::unique_ptr<ExportRows> MakeJsonLines(const OutputPath& file);

}  // namespace zvrsit
