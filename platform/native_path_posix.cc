#include <algorithm>
#include <array>

#include "platform/code_page.h"
#include "platform/native_path.h"

namespace zvrsit::platform {
namespace {

// Native folders of the drives A to Z; empty where none is mapped.
std::array<std::string, 26>& DriveFolders() {
  static std::array<std::string, 26> folders;
  return folders;
}

// 0 to 25, or -1 for what is not an ASCII letter.
int DriveNumber(char letter) {
  if (letter >= 'a' && letter <= 'z') return letter - 'a';
  if (letter >= 'A' && letter <= 'Z') return letter - 'A';
  return -1;
}

bool HasDrive(const std::string& path) {
  return path.size() >= 2 && path[1] == ':' && DriveNumber(path[0]) >= 0;
}

// Replaces single-byte `from` by `to`, from byte `start` on.
void Swap(std::string& path, std::size_t start, char from, char to) {
  if (!HasLeadBytes()) {
    std::replace(path.begin() + static_cast<std::ptrdiff_t>(start), path.end(), from, to);
    return;
  }
  const auto& isLead = LeadBytes();
  for (std::size_t i = start; i < path.size(); ++i) {
    if (isLead[static_cast<unsigned char>(path[i])]) {
      ++i;
    } else if (path[i] == from) {
      path[i] = to;
    }
  }
}

// Whether a `\` stands in the name outside of a double-byte character.
bool HoldsBackslash(const std::string& name) {
  if (!HasLeadBytes()) return name.find('\\') != std::string::npos;
  const auto& isLead = LeadBytes();
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (isLead[static_cast<unsigned char>(name[i])]) {
      ++i;
    } else if (name[i] == '\\') {
      return true;
    }
  }
  return false;
}

}  // namespace

void SetDriveFolder(char letter, const std::string& nativeFolder) {
  const int drive = DriveNumber(letter);
  if (drive >= 0) DriveFolders()[static_cast<std::size_t>(drive)] = nativeFolder;
}

bool ToNativePath(const std::string& path, std::string& native) {
  if (path.find('\0') != std::string::npos) return false;
  if (!HasDrive(path)) {
    native = path;
    Swap(native, 0, '\\', '/');
    return true;
  }
  const std::string& folder = DriveFolders()[static_cast<std::size_t>(DriveNumber(path[0]))];
  if (folder.empty()) return false;
  native = folder;
  // A drive has no current folder here: a name right behind the colon is taken from its root.
  if (native.back() != '/') native += '/';
  const std::size_t start = native.size();
  native.append(path, path.size() > 2 && path[2] == '\\' ? 3 : 2, std::string::npos);
  Swap(native, start, '\\', '/');
  return true;
}

bool FromNativePath(const std::string& native, std::string& path) {
  if (native.find('\0') != std::string::npos || HoldsBackslash(native)) return false;
  path = native;
  Swap(path, 0, '/', '\\');
  return true;
}

}  // namespace zvrsit::platform
