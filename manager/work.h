// The operations of SiteMgr that are not for the application. An object is made where one is
// needed: Work(*this).Save(...).
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "manager/site_mgr.h"
#include "manager_base/inside.h"

namespace zvrsit {

class SiteMgr::Work : public SiteMgrBase::Work {
 public:
  explicit Work(SiteMgr& manager) : SiteMgrBase::Work(manager), m_(manager) {}

  bool ReadSiteFolder(std::string& siteDir) const { return ProfileUse(m_).ReadSiteFolder(siteDir); }
  // The folder that "/" names in a link.
  static const std::string& RootOf(const SiteMgr& manager, const std::string& siteDir) {
    return manager.docRoot != nullptr && !manager.docRoot->empty() ? *manager.docRoot : siteDir;
  }

  // Pages (save.cc, file_operations.cc). Save and Remove are those of SiteMgr without the pages
  // that link to the file's folder. FollowFolderLinks (folder_links.cc) reads these pages again, if
  // their links lead elsewhere now that the file has come or gone. This happens when the file
  // stands for its folder, or is the first or the last one below some folder; when it may be meant
  // without its extension; and when a rule of `_redirects` may answer in its place. Without
  // RuleFlags::findsFolderDocuments nothing is read again: a folder's document has one name,
  // whether or not it is there.
  bool IsThere(const std::string& path) const;  // as the tables have it
  int Save(const std::string& path, Document* doc);
  int Remove(const std::string& path);
  // Deletes the links of a file, each as often as it occurs, and raises the links-changed flag when
  // there were any.
  [[nodiscard]] int DeleteForeLinks(int pathNumber);
  // Deletes a file's entry and its relations to folders.
  [[nodiscard]] int DeleteEntry(int pathNumber);
  void FollowFolderLinks(const std::string& path, bool cameOrWent);
  static std::vector<std::string> ListMovedLinkSources(const SiteMgr& manager, bool all);
  // The same when much has come or gone at once: adds the pages whose links may lead elsewhere now.
  // Folders have no `\` at their ends. Nothing without RuleFlags::findsFolderDocuments; rules of
  // `_redirects` are not thought of.
  struct CameOrGone {
    std::vector<std::string> files;
    std::vector<std::string> folders;
  };
  std::vector<std::string> ListSourcesOf(const CameOrGone& moved) const;
  // Takes out those for which a rule of `_redirects` leads to a fragment of its own.
  void DropReplacedFragments(std::vector<MissingFragment>& missing) const;
  // TraverseLinks, which does not note anything. Sets `unread` when the file had to be read and
  // could not be.
  [[nodiscard]] int Traverse(const std::string& siteDir, const std::string& path, Document* doc,
                             bool& unread);
  // Notes whether the links of a file that is there are unknown, or not all known.
  void SetUnread(int pathNumber, bool unread);
  // With RuleFlags::readsWhatIsLinked, notes the files to which page number `saved` is the first to
  // link: nothing has made them be read yet.
  void MarkFound(int saved);

  // Keeps the IDs of a page whose links are collected, if IDs are kept at all. If the page was not
  // read from its file, `document` is null, and its IDs are read when they are needed
  // (fragments.cc).
  void NoteIds(const std::string& path, const Document* document);
  // Has the IDs of a file in `ids`; false when it is no page of the site, or cannot be read.
  bool ReadIds(int pathNumber, PageIds& ids);

  // The number of the open site's top file in the path table: kNoTopFile when the profile has none,
  // -1 when it cannot be read or is not registered (families.cc).
  static constexpr int kNoTopFile = -2;
  int FindTopFile() const;
  // The number of a file in the folder of the site; -1 when it is not registered, and without
  // RuleFlags::readsSiteData.
  int FindSiteFile(std::string_view name) const;
  // The files from which the family is reached, the top file first. Those that are not registered
  // are left out.
  std::vector<int> ListRoots() const;
  // Marks the family from the beginning, whatever is marked now: 0 or -1. For many files in less
  // time than UpdateLinkFamily.
  [[nodiscard]] int MarkFamilyAnew();

  // The record numbers of all site profiles; false when they cannot be read (peeping.cc).
  bool ListSites(std::vector<int>& sites) const;

  // Calls use(files) with the `\` paths of a site's record files, while the site is held
  // (verify.cc). 0, or -1 when there is no such site or it is in use.
  template <class Use>
  [[nodiscard]] int WithTablesOf(const std::string& siteName, Use use);

  // Profiles of sites (site_profiles.cc, site_profile_fields.cc). A `siteId` below 0 is the open
  // site.
  [[nodiscard]] int StoreProfile(int number, const SiteProfile& profile);
  [[nodiscard]] int MakeTableFolder(int number);
  // Updates what is kept of the open site's profile: 0 or -1.
  int OpenSiteChanged();
  int SiteNumber(int siteId) const { return siteId < 0 ? m_.openSiteId : siteId; }
  using SiteField = std::int32_t SiteSiteRec::*;
  std::string* SiteText(SiteField field, int siteId);
  [[nodiscard]] int SetSiteText(SiteField field, const std::string& text, int siteId);

  // Profiles of servers (server_profiles.cc).
  using ServField = std::int32_t SiteServRec::*;
  int WithServProf(const std::function<int(SiteServProfDB&)>& use);
  std::string* ServText(const std::string& name, ServField field);
  [[nodiscard]] int SetServText(const std::string& name, ServField field, const std::string& text);
  [[nodiscard]] int ServNumber(const std::string& name, ServField field);
  [[nodiscard]] int SetServNumber(const std::string& name, ServField field, int value);

 private:
  void SaveAll(const std::vector<std::string>& sources, const std::string& but);
  [[nodiscard]] int ListFileTargets(int pathNumber, std::vector<int>& targets);
  [[nodiscard]] int RegisterAnew(int number, const std::string& path, const std::string& siteDir);
  [[nodiscard]] int CollectPageLinks(const std::string& siteDir, const std::string& path,
                                     Document* doc);

  SiteMgr& m_;
};

}  // namespace zvrsit
