// The factory of documents.
#pragma once

#include <memory>
#include <vector>

#include "dom/document.h"
#include "platform/api.h"

namespace zvrsit {

// Makes documents, owns them, and hands the memory of a deleted one to the next, so that reading
// page after page allocates nothing. One thread at a time uses a DOM and its documents.
class ZVRSIT_API DOM {
 public:
  DOM();
  ~DOM();  // frees every document that it made
  DOM(const DOM&) = delete;
  DOM& operator=(const DOM&) = delete;

  // An empty document of `type`, which must be "HTML" in any ASCII case; null for another type.
  Document* createDocument(const char* type);

  // Gives a document back; it and every handle into it are dead from here. 0, or -1 for null and
  // for a document that this DOM did not make or has already taken back.
  int deleteDocument(Document* document);

 private:
  std::vector<std::unique_ptr<Document>> live_;
  std::vector<std::unique_ptr<Document>> idle_;
};

}  // namespace zvrsit
