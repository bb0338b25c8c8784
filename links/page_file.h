// A page that is read from its file.
#pragma once

#include <cstdint>
#include <string>

#include "dom/code_conv.h"
#include "dom/document.h"
#include "dom/mapped_file.h"
#include "links/link_rules.h"

namespace zvrsit {

// Reads one page after the other; the memory of one serves the next.
class PageFile {
 public:
  // Reads the file into `document`, as links are collected from it: by the web rules the name says
  // how the text is read. The document is good until the next call. A file that cannot be opened
  // gives false and leaves the document alone. `scope` says how much of it the document keeps; a
  // page with server code is kept whole.
  [[nodiscard]] bool Read(const std::string& path, const RuleFlags& rules, Document& document,
                          DocumentScope scope = DocumentScope::kReferences);
  // From here on the page is one that the caller has read: its text is taken for the whole file.
  void Forget();

  // The label of the encoding of the page; empty when it has none.
  const std::string& charset() const { return text_.charset(); }
  // Bytes of the document stand for server code (links/server_code.h).
  bool holdsServerCode() const { return holdsServerCode_; }
  // Where the text of the document begins in the file; -1 when it had to be converted, so that a
  // place in the text is none in the file.
  std::int64_t textStart() const { return textStart_; }
  // The place in the file for one in the text of the document; -1 where it is not known.
  std::int32_t OffsetInFile(std::int64_t offsetInText) const;

 private:
  void Parse(const std::string& path, const RuleFlags& rules, Document& document,
             DocumentScope scope);

  MappedFile file_;
  CodeConv text_;
  std::int64_t textStart_ = 0;
  bool holdsServerCode_ = false;
};

}  // namespace zvrsit
