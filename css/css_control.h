// The style-sheet library's front: reads the sheets of pages and gives their file trees.
#pragma once

#include <memory>
#include <string>

#include "css/css_file_tree.h"
#include "links/link_rules.h"
#include "platform/api.h"

namespace zvrsit {

class DOM;
class Document;

// What was read is kept in its tree only, so a tree shows pages and sheets as they are on the disk.
// One thread at a time uses a control and its trees.
class ZVRSIT_API CCSSControl {
 public:
  // What CCSSFileTree::getType gives.
  static constexpr int Type_Other = 0;   // fonts, behaviours, custom properties; also the root
  static constexpr int Type_Link = 1;    // LINK with REL=STYLESHEET
  static constexpr int Type_Import = 2;  // @import
  static constexpr int Type_Image = 3;   // the value of a property that takes an image

  CCSSControl();
  ~CCSSControl();
  CCSSControl(const CCSSControl&) = delete;
  CCSSControl& operator=(const CCSSControl&) = delete;

  // The document library, which stays the caller's. Needed only to read pages from the disk.
  void SetObject(DOM* dom);

  // Forgets the folders and goes back to the classic link rules.
  void ClearSiteOption();
  // The folders of the open site. `siteFolder` ends in `\`. The other two are where the application
  // saves parts of a page (slots 7 and 3 of the profile). They are not used: no reference is
  // resolved through them.
  void SetSiteSaveDir(const std::string& siteFolder, const std::string& slot7,
                      const std::string& slot3);
  // The folder that "/" names; the site folder where this is not called or `folder` is empty.
  void SetSiteDocumentRoot(const std::string& folder);
  // How references are resolved, and (RuleFlags::readsSheetsOutside) whether sheets outside of the
  // site folder are read.
  void SetLinkRules(LinkRules rules);
  // The URL under which the site folder is served, for the web rules. To be called after the
  // folders and the rules. A text that is no absolute http or https URL means none.
  void SetLiveUrl(const std::string& url);

  // The tree of a page. First its linked sheets; then what its STYLE elements import, and the
  // addresses in them; then the addresses in style attributes. If `document` is null, the file at
  // `path` is read; when this fails, the tree has no root. With
  // RuleFlags::givesSheetsCharsetOfPage, a sheet that does not say its encoding has that of the
  // sheet that imports it, or of the page's file.
  CCSSFileTree GetFileTree(const std::string& path, Document* document);
  // The tree of a sheet. One that cannot be read is a root without children.
  CCSSFileTree GetFileTreeFromCSS(const std::string& path);
  // The same for a sheet that a page or sheet in another encoding refers to. `charset` is the label
  // of that encoding, or empty for the code page. It counts for sheets that do not say their own.
  CCSSFileTree GetFileTreeFromCSS(const std::string& path, const std::string& charset);

  // The label of the encoding of the page at `path`; empty when it has none or cannot be read.
  static std::string CharsetOfPage(const std::string& path);
  // The label of the encoding that the sheet at `path` says it has; empty when it says none.
  static std::string CharsetOfSheet(const std::string& path);
  // Whether the sheet at `path` does not say its encoding, and needs one because it is not ASCII.
  static bool DependsOnCharset(const std::string& path);

 private:
  friend class CCSSFileTree;
  class ZVRSIT_LOCAL Reader;  // css/css_reader.h

  std::unique_ptr<Reader> reader_;
};

}  // namespace zvrsit
