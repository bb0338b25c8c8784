// The tokens of texts as another tokenizer finds them, with each search (token_cases.py). Parse
// errors, which the tokenizer does not report, are not compared.
#include <gtest/gtest.h>

#include <fstream>
#include <map>

#include "dom/token_dump.h"

namespace zvrsit::test {
namespace {

const std::map<std::string, ContentModel> kModels = {
    {"data", ContentModel::kData},           {"rcdata", ContentModel::kRcdata},
    {"rawtext", ContentModel::kRawText},     {"scriptData", ContentModel::kScriptData},
    {"plaintext", ContentModel::kPlainText}, {"cdataSection", ContentModel::kCdata}};

TEST(Tokenizer, FindsTheTokensThatAnotherFinds) {
  const json cases = json::parse(std::ifstream(ZVRSIT_TOKEN_CASES));
  ASSERT_GT(cases.size(), 10000u);
  for (const json& row : cases) {
    json wanted = json::array();
    for (const json& token : row["tokens"]) AddRow(wanted, token);
    const std::string text = row["text"];
    const std::string last = row["last"];
    const ContentModel model = kModels.at(row["state"]);
    EXPECT_EQ(Tokenize<DefaultSearch>(text, false, model, last), wanted) << row;
    EXPECT_EQ(Tokenize<PortableSearch>(text, false, model, last), wanted) << row << ", portable";
  }
}

}  // namespace
}  // namespace zvrsit::test
