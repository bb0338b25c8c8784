// The html5lib tokenizer cases: every case of every file, with each search. Parse errors, which
// the tokenizer does not report, are not compared.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "dom/token_dump.h"

namespace zvrsit::test {
namespace {

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

// The same in every string of a value, names of attributes too.
json UnescapeAll(const json& value) {
  if (value.is_string()) return Unescape(value.get<std::string>());
  if (!value.is_structured()) return value;
  json out = value.is_array() ? json::array() : json::object();
  for (const auto& [key, part] : value.items()) {
    if (value.is_array()) {
      out.push_back(UnescapeAll(part));
    } else {
      out[Unescape(key)] = UnescapeAll(part);
    }
  }
  return out;
}

ContentModel ModelOf(const std::string& state) {
  static const std::map<std::string, ContentModel> kModels = {
      {"Data state", ContentModel::kData},
      {"RCDATA state", ContentModel::kRcdata},
      {"RAWTEXT state", ContentModel::kRawText},
      {"Script data state", ContentModel::kScriptData},
      {"PLAINTEXT state", ContentModel::kPlainText},
      {"CDATA section state", ContentModel::kCdata}};
  return kModels.at(state);
}

void RunCase(const json& test) {
  const bool escaped = test.value("doubleEscaped", false);
  const std::string input = escaped ? Unescape(test["input"]) : test["input"].get<std::string>();
  json wanted = json::array();
  for (const json& row : test["output"]) AddRow(wanted, escaped ? UnescapeAll(row) : row);
  const json states = test.value("initialStates", json{"Data state"});
  const std::string last = test.value("lastStartTag", "");
  for (const json& state : states) {
    const ContentModel model = ModelOf(state);
    EXPECT_TRUE(Tokenize<DefaultSearch>(input, false, model, last) == wanted)
        << test["description"] << " in " << state;
    EXPECT_TRUE(Tokenize<PortableSearch>(input, false, model, last) == wanted)
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
