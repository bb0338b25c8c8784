// The html5lib tokenizer cases: every case of every file, with each search. Parse errors, which
// the tokenizer does not report, are not compared.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "dom/token_dump.h"

namespace zvrsit::test {
namespace {

using nlohmann::json;

std::filesystem::path CaseFolder() {
  return std::filesystem::path(ZVRSIT_SOURCE_DIR) / ".." / "shared" / "conformance" /
         "html-tokenizer";
}

// UTF-8 of any 16-bit unit or code point, lone surrogates too: the tokenizer passes them through.
void AppendUtf8(std::string& out, unsigned c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += {static_cast<char>(0xC0 | c >> 6), static_cast<char>(0x80 | (c & 63))};
  } else {
    out += {static_cast<char>(0xE0 | c >> 12), static_cast<char>(0x80 | (c >> 6 & 63)),
            static_cast<char>(0x80 | (c & 63))};
  }
}

// Resolves the `\uXXXX` that a double-escaped case keeps in its strings.
std::string Unescape(const std::string& text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text.compare(i, 2, "\\u") == 0) {
      AppendUtf8(out, static_cast<unsigned>(std::stoul(text.substr(i + 2, 4), nullptr, 16)));
      i += 5;
    } else {
      out += text[i];
    }
  }
  return out;
}

class CaseReader {
 public:
  explicit CaseReader(const json& test) : escaped_(test.value("doubleEscaped", false)) {}

  std::string String(const json& value) const {
    const std::string text = value.is_null() ? "" : value.get<std::string>();
    return escaped_ ? Unescape(text) : text;
  }

  std::vector<Token> Tokens(const json& output) const {
    std::vector<Token> tokens;
    for (const json& row : output) {
      Token token = ReadToken(row);
      const bool joins = token.kind == Token::Kind::kText && !tokens.empty() &&
                         tokens.back().kind == Token::Kind::kText;
      if (joins) {
        tokens.back().text += token.text;
      } else {
        tokens.push_back(std::move(token));
      }
    }
    return tokens;
  }

 private:
  Token ReadToken(const json& row) const {
    const std::string kind = row[0];
    Token token{Token::Kind::kText, String(row[1])};
    if (kind == "StartTag") {
      token.kind = Token::Kind::kStartTag;
      for (const auto& [name, value] : row[2].items()) {
        token.attributes.emplace_back(String(name), String(value));
      }
      token.selfClosing = row.size() > 3 && row[3].get<bool>();
    } else if (kind == "EndTag") {
      token.kind = Token::Kind::kEndTag;
    } else if (kind == "Comment") {
      token.kind = Token::Kind::kComment;
    } else if (kind == "DOCTYPE") {
      token.kind = Token::Kind::kDoctype;
      token.hasPublicId = !row[2].is_null();
      token.hasSystemId = !row[3].is_null();
      token.publicId = String(row[2]);
      token.systemId = String(row[3]);
      token.quirks = !row[4].get<bool>();
    } else {
      EXPECT_EQ(kind, "Character");
    }
    return token;
  }

  bool escaped_;
};

ContentModel ModelOf(const std::string& state) {
  if (state == "RCDATA state") return ContentModel::kRcdata;
  if (state == "RAWTEXT state") return ContentModel::kRawText;
  if (state == "Script data state") return ContentModel::kScriptData;
  if (state == "PLAINTEXT state") return ContentModel::kPlainText;
  if (state == "CDATA section state") return ContentModel::kCdata;
  EXPECT_EQ(state, "Data state");
  return ContentModel::kData;
}

// A JSON object has no order, so attributes are compared sorted.
std::vector<Token> Sorted(std::vector<Token> tokens) {
  for (Token& token : tokens) std::sort(token.attributes.begin(), token.attributes.end());
  return tokens;
}

void RunCase(const json& test) {
  const CaseReader reader(test);
  const std::string input = reader.String(test["input"]);
  const std::vector<Token> wanted = Sorted(reader.Tokens(test["output"]));
  const json states = test.value("initialStates", json{"Data state"});
  const std::string last = test.value("lastStartTag", "");
  for (const json& state : states) {
    const ContentModel model = ModelOf(state);
    EXPECT_EQ(Sorted(Tokenize<DefaultSearch>(input, false, model, last)), wanted)
        << test["description"] << " in " << state;
    EXPECT_EQ(Sorted(Tokenize<PortableSearch>(input, false, model, last)), wanted)
        << test["description"] << " in " << state << ", portable";
  }
}

TEST(TokenizerConformance, EveryCaseGivesItsTokens) {
  if (!std::filesystem::exists(CaseFolder())) {
    GTEST_SKIP() << "no conformance cases at " << CaseFolder();
  }
  std::size_t cases = 0;
  for (const auto& entry : std::filesystem::directory_iterator(CaseFolder())) {
    if (entry.path().extension() != ".test") continue;
    SCOPED_TRACE(entry.path().filename());
    std::ifstream file(entry.path());
    const json parsed = json::parse(file);
    for (const json& test : parsed["tests"]) {
      RunCase(test);
      ++cases;
    }
  }
  EXPECT_GT(cases, 6000u);
  RecordProperty("cases", static_cast<int>(cases));
}

}  // namespace
}  // namespace zvrsit::test
