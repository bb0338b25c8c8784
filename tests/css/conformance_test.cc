// The shared conformance cases for style sheets, as far as they concern tokens and encodings.
//
// Out of scope, and left out below:
//   - cases whose expected value is an error of the grammar above tokens ("invalid", "empty",
//     "extra-input"): what a parser drops there is no matter of tokens;
//   - the marks "eof-in-string" and "eof-in-url": parse errors are not reported;
//   - encodings given by a protocol: the sheets of a site are files.
// The two-character match tokens ("~=") of older texts of the standard are today two delimiters in
// a row; the builder below joins them.
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "css/css_decode.h"
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
  switch (token.type) {
    case Type::kIdent:
      return {"ident", Utf8Value(token)};
    case Type::kAtKeyword:
      return {"at-keyword", Utf8Value(token)};
    case Type::kHash:
      return {"hash", Utf8Value(token), token.flag ? "id" : "unrestricted"};
    case Type::kString:
      return {"string", Utf8Value(token)};
    case Type::kUrl:
      return {"url", Utf8Value(token)};
    case Type::kBadString:
      return {"error", "bad-string"};
    case Type::kBadUrl:
      return {"error", "bad-url"};
    case Type::kWhitespace:
      return " ";
    case Type::kNumber:
    case Type::kPercentage:
    case Type::kDimension:
      return NumberValue(token);
    case Type::kUnicodeRange:
      return UnicodeRangeValue(token);
    case Type::kCloseParen:
    case Type::kCloseSquare:
    case Type::kCloseCurly:
      return {"error", std::string(token.raw)};
    default:
      return std::string(token.raw);
  }
}

const char* ClosingOf(Type type) {
  switch (type) {
    case Type::kFunction:
    case Type::kOpenParen:
      return ")";
    case Type::kOpenSquare:
      return "]";
    case Type::kOpenCurly:
      return "}";
    default:
      return nullptr;
  }
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

json ValuesOf(std::string_view text) {
  CssTokenizer tokens(text, true);
  return BuildValues(tokens, json::array(), "");
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

void AppendLeaves(const json& value, json& leaves);

void AppendAllLeaves(const json& values, size_t first, json& leaves) {
  for (size_t i = first; i < values.size(); ++i) AppendLeaves(values[i], leaves);
}

// The leaves of rules, declarations and values, without white space, brackets and what separates
// rules: two readings of one sheet have the same leaves when they have the same tokens.
void AppendLeaves(const json& value, json& leaves) {
  static const std::set<std::string> kLeaves = {
      "ident",  "at-keyword", "hash",      "string",        "url",
      "number", "percentage", "dimension", "unicode-range", "error"};
  static const std::set<std::string> kSeparators = {" ", ";", "<!--", "-->", "()", "[]", "{}"};
  if (value.is_string() && kSeparators.count(value) == 0) leaves.push_back(value);
  if (!value.is_array() || value.empty()) return;
  const std::string kind = value[0].is_string() ? value[0] : "";
  if (kLeaves.count(kind) != 0) {
    leaves.push_back(value);
  } else if (kind == "at-rule" || kind == "function") {
    leaves.push_back({kind == "function" ? kind : "at-keyword", value[1]});
    AppendAllLeaves(value, 2, leaves);
  } else if (kind == "declaration") {
    leaves.push_back({"ident", value[1]});
    leaves.push_back(":");
    AppendLeaves(value[2], leaves);
    if (value[3]) AppendAllLeaves({"!", {"ident", "important"}}, 0, leaves);
  } else {
    AppendAllLeaves(value, kind == "qualified rule" ? 1 : 0, leaves);
  }
}

json LeavesOf(const json& value) {
  json leaves = json::array();
  AppendLeaves(value, leaves);
  return leaves;
}

bool HoldsGrammarError(const json& value) {
  const std::string text = value.dump();
  return text.find(R"("invalid"])") != std::string::npos ||
         text.find(R"(["error","e)") != std::string::npos;
}

class CssConformance : public testing::Test {
 protected:
  void SetUp() override {
    folder_ = std::filesystem::path(ZVRSIT_SOURCE_DIR) / "../shared/conformance/css";
    if (!std::filesystem::exists(folder_)) GTEST_SKIP() << "no conformance cases at hand";
    platform::SetCodePage(platform::kUtf8);
  }
  void TearDown() override { platform::SetCodePage(platform::kUtf8); }

  json Cases(const char* name) { return json::parse(std::ifstream(folder_ / name)); }

  std::filesystem::path folder_;
};

TEST_F(CssConformance, ComponentValues) {
  const json cases = Cases("component_value_list.json");
  ASSERT_GE(cases.size(), 100u);
  for (size_t i = 0; i + 1 < cases.size(); i += 2) {
    const std::string text = cases[i];
    EXPECT_EQ(ValuesOf(text), WithoutEofErrors(cases[i + 1])) << cases[i];
  }
}

TEST_F(CssConformance, TokensOfRulesAndDeclarations) {
  size_t compared = 0;
  for (const char* name :
       {"one_component_value.json", "declaration_list.json", "rule_list.json", "stylesheet.json"}) {
    const json cases = Cases(name);
    for (size_t i = 0; i + 1 < cases.size(); i += 2) {
      if (HoldsGrammarError(cases[i + 1])) continue;
      const std::string text = cases[i];
      EXPECT_EQ(LeavesOf(ValuesOf(text)), LeavesOf(cases[i + 1])) << name << ": " << cases[i];
      ++compared;
    }
  }
  EXPECT_GT(compared, 30u);
}

TEST_F(CssConformance, EncodingOfSheets) {
  const json cases = Cases("stylesheet_bytes.json");
  size_t compared = 0;
  for (size_t i = 0; i + 1 < cases.size(); i += 2) {
    const json& input = cases[i];
    const json& expected = cases[i + 1];
    if (HoldsGrammarError(expected)) continue;
    if (!input.value("protocol_encoding", json()).is_null()) continue;
    const json environment = input.value("environment_encoding", json());
    unsigned codePage = platform::kUtf8;
    if (environment == "ISO-8859-2") codePage = 28592;
    if (environment == "ISO-8859-5") codePage = 28595;
    // Text in another encoding than the code page may have no place in it.
    if (codePage != platform::kUtf8 && expected[1] == "utf-8") continue;
    if (codePage == 28592 && expected[1] == "iso-8859-5") continue;

    ASSERT_EQ(platform::SetCodePage(codePage), 0);
    const std::string utf8 = input["css_bytes"];
    std::string bytes;
    for (size_t at = 0; at < utf8.size(); ++at) {
      const auto lead = static_cast<unsigned char>(utf8[at]);
      bytes += lead < 0x80 ? utf8[at] : static_cast<char>((lead & 3) << 6 | (utf8[++at] & 0x3F));
    }
    std::string buffer;
    EXPECT_EQ(LeavesOf(ValuesOf(DecodeSheet(bytes, "", buffer))), LeavesOf(expected[0])) << input;
    ++compared;
  }
  EXPECT_GT(compared, 12u);
}

}  // namespace
}  // namespace zvrsit
