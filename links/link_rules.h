// The two sets of rules by which a site's links are read.
#pragma once

#include <cstdint>

namespace zvrsit {

// Stored with a site profile as a number, so the values stay.
enum class LinkRules : std::int32_t {
  // What the authoring application has always counted: seven schemes, fourteen tags, targets
  // joined as written.
  Classic = 0,
  // What a browser of today would load from the page.
  Web = 1,
};

}  // namespace zvrsit
