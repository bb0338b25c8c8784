// Files that the application has removed or moved, and reports now.
#include <memory>
#include <vector>

#include "manager/record_access.h"
#include "manager/work.h"

namespace zvrsit {

int SiteMgr::Remove(const std::string& path, int) {
  Work work(*this);
  if (work.Remove(path) < 0) return -1;
  inside->cameOrWent.push_back(path);
  work.FollowFolderLinks(path, true);
  return 0;
}

// Takes a file out, and does not read the pages that link to its folder.
int SiteMgr::Work::Remove(const std::string& path) {
  if (path.empty() || !HasFiles(m_.pathDB)) return -1;
  const int number = m_.pathDB->Find(path);
  if (number < 0 || DeleteForeLinks(number) < 0) return -1;
  if (m_.inside->kept != nullptr) m_.inside->kept->ids.Forget(number);

  SitePathRec rec;
  if (m_.pathDB->Get(number, rec) < 0 || m_.pathDB->ReleaseTexts(rec) < 0 ||
      m_.pathDB->Update(rec) < 0) {
    return -1;
  }
  const int isTarget = m_.linkDB->IsTarget(PathID(number));
  if (isTarget < 0) return -1;
  if (isTarget == 0) return DeleteEntry(number);
  rec.exists = 0;
  return m_.pathDB->Update(rec);
}

int SiteMgr::Work::DeleteForeLinks(int pathNumber) {
  const std::unique_ptr<std::vector<int>> links(m_.GetForeLinks(PathID(pathNumber)));
  if (links == nullptr) return -1;
  if (!links->empty()) m_.linksChanged = 1;
  for (const int number : *links) {
    if (m_.linkDB->DeleteAll(number) < 0) return -1;
  }
  return 0;
}

int SiteMgr::Work::DeleteEntry(int pathNumber) {
  if (m_.DelPath(pathNumber) < 0) return -1;
  std::vector<int> relations;
  if (m_.relDB == nullptr || m_.relDB->Query(kAnyUrlID, PathID(pathNumber), relations) < 0) {
    return -1;
  }
  for (const int relation : relations) m_.DelRel(relation);
  return 0;
}

// The moved file is read from disk at its new place.
int SiteMgr::Move(const std::string& from, const std::string& to) {
  return Remove(from, 1) < 0 || Save(to, nullptr) < 0 ? -1 : 0;
}

}  // namespace zvrsit
