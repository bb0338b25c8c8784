// The sink that turns tokens into the arrays of a Document.
#pragma once

#include <array>

#include "dom/attr_table.h"
#include "dom/document_arrays.h"
#include "dom/foreign_content.h"
#include "dom/html_tokenizer.h"

namespace zvrsit {

class DocumentBuilder {
 public:
  // Fills the arrays of `document`, of which only the text is there so far. `followsAll`: see
  // ForeignContent.
  DocumentBuilder(const Document& document, Document::Arrays& arrays, DocumentScope scope,
                  bool followsAll)
      : document_(document),
        arrays_(arrays),
        source_(arrays.source()),
        foreign_(followsAll),
        keepsIds_(scope == DocumentScope::kReferencesAndIds),
        leftOutOfHtml_(scope == DocumentScope::kWhole ? AttrSet() : kWithoutReference),
        leftOut_(followsAll ? AttrSet() : leftOutOfHtml_) {}

  // Reads all of the text.
  void Build();
  // Whether the page is to be read again with all elements followed. Only then it is known which
  // element a TEMPLATE declares a shadow root for, and what an end tag in SVG ends around it.
  bool lacksHtml() const { return metShadowRoot_ || foreign_.LacksHtml(); }

  // The tokenizer's side.
  void Characters(const char* begin, const char* end, TextKind kind) {
    if (kind == TextKind::kData || kind == TextKind::kCdata) return AddStyleText(begin, end, kind);
    const auto element = static_cast<std::uint32_t>(arrays_.elements.size() - 1);
    arrays_.rawTexts.push_back({element, Offset(end)});
  }
  void Comment(const char*, const char*) {}
  void Doctype(const DoctypeToken&) {}
  bool InForeignContent() { return arrays_.xml || foreign_.IsInnermost(); }

  void Attribute(const AttributeSlices& slices) {
    const auto nameLength = static_cast<std::size_t>(slices.nameEnd - slices.name);
    const Attr attr =
        slices.known != Attr::kOther ? slices.known : AttrOfPadded(slices.name, nameLength);
    if (attr == Attr::kId && keepsIds_) AddId(slices);
    if (leftOut_.contains(attr)) return;
    arrays_.attributes.push_back({Offset(slices.name), Offset(slices.value),
                                  static_cast<std::uint32_t>(slices.valueEnd - slices.value), attr,
                                  nameLength < AttributeRecord::kLongName
                                      ? static_cast<std::uint16_t>(nameLength)
                                      : AttributeRecord::kLongName});
  }

  void AbandonTag() {
    arrays_.attributes.resize(committed_);
    if (tagHasId_) arrays_.ids.pop_back();
    tagHasId_ = false;
  }

  ContentModel StartTag(const TagSlices& slices) {
    tagHasId_ = false;
    const Tag tag =
        HtmlTagOfPadded(slices.name, static_cast<std::size_t>(slices.nameEnd - slices.name));
    if (!leftOut_.empty() && arrays_.attributes.size() == committed_ &&
        kIsOrdinary[static_cast<std::size_t>(tag)]) {
      return ContentModel::kData;
    }
    if (!foreign_.Idle() || kPlacedTags.contains(tag)) {
      // A copy made member by member lets the slices of all other tags stay in registers.
      return Place({slices.begin, slices.end, slices.name, slices.nameEnd, slices.selfClosing,
                    slices.endsRawText},
                   tag);
    }
    ++counts_[static_cast<std::size_t>(tag)];
    AddElement(slices, tag, 0);
    return ModelOf(slices, tag);
  }

  bool WantsEndTags() const { return formIsOpen_ || !foreign_.Idle(); }
  void EndTag(const TagSlices& slices) {
    if (!WantsEndTags() || slices.endsRawText) return;
    const NameKey name = NameOf(slices);
    if (formIsOpen_ && HtmlTagOf(name) == Tag::kForm) {
      formIsOpen_ = foreign_.InTemplate() || foreign_.InShadow();
    }
    if (foreign_.Idle()) return;
    foreign_.End(name);
    ChooseLeftOut();
  }

 private:
  // In DocumentScope::kReferences.
  static constexpr AttrSet kWithoutReference{Attr::kOther, Attr::kClass, Attr::kId, Attr::kTitle};

  // Tags that change the meaning of what follows them.
  static constexpr TagSet kPlacedTags{Tag::kSvg, Tag::kMath, Tag::kTemplate, Tag::kForm};

  // Whether an element without attributes changes nothing for its content and for what follows it.
  static constexpr std::array<bool, kTagCount> kIsOrdinary = [] {
    std::array<bool, kTagCount> isOrdinary{};
    for (std::size_t i = 0; i < kTagCount; ++i) {
      const Tag tag = static_cast<Tag>(i);
      isOrdinary[i] = ContentModelOf(tag) == ContentModel::kData && !kPlacedTags.contains(tag);
    }
    return isOrdinary;
  }();

  // What follows the start tag of an HTML element.
  ContentModel ModelOf(const TagSlices& slices, Tag tag) const {
    const ContentModel model = ContentModelOf(tag);
    const bool isEmpty = model != ContentModel::kData && arrays_.xml && slices.selfClosing;
    return isEmpty ? ContentModel::kData : model;
  }

  void ChooseLeftOut() { leftOut_ = foreign_.Idle() ? leftOutOfHtml_ : AttrSet(); }

  void AddElement(const TagSlices& slices, Tag tag, std::uint16_t flags) {
    if (slices.selfClosing) flags |= ElementRecord::kSelfClosing;
    arrays_.elements.push_back({Offset(slices.begin), Offset(slices.end), committed_, tag, flags});
    committed_ = static_cast<std::uint32_t>(arrays_.attributes.size());
  }

  // A second ID of one tag names nothing. Not inline: with it, Attribute would be too large to be
  // inlined itself, which costs a rebuild a fifteenth.
  [[gnu::noinline]] void AddId(const AttributeSlices& slices);

  void AddStyleText(const char* begin, const char* end, TextKind kind) {
    const std::uint32_t style = foreign_.SvgStyle();
    if (style == ForeignContent::kNone) return;
    arrays_.styleTexts.push_back({style, Offset(begin), Offset(end), kind});
  }

  std::uint32_t Offset(const char* p) const { return static_cast<std::uint32_t>(p - source_); }

  static NameKey NameOf(const TagSlices& slices) {
    return MakeNameKey({slices.name, static_cast<std::size_t>(slices.nameEnd - slices.name)});
  }

  // Whether a name is that of a custom element.
  static bool IsCustom(const TagSlices& slices);
  // A start tag in SVG, MathML or TEMPLATE, or where one of them or a FORM begins.
  ContentModel Place(const TagSlices& slices, Tag tag);
  void IndexTags();

  const Document& document_;  // for handles
  Document::Arrays& arrays_;
  const char* const source_;
  ForeignContent foreign_;
  const bool keepsIds_;
  const AttrSet leftOutOfHtml_;  // the attributes that are not kept
  AttrSet leftOut_;              // the same where the text is now
  std::uint32_t committed_ = 0;  // attributes of finished start tags
  bool tagHasId_ = false;        // in ids, of the start tag that is being read
  bool formIsOpen_ = false;      // another FORM would be ignored
  bool metShadowRoot_ = false;
  std::array<std::uint32_t, kTagCount> counts_{};
};

}  // namespace zvrsit
