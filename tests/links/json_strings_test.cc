#include "links/json_strings.h"

#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <set>

#include "support/code_page_scope.h"

namespace zvrsit {
namespace {

using Json = nlohmann::ordered_json;

// What another reader finds: "path=text" a line.
std::string Lines(const Json& value, const std::string& path) {
  if (value.is_string()) return path + "=" + value.get<std::string>() + "\n";
  std::string lines;
  if (!value.is_structured()) return lines;
  for (const auto& [name, inner] : value.items()) {
    const std::string member = path.empty() ? name : path + "." + name;
    lines += Lines(inner, value.is_array() ? path + "[]" : member);
  }
  return lines;
}

// Reads with the other reader. Names that stand twice in one object are one there: not `alike`.
std::string ReadOtherwise(const std::string& text, bool& alike) {
  std::map<int, std::set<std::string>> names;  // by depth
  alike = true;
  const auto note = [&](int depth, Json::parse_event_t event, Json& parsed) {
    if (event == Json::parse_event_t::object_start) names[depth + 1].clear();
    if (event == Json::parse_event_t::key) alike &= names[depth].insert(parsed).second;
    return true;
  };
  const Json value = Json::parse(text, note, false);
  return value.is_discarded() ? "no JSON" : Lines(value, "");
}

std::string Read(const std::string& text) {
  std::string lines;
  const bool isJson = ReadJsonStrings(text, [&](auto path, const auto& string, auto offset) {
    lines += std::string(path) + "=" + string + "\n";
    // The place is that of the text, which is written as it is unless it has escapes.
    const std::string raw = text.substr(offset, text.find('"', offset) - offset);
    EXPECT_TRUE(raw == string || raw.find('\\') != raw.npos) << text;
    EXPECT_EQ(text[offset - 1], '"');
  });
  return isJson ? lines : "no JSON";
}

// Texts of random pieces, of which some are JSON, read as another reader reads them.
TEST(JsonStrings, AreThoseOfAnotherReader) {
  std::mt19937 random(11);
  constexpr const char* kPieces[] = {"{",       "}",        "[",
                                     "]",       ",",        ":",
                                     "\"a\"",   "\"b\"",    "\"x\\n\\u00e9\\/\"",
                                     "1",       "-0.5e+3 ", "true",
                                     "null",    " ",        "\n",
                                     "01",      "\"",       "\\",
                                     "{\"a\":", "[\"c\",",  "\"\\ud83d\\ude00\"",
                                     "1.",      "\t"};
  int sound = 0;
  for (int i = 0; i < 60000; ++i) {
    std::string text;
    for (unsigned length = 1 + random() % 7; length > 0; --length) {
      text += kPieces[random() % std::size(kPieces)];
    }
    bool alike = false;
    const std::string expected = ReadOtherwise(text, alike);
    if (!alike) continue;
    ASSERT_EQ(Read(text), expected) << text;
    sound += expected == "no JSON" ? 0 : 1;
  }
  EXPECT_GT(sound, 2000);
}

TEST(JsonStrings, EndInDeepTextsAndKeepDoubleBytesWhole) {
  EXPECT_EQ(Read(std::string(100000, '[')), "no JSON");
  EXPECT_EQ(Read(std::string(50, '[') + "\"a\"" + std::string(50, ']')).substr(0, 4), "[][]");
  const test::CodePageScope shiftJis(932);
  EXPECT_EQ(Read("[\"\x95\x5C\", \"\\u8868\"]"), "[]=\x95\x5C\n[]=\x95\x5C\n");
}

}  // namespace
}  // namespace zvrsit
