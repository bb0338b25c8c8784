#include "cli/output.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "platform/code_page.h"

namespace zvrsit::cli {
namespace {

#if defined(_WIN32)
constexpr bool kEscapesBackslash = false;
#else
constexpr bool kEscapesBackslash = true;
#endif

int outputError = 0;  // of the first failure on stdout

bool IsUtf8(std::string_view text) {
  return platform::ToUtf8(text) == text;
}

// How many bytes the character at the start of a text that is not empty has; 0 for no character.
std::size_t CharacterLength(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  return IsUtf8(text.substr(0, length)) ? length : 0;
}

bool IsEscape(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  return text.size() >= 4 && text.starts_with("\\x") && kDigits.find(text[2]) != kDigits.npos &&
         kDigits.find(text[3]) != kDigits.npos;
}

bool HoldsEscape(std::string_view text) {
  for (std::size_t at = text.find('\\'); at != text.npos; at = text.find('\\', at + 1)) {
    if (IsEscape(text.substr(at))) return true;
  }
  return false;
}

std::string Escaped(std::string_view text) {
  std::string escaped;
  while (!text.empty()) {
    const std::size_t length = CharacterLength(text);
    if (length == 0) {
      escaped += fmt::format("\\x{:02X}", static_cast<unsigned char>(text.front()));
    } else if (text.front() == '\\') {
      escaped += "\\\\";
    } else {
      escaped += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return escaped;
}

std::string Unescaped(const std::string& text) {
  if (!HoldsEscape(text)) return text;
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (IsEscape(std::string_view(text).substr(i))) {
      plain += static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16));
      i += 3;
    } else {
      if (text[i] == '\\') ++i;
      plain += text[i];
    }
  }
  return plain;
}

}  // namespace

// In another code page every name has its characters.
std::string JsonText(std::string_view text) {
  std::string converted = platform::ToUtf8(text);
  if (platform::CodePage() != platform::kUtf8) return converted;
  return converted == text && !HoldsEscape(text) ? converted : Escaped(text);
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
  const auto value = text.get<std::string>();
  return LineText(NarrowText(platform::CodePage() == platform::kUtf8 ? Unescaped(value) : value));
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
    if (!text.empty()) Print("{:<18}{}\n", key, text);
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
