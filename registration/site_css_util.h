// Registers what the style sheets of a page refer to.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "registration/target_registrar.h"

namespace zvrsit {

class CCSSControl;
class CCSSFileTree;
class Document;
class KeptPlaces;
class SiteLinkDB;
class SiteMgrBase;
class SitePathDB;
class SiteUrlDB;
class SiteLinkRec;

// The LT_ code of what a style sheet refers to, for a Type_ constant of CCSSControl.
std::uint32_t StyleLinkType(int nodeType);

// Walks the file tree of a page or a sheet, enters every file and URL in the tables, and writes a
// link of a LT_CSS_ type from each file to what it refers to. Lives for one page or sheet.
//
// A page is registered as it is now. A sheet below it is registered from its own file. This happens
// at most once in an operation of the manager, and only if no style link leads from the sheet yet.
// So sheets that many pages share are read once, and saving a page does not double the links of its
// sheets. A sheet that takes its encoding from a page, and was registered before this page, is
// registered again.
class SiteCSSUtil {
 public:
  // `siteRoot` is the site folder: files outside of it do not count as existing.
  SiteCSSUtil(SiteMgrBase* manager, const std::string& siteRoot);
  virtual ~SiteCSSUtil() = default;
  SiteCSSUtil(const SiteCSSUtil&) = delete;
  SiteCSSUtil& operator=(const SiteCSSUtil&) = delete;

  // The sheets of the page at `path`. A null document is read from the file. 0, or -1 when no
  // site is open, a table or the style-sheet library is missing, or the page cannot be registered.
  [[nodiscard]] int CollectPage(const std::string& path, Document* document);
  // The sheet at `path`; one that cannot be read refers to nothing. Results as above.
  [[nodiscard]] int CollectSheet(const std::string& path);

  // The label of the encoding that the sheet at `path` gets from outside; `sheet` is its number in
  // the path table. It is that of the first page or sheet that refers to it by LINK or @import. If
  // that one has none either, what refers to it decides, and so on. Empty when nobody says one, or
  // when the sheet needs none: it says its own, or has ASCII characters only.
  std::string CharsetOf(int sheet, const std::string& path) const;

  // Registers one node, and a link to each of its children, without going further down. 0, or -1
  // when a table or the node is missing or the node cannot be registered. A child that cannot be
  // registered is left out.
  int RegisterTreeNode(const std::string* node, CCSSFileTree& tree, const std::string& siteRoot);

 private:
  bool IsReady() const;
  [[nodiscard]] int RegisterPage(const std::string* page, CCSSFileTree& tree,
                                 const Document* document);
  bool DependsOnCharset(const std::string& path) const;
  std::string CharsetOfReferrer(int sheet) const;
  bool WaitsForPage(int sheet);
  void RegisterSheets(CCSSFileTree& tree, const std::string* first);
  bool RegisterSheet(CCSSFileTree& tree, const std::string* sheet);
  bool IsRedirected(const std::string& sheet) const;
  void NoteTraits(CCSSFileTree& tree, const std::string* sheet);
  void RegisterIfMisread(const std::string& path, int sheet);
  std::set<std::string> ListStyleTexts(int sheet) const;
  void DeleteStyleLinks(int sheet);
  void RegisterChild(int source, CCSSFileTree& tree, const std::string* child,
                     const std::string& siteRoot);
  UrlID AddPlace(std::string_view text, const std::string& place, bool isExternal,
                 const std::string& siteRoot);
  [[nodiscard]] int AddFile(const std::string& path, const std::string& siteRoot);
  std::vector<SiteLinkRec> ListStyleLinks(int pathNumber) const;
  bool HasStyleLinks(int pathNumber) const;
  std::unordered_set<std::int32_t>& Registered();
  int OffsetInFile(int offset) const;

  SiteMgrBase* manager_;
  CCSSControl* cssControl_;
  SitePathDB* pathTable_;
  SiteUrlDB* urlTable_;
  SiteLinkDB* linkTable_;
  TargetRegistrar registrar_;
  std::string siteRoot_;
  bool inPage_ = false;           // the references being registered are the page's own
  KeptPlaces* places_ = nullptr;  // of that page; null when nobody wants them
  int sheet_ = -1;                // the path number of the sheet that is collected for its own sake
  std::unordered_set<std::int32_t> registered_;  // in place of the operation's, outside of one
};

}  // namespace zvrsit
