#include "cli/output.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "findings/dump_json.h"

namespace zvrsit::cli {
namespace {

int outputError = 0;  // of the first failure on stdout

}  // namespace

std::string LineOfJson(const Json& text) {
  return LineText(NarrowText(TextOfJson(text.get<std::string>())));
}

void PrintBytes(std::FILE* file, fmt::string_view format, fmt::format_args args) {
  const std::string text = fmt::vformat(format, args);
  const bool isWhole = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  if (!isWhole && file == stdout && outputError == 0) outputError = errno;
}

void FinishOutput() {
  if (std::fflush(stdout) != 0 && outputError == 0) outputError = errno;
  if (outputError == 0) return;
  throw Failure(kFileSystem,
                "the output cannot be written: " + std::generic_category().message(outputError));
}

void Warn(std::string_view message) {
  PrintTo(stderr, "zvrsit: {}\n", LineText(message));
}

void PrintJson(const Json& value) {
  Print("{}\n", DumpJson(value, 2));
}

void JsonRows::Add(const Json& row) {
  Print("{}{}", empty_ ? "[\n" : ",\n", DumpJson(row));
  empty_ = false;
}

void JsonRows::End() {
  Print("{}]\n", empty_ ? "[" : "\n");
}

namespace {

void PrintColumns(const std::vector<Strings>& rows) {
  std::vector<std::size_t> widths;
  for (const Strings& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], LineText(row[i]).size());
    }
  }
  for (const Strings& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      line += fmt::format("{:<{}}  ", LineText(row[i]), widths[i]);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    Print("{}\n", line);
  }
}

void PrintFields(const Json& object) {
  for (const auto& [key, value] : object.items()) {
    const std::string text = value.is_string() ? LineOfJson(value) : value.dump();
    if (!text.empty()) Print("{:<17} {}\n", key, text);
  }
}

}  // namespace

void PrintObject(const Json& object, bool json) {
  json ? PrintJson(object) : PrintFields(object);
}

void PrintList(const Json& rows, const std::vector<Strings>& lines, bool json) {
  json ? PrintJson(rows) : PrintColumns(lines);
}

std::string Counted(long count, std::string_view one, std::string_view many) {
  return fmt::format("{} {}", count, count == 1 ? one : many);
}

}  // namespace zvrsit::cli
