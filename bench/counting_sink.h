// The HTML tokenizer alone, its tokens counted and thrown away.
#pragma once

#include <cstddef>

#include "dom/html_tokenizer.h"

namespace zvrsit::bench {

// Counts tokens and throws them away. Elements of foreign content are read like any other.
struct CountingSink {
  void Characters(const char*, const char*, TextKind) { ++count; }
  void Attribute(const AttributeSlices&) {}
  ContentModel StartTag(const TagSlices& tag) {
    ++count;
    return ContentModelOf(
        HtmlTagOfPadded(tag.name, static_cast<std::size_t>(tag.nameEnd - tag.name)));
  }
  void AbandonTag() {}
  bool WantsEndTags() { return true; }
  void EndTag(const TagSlices&) { ++count; }
  void Comment(const char*, const char*) { ++count; }
  void Doctype(const DoctypeToken&) { ++count; }
  bool InForeignContent() { return false; }

  long long count = 0;
};

// The tokens of a page that kTextPadding zero bytes follow.
inline long long CountTokens(const char* text, std::size_t length) {
  CountingSink sink;
  HtmlTokenizer<CountingSink>(text, length, sink).Run();
  return sink.count;
}

}  // namespace zvrsit::bench
