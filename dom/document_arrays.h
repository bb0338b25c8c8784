// What a Document knows of its page.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "dom/document.h"

namespace zvrsit {

struct Document::Arrays {
  // The end of the raw text that follows an element's start tag.
  struct RawTextEnd {
    std::uint32_t element;
    std::uint32_t end;
  };
  // A text that stands in an SVG STYLE itself.
  struct StyleText {
    std::uint32_t element;
    std::uint32_t begin;
    std::uint32_t end;
    TextKind kind;
  };

  // Empties them and keeps their memory, except what an unusually large page needed.
  void Clear();

  // The text that is searched for markup. In a double-byte code page its trail bytes are masked.
  const char* source() const { return masked.empty() ? text.data() : masked.data(); }
  const char* sourceEnd() const { return source() + text.size(); }

  // The text that an element begins with. `index` is the element, and `offset` is the end of its
  // start tag.
  Text RawTextOf(std::uint32_t index) const;
  Text TextAt(std::uint32_t offset, bool foreign) const;
  // See Element::ownTexts().
  std::vector<Text> OwnTexts(std::uint32_t index) const;

  // Each text is followed by zeros, see html_tokenizer.h.
  std::string_view text;  // in `copy`, or of the caller
  std::vector<char> copy;
  std::vector<char> masked;  // see double_byte.h; empty in other code pages
  bool xml = false;
  std::vector<ElementRecord> elements;  // and one more, where the last one's attributes end
  std::vector<AttributeRecord> attributes;
  std::vector<TextRange> ids;                           // see Document::ids
  std::vector<RawTextEnd> rawTexts;                     // ascending by element
  std::vector<StyleText> styleTexts;                    // the same
  std::vector<std::uint32_t> byTag;                     // element indexes, grouped by tag; may be
                                                        // longer than it is filled
  std::array<std::uint32_t, kTagCount + 1> tagStart{};  // where each group begins in byTag
};

}  // namespace zvrsit
