// What the author of a page does not want to hear of.
#pragma once

#include <cstddef>
#include <string_view>

namespace zvrsit {

// The attribute that says so: `<a href="gone.html" data-zvrsit-ignore>`.
inline constexpr std::string_view kIgnoreAttribute = "data-zvrsit-ignore";

// How far a tag may reach from a reference in it, in bytes. Without a bound, a page with many
// broken references in one long tag would take quadratic time.
inline constexpr std::size_t kLongestTag = 4096;

// Whether the reference at `offset` of a page's text stands in a start tag with that attribute, or
// in the STYLE or SCRIPT behind such a tag. The tag is looked for from there: the last `<` with a
// letter behind it. So a reference behind a `<a` in an attribute's value is judged by what follows
// that.
bool IsIgnoredAt(std::string_view text, std::size_t offset);

}  // namespace zvrsit
