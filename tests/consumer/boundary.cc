// What crosses the boundary of the library as it is: an exception, and two classes whose layout is
// promised. Argument: an empty folder for the database, ending in the separator of folders.
#include <zvrsit40.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>

namespace {

using zvrsit::SiteRecCell;
using zvrsit::UrlID;

static_assert(sizeof(UrlID) == 8 && offsetof(UrlID, kind) == 0 && offsetof(UrlID, id) == 4);

// A cell, member for member.
struct Cell {
  void* functions;
  std::int32_t kind, id;
  std::int32_t linkType;
  std::string name, title;
  std::int32_t fileType, time, size, flag;
};
static_assert(sizeof(SiteRecCell) == sizeof(Cell));
static_assert(offsetof(Cell, kind) == sizeof(void*) &&
              offsetof(Cell, linkType) == sizeof(void*) + 8);
#if defined(_WIN32)
static_assert(sizeof(SiteRecCell) == (sizeof(void*) == 4 ? 80 : 104));
#endif

std::int32_t WordAt(const SiteRecCell& cell, std::size_t offset) {
  std::int32_t word;
  std::memcpy(&word, reinterpret_cast<const char*>(&cell) + offset, sizeof word);
  return word;
}

const std::string& StringAt(const SiteRecCell& cell, std::size_t offset) {
  return *reinterpret_cast<const std::string*>(reinterpret_cast<const char*>(&cell) + offset);
}

bool CellIsLaidOut() {
  SiteRecCell cell;
  cell.SetID(UrlID(11, 12));
  cell.SetLinkType(13);
  cell.SetName("the name");
  cell.SetTitle("a title of more than a few characters");
  cell.SetFileType(14);
  cell.SetTime(15);
  cell.SetSize(16);
  cell.SetFlag(17);
  return WordAt(cell, offsetof(Cell, kind)) == 11 && WordAt(cell, offsetof(Cell, id)) == 12 &&
         WordAt(cell, offsetof(Cell, linkType)) == 13 &&
         StringAt(cell, offsetof(Cell, name)) == cell.GetName() &&
         StringAt(cell, offsetof(Cell, title)) == cell.GetTitle() &&
         WordAt(cell, offsetof(Cell, fileType)) == 14 && WordAt(cell, offsetof(Cell, time)) == 15 &&
         WordAt(cell, offsetof(Cell, size)) == 16 && WordAt(cell, offsetof(Cell, flag)) == 17;
}

// What deleting the first URL of a site without URLs throws.
std::string ThrownByTheLibrary(zvrsit::SiteMgr& manager) {
  try {
    manager.DelUrl(0);
  } catch (const std::out_of_range& error) {
    return error.what();
  }
  return "";
}

bool OpenSite(zvrsit::SiteMgr& manager, const std::string& folder) {
  std::fclose(std::fopen((folder + "index.htm").c_str(), "w"));
  std::string dir;
  zvrsit::platform::FromNativePath(folder, dir);
  manager.setDB(dir.c_str(), "sites.R", "servers.R", 0);
  zvrsit::SiteProfile profile;
  profile.folders[zvrsit::kSlotSiteFolder] = dir;
  profile.topFile = dir + "index.htm";
  return manager.SetSiteProf("empty", profile) >= 0 && manager.SiteOpen("empty", 0) == 0;
}

}  // namespace

// The library that runs is of the version that the headers are of.
bool VersionsAgree() {
  char version[32];
  std::snprintf(version, sizeof version, "%d.%d.%d", ZVRSIT_VERSION_MAJOR, ZVRSIT_VERSION_MINOR,
                ZVRSIT_VERSION_PATCH);
  static_assert(ZVRSIT_VERSION_NUMBER / 100 == ZVRSIT_VERSION_MAJOR * 100 + ZVRSIT_VERSION_MINOR);
  return std::strcmp(version, zvrsit::Version()) == 0;
}

int main(int, char** argv) {
  zvrsit::DOM dom;
  zvrsit::SiteMgr manager;
  manager.setDom(&dom);
  if (!OpenSite(manager, argv[1])) return 1;
  const std::string thrown = ThrownByTheLibrary(manager);
  manager.SiteClose();
  std::printf("cell of %d bytes, thrown: %s\n", static_cast<int>(sizeof(SiteRecCell)),
              thrown.c_str());
  if (!CellIsLaidOut()) return 2;
  if (!VersionsAgree()) return 4;
  return thrown == "invalid vector<T> subscript" ? 0 : 3;
}
