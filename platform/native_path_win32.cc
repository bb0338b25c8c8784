#include <new>

#include "platform/native_path.h"

namespace zvrsit::platform {

// The drives are the system's own.
void SetDriveFolder(char, const std::string&) {}

bool ToNativePath(const std::string& path, std::string& native) try {
  if (path.find('\0') != std::string::npos) return false;
  native = path;
  return true;
} catch (const std::bad_alloc&) {
  return false;
}

bool FromNativePath(const std::string& native, std::string& path) {
  return ToNativePath(native, path);
}

}  // namespace zvrsit::platform
