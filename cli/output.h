// What the commands print: lines of text, or JSON.
#pragma once

#include <fmt/core.h>

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "findings/escapes.h"

namespace zvrsit::cli {

using Json = nlohmann::ordered_json;

// What LineText makes of a string that JsonText made.
std::string LineOfJson(const Json& text);

// As fmt::print, but bytes are written unchanged: names are in the code page.
void PrintBytes(std::FILE* file, fmt::string_view format, fmt::format_args args);
template <class... T>
void PrintTo(std::FILE* file, fmt::format_string<T...> format, T&&... values) {
  PrintBytes(file, format, fmt::make_format_args(values...));
}
template <class... T>
void Print(fmt::format_string<T...> format, T&&... values) {
  PrintBytes(stdout, format, fmt::make_format_args(values...));
}

// Writes out all that was printed. Throws Failure(kFileSystem), with the system's reason, when not
// all of it could be written.
void FinishOutput();

// Says on stderr, in one line, what the user should know.
void Warn(std::string_view message);

// Prints `value` on stdout, indented, with a line end.
void PrintJson(const Json& value);
// Prints an array of rows, each on a line of its own, as they come.
class JsonRows {
 public:
  void Add(const Json& row);
  // Prints the end of the array.
  void End();

 private:
  bool empty_ = true;
};

using Strings = std::vector<std::string>;
// Prints an object as JSON; or its fields, one in a line, without those that are empty texts.
void PrintObject(const Json& object, bool json);
// Prints a list: its rows as JSON; or one line for each row, with the cells of `lines` in columns.
void PrintList(const Json& rows, const std::vector<Strings>& lines, bool json);
// "1 page", "2 pages".
std::string Counted(long count, std::string_view one, std::string_view many);

}  // namespace zvrsit::cli
