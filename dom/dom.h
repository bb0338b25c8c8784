// The factory of documents.
#pragma once

#include <memory>
#include <vector>

#include "dom/document.h"
#include "platform/api.h"

namespace zvrsit {

// Makes documents and owns them. The memory of a deleted document serves the next one, so reading
// page after page allocates nothing. One thread at a time uses a DOM and its documents.
class ZVRSIT_API DOM {
 public:
  DOM();
  ~DOM();  // frees every document that it made
  DOM(const DOM&) = delete;
  DOM& operator=(const DOM&) = delete;

  // An empty document of `type`, which must be "HTML" in any ASCII case; null for another type.
  Document* createDocument(const char* type);

  // Deletes a document; it and every handle into it must not be used afterwards. 0, or -1 for null
  // and for a document that this DOM did not make or has deleted already.
  int deleteDocument(Document* document);

 private:
  std::vector<std::unique_ptr<Document>> live_;
  std::vector<std::unique_ptr<Document>> idle_;
};

}  // namespace zvrsit
