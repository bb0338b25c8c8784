// The fragments of links, after "scrolling to a fragment" of the HTML standard.
#pragma once

#include <string>
#include <string_view>

#include "util/ascii.h"

namespace zvrsit {

// What stands behind the first "#" of a link's text, as a browser takes it: without tabs and line
// ends, without white space at its end, and without a text fragment (":~:" and what follows). It is
// good for as long as `text` and `buffer` are.
std::string_view FragmentOf(std::string_view text, std::string& buffer);

// Whether a fragment must name an element of its page. The empty fragment and "top" always lead
// somewhere. One that begins with "/" or "!" is a route, which a script follows.
inline bool NamesAnElement(std::string_view fragment) {
  if (fragment.empty() || fragment.front() == '/' || fragment.front() == '!') return false;
  return !EqualsLower(fragment, "top");
}

}  // namespace zvrsit
