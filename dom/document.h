// A page in memory: its elements and attributes, as flat arrays over its text.
//
// There is no tree. Every start tag is one element, in document order; nothing is repaired, moved
// or implied. A browser's tree decides more, and three of its decisions are kept with each element:
// whether it lies in SVG or MathML, whether it lies in the content of a TEMPLATE, and whether a
// browser ignores it.
//
// A TEMPLATE whose SHADOWROOTMODE is "open" or "closed" declares a shadow root of the element
// around it, if that element can have one and has none yet. The content of such a TEMPLATE belongs
// to the page. It is marked, for callers who do not want it.
//
// The handles (Element, Attribute, AttributeList, Node, Text, NodeIterator) are small values that
// point into their Document. They are good until its next createNodes() or its deletion.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "dom/attr.h"
#include "dom/tag.h"
#include "platform/api.h"

namespace zvrsit {

class Document;
class DocumentBuilder;
class Element;

// One attribute as it stands in the page; 16 bytes.
struct AttributeRecord {
  std::uint32_t nameOffset;
  std::uint32_t valueOffset;
  std::uint32_t valueLength;
  Attr attr;
  std::uint16_t nameLength;  // kLongName: to be measured in the text
  static constexpr std::uint16_t kLongName = 0xFFFF;
};

// One element; 16 bytes. Its attributes are those from firstAttribute to that of the next record.
struct ElementRecord {
  std::uint32_t offset;  // of its "<"
  std::uint32_t end;     // after its ">"
  std::uint32_t firstAttribute;
  Tag tag;
  std::uint16_t flags;
  static constexpr std::uint16_t kForeign = 1;
  static constexpr std::uint16_t kInTemplate = 2;
  static constexpr std::uint16_t kSelfClosing = 4;
  static constexpr std::uint16_t kInShadow = 8;
  static constexpr std::uint16_t kIgnored = 16;
};

class ZVRSIT_API Attribute {
 public:
  Attribute() = default;
  Attribute(const Document* document, const AttributeRecord* record)
      : document_(document), record_(record) {}

  explicit operator bool() const { return record_ != nullptr; }
  // The rest may be called on an attribute that is there only.

  // As written, in the letter case of the page.
  std::string_view name() const;
  Attr attr() const { return record_->attr; }
  // The bytes of the page, without quotes, nothing decoded; empty for an attribute without "=".
  inline std::string_view rawValue() const;
  // With character references decoded, line ends made "\n" and NULs replaced, in the code page.
  std::string value() const;
  void appendValue(std::string& out) const;
  // Byte offset of rawValue() in the text given to createNodes.
  std::uint32_t valueOffset() const { return record_->valueOffset; }

 private:
  const Document* document_ = nullptr;
  const AttributeRecord* record_ = nullptr;
};

// The attributes of one element in the order of the page. A name that is written twice is listed
// twice. Looking it up gives the first, which is the one that counts.
class ZVRSIT_API AttributeList {
 public:
  AttributeList() = default;
  AttributeList(const Document* document, std::span<const AttributeRecord> records)
      : document_(document), records_(records) {}

  std::size_t size() const { return records_.size(); }
  Attribute item(std::size_t i) const { return {document_, &records_[i]}; }  // i below size()

  // The first attribute of the name, empty when there is none.
  Attribute find(Attr attr) const {
    for (const AttributeRecord& record : records_) {
      if (record.attr == attr) return {document_, &record};
    }
    return {};
  }
  // The same by name, in any ASCII case.
  Attribute getNamedItem(std::string_view upperCaseName) const;

 private:
  const Document* document_ = nullptr;
  std::span<const AttributeRecord> records_;
};

// How a piece of text is to be read.
enum class TextKind : std::uint8_t {
  kData,     // ordinary text: character references
  kRcdata,   // TITLE, TEXTAREA: character references, NULs replaced
  kRawText,  // SCRIPT, STYLE and their like: NULs replaced
  kCdata,    // a CDATA section: as it stands
};

class ZVRSIT_API Text {
 public:
  Text() = default;
  Text(std::string_view raw, TextKind kind) : raw_(raw), kind_(kind) {}

  explicit operator bool() const { return raw_.data() != nullptr; }
  // The bytes of the page.
  std::string_view rawData() const { return raw_; }
  TextKind kind() const { return kind_; }
  // The text: line ends made "\n" and, where its kind has them, character references decoded; with
  // `decode` false the same as rawData().
  std::string data(bool decode) const;

 private:
  std::string_view raw_;
  TextKind kind_ = TextKind::kData;
};

class ZVRSIT_API Element {
 public:
  Element() = default;
  Element(const Document* document, std::uint32_t index) : document_(document), index_(index) {}

  explicit operator bool() const { return document_ != nullptr; }
  bool operator==(const Element&) const = default;
  // The rest may be called on an element that is there only.

  Tag tag() const { return record().tag; }
  std::string_view name() const;  // as written
  bool isHtml() const { return (record().flags & ElementRecord::kForeign) == 0; }
  // Whether it lies in the content of a TEMPLATE that declares no shadow root, at any depth.
  bool inTemplate() const { return (record().flags & ElementRecord::kInTemplate) != 0; }
  // Whether it lies in a shadow root that the page declares.
  bool inShadow() const { return (record().flags & ElementRecord::kInShadow) != 0; }
  // Whether it is a FORM within a FORM: in a browser there is no such element.
  bool isIgnored() const { return (record().flags & ElementRecord::kIgnored) != 0; }
  inline AttributeList attributes() const;
  std::uint32_t offset() const { return record().offset; }  // of its "<" in the text
  std::uint32_t index() const { return index_; }            // counts all elements of the document

  // What directly follows the start tag: a text or an element. An empty Node when the element ends
  // there, cannot have content, or goes on with a comment.
  class Node firstChild() const;
  // The texts of an SVG STYLE, without comments and without those of elements in it; of any other
  // element none.
  std::vector<Text> ownTexts() const;

 private:
  ZVRSIT_LOCAL inline const ElementRecord& record() const;

  const Document* document_ = nullptr;
  std::uint32_t index_ = 0;
};

// An element, a text, or nothing.
class Node {
 public:
  Node() = default;
  explicit Node(Element element) : element_(element) {}
  explicit Node(Text text) : text_(text) {}

  explicit operator bool() const { return element_ || text_; }
  bool isText() const { return static_cast<bool>(text_); }
  bool isElement() const { return static_cast<bool>(element_); }
  Text asText() const { return text_; }           // empty when it is no text
  Element asElement() const { return element_; }  // empty when it is no element

 private:
  Element element_;
  Text text_;
};

class ZVRSIT_API NodeIterator {
 public:
  NodeIterator() = default;
  // `name` empty: all of them.
  NodeIterator(const Document* document, std::span<const std::uint32_t> elements,
               std::string_view name = {})
      : document_(document), elements_(elements), name_(name) {}

  // The next element, empty at the end.
  Element next();

 private:
  const Document* document_ = nullptr;
  std::span<const std::uint32_t> elements_;
  std::string name_;
};

// An attribute and the element that bears it.
struct ElementAttribute {
  Element element;
  Attribute attribute;
};

// What a document keeps of its page.
enum class DocumentScope {
  kWhole,
  // Keeps little of the page. Attributes that hold no reference and say nothing about one (CLASS,
  // ID, TITLE and all without a number) are left out, except in SVG, MathML and TEMPLATE. Then
  // elements without attributes and with ordinary content are left out, which is most of a page.
  // Such an element is not counted, and no firstChild() gives it.
  kReferences,
  kReferencesAndIds,  // the same, and where the IDs stand
};

// A part of a document's text.
struct TextRange {
  std::uint32_t offset;
  std::uint32_t length;
};

// How the text of a document is read.
enum class DocumentSyntax {
  kHtml,
  // XHTML and SVG: a SCRIPT, STYLE, TITLE and their like that end in "/>" are empty, and CDATA
  // sections are sections everywhere. The rest is read as HTML.
  kXml,
};

class ZVRSIT_API Document {
 public:
  Document();
  ~Document();
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  // Reads `length` bytes of HTML in the code page, in place of what the document held. The text is
  // copied, so the caller may free it at once. `parent` must be null: the text is a whole page.
  // `decode` says whether Attribute::value() decodes character references. 0; or -1 for a null
  // text, a negative length or a parent, and the document is then empty.
  int createNodes(const char* text, int length, Node* parent, bool decode);
  // The same without a copy. kTextPadding zeros must follow the text, and it must not change until
  // the document is cleared.
  int createNodesInPlace(const char* text, int length, bool decode,
                         DocumentScope scope = DocumentScope::kWhole,
                         DocumentSyntax syntax = DocumentSyntax::kHtml);

  // The elements of one name in document order, without those in the content of a TEMPLATE. For a
  // name that both HTML and SVG have, only the HTML elements. A name that has a Tag is found
  // without a walk. `upperCaseName` may be in any ASCII case.
  NodeIterator getElementsByTagName(const char* upperCaseName) const;
  // Indexes for element(), in document order, without those in the content of a TEMPLATE.
  inline std::span<const std::uint32_t> elementsOf(Tag tag) const;

  // Every attribute of that number that counts, in document order: the first one of its element,
  // and none in the content of a TEMPLATE. One pass over all attributes of the page.
  std::vector<ElementAttribute> attributesNamed(Attr attr) const;

  // The values of all ID attributes in document order, except those in the content of a TEMPLATE.
  // Empty unless the scope is DocumentScope::kReferencesAndIds.
  std::span<const TextRange> ids() const;

  // Every element of the page, 0 to elementCount() - 1, those in the content of a TEMPLATE too.
  Element element(std::uint32_t index) const { return {this, index}; }
  std::size_t elementCount() const { return elementCount_; }

  // The text given to createNodes.
  std::string_view text() const { return text_; }
  bool decodes() const { return decode_; }

  // Empties the document and keeps its memory for the next page, except what an unusually large
  // page needed.
  void clear();

 private:
  friend class Attribute;
  friend class DocumentBuilder;
  friend class Element;

  struct ZVRSIT_LOCAL Arrays;  // dom/document_arrays.h

  ZVRSIT_LOCAL void Build(std::string_view text, bool decode, DocumentScope scope);
  ZVRSIT_LOCAL void NoteArrays();
  std::span<const AttributeRecord> AttributesOf(std::uint32_t index) const {
    return {attributes_ + elements_[index].firstAttribute,
            attributes_ + elements_[index + 1].firstAttribute};
  }

  std::unique_ptr<Arrays> arrays_;
  // What the inline functions need of the arrays. So they are as fast as if the arrays were here.
  std::string_view text_;
  bool decode_ = true;
  std::size_t elementCount_ = 0;
  const ElementRecord* elements_ = nullptr;
  const AttributeRecord* attributes_ = nullptr;
  const std::uint32_t* byTag_ = nullptr;
  const std::uint32_t* tagStart_ = nullptr;
};

inline std::span<const std::uint32_t> Document::elementsOf(Tag tag) const {
  const auto i = static_cast<std::size_t>(tag);
  return {byTag_ + tagStart_[i], byTag_ + tagStart_[i + 1]};
}

inline const ElementRecord& Element::record() const {
  return document_->elements_[index_];
}

inline AttributeList Element::attributes() const {
  return {document_, document_->AttributesOf(index_)};
}

inline std::string_view Attribute::rawValue() const {
  return {document_->text_.data() + record_->valueOffset, record_->valueLength};
}

}  // namespace zvrsit
