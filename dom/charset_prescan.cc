#include "dom/charset_prescan.h"

#include <algorithm>
#include <array>

#include "dom/attr_table.h"
#include "dom/html_text.h"
#include "dom/html_tokenizer.h"
#include "platform/code_page_text.h"

namespace zvrsit {
namespace {

constexpr std::size_t kPrescanned = 1024;
constexpr std::size_t kGrowth = 8;
constexpr std::string_view kSpaces = " \t\n\f\r";

std::string_view TrimSpace(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kSpaces);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpaces) - first + 1);
}

std::string Lower(std::string_view text) {
  std::string lower;
  AppendName(lower, text);
  return lower;
}

// `text` up to its first space or one of `ends`; or what is inside its quotes.
std::string_view FirstValue(std::string_view text, std::string_view ends) {
  text = TrimSpace(text);
  if (!text.empty() && (text.front() == '"' || text.front() == '\'')) {
    const std::size_t close = text.find(text.front(), 1);
    if (close == std::string_view::npos) return {};
    return text.substr(1, close - 1);
  }
  return text.substr(0, std::min(text.find_first_of(ends), text.find_first_of(kSpaces)));
}

// The charset in a CONTENT such as "text/html; charset=utf-8", given in lower case.
std::string_view CharsetOfContent(std::string_view content) {
  constexpr std::string_view kCharset = "charset";
  for (std::size_t at = 0; (at = content.find(kCharset, at)) != std::string_view::npos;) {
    at += kCharset.size();
    const std::string_view rest = TrimSpace(content.substr(at));
    if (rest.starts_with('=')) return FirstValue(rest.substr(1), ";");
  }
  return {};
}

// How a MetaSink reads on after a tag.
enum class Reading {
  kPrescan,  // raw text is not told from markup
  kHead,     // it is, and the first tag that has no place in a head is the end
};

bool IsKnown(std::string_view label) {
  std::string nothing;
  return platform::ConvertToCodePage({}, label, nothing);
}

constexpr TagSet kHeadTags{Tag::kHtml,     Tag::kHead,   Tag::kMeta,    Tag::kTitle,
                           Tag::kLink,     Tag::kStyle,  Tag::kScript,  Tag::kBase,
                           Tag::kNoscript, Tag::kObject, Tag::kBgsound, Tag::kBasefont,
                           Tag::kNoframes};

// A sink that looks at META only.
class MetaSink {
 public:
  explicit MetaSink(Reading reading) : reading_(reading) {}

  void Characters(const char*, const char*, TextKind) {}
  void Comment(const char*, const char*) {}
  void Doctype(const DoctypeToken&) {}
  void AbandonTag() {}
  bool WantsEndTags() { return reading_ == Reading::kHead; }
  void EndTag(const TagSlices& slices) { isOver_ |= EndsHead(TagOf(slices)); }
  bool InForeignContent() { return false; }

  void Attribute(const AttributeSlices& slices) {
    const Attr attr = AttrOfPadded(slices.name, Length(slices.name, slices.nameEnd));
    const std::string_view value(slices.value, Length(slices.value, slices.valueEnd));
    if (attr == Attr::kHttpEquiv && httpEquiv_.empty()) httpEquiv_ = value;
    if (attr == Attr::kContent && content_.empty()) content_ = value;
    if (attr == Attr::kCharset && charset_.empty()) charset_ = value;
  }

  // When the label is found, the rest is skipped.
  ContentModel StartTag(const TagSlices& slices) {
    const Tag tag = TagOf(slices);
    isOver_ |= EndsHead(tag);
    if (tag == Tag::kMeta && !isOver_) TakeLabel();
    httpEquiv_ = content_ = charset_ = {};
    if (isOver_ || !label_.empty()) return ContentModel::kPlainText;
    return reading_ == Reading::kHead ? ContentModelOf(tag) : ContentModel::kData;
  }

  const std::string& label() const { return label_; }
  bool isOver() const { return isOver_ || !label_.empty(); }

 private:
  static Tag TagOf(const TagSlices& slices) {
    return HtmlTagOfPadded(slices.name, Length(slices.name, slices.nameEnd));
  }
  bool EndsHead(Tag tag) const { return reading_ == Reading::kHead && !kHeadTags.contains(tag); }

  // An unknown label does not count.
  void TakeLabel() {
    label_ = TrimSpace(Lower(charset_));
    if (label_.empty() && Lower(httpEquiv_) == "content-type") {
      label_ = CharsetOfContent(Lower(content_));
    }
    if (!IsKnown(label_)) label_.clear();
  }

  static std::size_t Length(const char* from, const char* to) {
    return static_cast<std::size_t>(to - from);
  }

  const Reading reading_;
  bool isOver_ = false;
  std::string label_;
  std::string_view httpEquiv_;
  std::string_view content_;
  std::string_view charset_;
};

std::string XmlEncoding(std::string_view head) {
  if (!head.starts_with("<?xml")) return {};
  head = head.substr(0, head.find('>'));
  const std::size_t at = head.find("encoding");
  if (at == std::string_view::npos) return {};
  const std::string_view rest = TrimSpace(head.substr(at + 8));
  return rest.starts_with('=') ? Lower(FirstValue(rest.substr(1), "?")) : std::string();
}

std::string LabelInFront(std::string_view page) {
  const std::string_view head = page.substr(0, kPrescanned);
  std::array<char, kPrescanned + kTextPadding> padded{};
  std::copy(head.begin(), head.end(), padded.begin());
  MetaSink sink(Reading::kPrescan);
  HtmlTokenizer<MetaSink>(padded.data(), head.size(), sink).Run();
  return sink.label();
}

// The label in the whole head. A head is usually short, so a small part is read first, and more
// with each try.
std::string LabelInHead(std::string_view page) {
  std::string padded;
  for (std::size_t size = kPrescanned;; size *= kGrowth) {
    const std::size_t length = std::min(size, page.size());
    padded.assign(page.substr(0, length));
    padded.append(kTextPadding, '\0');
    MetaSink sink(Reading::kHead);
    HtmlTokenizer<MetaSink>(padded.data(), length, sink).Run();
    if (sink.isOver() || length == page.size()) return sink.label();
  }
}

}  // namespace

ByteOrderMark FindByteOrderMark(std::string_view page) {
  if (page.starts_with("\xEF\xBB\xBF")) return {"utf-8", 3};
  if (page.starts_with("\xFF\xFE")) return {"utf-16le", 2};
  if (page.starts_with("\xFE\xFF")) return {"utf-16be", 2};
  return {};
}

std::string PrescanCharset(std::string_view page) {
  std::string label = LabelInFront(page);
  if (label.empty()) label = LabelInHead(page);
  if (label.empty()) label = XmlEncoding(page.substr(0, kPrescanned));
  if (label.starts_with("utf-16")) return "utf-8";
  return label == "x-user-defined" ? "windows-1252" : label;
}

}  // namespace zvrsit
