// Writes JSON piece by piece: as values of the JSON library, a large site would take too long.
#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

#include "findings/dump_json.h"

namespace zvrsit {

inline void AppendNumber(std::string& out, std::int64_t number) {
  char digits[24];
  out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

// `"key":"text"`; the text is one of the code page.
inline void AppendField(std::string& out, std::string_view key, std::string_view text) {
  out += '"';
  out += key;
  out += "\":";
  AppendJsonString(out, text);
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
