// Values of JSON as text.
#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

#include "findings/escapes.h"

namespace zvrsit {

// In one line, or with so many spaces a level. Bytes that are no UTF-8 become U+FFFD, and control
// characters are escaped, also those that JSON could hold.
inline std::string DumpJson(const nlohmann::ordered_json& value, int indent = -1) {
  return WithoutControls(
      value.dump(indent, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

// Appends a text of the code page as a string of JSON. Most texts need no escape; the library
// escapes the others. What there is much of is written piece by piece: as values of the library,
// 10,000 findings took 140 ms instead of 20.
inline void AppendJsonString(std::string& out, std::string_view text) {
  if (IsPlain(text)) {
    out += '"';
    out += text;
    out += '"';
  } else {
    out += DumpJson(JsonText(text));
  }
}

}  // namespace zvrsit
