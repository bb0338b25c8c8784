// The style-sheet library's front: reads the sheets of pages and gives their file trees.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "css/css_file_tree.h"
#include "links/link_rules.h"
#include "platform/api.h"

namespace zvrsit {

class Attribute;
class DOM;
class Document;
class Element;
class PageParts;
class ReferenceResolver;
struct CssNode;
enum class CssSource : std::uint8_t;
struct CssReference;
struct PagePart;

// Nothing that was read is kept beyond its tree: a tree shows pages and sheets as they are on the
// disk. One thread at a time uses a control and its trees.
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
  // The folders of the open site: the site folder, which ends in `\`, and the folders of slots 7
  // and 3 of its profile, empty when unset. The latter two are where the application saves parts
  // of a page; no reference is resolved through them.
  void SetSiteSaveDir(const std::string& siteFolder, const std::string& slot7,
                      const std::string& slot3);
  // The folder that "/" names; the site folder where this is not called or `folder` is empty.
  void SetSiteDocumentRoot(const std::string& folder);
  // How references are resolved, and whether sheets outside of the site folder are read (under
  // the classic rules only).
  void SetLinkRules(LinkRules rules);
  // The URL under which the site folder is served, for the web rules; to be said after the folders
  // and the rules. One that is no absolute http or https URL is as none.
  void SetLiveUrl(const std::string& url);

  // The tree of a page: its linked sheets, what its STYLE elements import and the addresses in
  // them, then those in style attributes. A null document is read from the file at `path`; when
  // that fails, the tree has no root. By the web rules a sheet that does not say its encoding has
  // that of the sheet that imports it, or of the page in its file.
  CCSSFileTree GetFileTree(const std::string& path, Document* document);
  // The tree of a sheet. One that cannot be read is a root without children.
  CCSSFileTree GetFileTreeFromCSS(const std::string& path);
  // The same for a sheet of a page or sheet in another encoding than the code page: `charset` is
  // its label, and counts for sheets that do not say their own. Empty: the code page.
  CCSSFileTree GetFileTreeFromCSS(const std::string& path, const std::string& charset);

  // The label of the encoding of the page at `path`; empty when it has none or cannot be read.
  static std::string CharsetOfPage(const std::string& path);
  // The label of the encoding that the sheet at `path` says it has; empty when it says none.
  static std::string CharsetOfSheet(const std::string& path);
  // Whether the sheet at `path` does not say its encoding, and needs one because it is not ASCII.
  static bool DependsOnCharset(const std::string& path);

 private:
  friend class CCSSFileTree;

  // What a sheet refers to; nothing when it cannot be read.
  ZVRSIT_LOCAL std::vector<CssNode> ReadSheet(const CssNode& sheet, CCSSFileTree& tree);

  ZVRSIT_LOCAL void CollectPage(const std::string& path, const Document& document,
                                CCSSFileTree& tree);
  ZVRSIT_LOCAL void CollectPart(const PagePart& part, CCSSFileTree& tree);
  ZVRSIT_LOCAL void AddLinks(const PagePart& part, CCSSFileTree& tree);
  ZVRSIT_LOCAL bool Counts(const Element& element) const;
  // All append to found_.
  ZVRSIT_LOCAL void FindInStyles(const Document& document);
  ZVRSIT_LOCAL void FindInSvgStyle(const Document& document, const Element& style);
  ZVRSIT_LOCAL void FindInStyleAttributes(const Document& document);
  ZVRSIT_LOCAL void FindInPresentationAttributes(const Document& document);
  ZVRSIT_LOCAL void FindInAttribute(const Document& document, const Attribute& attribute,
                                    std::string_view property);
  ZVRSIT_LOCAL void FindInPage(const Document& document, std::string_view raw,
                               std::string_view decoded, CssSource source,
                               std::string_view property = {});

  // References are taken from the file at `path` from here on.
  ZVRSIT_LOCAL void BeginFile(const std::string& path);
  // The same for the page at hand and one of its bases.
  ZVRSIT_LOCAL void TurnToBase(std::int32_t base);
  // Those of found_, in a part of the page. `atOnce`: a BASE behind them does not count.
  ZVRSIT_LOCAL void AddPageReferences(const PagePart& part, bool atOnce,
                                      std::vector<CssNode>& nodes);
  ZVRSIT_LOCAL bool AddNode(std::string_view declared, int offset, int type,
                            std::vector<CssNode>& nodes);
  ZVRSIT_LOCAL bool IsReadable(const std::string& path) const;

  DOM* dom_ = nullptr;
  std::string siteFolder_;
  std::string slot7_;
  std::string slot3_;
  std::string documentRoot_;
  std::unique_ptr<ReferenceResolver> resolver_;
  std::string page_;  // whose parts_ are being read
  std::unique_ptr<PageParts> parts_;
  std::int32_t base_;                // of parts_, which references are taken from now
  std::vector<CssReference> found_;  // scratch
  std::string rel_;                  // scratch
  std::string href_;                 // scratch
};

}  // namespace zvrsit
