#include "util/site_name.h"

#include <algorithm>
#include <array>

#include "platform/code_page_text.h"
#include "platform/single_byte.h"

namespace zvrsit {

namespace {

// Names that mean a device with any extension, such as "con" and "con.txt".
bool IsDeviceName(std::string_view name) {
  static constexpr std::array<std::string_view, 4> kDevices = {"con", "prn", "aux", "nul"};
  std::string_view stem = name.substr(0, name.find('.'));
  while (stem.ends_with(' ')) stem.remove_suffix(1);
  for (const std::string_view device : kDevices) {
    if (platform::EqualButForCase(stem, device)) return true;
  }
  const bool port = stem.size() == 4 && stem[3] >= '1' && stem[3] <= '9';
  return port && (platform::EqualButForCase(stem.substr(0, 3), "com") ||
                  platform::EqualButForCase(stem.substr(0, 3), "lpt"));
}

}  // namespace

bool IsSiteName(std::string_view name) {
  if (name.empty() || name == "." || name == ".." || IsDeviceName(name)) return false;
  if (name.ends_with('.') || name.ends_with(' ')) return false;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const auto byte = static_cast<unsigned char>(name[i]);
    if (byte < 0x20 || byte == 0x7F) return false;
    if (platform::IsDbcsLeadByte(byte) && i + 1 < name.size()) {
      ++i;
    } else if (std::string_view("\\/:*?\"<>|").find(name[i]) != std::string_view::npos) {
      return false;
    }
  }
  return true;
}

bool LeavesFolder(std::string_view name) {
  for (std::size_t begin = 0; begin <= name.size();) {
    const std::size_t end = std::min(name.find_first_of("\\/", begin), name.size());
    if (name.substr(begin, end - begin) == "..") return true;
    begin = end + 1;
  }
  return false;
}

}  // namespace zvrsit
