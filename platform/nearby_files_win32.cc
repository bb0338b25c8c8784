#include "platform/file.h"
#include "platform/nearby_files.h"

namespace zvrsit::platform {

// No call of the runtime takes a name in an open folder.
int NearbyFiles::OpenToRead(const std::string& path) {
  return Open(path, kOpenReadOnly);
}

void NearbyFiles::Forget() {}

}  // namespace zvrsit::platform
