// Files that the application removed or moved, reported after the fact.
#include <memory>
#include <vector>

#include "manager/record_access.h"
#include "manager/site_mgr.h"

namespace zvrsit {

int SiteMgr::Remove(const std::string& path, int) {
  if (RemoveOne(path) < 0) return -1;
  FollowFolderLinks(path);
  return 0;
}

// Takes a file out, and leaves the pages that link to its folder as they are.
int SiteMgr::RemoveOne(const std::string& path) {
  if (path.empty() || !HasFiles(pathDB)) return -1;
  const int number = pathDB->Find(path);
  if (number < 0 || DeleteForeLinks(number) < 0) return -1;

  SitePathRec rec;
  if (pathDB->Get(number, rec) < 0 || pathDB->ReleaseTexts(rec) < 0 || pathDB->Update(rec) < 0) {
    return -1;
  }
  const int isTarget = linkDB->IsTarget(PathID(number));
  if (isTarget < 0) return -1;
  if (isTarget == 0) return DeleteEntry(number);
  rec.exists = 0;
  return pathDB->Update(rec);
}

// Deletes the links of a file, each as often as it occurs, and raises the links-changed flag when
// there were any.
int SiteMgr::DeleteForeLinks(int pathNumber) {
  const std::unique_ptr<std::vector<int>> links(GetForeLinks(PathID(pathNumber)));
  if (links == nullptr) return -1;
  if (!links->empty()) linksChanged = 1;
  for (const int number : *links) {
    if (linkDB->DeleteAll(number) < 0) return -1;
  }
  return 0;
}

// Deletes a file's entry and its relations to folders.
int SiteMgr::DeleteEntry(int pathNumber) {
  if (DelPath(pathNumber) < 0) return -1;
  std::vector<int> relations;
  if (relDB == nullptr || relDB->Query(kAnyUrlID, PathID(pathNumber), relations) < 0) {
    return -1;
  }
  for (const int relation : relations) DelRel(relation);
  return 0;
}

// The moved file is read from disk at its new place.
int SiteMgr::Move(const std::string& from, const std::string& to) {
  return Remove(from, 1) < 0 || Save(to, nullptr) < 0 ? -1 : 0;
}

}  // namespace zvrsit
