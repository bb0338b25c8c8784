#include "cli/output.h"

#include <fmt/core.h>

#include "platform/code_page.h"

namespace zvrsit::cli {

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
    } else if (byte == '\\') {
      line += "\\\\";
    } else if (value < 0x20 || value == 0x7F) {
      line += fmt::format("\\x{:02x}", value);
    } else {
      line += byte;
    }
  }
  return line;
}

void Warn(std::string_view message) {
  fmt::print(stderr, "zvrsit: {}\n", LineText(message));
}

void PrintJson(const Json& value) {
  fmt::print("{}\n", value.dump(2, ' ', false, Json::error_handler_t::replace));
}

void JsonRows::Add(const Json& row) {
  fmt::print("{}{}", empty_ ? "[\n" : ",\n",
             row.dump(-1, ' ', false, Json::error_handler_t::replace));
  empty_ = false;
}

void JsonRows::End() {
  fmt::print("{}]\n", empty_ ? "[" : "\n");
}

void PrintFields(const Json& object) {
  for (const auto& [key, value] : object.items()) {
    const std::string text = value.is_string() ? value.get<std::string>() : value.dump();
    if (!text.empty()) fmt::print("{:<18}{}\n", key, LineText(text));
  }
}

std::string Counted(long count, std::string_view one, std::string_view many) {
  return fmt::format("{} {}", count, count == 1 ? one : many);
}

}  // namespace zvrsit::cli
