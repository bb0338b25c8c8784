// The attribute values that have a grammar of their own, after the HTML standard
// (html.spec.whatwg.org).
#pragma once

#include <string_view>
#include <vector>

namespace zvrsit {

// A text without the white space at its ends.
std::string_view Trimmed(std::string_view text);

// The URLs of the image candidates of a srcset attribute ("parse a srcset attribute"), in order;
// candidates with bad descriptors are left out. Appends views of `srcset`.
void AppendImageCandidates(std::string_view srcset, std::vector<std::string_view>& urls);

// The words of a list that white space separates. Appends views of `list`.
void AppendWords(std::string_view list, std::vector<std::string_view>& words);

// Whether the REL of a LINK is STYLESHEET and nothing else, in any letter case.
bool IsStyleSheetRel(std::string_view rel);
// Whether one of its words is STYLESHEET.
bool HoldsStyleSheetRel(std::string_view rel);

// Whether a SCRIPT of this TYPE, which is not empty, runs: JavaScript by one of its names, or a
// module.
bool IsScriptType(std::string_view type);

// Whether the TYPE of a style sheet is CSS, or empty. `parameters`: whether parameters may follow
// it (allowed for a LINK, not for a STYLE).
bool IsCssType(std::string_view type, bool parameters);

// Whether all words of the REL of a LINK, and at least one, are PRECONNECT or DNS-PREFETCH: it then
// names a server, and nothing on it.
bool NamesServerAlone(std::string_view rel);

// Whether the CONTENT of a META with this PROPERTY or NAME is an address: og:image and its like.
bool IsAddressMeta(std::string_view word);

// The URL in the CONTENT of a META refresh ("shared declarative refresh steps"): a view of
// `content`, empty when the page only reloads itself or the text is no refresh at all.
std::string_view RefreshTarget(std::string_view content);

}  // namespace zvrsit
