// The older site manager as programs use it: it speaks in file names and URLs, gives results one
// at a time, and keeps a last error.
#pragma once

#include <array>
#include <string>

#include "legacy/sit_mgr_base.h"

namespace zvrsit {

// The fields of a site profile; an empty text is one that is not set.
struct SitSiteProperty {
  std::string topFile;
  std::array<std::string, 10> dir;  // 0 document root, 1 site folder, 9 the live URL
  std::string servProf;             // the name of its server profile
  std::string lastUsedDir;
  int useDocRoot = 0;
  bool operator==(const SitSiteProperty&) const = default;
};

// The fields of a server profile; passwords as the user typed them.
struct SitServProperty {
  std::string host;
  std::string user;
  std::string password;
  std::string dir;
  std::string firewallHost;
  std::string firewallUser;
  std::string firewallPassword;
  std::string initRemoteDir;
  std::string mruDirRemote;
  std::string mruDirLocal;
  std::string asciiSuffix;
  int firewall = 0;
  int fxferType = 0;
  int initDirMode = 0;
  int lockDir = 0;
  bool operator==(const SitServProperty&) const = default;
};

// What is known of the links between two entries.
struct SitLinkProperty {
  int type = kSitLinkAnchor;  // sit_link_type.h
  std::string asIsUrl;        // as written in the page; empty for none
  std::string imgAlt;         // empty for none
  int count = 0;              // references; set by Get only
  int status = 0;             // status word of the target; set by Get only
};

// Enumerations give the next result with each call. Each operation has one position for the whole
// process. Queries of links and relations share the memory of the pair stores, so a question about
// another entry starts from the beginning. A reset argument other than 0 goes back to the start and
// gives no result. At the end an enumeration gives null (or -1) with last error 15 or 16, and the
// next call starts again.
//
// The changing operations each form one group of the undo history.
class ZVRSIT_API SitMgr : public SitMgrBase {
 public:
  using SitMgrBase::SitMgrBase;

  // --- Errors ------------------------------------------------------------------------------
  int GetLastError() const { return lastError(); }
  int ClearLastError();
  // If the last error is not 0, undoes the last step or group. Then, in every case, rebuilds the
  // open site; entries keep their numbers. Gives 0, and the last error is 0.
  int RecoverFromLastError();

  // --- Profiles ----------------------------------------------------------------------------
  // The names, deleted profiles left out.
  std::string* EnumSiteProf(int reset);
  std::string* EnumServProf(int reset);
  // Set makes the profile if no profile has that name, and writes the fields that differ. An empty
  // text does not change a field, so a field that is set cannot be emptied. 0 or -1; 11 for a name
  // that is refused.
  int SetSiteProf(const std::string& name, const SitSiteProperty& property);
  int SetServProf(const std::string& name, const SitServProperty& property);
  // 14 for a name that there is not.
  int GetSiteProf(const std::string& name, SitSiteProperty& property);
  int GetServProf(const std::string& name, SitServProperty& property);

  // --- Files of the open site --------------------------------------------------------------
  // Registers a saved file and its folders. The title, META texts and links of a page are replaced
  // by those of `document`, or of the file on disk when it is null. The document stays the
  // caller's.
  int Save(const std::string& path, Document* document = nullptr);
  // Takes a file out: its links and texts are deleted. If other entries link to it, its entry
  // stays, as a missing file; else the entry goes with its relations. The disk is not changed. 15
  // for an unknown path.
  int Remove(const std::string& path);
  // Removes `from` and saves `to`, which is read from disk.
  int Move(const std::string& from, const std::string& to);
  // Fills the site again from its folder, then marks the family. The history holds nothing of this.
  int SiteRebuildDB(int complete);
  // Marks the files that links reach from the top file (kMemberReached), and no others. 17 without
  // a top file, 15 when it is not registered.
  int UpdateLinkFamily();

  // --- URLs --------------------------------------------------------------------------------
  std::string* EnumPath(int reset);  // files of the site
  std::string* EnumUrl(int reset);   // external URLs
  // Everything about an entry but its key. 15 for a text that is in neither file.
  int SetUrlProperty(const std::string& url, const SitUrlRec& property);
  int GetUrlProperty(const std::string& url, SitUrlRec& property);
  // The next file whose title, keywords or description holds `word`, in any letter case.
  std::string* SearchKeyword(int reset, const std::string& word);

  // --- Links -------------------------------------------------------------------------------
  // All links by number. 0 with both ends as new strings, or -1. 7 when the source of a link has no
  // text or its target never was an entry; 15 when its target was deleted.
  int EnumLink(int reset, std::string** from, std::string** to);
  // The target of the next link from `url`, the source of the next link to it. For ends that are
  // no entries the last errors are those of EnumLink; 15 is then not the end.
  std::string* GetForeLinks(const std::string& url);
  std::string* GetBackLinks(const std::string& url);
  // The target of the next link from `url`, if that link is broken. Null with last error 0 if it is
  // not broken, and null with 15 at the end.
  std::string* GetBrokenLinks(const std::string& url);
  // The first link between two entries. Set writes the type, the text and the alternative text,
  // each text unless it is empty; 11 for a type outside 1 to 13. 15 when there is no such link.
  int SetLinkProperty(const std::string& from, const std::string& to,
                      const SitLinkProperty& property);
  int GetLinkProperty(const std::string& from, const std::string& to, SitLinkProperty& property);

  // --- Folders -----------------------------------------------------------------------------
  std::string* EnumFolder(int reset);
  // The next folder, or the next file, in a folder; the next folder that holds a folder or file.
  // The first two share one position.
  std::string* GetSubFolder(const std::string& folder);
  std::string* GetChild(const std::string& folder);
  std::string* GetRel(const std::string& path);
  // Registers a folder with the folders above it, up to the site folder; its number or -1.
  int FolderNew(const std::string& folder);

 private:
  enum class LinkQuery { kFore, kBack, kBroken };
  ZVRSIT_LOCAL std::string* NextLink(const std::string& url, LinkQuery query);
  ZVRSIT_LOCAL std::string* NextChild(const std::string& folder, int kind);
  ZVRSIT_LOCAL std::string* NextEntry(int reset, int kind, int& position);
  ZVRSIT_LOCAL int FindLink(const std::string& from, const std::string& to);
  ZVRSIT_LOCAL int DropEntry(const UrlID& id);
};

}  // namespace zvrsit
