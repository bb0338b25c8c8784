// An export as CSV files and as JSON Lines.
#include <cerrno>
#include <system_error>
#include <utility>

#include "exports/rows.h"
#include "findings/dump_json.h"
#include "findings/escapes.h"

namespace zvrsit {
namespace {

class CsvRows : public ExportRows {
 public:
  explicit CsvRows(const OutputPath& folder) : folder_(folder) {
    std::error_code error;
    std::filesystem::create_directories(folder.path, error);
    if (error) throw ExportError(folder.name + ": " + error.message());
  }

  void Begin(const ExportTable& table) override {
    files_.push_back(
        std::make_unique<NewFile>(folder_.Below(std::string(table.name).append(".csv"))));
    ExportRow names;
    for (const ExportColumn& column : table.columns) names.emplace_back(std::string(column.name));
    Add(names);
  }
  void Add(const ExportRow& row) override {
    line_.clear();
    const char* separator = "";
    for (const ExportValue& value : row) {
      line_ += separator;
      separator = ",";
      if (const auto* const text = std::get_if<std::string>(&value)) {
        line_ += CsvField(*text);
      } else if (const auto* const number = std::get_if<std::int64_t>(&value)) {
        line_ += std::to_string(*number);
      }
    }
    files_.back()->Write(line_ += "\r\n");
  }
  void Finish() override {
    for (const auto& file : files_) file->Commit();
  }

 private:
  const OutputPath folder_;
  std::vector<std::unique_ptr<NewFile>> files_;
  std::string line_;
};

class JsonRows : public ExportRows {
 public:
  explicit JsonRows(const OutputPath& file) {
    if (!file.name.empty()) file_ = std::make_unique<NewFile>(file);
  }

  void Begin(const ExportTable& table) override { table_ = &table; }
  void Add(const ExportRow& row) override {
    line_ = std::string("{\"table\":\"") + table_->name + '"';
    for (std::size_t i = 0; i < row.size(); ++i) {
      line_ += std::string(",\"") + table_->columns[i].name + "\":";
      Append(row[i]);
    }
    Write(line_ += "}\n");
  }
  void Finish() override {
    if (file_ != nullptr) file_->Commit();
  }

 private:
  void Append(const ExportValue& value) {
    if (const auto* const number = std::get_if<std::int64_t>(&value)) {
      line_ += std::to_string(*number);
    } else if (const auto* const text = std::get_if<std::string>(&value)) {
      if (IsPlain(*text)) {
        line_ += '"' + *text + '"';
      } else {
        line_ += DumpJson(*text);
      }
    } else {
      line_ += "null";
    }
  }
  void Write(std::string_view bytes) {
    if (file_ != nullptr) return file_->Write(bytes);
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size()) return;
    throw ExportError("the output cannot be written: " + std::generic_category().message(errno));
  }

  std::unique_ptr<NewFile> file_;
  const ExportTable* table_ = nullptr;
  std::string line_;
};

}  // namespace

std::unique_ptr<ExportRows> MakeCsv(const OutputPath& folder) {
  return std::make_unique<CsvRows>(folder);
}

std::unique_ptr<ExportRows> MakeJsonLines(const OutputPath& file) {
  return std::make_unique<JsonRows>(file);
}

}  // namespace zvrsit
