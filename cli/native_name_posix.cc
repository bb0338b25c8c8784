#include "cli/native_name.h"

namespace zvrsit::cli {

std::filesystem::path PathOf(const std::string& name) {
  return name;
}
std::string NameOf(const std::filesystem::path& path) {
  return path.string();
}
std::string NarrowText(const std::string& utf8) {
  return utf8;
}
std::filesystem::path AsOnDisk(const std::filesystem::path& path) {
  return path;
}

bool AreArgumentsWhole() {
  return true;
}

int InAnsiConsole(const std::function<int()>& program) {
  return program();
}

}  // namespace zvrsit::cli
