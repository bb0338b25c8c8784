#include "cli/unsynced.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>

#include "cli/native_name.h"
#include "cli/session.h"
#include "cli/site_names.h"
#include "manager/family_marks.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* kNote = "unsynced";
constexpr const char* kNewNote = "unsynced.new";

bool waits = true;

// A text that is another one after each start of the machine; empty where the system has none.
// ZVRSIT_BOOT stands for it in tests of power cuts.
std::string StartOfMachine() {
  if (const char* const given = std::getenv("ZVRSIT_BOOT")) return given;
  std::ifstream file("/proc/sys/kernel/random/boot_id");
  std::string start;
  std::getline(file, start);
  return start;
}

struct Note {
  std::string start;
  std::vector<Mark> marks;

  friend bool operator==(const Note&, const Note&) = default;
};

// The start, and then marks and path of each file, each text with a zero byte after it.
std::string TextOf(const Note& note) {
  std::string text = note.start + '\0';
  for (const Mark& mark : note.marks) text += std::to_string(mark.marks) + '\0' + mark.path + '\0';
  return text;
}

bool Exists(const std::string& tables) {
  std::error_code error;
  return fs::exists(fs::symlink_status(PathOf(tables) / kNote, error));
}

Note ReadNote(const std::string& tables) {
  std::ifstream file(PathOf(tables) / kNote, std::ios::binary);
  Note note;
  std::getline(file, note.start, '\0');
  std::string marks, path;
  while (std::getline(file, marks, '\0') && std::getline(file, path, '\0')) {
    note.marks.push_back({path, std::atoi(marks.c_str())});
  }
  return note;
}

bool WriteNote(const std::string& tables, const Note& note) {
  const fs::path folder = PathOf(tables);
  {
    std::ofstream file(folder / kNewNote, std::ios::binary | std::ios::trunc);
    file << TextOf(note);
    if (!file.flush()) return false;
  }
  std::error_code error;
  fs::permissions(folder / kNewNote, fs::perms::owner_read | fs::perms::owner_write, error);
  const std::string path = FolderPath(tables);
  if (error || SiteMgr::SyncFolder(path, {kNewNote}) != 0) return false;
  fs::rename(folder / kNewNote, folder / kNote, error);
  return !error && SiteMgr::SyncFolder(path, {}) == 0;
}

}  // namespace

std::vector<Mark> ListMarks(SiteMgr& manager) {
  std::vector<Mark> all;
  for (const int number : manager.ListMarkedByUser()) {
    const int word = manager.GetUrlFtpMember({kKindPath, number});
    all.push_back({Take(manager.UrlPath(number)), word & kUserMarks});
  }
  std::ranges::sort(all, {}, &Mark::path);
  return all;
}

int SetMarks(SiteMgr& manager, const std::vector<Mark>& marks) {
  const std::string siteFolder = Take(manager.GetSiteProfDir(kSlotSiteFolder));
  for (const Mark& mark : marks) {
    const int number = manager.AddPath(mark.path, siteFolder, 1);
    if (manager.SetFtpFamily({kKindPath, number}, static_cast<unsigned>(mark.marks)) != 0) {
      return -1;
    }
  }
  return 0;
}

bool MayBeTorn(const std::string& tables) {
  return Exists(tables) && ReadNote(tables).start != StartOfMachine();
}

std::vector<Mark> NotedMarks(const std::string& tables) {
  return ReadNote(tables).marks;
}

bool NoteUnsynced(const std::string& tables, const std::vector<Mark>& marks) {
  if (!waits) return true;
  const Note note{StartOfMachine(), marks};
  if (note.start.empty()) return false;
  return (Exists(tables) && ReadNote(tables) == note) || WriteNote(tables, note);
}

bool EndUnsynced(const std::string& tables) {
  if (!Exists(tables)) return true;
  std::vector<std::string> files;
  std::error_code error;
  fs::directory_iterator entry(PathOf(tables), error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::error_code none;
    if (entry->is_regular_file(none)) files.push_back(NameOf(entry->path().filename()));
  }
  const std::string path = FolderPath(tables);
  if (error || SiteMgr::SyncFolder(path, files) != 0) return false;
  return fs::remove(PathOf(tables) / kNote, error) && SiteMgr::SyncFolder(path, {}) == 0;
}

void ForgetUnsynced(const std::string& tables) {
  std::error_code ignored;
  for (const char* const name : {kNote, kNewNote}) fs::remove(PathOf(tables) / name, ignored);
}

NoWaiting::NoWaiting() {
  SiteMgr::SetSyncing(false);
}

NoWaiting::~NoWaiting() {
  SiteMgr::SetSyncing(waits);
}

void NeverWait() {
  waits = false;
  SiteMgr::SetSyncing(false);
}

}  // namespace zvrsit::cli
