#include "cli/output.h"

#include <fmt/core.h>

#include <iostream>

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

void PrintJson(const Json& value) {
  std::cout << value.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

std::string Counted(long count, std::string_view one, std::string_view many) {
  return fmt::format("{} {}", count, count == 1 ? one : many);
}

}  // namespace zvrsit::cli
