// Values of JSON as text.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

#include "findings/escapes.h"

namespace zvrsit {

// In one line, or with so many spaces a level. Bytes that are no UTF-8 become U+FFFD, and control
// characters are escaped, also those that JSON could hold.
inline std::string DumpJson(const nlohmann::ordered_json& value, int indent = -1) {
  return WithoutControls(
      value.dump(indent, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

}  // namespace zvrsit
