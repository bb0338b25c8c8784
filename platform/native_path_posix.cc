#include <array>
#include <new>

#include "platform/native_path.h"
#include "platform/single_byte.h"

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

}  // namespace

void SetDriveFolder(char letter, const std::string& nativeFolder) {
  const int drive = DriveNumber(letter);
  if (drive >= 0) DriveFolders()[static_cast<std::size_t>(drive)] = nativeFolder;
}

bool ToNativePath(const std::string& path, std::string& native) try {
  if (path.find('\0') != std::string::npos) return false;
  if (!HasDrive(path)) {
    native = path;
    ReplaceSingleByte(native, 0, '\\', '/');
    return true;
  }
  const std::string& folder = DriveFolders()[static_cast<std::size_t>(DriveNumber(path[0]))];
  if (folder.empty()) return false;
  native = folder;
  // A drive has no current folder here: a name directly after the colon lies in its root.
  if (native.back() != '/') native += '/';
  const std::size_t start = native.size();
  native.append(path, path.size() > 2 && path[2] == '\\' ? 3 : 2, std::string::npos);
  ReplaceSingleByte(native, start, '\\', '/');
  return true;
} catch (const std::bad_alloc&) {
  return false;
}

bool FromNativePath(const std::string& native, std::string& path) try {
  if (native.find('\0') != std::string::npos) return false;
  if (FindLastSingleByte(native, '\\') != std::string::npos) return false;
  path = native;
  ReplaceSingleByte(path, 0, '/', '\\');
  return true;
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace zvrsit::platform
