// Operations that exist for the application only, and do not change the tables.
#include <cstring>
#include <iterator>

#include "manager/site_mgr.h"

namespace zvrsit {

namespace {

using Texts = std::vector<std::string>;

// By the number that GeneralOperation is given.
constexpr int (*kOperations[])(SiteMgr& manager, const Texts& from, const Texts& to) = {
    [](SiteMgr& manager, const Texts& from, const Texts&) { return manager.GeneralDelete(from); },
    [](SiteMgr& manager, const Texts& from, const Texts& to) {
      return manager.GeneralCopy(from, to);
    },
    [](SiteMgr& manager, const Texts& from, const Texts& to) {
      return manager.GeneralMove(from, to);
    },
    [](SiteMgr& manager, const Texts& from, const Texts& to) {
      return manager.GeneralRename(from, to);
    },
};

Texts Split(const char* multiString) {
  Texts texts;
  if (multiString == nullptr) return texts;
  for (const char* text = multiString; *text != '\0'; text += std::strlen(text) + 1) {
    texts.emplace_back(text);
  }
  return texts;
}

}  // namespace

int SiteMgr::GeneralOperation(const char* fromList, const char* toList, int op) {
  if (op < 0 || op >= static_cast<int>(std::size(kOperations))) return 0;
  return kOperations[op](*this, Split(fromList), Split(toList));
}

int SiteMgr::GeneralDelete(const Texts&) {
  return pathDB == nullptr || folderDB == nullptr || relDB == nullptr ? -1 : 0;
}

int SiteMgr::GeneralCopy(const Texts&, const Texts&) {
  return 0;
}

int SiteMgr::GeneralMove(const Texts&, const Texts&) {
  return 0;
}

int SiteMgr::GeneralRename(const Texts&, const Texts&) {
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
