#include "cli/finished_files.h"

#include <string>
#include <system_error>
#include <vector>

#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "cli/private_folder.h"
#include "cli/session.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

fs::path DoneIn(const fs::path& places) {
  return places / "done";
}

void NeedDone(const fs::path& path, const std::error_code& error) {
  if (error) throw Failure(kFileSystem, NameOf(path) + ": " + error.message());
}

void NeedSynced(const fs::path& folder, const std::vector<std::string>& files) {
  if (SiteMgr::SyncFolder(FolderPath(NameOf(folder)), files) == 0) return;
  throw Failure(kFileSystem, NameOf(folder) + ": cannot be written" + SystemReason());
}

// What lies in a folder. It is listed first: of a folder that changes, the listing could be
// incomplete.
struct Listed {
  std::vector<fs::path> folders;  // names, as those of the files
  std::vector<std::string> files;
};

Listed List(const fs::path& folder) {
  Listed listed;
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    const fs::path name = entry->path().filename();
    if (entry->is_directory(error)) {
      listed.folders.push_back(name);
    } else {
      listed.files.push_back(NameOf(name));
    }
  }
  NeedDone(folder, error);
  return listed;
}

void SyncAll(const fs::path& folder) {
  const Listed listed = List(folder);
  for (const fs::path& name : listed.folders) SyncAll(folder / name);
  NeedSynced(folder, listed.files);
}

void MoveAll(const fs::path& from, const fs::path& to) {
  const Listed listed = List(from);
  std::error_code error;
  for (const fs::path& name : listed.folders) {
    NeedDone(to / name, MakeOwnFolder(to / name));
    MoveAll(from / name, to / name);
  }
  for (const std::string& name : listed.files) {
    fs::rename(from / PathOf(name), to / PathOf(name), error);
    NeedDone(to / PathOf(name), error);
  }
  NeedSynced(to, {});
}

}  // namespace

void FinishFiles(const fs::path& folder, const fs::path& places) {
  SyncAll(folder);
  std::error_code error;
  fs::rename(folder, DoneIn(places), error);
  NeedDone(folder, error);
  NeedSynced(places, {});
}

bool HasFinishedFiles(const fs::path& places) {
  std::error_code error;
  return fs::exists(DoneIn(places), error);
}

void PutFinishedFiles(const fs::path& places) {
  if (HasFinishedFiles(places)) MoveAll(DoneIn(places), places);
}

void EndFinishedFiles(const fs::path& places) {
  std::error_code error;
  fs::remove_all(DoneIn(places), error);
  NeedDone(DoneIn(places), error);
  NeedSynced(places, {});
}

}  // namespace zvrsit::cli
