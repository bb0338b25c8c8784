// Operations that are there for the application's sake and leave the tables alone.
#include <cstring>

#include "manager/site_mgr.h"

namespace zvrsit {

namespace {

// What GeneralOperation is asked to do.
constexpr int kDelete = 0;
constexpr int kCopy = 1;
constexpr int kMove = 2;
constexpr int kRename = 3;

std::vector<std::string> Split(const char* multiString) {
  std::vector<std::string> texts;
  if (multiString == nullptr) return texts;
  for (const char* text = multiString; *text != '\0'; text += std::strlen(text) + 1) {
    texts.emplace_back(text);
  }
  return texts;
}

}  // namespace

int SiteMgr::GeneralOperation(const char* fromList, const char* toList, int op) {
  const std::vector<std::string> from = Split(fromList);
  const std::vector<std::string> to = Split(toList);
  switch (op) {
    case kDelete:
      return GeneralDelete(from);
    case kCopy:
      return GeneralCopy(from, to);
    case kMove:
      return GeneralMove(from, to);
    case kRename:
      return GeneralRename(from, to);
    default:
      return 0;
  }
}

int SiteMgr::GeneralDelete(const std::vector<std::string>&) {
  return pathDB == nullptr || folderDB == nullptr || relDB == nullptr ? -1 : 0;
}

int SiteMgr::GeneralCopy(const std::vector<std::string>&, const std::vector<std::string>&) {
  return 0;
}

int SiteMgr::GeneralMove(const std::vector<std::string>&, const std::vector<std::string>&) {
  return 0;
}

int SiteMgr::GeneralRename(const std::vector<std::string>&, const std::vector<std::string>&) {
  return 0;
}

int SiteMgr::FixSite() {
  return 0;
}

int SiteMgr::FixSiteProf() {
  return 0;
}

int SiteMgr::FixServProf() {
  return 0;
}

}  // namespace zvrsit
