// Registers what an HTML page holds: its title, META properties and named anchors in the page's
// record, and one link for every reference.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "links/extractor.h"
#include "registration/target_registrar.h"
#include "storage/records.h"
#include "storage/site_var_rec_db.h"
#include "util/url_id.h"

namespace zvrsit {

class DOM;
class Document;
class KeptPlaces;
class SiteFixRecDB;
class SiteLinkDB;
class SiteMgrBase;
class SitePathDB;
class SiteUrlDB;
struct LinkMemo;

// One object serves one page and lives for one save. It holds a copy of the page's record, and
// writes it back when it is destroyed. Until then nobody else may change the record. What CheckPath
// finds out about the page itself in this time is lost, on purpose.
class SiteDOMUtil {
 public:
  // The handles stay the caller's. The page is read under the manager's link rules.
  SiteDOMUtil(SiteMgrBase* manager, DOM* parser, SitePathDB* pathTable, SiteUrlDB* urlTable,
              SiteLinkDB* linkTable, const std::string& pagePath);
  // Writes the page's record back if it differs from the one in the table.
  virtual ~SiteDOMUtil();
  SiteDOMUtil(const SiteDOMUtil&) = delete;
  SiteDOMUtil& operator=(const SiteDOMUtil&) = delete;

  // Adds the links of `document`. `siteRoot` is the folder that "/" names. 0 or -1. -1 for a null
  // document or parser, an empty path, a page that is not registered, and a text that cannot be
  // stored. When a target cannot be entered, RuleFlags::goesOnAfterFailure says whether only it is
  // left out; else -1, and the rest of the page is lost. Nothing is rolled back.
  [[nodiscard]] int CollectLinks(const std::string& siteRoot, Document* document);
  // The same where files count as the site's below `siteFolder` only
  // (RuleFlags::knowsFilesBySiteFolder).
  [[nodiscard]] int CollectLinks(const std::string& siteRoot, Document* document,
                                 const std::string& siteFolder);

 private:
  struct MemoKey;

  bool CountsInItsFolder() const;
  void LookAhead();
  [[nodiscard]] int StoreTitle();
  [[nodiscard]] int StoreMetas();
  [[nodiscard]] int StoreProperty(std::int32_t& word, std::string_view text);
  [[nodiscard]] int StoreAnchors();
  [[nodiscard]] int AddRows(std::size_t begin, std::size_t end);
  void UseBase(std::int32_t base);
  [[nodiscard]] Outcome AddRow(const LinkRow& row, const FoundString& guess);
  bool LeadsToFolder(std::string_view target);
  [[nodiscard]] Outcome AddNewTarget(const LinkRow& row, bool takesName, FoundString& text,
                                     UrlID& target);
  Outcome AddLink(const LinkRow& row, const UrlID& target, FoundString& text);
  [[nodiscard]] Outcome AddCodeBase(const LinkRow& applet, const UrlID& target);
  Outcome AddCodeBaseFile(const LinkRow& applet, const std::string& path);

  MemoKey MemoKeyOf(std::string_view target) const;
  [[nodiscard]] Outcome FindTarget(const LinkRow& row, const MemoKey& key, bool takesName,
                                   UrlID& target);
  [[nodiscard]] Outcome RegisterTarget(std::string_view target, UrlID& place);
  [[nodiscard]] Outcome RegisterFile(std::string_view target, std::string& path, UrlID& place);
  bool TakesDefaultName(const LinkRow& row) const;

  SiteMgrBase* manager;
  DOM* parser;
  SitePathDB* pathTable;
  SiteLinkDB* linkTable;
  Document* document = nullptr;
  std::string pagePath;
  SitePathRec pageRecord;
  SiteVarRecDB* pathStrings;
  std::int32_t pageId = -1;
  SiteVarRecDB* linkTexts_ = nullptr;  // of the link table
  KeptPlaces* places_ = nullptr;       // the operation's
  UrlID self_;                         // what a target that is only a fragment names, once known
  std::int32_t base_ = -1;             // what targets are taken from now

  const LinkRules linkRules_;
  const RuleFlags& rules_;  // of these
  TargetRegistrar registrar_;
  std::string siteRoot_;            // what "/" names
  std::string siteFolder_;          // what AddPath and CheckPath are given
  std::shared_ptr<LinkMemo> memo_;  // the operation's, or one for this page
};

}  // namespace zvrsit
