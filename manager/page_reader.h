// Reading a page of the site from its file.
#pragma once

#include <memory>
#include <string>

#include "dom/document.h"
#include "dom/dom.h"
#include "links/link_rules.h"
#include "manager_base/operation_memo.h"

namespace zvrsit {

// A document that goes back to its DOM.
struct GiveBack {
  DOM* dom;
  void operator()(Document* document) const {
    if (dom != nullptr) dom->deleteDocument(document);
  }
};
using OwnedDocument = std::unique_ptr<Document, GiveBack>;

// Reads the file into `document`, as links are collected from it: by the web rules the name says
// how the text is read. A file that cannot be read leaves it empty. False then. The document is
// good until `memo` reads the next page.
bool ReadPage(const std::string& path, LinkRules rules, OperationMemo& memo, Document& document);

}  // namespace zvrsit
