#include "dom/document_builder.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace zvrsit {
namespace {

// Whether the ENCODING of an annotation-xml makes its content HTML.
bool NamesHtml(const Attribute& encoding) {
  if (!encoding) return false;
  const std::string value = encoding.value();
  const char* end = value.data() + value.size();
  return (value.size() == 9 && BeginsWithNoCase(value.data(), end, "text/html")) ||
         (value.size() == 21 && BeginsWithNoCase(value.data(), end, "application/xhtml+xml"));
}

// Whether a TEMPLATE declares a shadow root.
bool DeclaresShadow(const Attribute& mode) {
  if (!mode) return false;
  const std::string value = mode.value();
  const char* end = value.data() + value.size();
  return (value.size() == 4 && BeginsWithNoCase(value.data(), end, "open")) ||
         (value.size() == 6 && BeginsWithNoCase(value.data(), end, "closed"));
}

// The average of pages. A list that grows while it is filled has to be copied.
constexpr std::size_t kBytesAnElement = 48;
constexpr std::size_t kBytesAReference = 192;
constexpr std::size_t kMostAtOnce = std::size_t{1} << 20;

template <class Record>
void MakeRoom(std::vector<Record>& records, std::size_t count) {
  count = std::min(count, kMostAtOnce);
  if (count > records.capacity()) records.reserve(std::max(count, records.capacity() * 2));
}

}  // namespace

void DocumentBuilder::Build() {
  arrays_.elements.clear();
  const std::size_t expected =
      arrays_.text.size() / (leftOutOfHtml_.empty() ? kBytesAnElement : kBytesAReference);
  MakeRoom(arrays_.elements, expected);
  MakeRoom(arrays_.attributes, expected);
  HtmlTokenizer<DocumentBuilder>(source_, arrays_.text.size(), *this).Run();
  AbandonTag();
  arrays_.elements.push_back({static_cast<std::uint32_t>(arrays_.text.size()),
                              static_cast<std::uint32_t>(arrays_.text.size()), committed_,
                              Tag::kOther, 0});
  IndexTags();
  // Behind a STYLE that lies in another, text of the outer one may follow.
  std::ranges::stable_sort(arrays_.styleTexts, {}, &Document::Arrays::StyleText::element);
}

void DocumentBuilder::AddId(const AttributeSlices& slices) {
  if (tagHasId_ || foreign_.InTemplate() || foreign_.InShadow()) return;
  tagHasId_ = true;
  arrays_.ids.push_back(
      {Offset(slices.value), static_cast<std::uint32_t>(slices.valueEnd - slices.value)});
}

// It holds a "-", as a few of SVG and MathML do too.
bool DocumentBuilder::IsCustom(const TagSlices& slices) {
  if (std::find(slices.name, slices.nameEnd, '-') == slices.nameEnd) return false;
  constexpr const char* kOthers[] = {"annotation-xml", "color-profile", "font-face",
                                     "missing-glyph"};
  return std::none_of(std::begin(kOthers), std::end(kOthers), [&](const char* other) {
    return BeginsWithNoCase(slices.name, slices.nameEnd, other);
  });
}

ContentModel DocumentBuilder::Place(const TagSlices& slices, Tag tag) {
  const AttributeList attributes(&document_, std::span(arrays_.attributes).subspan(committed_));
  ForeignContent::StartTag start{
      NameOf(slices), static_cast<std::uint32_t>(arrays_.elements.size()), slices.selfClosing};
  start.isCustom = IsCustom(slices);
  start.isEmpty = arrays_.xml && slices.selfClosing;
  if (tag == Tag::kFont) {
    start.breaksOutFont = attributes.getNamedItem("color") || attributes.getNamedItem("face") ||
                          attributes.getNamedItem("size");
  } else if (tag == Tag::kTemplate) {
    start.declaresShadow = DeclaresShadow(attributes.find(Attr::kShadowrootmode));
    metShadowRoot_ |= start.declaresShadow;
  } else if (BeginsWithNoCase(slices.name, slices.nameEnd, "annotation-xml")) {
    start.htmlAnnotation = NamesHtml(attributes.find(Attr::kEncoding));
  }
  const ForeignContent::Placed placed = foreign_.Start(start);
  std::uint16_t flags = 0;
  if (placed.foreign) flags |= ElementRecord::kForeign;
  if (placed.inShadow) flags |= ElementRecord::kInShadow;
  if (placed.tag == Tag::kForm && !foreign_.InTemplate() && !foreign_.InShadow()) {
    if (formIsOpen_) flags |= ElementRecord::kIgnored;
    formIsOpen_ = true;
  }
  if (placed.inTemplate) {
    flags |= ElementRecord::kInTemplate;
  } else {
    ++counts_[static_cast<std::size_t>(placed.tag)];
  }
  AddElement(slices, placed.tag, flags);
  ChooseLeftOut();
  return placed.foreign ? ContentModel::kData : ModelOf(slices, placed.tag);
}

// Groups the elements by tag: each group's place follows from the counts, and one pass over the
// elements fills them all.
void DocumentBuilder::IndexTags() {
  auto& starts = arrays_.tagStart;
  std::array<std::uint32_t, kTagCount> next;
  std::uint32_t total = 0;
  for (std::size_t tag = 0; tag < kTagCount; ++tag) {
    starts[tag] = next[tag] = total;
    total += counts_[tag];
  }
  starts[kTagCount] = total;
  if (arrays_.byTag.size() < total) arrays_.byTag.resize(total);
  std::uint32_t* const byTag = arrays_.byTag.data();
  const auto count = static_cast<std::uint32_t>(arrays_.elements.size() - 1);
  for (std::uint32_t i = 0; i < count; ++i) {
    const ElementRecord& element = arrays_.elements[i];
    if ((element.flags & ElementRecord::kInTemplate) != 0) continue;
    byTag[next[static_cast<std::size_t>(element.tag)]++] = i;
  }
}

}  // namespace zvrsit
