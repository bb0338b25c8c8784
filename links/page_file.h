// A page that is read from its file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "dom/code_conv.h"
#include "dom/document.h"
#include "dom/mapped_file.h"
#include "links/link_rules.h"

namespace zvrsit {

// Reads `text`, the text of the file `path`, into `document`. kTextPadding zeros must follow it. It
// must not change until the document is cleared. RuleFlags::readsOtherPageTypes says whether the
// name decides how the text is read. `scope` says how much the document keeps of the page; a page
// with server code is kept whole. Whether some bytes of the document stand for server code
// (links/server_code.h).
bool ReadPageText(const std::string& path, std::string_view text, const RuleFlags& rules,
                  Document& document, DocumentScope scope);

// Reads one page after the other; the memory of one serves the next.
class PageFile {
 public:
  // Reads the file into `document` so that links can be collected from it, as ReadPageText does.
  // The document is good until the next call. False for a file that cannot be opened; the document
  // is then unchanged.
  [[nodiscard]] bool Read(const std::string& path, const RuleFlags& rules, Document& document,
                          DocumentScope scope = DocumentScope::kReferences);
  // To be called when the caller has read the page itself: its text then counts as the whole file.
  void Forget();

  // The label of the encoding of the page; empty when it has none.
  const std::string& charset() const { return text_.charset(); }
  // Whether some bytes of the document stand for server code (links/server_code.h).
  bool holdsServerCode() const { return holdsServerCode_; }
  // Where the text of the document begins in the file. -1 when it had to be converted, so that
  // places in the text are not places in the file.
  std::int64_t textStart() const { return textStart_; }
  // The place in the file for one in the text of the document; -1 where it is not known.
  std::int32_t OffsetInFile(std::int64_t offsetInText) const;

 private:
  MappedFile file_;
  CodeConv text_;
  std::int64_t textStart_ = 0;
  bool holdsServerCode_ = false;
};

}  // namespace zvrsit
