// What a page refers to: a function from a parsed document to rows, which knows no table of the
// site. Both generations of the manager read pages with it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "links/link_rules.h"
#include "links/link_type.h"
#include "links/page_parts.h"

namespace zvrsit {

class Attribute;
class Document;

// One reference of the page, in the order in which references are registered.
struct LinkRow {
  std::uint32_t type = 0;           // an LT_ code
  std::uint32_t offset = 0;         // byte offset of the attribute's value in the document's text;
                                    // in an inner document, of the SRCDOC
  std::string_view target;          // as written, character references decoded
  std::string_view alternative;     // ALT; empty when there is none
  bool withAlternative = false;     // IMG SRC and INPUT SRC: stored with alternative text
  bool isPrefix = false;            // stands for all addresses that begin so, not for a document
  bool ofSameElement = false;       // goes with the row before it (a map file with its image)
  std::int32_t base = kPageItself;  // what the target is taken from
};

// The META properties that a page record keeps, in its order, and the one that is a link.
enum class MetaKey : std::uint8_t {
  kLastModified,
  kExpires,
  kGenerator,
  kKeywords,
  kDescription,
  kContentType,
  kRefresh,
};
inline constexpr std::size_t kMetaProperties = 6;

struct MetaRow {
  MetaKey key;
  std::uint32_t offset = 0;  // of the CONTENT value
  // Never empty. For kRefresh the target: the whole CONTENT, or with
  // RuleFlags::parsesRefresh its URL.
  std::string_view content;
  std::int32_t base = kPageItself;  // of a refresh
};

// The rows of one page. The views point into the document's text or into memory of this object.
// They are good until the document is gone or the next page is extracted. An object that is used
// for page after page keeps its memory.
class PageRows {
 public:
  PageRows();
  ~PageRows();
  PageRows(const PageRows&) = delete;
  PageRows& operator=(const PageRows&) = delete;

  bool hasTitle = false;
  std::string_view title;
  PageParts parts;  // their bases are what the rows number
  std::vector<MetaRow> metas;
  std::vector<LinkRow> links;
  // How many of `links`, from the first on, are A HREF. They are registered before the anchor
  // names.
  std::size_t anchorLinks = 0;
  std::vector<std::string_view> anchors;  // A NAME, none of them empty

  void Clear();
  // The decoded value of an attribute: a part of the text itself if nothing needs decoding.
  std::string_view Decoded(const Attribute& attribute);
  // A copy that lives as long as the rows.
  std::string_view Keep(std::string_view text);

 private:
  struct Arena;
  std::unique_ptr<Arena> arena_;
  std::string scratch_;
};

// Fills `rows` (cleared first) from `document`. Style sheets (LINK REL=STYLESHEET, STYLE, style
// attributes) are not among the rows, and neither is the content of TEMPLATE. Two flags of the
// rules add to this: readsShadowRoots the content of a TEMPLATE that is a shadow root, and
// readsInnerDocuments that of IFRAME SRCDOC, whose rows come last.
void ExtractPage(const Document& document, LinkRules rules, PageRows& rows);

}  // namespace zvrsit
