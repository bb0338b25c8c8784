// Writes JSON piece by piece: as values of the JSON library, a large site would take too long.
// Texts are appended by AppendJsonString (findings/dump_json.h).
#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace zvrsit {

inline void AppendNumber(std::string& out, std::int64_t number) {
  char digits[24];
  out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

// `"key":[` and so on, with what each(item) appends for an item.
template <class Items, class Each>
void AppendArray(std::string& out, std::string_view key, const Items& items, Each each) {
  out += '"';
  out += key;
  out += "\":[";
  bool isFirst = true;
  for (const auto& item : items) {
    if (!isFirst) out += ',';
    isFirst = false;
    each(item);
  }
  out += ']';
}

}  // namespace zvrsit
