#include "links/page_parts.h"

#include "dom/byte_search.h"
#include "dom/document.h"

namespace zvrsit {
struct PageParts::Inner {
  std::string text;  // with its padding
  Document document;
};

PageParts::PageParts() = default;
PageParts::~PageParts() = default;

void PageParts::Clear() {
  parts_.clear();
  bases_.clear();
  inner_.clear();
}

void PageParts::Read(const Document& document, const RuleFlags& rules) {
  Clear();
  parts_.push_back({&document});
  if (!rules.readsInnerDocuments) return;
  ReadBase(parts_.front());
  std::size_t read = 0;
  for (int depth = 0; depth < kDeepestPart; ++depth) {
    for (const std::size_t end = parts_.size(); read < end; ++read) AddInnerParts(read);
  }
}

// Uses the first BASE with an HREF. A BASE in a shadow root does not belong to the document.
void PageParts::ReadBase(PagePart& part) {
  for (const std::uint32_t index : part.document->elementsOf(Tag::kBase)) {
    const Element element = part.document->element(index);
    const Attribute href = element.attributes().find(Attr::kHref);
    if (!href || element.inShadow()) continue;
    const std::string value = href.value();
    if (value.empty()) return;
    part.base = static_cast<std::int32_t>(bases_.size());
    part.baseOffset = element.offset();
    bases_.push_back({value, part.baseBefore});
    return;
  }
}

void PageParts::AddInnerParts(std::size_t outer) {
  const Document& document = *parts_[outer].document;
  for (const std::uint32_t index : document.elementsOf(Tag::kIframe)) {
    const Element element = document.element(index);
    const Attribute source = element.attributes().find(Attr::kSrcdoc);
    if (!source) continue;
    Inner& inner = inner_.emplace_back();
    source.appendValue(inner.text);
    const auto length = static_cast<int>(inner.text.size());
    inner.text.append(kTextPadding, '\0');
    inner.document.createNodesInPlace(inner.text.data(), length, document.decodes(),
                                      DocumentScope::kReferences);
    PagePart part{&inner.document, true, parts_[outer].OffsetInPage(source.valueOffset())};
    part.baseBefore = part.base = parts_[outer].BaseAt(element.offset());
    ReadBase(part);
    parts_.push_back(part);
  }
}

}  // namespace zvrsit
