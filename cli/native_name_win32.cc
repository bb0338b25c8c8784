#include <windows.h>

#include "cli/native_name.h"

namespace zvrsit::cli {

std::filesystem::path PathOf(const std::string& name) {
  const int length = static_cast<int>(name.size());
  std::wstring wide(name.size(), L'\0');  // never longer than the bytes
  wide.resize(static_cast<std::size_t>(
      MultiByteToWideChar(CP_ACP, 0, name.data(), length, wide.data(), length)));
  return wide;
}

std::string NameOf(const std::filesystem::path& path) {
  const std::wstring& wide = path.native();
  const int length = static_cast<int>(wide.size());
  const DWORD flags = GetACP() == CP_UTF8 ? 0 : WC_NO_BEST_FIT_CHARS;
  std::string name(wide.size() * 4, '\0');
  name.resize(static_cast<std::size_t>(
      WideCharToMultiByte(CP_ACP, flags, wide.data(), length, name.data(),
                          static_cast<int>(name.size()), nullptr, nullptr)));
  return name;
}

std::string NarrowText(const std::string& utf8) {
  const int length = static_cast<int>(utf8.size());
  std::wstring wide(utf8.size(), L'\0');
  wide.resize(static_cast<std::size_t>(
      MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, wide.data(), length)));
  return NameOf(wide);
}

std::filesystem::path AsOnDisk(const std::filesystem::path& path) {
  std::filesystem::path spelled = path.root_path();
  for (const std::filesystem::path& part : path.relative_path()) {
    WIN32_FIND_DATAW found;
    const HANDLE search =
        part.empty() ? INVALID_HANDLE_VALUE : FindFirstFileW((spelled / part).c_str(), &found);
    spelled /= search == INVALID_HANDLE_VALUE ? part : std::filesystem::path(found.cFileName);
    if (search != INVALID_HANDLE_VALUE) FindClose(search);
  }
  return spelled;
}

bool AreArgumentsWhole() {
  if (GetACP() == CP_UTF8) return true;
  BOOL lacksOne = FALSE;
  WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, GetCommandLineW(), -1, nullptr, 0, nullptr,
                      &lacksOne);
  return lacksOne == FALSE;
}

int InAnsiConsole(const std::function<int()>& program) {
  const UINT input = GetConsoleCP();
  const UINT output = GetConsoleOutputCP();
  SetConsoleCP(GetACP());
  SetConsoleOutputCP(GetACP());
  const int code = program();
  if (input != 0) SetConsoleCP(input);
  if (output != 0) SetConsoleOutputCP(output);
  return code;
}

}  // namespace zvrsit::cli
