// The tokens of a text, decoded, as rows of JSON: in the form of the html5lib tokenizer cases.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "dom/html_text.h"
#include "dom/html_tokenizer.h"
#include "support/padded.h"

namespace zvrsit::test {

using nlohmann::json;

// Adds a row to others. Texts one after another are one text.
inline void AddRow(json& rows, json row) {
  if (row[0] == "Character" && !rows.empty() && rows.back()[0] == "Character") {
    rows.back()[1].get_ref<std::string&>() += row[1].get_ref<std::string&>();
  } else {
    rows.push_back(std::move(row));
  }
}

// Collects decoded tokens. `follow` is whether start tags choose the content model themselves.
class TokenSink {
 public:
  explicit TokenSink(bool follow) : follow_(follow) {}

  void Characters(const char* begin, const char* end, TextKind kind) {
    // A CR LF is never split over two slices.
    std::string text;
    AppendText(text, {begin, end}, kind);
    AddRow(tokens, {"Character", text});
  }
  void Attribute(const AttributeSlices& slices) {
    std::string value;
    AppendAttributeValue(value, {slices.value, slices.valueEnd});
    attributes_.emplace(Name(slices), value);  // the first of a name counts
  }
  void AbandonTag() { attributes_ = json::object(); }
  ContentModel StartTag(const TagSlices& slices) {
    const std::string name = Name(slices);
    tokens.push_back({"StartTag", name, std::move(attributes_)});
    if (slices.selfClosing) tokens.back().push_back(true);
    AbandonTag();
    return follow_ ? ContentModelOf(HtmlTagOf(name)) : ContentModel::kData;
  }
  bool WantsEndTags() { return true; }
  void EndTag(const TagSlices& slices) { tokens.push_back({"EndTag", Name(slices)}); }
  void Comment(const char* begin, const char* end) {
    tokens.push_back({"Comment", Plain({begin, end})});
  }
  void Doctype(const DoctypeToken& doctype) {
    std::string name;
    AppendName(name, doctype.name);
    tokens.push_back({"DOCTYPE", name.empty() ? json() : json(name), Id(doctype.publicId),
                      Id(doctype.systemId), !doctype.forceQuirks});
  }
  bool InForeignContent() { return false; }

  json tokens = json::array();

 private:
  static std::string Name(const auto& slices) {
    std::string name;
    AppendName(name, {slices.name, slices.nameEnd});
    return name;
  }
  static std::string Plain(std::string_view text) {
    std::string plain;
    AppendPlain(plain, text);
    return plain;
  }
  static json Id(std::string_view id) { return id.data() == nullptr ? json() : json(Plain(id)); }

  bool follow_;
  json attributes_ = json::object();
};

template <class Search>
json Tokenize(std::string_view text, bool follow = true, ContentModel start = ContentModel::kData,
              std::string_view lastStartTag = {}) {
  const std::string padded = Padded(text);
  TokenSink sink(follow);
  HtmlTokenizer<TokenSink, Search> tokenizer(padded.data(), text.size(), sink);
  tokenizer.StartIn(start, lastStartTag);
  tokenizer.Run();
  return std::move(sink.tokens);
}

}  // namespace zvrsit::test
