#include "links/page_file.h"

#include <limits>

#include "dom/document.h"
#include "links/page_types.h"
#include "links/server_code.h"

namespace zvrsit {

bool ReadPageText(const std::string& path, std::string_view text, const RuleFlags& rules,
                  Document& document, DocumentScope scope) {
  const PageSyntax syntax = rules.readsOtherPageTypes ? PageSyntaxOf(path) : PageSyntax::kHtml;
  const int length = static_cast<int>(text.size());
  if (syntax == PageSyntax::kServer) {
    std::string page(text);
    HideServerCode(page);
    document.createNodes(page.data(), length, nullptr, true);
    return true;
  }
  // Of files that are no pages, every element counts.
  document.createNodesInPlace(
      text.data(), length, true, IsSiteData(syntax) ? DocumentScope::kWhole : scope,
      syntax == PageSyntax::kHtml ? DocumentSyntax::kHtml : DocumentSyntax::kXml);
  return false;
}

bool PageFile::Read(const std::string& path, const RuleFlags& rules, Document& document,
                    DocumentScope scope) {
  Forget();
  if (!file_.open(path, 0)) return false;
  if (!text_.Import(file_.top(), file_.size(), 0)) return true;
  holdsServerCode_ = ReadPageText(path, {text_.text(), text_.length()}, rules, document, scope);
  textStart_ = text_.borrowed() ? static_cast<std::int64_t>(text_.textOffset()) : -1;
  return true;
}

void PageFile::Forget() {
  textStart_ = 0;
  holdsServerCode_ = false;
}

std::int32_t PageFile::OffsetInFile(std::int64_t offsetInText) const {
  if (textStart_ < 0 || offsetInText < 0) return -1;
  const std::int64_t offset = textStart_ + offsetInText;
  return offset > std::numeric_limits<std::int32_t>::max() ? -1 : static_cast<std::int32_t>(offset);
}

}  // namespace zvrsit
