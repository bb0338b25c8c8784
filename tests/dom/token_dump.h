// The tokens of a text, decoded: what the conformance cases expect and what tests compare.
#pragma once

#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "dom/html_text.h"
#include "dom/html_tokenizer.h"
#include "support/padded.h"

namespace zvrsit::test {

struct Token {
  enum class Kind { kText, kStartTag, kEndTag, kComment, kDoctype };
  using Attributes = std::vector<std::pair<std::string, std::string>>;

  Kind kind;
  std::string text;  // or name
  Attributes attributes{};
  bool selfClosing = false;
  bool hasPublicId = false;
  bool hasSystemId = false;
  bool quirks = false;
  std::string publicId{};
  std::string systemId{};

  bool operator==(const Token&) const = default;
};

// Collects decoded tokens. `follow` is whether start tags choose the content model themselves.
class TokenSink {
 public:
  explicit TokenSink(bool follow) : follow_(follow) {}

  void Characters(const char* begin, const char* end, TextKind kind) {
    // Adjacent slices are one text; a CR LF is never split over two of them.
    if (tokens.empty() || tokens.back().kind != Token::Kind::kText) {
      tokens.push_back({Token::Kind::kText, ""});
    }
    AppendText(tokens.back().text, View(begin, end), kind);
  }
  void Attribute(const AttributeSlices& slices) {
    std::string name;
    AppendName(name, View(slices.name, slices.nameEnd));
    if (!names_.insert(name).second) return;
    std::string value;
    AppendAttributeValue(value, View(slices.value, slices.valueEnd));
    attributes_.emplace_back(std::move(name), std::move(value));
  }
  void AbandonTag() {
    attributes_.clear();
    names_.clear();
  }
  ContentModel StartTag(const TagSlices& slices) {
    Token token{Token::Kind::kStartTag, Name(slices)};
    token.attributes = std::move(attributes_);
    token.selfClosing = slices.selfClosing;
    tokens.push_back(std::move(token));
    AbandonTag();
    return follow_ ? ContentModelOf(HtmlTagOf(tokens.back().text)) : ContentModel::kData;
  }
  bool WantsEndTags() { return true; }
  void EndTag(const TagSlices& slices) { tokens.push_back({Token::Kind::kEndTag, Name(slices)}); }
  void Comment(const char* begin, const char* end) {
    tokens.push_back({Token::Kind::kComment, ""});
    AppendPlain(tokens.back().text, View(begin, end));
  }
  void Doctype(const DoctypeToken& doctype) {
    Token token{Token::Kind::kDoctype, ""};
    AppendName(token.text, doctype.name);
    token.hasPublicId = doctype.publicId.data() != nullptr;
    token.hasSystemId = doctype.systemId.data() != nullptr;
    AppendPlain(token.publicId, doctype.publicId);
    AppendPlain(token.systemId, doctype.systemId);
    token.quirks = doctype.forceQuirks;
    tokens.push_back(std::move(token));
  }
  bool InForeignContent() { return false; }

  std::vector<Token> tokens;

 private:
  static std::string_view View(const char* from, const char* to) { return {from, to}; }
  static std::string Name(const TagSlices& slices) {
    std::string name;
    AppendName(name, View(slices.name, slices.nameEnd));
    return name;
  }

  bool follow_;
  Token::Attributes attributes_;
  std::unordered_set<std::string> names_;
};

template <class Search>
std::vector<Token> Tokenize(std::string_view text, bool follow = true,
                            ContentModel start = ContentModel::kData,
                            std::string_view lastStartTag = {}) {
  const std::string padded = Padded(text);
  TokenSink sink(follow);
  HtmlTokenizer<TokenSink, Search> tokenizer(padded.data(), text.size(), sink);
  tokenizer.StartIn(start, lastStartTag);
  tokenizer.Run();
  return std::move(sink.tokens);
}

}  // namespace zvrsit::test
