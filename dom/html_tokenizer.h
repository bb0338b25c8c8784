// The tokenizer of HTML, after the tokenization section of the WHATWG HTML standard; its functions
// bear the names of the states that they stand for.
//
// It gives parts of the text as they are written: nothing is copied, decoded or changed to lower
// case (dom/html_text.h does this when a caller needs it). It does not report parse errors. Every
// input takes linear time, and nothing is recursive.
//
// The text must be followed by kTextPadding readable zeros. In a double-byte code page the trail
// bytes must be masked (dom/double_byte.h); then the slices are used on the text itself.
//
// The sink is a template argument, so that what it leaves out costs nothing:
//
// - void Characters(const char* begin, const char* end, TextKind kind): never empty; adjacent runs
//   are one text;
// - void Attribute(const AttributeSlices&): for each attribute of a start tag, duplicates too;
// - ContentModel StartTag(const TagSlices&): called after its attributes; gives how to read on;
// - void AbandonTag(): the text ended in the tag; its attributes do not count;
// - bool WantsEndTags(): whether EndTag must be called now;
// - void EndTag(const TagSlices&);
// - void Comment(const char* begin, const char* end);
// - void Doctype(const DoctypeToken&);
// - bool InForeignContent(): whether a CDATA section can begin here.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

#include "dom/attr.h"
#include "dom/byte_search.h"
#include "dom/document.h"
#include "dom/html_scan.h"
#include "dom/tag_traits.h"

namespace zvrsit {

struct AttributeSlices {
  const char* name;
  const char* nameEnd;
  const char* value;  // equal to valueEnd for an attribute without "="
  const char* valueEnd;
  Attr known;  // its number if the search came upon it; else kOther: still to be looked up
};

struct TagSlices {
  const char* begin;  // its "<"
  const char* end;    // after its ">"
  const char* name;
  const char* nameEnd;
  bool selfClosing;
  bool endsRawText;  // an end tag that ends RCDATA, raw text or script data
};

template <class Sink, class Search = DefaultSearch>
class HtmlTokenizer {
 public:
  HtmlTokenizer(const char* text, std::size_t length, Sink& sink)
      : begin_(text), end_(text + length), sink_(sink) {}

  // Begins in other content than ordinary content. RCDATA, raw text and script data end at the end
  // tag of the element `lastStartTag`; this text must outlive the run.
  void StartIn(ContentModel model, std::string_view lastStartTag) {
    model_ = model;
    lastStartTag_ = lastStartTag;
  }

  // Reads the whole text.
  void Run() {
    const char* p = begin_;
    while (p < end_) {
      switch (model_) {
        case ContentModel::kData:
          p = DataState(p);
          break;
        case ContentModel::kRcdata:
          p = RawTextState(p, TextKind::kRcdata);
          break;
        case ContentModel::kRawText:
          p = RawTextState(p, TextKind::kRawText);
          break;
        case ContentModel::kScriptData:
          p = ScriptDataState(p);
          break;
        case ContentModel::kPlainText:
          Characters(p, end_, TextKind::kRawText);
          return;
        case ContentModel::kCdata:
          p = CdataSectionState(p);
          break;
      }
    }
  }

 private:
  // Every state is a function. It takes the place where the state begins, and gives the place where
  // the next state begins.

  void Characters(const char* begin, const char* end, TextKind kind) {
    if (begin < end) sink_.Characters(begin, end, kind);
  }

  const char* DataState(const char* p) {
    const char* text = p;
    while ((p = TextEnd(p)) < end_) {
      if (p[1] == '/') {
        Characters(text, p, TextKind::kData);
        text = p = EndTagOpenState(p);
      } else if (IsByte(p[1], kLetterByte)) {
        Characters(text, p, TextKind::kData);
        text = p = StartTag(p);
        if (model_ != ContentModel::kData) return p;
      } else if (p[1] == '!' || p[1] == '?') {
        Characters(text, p, TextKind::kData);
        text = p = MarkupDeclarationOpenState(p);
      } else {
        ++p;  // only text
      }
    }
    Characters(text, p, TextKind::kData);
    return p;
  }

  // Half of the tags follow the one before directly, or on the next line; see FindClass.
  const char* TextEnd(const char* p) {
    if (p[0] == '<') return p;
    if (p[1] == '<') return p + 1;
    return Search::Byte(p, end_, '<');
  }

  const char* EndTagOpenState(const char* p) {
    if (IsByte(p[2], kLetterByte)) {
      if (!sink_.WantsEndTags()) {
        const char* close = p + 3;
        while (IsByte(*close, kLetterByte)) ++close;
        if (*close != '>') ++close;  // "</h1>"
        if (*close == '>') return close + 1;
      }
      return EndTag(p, false);
    }
    if (p[2] == '>') return p + 3;  // "</>" is nothing
    if (p + 2 < end_) return BogusCommentState(p + 2);
    Characters(p, end_, TextKind::kData);
    return end_;
  }

  const char* StartTag(const char* p) {
    const char* const nameEnd = FindClass(p + 2, end_, kTagNameEnd);
    const EndOfTag rest = FrequentAttributes(nameEnd);
    if (rest.next == nullptr) {
      sink_.AbandonTag();
      return end_;
    }
    model_ = sink_.StartTag(TagSlices{p, rest.next, p + 1, nameEnd, rest.selfClosing, false});
    if (model_ != ContentModel::kData) {
      lastStartTag_ = {p + 1, static_cast<std::size_t>(nameEnd - p - 1)};
    }
    return rest.next;
  }

  const char* EndTag(const char* p, bool endsRawText) {
    const char* const nameEnd = FindClass(p + 3, end_, kTagNameEnd);
    const EndOfTag rest = BeforeAttributeNameState<false>(nameEnd);
    if (rest.next == nullptr) return end_;
    sink_.EndTag(TagSlices{p, rest.next, p + 2, nameEnd, rest.selfClosing, endsRawText});
    return rest.next;
  }

  const char* SkipSpace(const char* p) {
    if (*p == ' ') ++p;  // it is usually one space
    if (static_cast<unsigned char>(*p) > ' ') return p;
    while (IsByte(*p, kSpaceByte)) ++p;
    return p;
  }

  struct EndOfTag {
    const char* next;  // after its ">"; null when the text ends before
    bool selfClosing;
  };

  // The part of a start tag after its name, when its attributes are frequent ones. Few tags have
  // others.
  EndOfTag FrequentAttributes(const char* p) {
    while (*p != '>') {
      AttributeSlices attribute;
      if (!BeginsFrequentAttribute(p, attribute)) return BeforeAttributeNameState<true>(p);
      p = AttributeValueQuotedState<'"'>(attribute);
      if (p == nullptr) return {nullptr, false};
      sink_.Attribute(attribute);
    }
    return {p + 1, false};
  }

  // The whole part of a tag after its name.
  template <bool kReport>
  EndOfTag BeforeAttributeNameState(const char* p) {
    for (;;) {
      p = SkipSpace(p);
      if (*p == '>') return {p + 1, false};
      if (p == end_) return {nullptr, false};
      if (*p == '/') {
        ++p;
        if (*p != '>') continue;
        return {p + 1, true};
      }
      AttributeSlices attribute;
      p = AttributeNameState(p, attribute);
      if (p == nullptr) return {nullptr, false};
      if constexpr (kReport) sink_.Attribute(attribute);
    }
  }

  // Reads one of the most frequent attributes, in its usual spelling: one comparison finds it.
  // False when it is another; `attribute` is then unchanged.
  static bool BeginsFrequentAttribute(const char* p, AttributeSlices& attribute) {
    return BeginsWithAttribute(p, " class=\"", Attr::kClass, attribute) ||
           BeginsWithAttribute(p, " href=\"", Attr::kHref, attribute) ||
           BeginsWithAttribute(p, " title=\"", Attr::kTitle, attribute) ||
           BeginsWithAttribute(p, " id=\"", Attr::kId, attribute);
  }

  template <std::size_t N>
  static bool BeginsWithAttribute(const char* p, const char (&wanted)[N], Attr known,
                                  AttributeSlices& attribute) {
    constexpr std::size_t kLength = N - 1;
    if (std::memcmp(p, wanted, kLength) != 0) return false;
    attribute.name = p + 1;
    attribute.nameEnd = p + kLength - 2;
    attribute.value = p + kLength;
    attribute.known = known;
    return true;
  }

  // An attribute's name and value; null when the text ends in it. A "=" in front is part of the
  // name.
  const char* AttributeNameState(const char* p, AttributeSlices& attribute) {
    attribute.name = p;
    attribute.known = Attr::kOther;
    attribute.nameEnd = p = FindClass(p + 1, end_, kAttributeNameEnd);
    p = SkipSpace(p);
    if (*p == '=') return BeforeAttributeValueState(SkipSpace(p + 1), attribute);
    if (p == end_) return nullptr;
    attribute.value = attribute.valueEnd = attribute.nameEnd;
    return p;
  }

  const char* BeforeAttributeValueState(const char* p, AttributeSlices& attribute) {
    attribute.value = p + 1;
    if (*p == '"') return AttributeValueQuotedState<'"'>(attribute);
    if (*p == '\'') return AttributeValueQuotedState<'\''>(attribute);
    attribute.value = p;
    attribute.valueEnd = p = FindClass(p, end_, kUnquotedValueEnd);
    return p < end_ ? p : nullptr;
  }

  template <char kQuote>
  const char* AttributeValueQuotedState(AttributeSlices& attribute) {
    const char* p = attribute.valueEnd = Search::Byte(attribute.value, end_, kQuote);
    return p < end_ ? p + 1 : nullptr;
  }

  // At "<!" or "<?".
  const char* MarkupDeclarationOpenState(const char* p) {
    if (p[1] == '?') return BogusCommentState(p + 1);
    p += 2;
    if (p[0] == '-' && p[1] == '-') {
      const Extent comment = ScanComment(p + 2, end_);
      sink_.Comment(p + 2, comment.dataEnd);
      return comment.next;
    }
    if (BeginsWithNoCase(p, end_, "doctype")) {
      DoctypeToken doctype;
      p = ScanDoctype(p + 7, end_, doctype);
      sink_.Doctype(doctype);
      return p;
    }
    constexpr std::string_view kCdata = "[CDATA[";
    if (std::string_view(p, static_cast<std::size_t>(end_ - p)).starts_with(kCdata) &&
        sink_.InForeignContent()) {
      return CdataSectionState(p + kCdata.size());
    }
    return BogusCommentState(p);
  }

  const char* BogusCommentState(const char* p) {
    const Extent comment = ScanBogusComment(p, end_);
    sink_.Comment(p, comment.dataEnd);
    return comment.next;
  }

  const char* CdataSectionState(const char* p) {
    const Extent section = ScanCdata(p, end_);
    Characters(p, section.dataEnd, TextKind::kCdata);
    model_ = ContentModel::kData;
    return section.next;
  }

  // RCDATA and raw text: everything up to the end tag of the element that it belongs to.
  const char* RawTextState(const char* p, TextKind kind) {
    const char* text = p;
    while ((p = Search::Byte(p, end_, '<')) < end_ && !IsEndTagOf(p, end_, lastStartTag_)) ++p;
    return EndOfRawText(text, p, kind);
  }

  const char* ScriptDataState(const char* p) {
    return EndOfRawText(p, ScanScriptData(p, end_, lastStartTag_), TextKind::kRawText);
  }

  const char* EndOfRawText(const char* text, const char* p, TextKind kind) {
    Characters(text, p, kind);
    model_ = ContentModel::kData;
    return p < end_ ? EndTag(p, true) : end_;
  }

  const char* begin_;
  const char* end_;
  Sink& sink_;
  ContentModel model_ = ContentModel::kData;
  std::string_view lastStartTag_;
};

}  // namespace zvrsit
