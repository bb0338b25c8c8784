// The two attribute values that have a grammar of their own, after the HTML standard
// (html.spec.whatwg.org).
#pragma once

#include <string_view>
#include <vector>

namespace zvrsit {

// The URLs of the image candidates of a srcset attribute ("parse a srcset attribute"), in order;
// candidates with bad descriptors are left out. Appends views of `srcset`.
void AppendImageCandidates(std::string_view srcset, std::vector<std::string_view>& urls);

// The URL in the CONTENT of a META refresh ("shared declarative refresh steps"): a view of
// `content`, empty when the page only reloads itself or the text is no refresh at all.
std::string_view RefreshTarget(std::string_view content);

}  // namespace zvrsit
