// The cases that parsers of style sheets share, as far as they concern tokens. The marks
// "eof-in-string" and "eof-in-url" are left out: parse errors are not reported. The two-character
// match tokens ("~=") of older texts of the standard are today two delimiters in a row; the builder
// below joins them.
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "css/css_tokenizer.h"
#include "platform/code_page.h"

namespace zvrsit {
namespace {

using nlohmann::json;
using Type = CssTokenType;

std::string Utf8Value(const CssToken& token) {
  return platform::ToUtf8(CssValue(token.value));
}

json NumberValue(const CssToken& token) {
  const std::string_view written = token.raw.substr(
      0, token.raw.size() - token.value.size() - (token.type == Type::kPercentage));
  const std::string_view digits = written[0] == '+' ? written.substr(1) : written;
  double value = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), value);
  const char* name = token.type == Type::kNumber       ? "number"
                     : token.type == Type::kPercentage ? "percentage"
                                                       : "dimension";
  json result = {name, std::string(written), value, token.flag ? "integer" : "number"};
  if (token.type == Type::kDimension) result.push_back(Utf8Value(token));
  return result;
}

json UnicodeRangeValue(const CssToken& token) {
  std::string first(token.value.substr(0, token.value.find('-')));
  std::string last(token.value.substr(token.value.find('-') + 1));
  std::replace(first.begin(), first.end(), '?', '0');
  std::replace(last.begin(), last.end(), '?', 'F');
  return {"unicode-range", std::stoul(first, nullptr, 16), std::stoul(last, nullptr, 16)};
}

json LeafValue(const CssToken& token) {
  static const std::map<Type, const char*> kWithText = {{Type::kIdent, "ident"},
                                                        {Type::kAtKeyword, "at-keyword"},
                                                        {Type::kString, "string"},
                                                        {Type::kUrl, "url"}};
  static const std::map<Type, const char*> kErrors = {{Type::kBadString, "bad-string"},
                                                      {Type::kBadUrl, "bad-url"},
                                                      {Type::kCloseParen, ")"},
                                                      {Type::kCloseSquare, "]"},
                                                      {Type::kCloseCurly, "}"}};
  const auto text = kWithText.find(token.type);
  if (text != kWithText.end()) return {text->second, Utf8Value(token)};
  const auto error = kErrors.find(token.type);
  if (error != kErrors.end()) return {"error", error->second};
  switch (token.type) {
    case Type::kHash:
      return {"hash", Utf8Value(token), token.flag ? "id" : "unrestricted"};
    case Type::kWhitespace:
      return " ";
    case Type::kNumber:
    case Type::kPercentage:
    case Type::kDimension:
      return NumberValue(token);
    case Type::kUnicodeRange:
      return UnicodeRangeValue(token);
    default:
      return std::string(token.raw);
  }
}

const char* ClosingOf(Type type) {
  if (type == Type::kOpenSquare) return "]";
  if (type == Type::kOpenCurly) return "}";
  return type == Type::kFunction || type == Type::kOpenParen ? ")" : nullptr;
}

bool JoinsMatch(const json& values, const CssToken& last, const CssToken& token) {
  if (values.empty() || last.type != Type::kDelim || token.type != Type::kDelim) return false;
  if (last.raw.data() + 1 != token.raw.data()) return false;
  const std::string both = std::string(last.raw) + std::string(token.raw);
  return both == "||" || (both[1] == '=' && both.find_first_of("~|^$*") == 0);
}

// Component values up to the closing bracket, or to the end of the text.
json BuildValues(CssTokenizer& tokens, json values, std::string_view closing) {
  CssToken last;
  for (CssToken token = tokens.Next(); token.type != Type::kEnd; token = tokens.Next()) {
    if (token.raw == closing) return values;
    if (JoinsMatch(values, last, token)) {
      values.back() = values.back().get<std::string>() + std::string(token.raw);
    } else if (const char* close = ClosingOf(token.type)) {
      json start = json::array({std::string(token.raw) + close});
      if (token.type == Type::kFunction) start = {"function", Utf8Value(token)};
      values.push_back(BuildValues(tokens, std::move(start), close));
    } else {
      values.push_back(LeafValue(token));
    }
    last = token;
  }
  return values;
}

bool IsError(const json& value, std::string_view name) {
  return value.is_array() && value.size() == 2 && value[0] == "error" && value[1] == name;
}

json WithoutEofErrors(const json& values) {
  if (!values.is_array()) return values;
  json kept = json::array();
  for (const json& value : values) {
    if (IsError(value, "eof-in-string") || IsError(value, "eof-in-url")) continue;
    kept.push_back(WithoutEofErrors(value));
  }
  return kept;
}

TEST(CssConformance, ComponentValues) {
  platform::SetCodePage(platform::kUtf8);
  const json cases = json::parse(std::ifstream(ZVRSIT_CSS_CASES));
  ASSERT_GE(cases.size(), 100u);
  for (size_t i = 0; i + 1 < cases.size(); i += 2) {
    const std::string text = cases[i];
    CssTokenizer tokens(text, true);
    EXPECT_EQ(BuildValues(tokens, json::array(), ""), WithoutEofErrors(cases[i + 1])) << text;
  }
}

}  // namespace
}  // namespace zvrsit
