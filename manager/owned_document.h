// A document that goes back to its DOM.
#pragma once

#include <memory>

#include "dom/document.h"
#include "dom/dom.h"

namespace zvrsit {

struct GiveBack {
  DOM* dom;
  void operator()(Document* document) const {
    if (dom != nullptr) dom->deleteDocument(document);
  }
};
using OwnedDocument = std::unique_ptr<Document, GiveBack>;

}  // namespace zvrsit
