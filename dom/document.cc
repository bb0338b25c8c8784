#include "dom/document.h"

#include <algorithm>

#include "dom/document_arrays.h"
#include "dom/document_builder.h"
#include "dom/double_byte.h"
#include "dom/html_text.h"
#include "dom/html_tokenizer.h"
#include "platform/code_page_text.h"
#include "platform/single_byte.h"

namespace zvrsit {
namespace {

// An idle document keeps at most this many bytes in each of its arrays.
constexpr std::size_t kKeptBytes = std::size_t{4} << 20;

template <class T>
void ClearAndTrim(std::vector<T>& records) {
  if (records.capacity() * sizeof(T) > kKeptBytes) records = std::vector<T>();
  records.clear();
}

}  // namespace

// Attribute, AttributeList, Text.

std::string_view Attribute::name() const {
  std::size_t length = record_->nameLength;
  if (length == AttributeRecord::kLongName) {
    const char* name = document_->arrays_->source() + record_->nameOffset;
    length = static_cast<std::size_t>(
        FindClass(name + 1, document_->arrays_->sourceEnd(), kAttributeNameEnd) - name);
  }
  return document_->text().substr(record_->nameOffset, length);
}

void Attribute::appendValue(std::string& out) const {
  if (document_->decodes()) {
    AppendAttributeValue(out, rawValue());
  } else {
    out += rawValue();
  }
}

std::string Attribute::value() const {
  std::string out;
  appendValue(out);
  return out;
}

Attribute AttributeList::getNamedItem(std::string_view upperCaseName) const {
  const Attr known = AttrOf(upperCaseName);
  if (known != Attr::kOther) return find(known);
  for (std::size_t i = 0; i < size(); ++i) {
    if (records_[i].attr == Attr::kOther &&
        platform::EqualButForCase(item(i).name(), upperCaseName)) {
      return item(i);
    }
  }
  return {};
}

std::string Text::data(bool decode) const {
  if (!decode) return std::string(raw_);
  std::string out;
  AppendText(out, raw_, kind_);
  return out;
}

// Element, NodeIterator.

std::string_view Element::name() const {
  const char* name = document_->arrays_->source() + offset() + 1;
  const char* end = FindClass(name, document_->arrays_->sourceEnd(), kTagNameEnd);
  return document_->text().substr(offset() + 1, static_cast<std::size_t>(end - name));
}

Node Element::firstChild() const {
  const Document::Arrays& arrays = *document_->arrays_;
  const ElementRecord& element = record();
  const bool selfClosing = (element.flags & ElementRecord::kSelfClosing) != 0;
  if ((!isHtml() || arrays.xml) && selfClosing) return {};
  if (isHtml() && (kVoidTags.contains(tag()) || tag() == Tag::kTemplate)) return {};
  Text text;
  if (isHtml() && ContentModelOf(tag()) != ContentModel::kData) {
    text = arrays.RawTextOf(index_);
  } else if (index_ + 1 < document_->elementCount() &&
             document_->element(index_ + 1).offset() == element.end) {
    return Node(document_->element(index_ + 1));
  } else {
    text = arrays.TextAt(element.end, !isHtml() || arrays.xml);
  }
  return text ? Node(text) : Node();
}

std::vector<Text> Element::ownTexts() const {
  return document_->arrays_->OwnTexts(index_);
}

Element NodeIterator::next() {
  while (!elements_.empty()) {
    const Element element = document_->element(elements_.front());
    elements_ = elements_.subspan(1);
    if (name_.empty() || platform::EqualButForCase(element.name(), name_)) return element;
  }
  return {};
}

// Document.

Document::Document() : arrays_(std::make_unique<Arrays>()) {
  clear();
}
Document::~Document() = default;

void Document::Arrays::Clear() {
  text = {};
  xml = false;
  ClearAndTrim(copy);
  ClearAndTrim(masked);
  ClearAndTrim(elements);
  ClearAndTrim(attributes);
  ClearAndTrim(ids);
  ClearAndTrim(rawTexts);
  ClearAndTrim(styleTexts);
  if (byTag.capacity() * sizeof(byTag[0]) > kKeptBytes) byTag = {};
  tagStart.fill(0);
  elements.push_back({0, 0, 0, Tag::kOther, 0});
}

void Document::clear() {
  arrays_->Clear();
  NoteArrays();
}

void Document::NoteArrays() {
  text_ = arrays_->text;
  elementCount_ = arrays_->elements.size() - 1;
  elements_ = arrays_->elements.data();
  attributes_ = arrays_->attributes.data();
  byTag_ = arrays_->byTag.data();
  tagStart_ = arrays_->tagStart.data();
}

int Document::createNodes(const char* text, int length, Node* parent, bool decode) {
  clear();
  if (text == nullptr || length < 0 || parent != nullptr) return -1;
  std::vector<char>& copy = arrays_->copy;
  copy.reserve(static_cast<std::size_t>(length) + kTextPadding);
  copy.assign(text, text + length);
  copy.resize(copy.size() + kTextPadding);
  Build({copy.data(), static_cast<std::size_t>(length)}, decode, DocumentScope::kWhole);
  return 0;
}

int Document::createNodesInPlace(const char* text, int length, bool decode, DocumentScope scope,
                                 DocumentSyntax syntax) {
  clear();
  if (text == nullptr || length < 0) return -1;
  arrays_->xml = syntax == DocumentSyntax::kXml;
  Build({text, static_cast<std::size_t>(length)}, decode, scope);
  return 0;
}

void Document::Build(std::string_view text, bool decode, DocumentScope scope) {
  arrays_->text = text_ = text;
  decode_ = decode;
  if (platform::HasLeadBytes()) {
    arrays_->masked.assign(text.size() + kTextPadding, '\0');
    MaskTrailBytes(text.data(), text.size(), arrays_->masked.data());
  }
  DocumentBuilder builder(*this, *arrays_, scope, false);
  builder.Build();
  if (builder.lacksHtml()) {
    arrays_->attributes.clear();
    arrays_->rawTexts.clear();
    arrays_->styleTexts.clear();
    arrays_->ids.clear();
    DocumentBuilder(*this, *arrays_, scope, true).Build();
  }
  NoteArrays();
}

std::span<const TextRange> Document::ids() const {
  return arrays_->ids;
}

NodeIterator Document::getElementsByTagName(const char* upperCaseName) const {
  const std::string_view name = upperCaseName != nullptr ? upperCaseName : "";
  if (name.empty()) return {};
  Tag tag = HtmlTagOf(name);
  if (tag == Tag::kOther) tag = ForeignTagOf(name);
  if (tag == Tag::kOther) return {this, elementsOf(tag), name};
  return {this, elementsOf(tag)};
}

std::vector<ElementAttribute> Document::attributesNamed(Attr attr) const {
  std::vector<ElementAttribute> found;
  std::uint32_t index = 0;
  Element last;
  const auto named = [attr](const AttributeRecord& record) { return record.attr == attr; };
  const std::vector<AttributeRecord>& attributes = arrays_->attributes;
  for (auto at = attributes.begin();
       (at = std::find_if(at, attributes.end(), named)) != attributes.end(); ++at) {
    const auto i = static_cast<std::size_t>(at - attributes.begin());
    while (elements_[index + 1].firstAttribute <= i) ++index;
    const Element bearer = element(index);
    if (bearer.inTemplate() || bearer == last) continue;
    found.push_back({bearer, {this, &*at}});
    last = bearer;
  }
  return found;
}

std::vector<Text> Document::Arrays::OwnTexts(std::uint32_t index) const {
  std::vector<Text> texts;
  auto part = std::ranges::lower_bound(styleTexts, index, {}, &StyleText::element);
  for (; part != styleTexts.end() && part->element == index; ++part) {
    texts.emplace_back(text.substr(part->begin, part->end - part->begin), part->kind);
  }
  return texts;
}

Text Document::Arrays::RawTextOf(std::uint32_t index) const {
  const auto found = std::lower_bound(
      rawTexts.begin(), rawTexts.end(), index,
      [](const RawTextEnd& record, std::uint32_t wanted) { return record.element < wanted; });
  if (found == rawTexts.end() || found->element != index) return {};
  const ElementRecord& element = elements[index];
  const bool rcdata = ContentModelOf(element.tag) == ContentModel::kRcdata;
  return {text.substr(element.end, found->end - element.end),
          rcdata ? TextKind::kRcdata : TextKind::kRawText};
}

Text Document::Arrays::TextAt(std::uint32_t offset, bool foreign) const {
  const char* begin = source() + offset;
  constexpr std::string_view kCdata = "<![CDATA[";
  if (foreign && std::string_view(begin, sourceEnd()).starts_with(kCdata)) {
    const char* data = begin + kCdata.size();
    const auto length = static_cast<std::size_t>(ScanCdata(data, sourceEnd()).dataEnd - data);
    return {text.substr(offset + kCdata.size(), length), TextKind::kCdata};
  }
  const char* p = DefaultSearch::Byte(begin, sourceEnd(), '<');
  while (p < sourceEnd() && !IsByte(p[1], kMarkupByte)) {
    p = DefaultSearch::Byte(p + 1, sourceEnd(), '<');
  }
  if (p == begin) return {};
  return {text.substr(offset, static_cast<std::size_t>(p - begin)), TextKind::kData};
}

}  // namespace zvrsit
