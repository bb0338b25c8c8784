#include "links/page_file.h"

#include <limits>

#include "dom/document.h"
#include "links/page_types.h"
#include "links/server_code.h"

namespace zvrsit {

bool PageFile::Read(const std::string& path, const RuleFlags& rules, Document& document,
                    DocumentScope scope) {
  Forget();
  if (!file_.open(path, 0)) return false;
  if (!text_.Import(file_.top(), file_.size(), 0)) return true;
  Parse(path, rules, document, scope);
  textStart_ = text_.borrowed() ? static_cast<std::int64_t>(text_.textOffset()) : -1;
  return true;
}

void PageFile::Parse(const std::string& path, const RuleFlags& rules, Document& document,
                     DocumentScope scope) {
  const PageSyntax syntax = rules.readsOtherPageTypes ? PageSyntaxOf(path) : PageSyntax::kHtml;
  const int length = static_cast<int>(text_.length());
  holdsServerCode_ = syntax == PageSyntax::kServer;
  if (holdsServerCode_) {
    std::string page(text_.text(), text_.length());
    HideServerCode(page);
    document.createNodes(page.data(), length, nullptr, true);
    return;
  }
  // Of files that are no pages, every element counts.
  document.createNodesInPlace(
      text_.text(), length, true, IsSiteData(syntax) ? DocumentScope::kWhole : scope,
      syntax == PageSyntax::kHtml ? DocumentSyntax::kHtml : DocumentSyntax::kXml);
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
