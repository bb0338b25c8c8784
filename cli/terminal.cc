#include "cli/terminal.h"

#include <cstdlib>
#include <string_view>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace zvrsit::cli {
namespace {

std::string_view Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

}  // namespace

bool IsTerminal(std::FILE* stream) {
#if defined(_WIN32)
  return _isatty(_fileno(stream)) != 0;
#else
  return isatty(fileno(stream)) != 0;
#endif
}

bool CanRedraw() {
  return IsTerminal(stderr) && Environment("TERM") != "dumb";
}

bool WantsColors(const std::string& choice) {
  if (choice != "auto") return choice == "always";
  if (!Environment("NO_COLOR").empty()) return false;
  const std::string_view forced = Environment("CLICOLOR_FORCE");
  if (!forced.empty() && forced != "0") return true;
  return IsTerminal(stdout) && Environment("TERM") != "dumb";
}

}  // namespace zvrsit::cli
