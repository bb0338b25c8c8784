// Here the program watches no folders.
#include "cli/exit_code.h"
#include "cli/folder_watch.h"

namespace zvrsit::cli {

class FolderWatch::Watched {};

void NeedFolderWatch() {
  throw Failure(
      kUsage,
      "this program watches no folders on Windows: zvrsit update NAME reads what has changed");
}

FolderWatch::FolderWatch() {
  NeedFolderWatch();
}

FolderWatch::~FolderWatch() = default;

bool FolderWatch::Watch(const std::filesystem::path&, const LeavesOut&,
                        const std::vector<std::string>&) {
  return false;
}

FolderWatch::Met FolderWatch::Wait(int) {
  return Met::kNothing;
}

}  // namespace zvrsit::cli
