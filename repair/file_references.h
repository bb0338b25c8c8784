// All references of one file, each with the place in which it is written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "css/css_references.h"
#include "css/page_styles.h"
#include "dom/document.h"
#include "links/extractor.h"
#include "links/link_rules.h"
#include "links/page_types.h"
#include "repair/source_text.h"

namespace zvrsit {

// What a reference may not hold as it is, because of what stands around it.
enum class Surroundings : std::uint8_t {
  kNone,
  kList,      // white space ends it, and so does a comma at its end
  kRefresh,   // a quote ends it
  kLine,      // white space ends it
  kRedirect,  // the same, and ":" and "*" make placeholders
  kJson,      // a relative path may need a dot at its beginning
};

struct FoundReference {
  std::uint32_t type = 0;  // an LT_ code; 0 for the HREF of a BASE
  std::string target;      // as it is registered
  // Where it stands: source->text() has `target` without `tail` there.
  SourceText* source = nullptr;
  std::size_t begin = 0;
  std::string tail;  // what the file of an APPLET adds to its CODEBASE
  // Where findings have it in the text of the file, also when it stands in a document within.
  std::uint32_t place = 0;
  std::int32_t base = kPageItself;  // a number of bases(), which it is resolved from
  Surroundings surroundings = Surroundings::kNone;
  bool isOfSheet = false;
  bool isPrefix = false;
  bool isDrawn = false;  // of SVG, where "#id" names a part of the drawing
};

class FileReferences {
 public:
  // Reads the file `path` with this text. It must stay as it is, and kTextPadding zeros must follow
  // it. `isSheet`: it is a style sheet.
  FileReferences(const std::string& path, std::string_view text, bool isSheet, LinkRules rules);
  ~FileReferences();
  FileReferences(const FileReferences&) = delete;
  FileReferences& operator=(const FileReferences&) = delete;

  const std::vector<FoundReference>& references() const { return references_; }
  // The BASE elements; the base of each is another one, before it, or the page itself.
  const std::vector<FoundReference>& bases() const { return bases_; }
  bool holdsServerCode() const { return holdsServerCode_; }
  // The page; empty for a sheet.
  const Document& document() const { return document_; }
  std::string_view text() const { return text_; }

  // The value of an attribute of document().
  SourceText& SourceOf(const Attribute& attribute);

  // Hands all edits on to the text of the file, and gives them in its order.
  std::vector<SourceEdit> TakeEdits();

 private:
  struct Part;

  void ReadPart(Part& part, int depth);
  void ReadBase(Part& part);
  void ReadRows(Part& part);
  void ReadRow(Part& part, const LinkRow& row);
  void ReadPatterns(Part& part);
  void ReadRefresh(Part& part, const MetaRow& meta);
  void ReadStyles(Part& part);
  void ReadStyle(Part& part, const StyleText& style, bool atOnce);
  void ReadInnerParts(Part& part, int depth);
  void ReadSheet();
  void AddPlain(Part& part, const LinkRow& row, const Attribute& attribute);
  void AddList(Part& part, const LinkRow& row, const Attribute& attribute);
  void AddApplet(Part& part, const LinkRow& row, const Attribute& attribute);
  void AddJson(Part& part, const LinkRow& row);
  void AddText(Part& part, const LinkRow& row);
  void AddCss(const CssReference& css, SourceText& style, std::uint32_t place, std::int32_t base);
  FoundReference& Add(Part& part, const LinkRow& row, SourceText& source);
  SourceText& SourceIn(Part& part, const Attribute& attribute);
  SourceText& StyleSource(Part& part, const StyleText& style);
  SourceText& NewSource(SourceText& outer, std::size_t begin, std::string_view raw, Writing writing,
                        char quote = '\0');

  const std::string path_;
  const std::string_view text_;
  const LinkRules linkRules_;
  const RuleFlags& rules_;
  PageSyntax syntax_ = PageSyntax::kHtml;
  Document document_;
  bool holdsServerCode_ = false;
  std::deque<SourceText> sources_;  // each after the one around it
  std::deque<Part> parts_;
  std::vector<FoundReference> bases_;
  std::vector<FoundReference> references_;
};

}  // namespace zvrsit
