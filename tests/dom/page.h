// A document made from a string, for tests.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "dom/dom.h"
#include "support/code_page_scope.h"

namespace zvrsit::test {

class Page {
 public:
  explicit Page(std::string_view html) : document_(dom_.createDocument("HTML")) { Read(html); }

  void Read(std::string_view html) {
    result = document_->createNodes(html.data(), static_cast<int>(html.size()), nullptr, true);
  }

  Document& operator*() { return *document_; }
  Document* operator->() { return document_; }

  // The values of an attribute on all elements of a tag, "-" where it is missing.
  std::vector<std::string> Values(const char* tag, const char* attribute) {
    std::vector<std::string> values;
    NodeIterator elements = document_->getElementsByTagName(tag);
    while (const Element element = elements.next()) {
      const Attribute found = element.attributes().getNamedItem(attribute);
      values.push_back(found ? found.value() : "-");
    }
    return values;
  }
  Element First(const char* tag) { return document_->getElementsByTagName(tag).next(); }
  std::string FirstText(const char* tag) {
    const Element element = First(tag);
    const Node child = element ? element.firstChild() : Node();
    return child.isText() ? child.asText().data(true) : "-";
  }

  int result = -1;

 private:
  DOM dom_;
  Document* document_;
};

}  // namespace zvrsit::test
