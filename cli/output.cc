#include "cli/output.h"

#include <algorithm>

#include "cli/native_name.h"
#include "platform/code_page.h"

namespace zvrsit::cli {
namespace {

#if defined(_WIN32)
constexpr bool kEscapesBackslash = false;
#else
constexpr bool kEscapesBackslash = true;
#endif

}  // namespace

std::string JsonText(std::string_view text) {
  return platform::ToUtf8(text);
}

std::string LineText(std::string_view text) {
  std::string line;
  for (const char byte : text) {
    const auto value = static_cast<unsigned char>(byte);
    if (byte == '\n') {
      line += "\\n";
    } else if (byte == '\t') {
      line += "\\t";
    } else if (byte == '\\' && kEscapesBackslash) {
      line += "\\\\";
    } else if (value < 0x20 || value == 0x7F) {
      line += fmt::format("\\x{:02x}", value);
    } else {
      line += byte;
    }
  }
  return line;
}

std::string LineOfJson(const Json& text) {
  return LineText(NarrowText(text.get<std::string>()));
}

void PrintBytes(std::FILE* file, fmt::string_view format, fmt::format_args args) {
  const std::string text = fmt::vformat(format, args);
  std::fwrite(text.data(), 1, text.size(), file);
}

void Warn(std::string_view message) {
  PrintTo(stderr, "zvrsit: {}\n", LineText(message));
}

void PrintJson(const Json& value) {
  Print("{}\n", value.dump(2, ' ', false, Json::error_handler_t::replace));
}

void JsonRows::Add(const Json& row) {
  Print("{}{}", empty_ ? "[\n" : ",\n", row.dump(-1, ' ', false, Json::error_handler_t::replace));
  empty_ = false;
}

void JsonRows::End() {
  Print("{}]\n", empty_ ? "[" : "\n");
}

namespace {

void PrintColumns(const std::vector<Words>& rows) {
  std::vector<std::size_t> widths;
  for (const Words& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], LineText(row[i]).size());
    }
  }
  for (const Words& row : rows) {
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
    if (!text.empty()) Print("{:<18}{}\n", key, text);
  }
}

}  // namespace

void PrintObject(const Json& object, bool json) {
  json ? PrintJson(object) : PrintFields(object);
}

void PrintList(const Json& rows, const std::vector<Words>& lines, bool json) {
  json ? PrintJson(rows) : PrintColumns(lines);
}

std::string Counted(long count, std::string_view one, std::string_view many) {
  return fmt::format("{} {}", count, count == 1 ? one : many);
}

}  // namespace zvrsit::cli
