// Values of JSON as text.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace zvrsit {

// In one line, or with so many spaces a level. Bytes that are no UTF-8 become U+FFFD.
inline std::string DumpJson(const nlohmann::ordered_json& value, int indent = -1) {
  return value.dump(indent, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace zvrsit
