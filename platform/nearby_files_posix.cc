#include "platform/nearby_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <climits>

#include "platform/file_posix.h"
#include "platform/native_path.h"

namespace zvrsit::platform {
namespace {

// A folder is held to find files in it only; its own content need not be readable.
#if defined(O_PATH)
constexpr int kHold = O_PATH | O_DIRECTORY | O_CLOEXEC;
#else
constexpr int kHold = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
#endif

}  // namespace

int NearbyFiles::OpenToRead(const std::string& path) {
  if (!ToNativePath(path, native_)) return Open(path, kOpenReadOnly);
  const std::size_t nameStart = native_.rfind('/') + 1;  // npos + 1 is 0
  const int folder = Turn(std::string_view(native_).substr(0, nameStart));
  // A path that is too long for any call must fail however near its file is.
  const bool isNear = folder >= 0 && nameStart < native_.size() && native_.size() < PATH_MAX;
  return isNear ? OpenToReadIn(folder, native_.c_str() + nameStart, native_.c_str())
                : Open(path, kOpenReadOnly);
}

// The descriptor of the folder; -1 when it is not held. One that is taken from the current folder
// never is, which may change.
int NearbyFiles::Turn(std::string_view folder) {
  if (folder != folder_) {
    Forget();
    folder_ = folder;
  } else if (!isTried_ && folder.starts_with('/')) {
    isTried_ = true;
    descriptor_ = ::open(folder_.c_str(), kHold);
  }
  return descriptor_;
}

void NearbyFiles::Forget() {
  if (descriptor_ >= 0) ::close(descriptor_);
  descriptor_ = -1;
  isTried_ = false;
  folder_.clear();
}

}  // namespace zvrsit::platform
