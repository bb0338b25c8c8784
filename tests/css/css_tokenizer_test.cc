#include "css/css_tokenizer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>

#include "platform/code_page.h"

namespace zvrsit {
namespace {

// The text token by token, each as its raw form, parted by "|".
std::string Split(std::string_view text) {
  std::string joined;
  CssTokenizer tokens(text);
  for (CssToken token = tokens.Next(); token.type != CssTokenType::kEnd; token = tokens.Next()) {
    if (!joined.empty()) joined += '|';
    joined += token.raw;
  }
  return joined;
}

TEST(CssTokenizer, LineEndsAreThoseOfThePreprocessedText) {
  EXPECT_EQ(Split("'a\\\r\nb'"), "'a\\\r\nb'");
  EXPECT_EQ(CssValue("a\\\r\nb\\\fc\\41\r\nd"), "abcAd");
  EXPECT_EQ(Split("'a\rb"), "'a|\r|b");
  EXPECT_EQ(CssValue(std::string_view("a\0b", 3)),
            "a\xEF\xBF\xBD"
            "b");
}

// Second bytes of these characters are a backslash, a letter, a brace.
TEST(CssTokenizer, DoubleByteCharactersStayWhole) {
  ASSERT_EQ(platform::SetCodePage(932), 0);
  EXPECT_EQ(Split("'\x83\x5C'a"), "'\x83\x5C'|a");                // so
  EXPECT_EQ(Split("url(\x95\x5C.png)a"), "url(\x95\x5C.png)|a");  // hyo
  EXPECT_EQ(Split(".\x83\x7B{}"), ".|\x83\x7B|{|}");              // bo
  EXPECT_EQ(CssValue("\x83\x5C\x41"), "\x83\x5C\x41");
  EXPECT_EQ(CssValue("\\\x83\x5C\x41"), "\x83\x5C\x41");
  // A lone lead byte does not take a quote along.
  EXPECT_EQ(Split("'\x83'a"), "'\x83'|a");
  platform::SetCodePage(platform::kUtf8);
}

TEST(CssTokenizer, ValuesCompareInAnyCaseAndThroughEscapes) {
  EXPECT_TRUE(CssValueIs("UrL", "url"));
  EXPECT_TRUE(CssValueIs("\\55 R\\6c", "url"));
  EXPECT_FALSE(CssValueIs("ur", "url"));
  EXPECT_FALSE(CssValueIs("ur\x0C", "url"));
}

// Every text is cut into tokens that cover it in order and leave out comments only, within a time
// that grows with its length.
TEST(CssTokenizer, AnyTextIsCutInOrderAndInLinearTime) {
  constexpr std::string_view kPieces[] = {"url(", "\\", "/*", "*/",  "'",    "\"",   "(", ")",
                                          "{",    "}",  "@",  "-->", "<!--", "#",    "-", ".",
                                          "1e",   "\n", " ",  "u+?", "\x83", "\\26", "a", ":"};
  for (const unsigned codePage : {platform::kUtf8, 932u}) {
    ASSERT_EQ(platform::SetCodePage(codePage), 0);
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
      std::string text;
      for (int i = 0; i < 30; ++i) text += kPieces[random() % std::size(kPieces)];
      CssTokenizer tokens(text, round % 2 == 0);
      const char* at = text.data();
      for (CssToken token = tokens.Next(); token.type != CssTokenType::kEnd;
           token = tokens.Next()) {
        ASSERT_FALSE(token.raw.empty());
        ASSERT_GE(token.raw.data(), at);
        const bool isBehindComment = token.raw.data() > at;
        ASSERT_EQ(isBehindComment, std::string_view(at, 2) == "/*");
        at = token.raw.data() + token.raw.size();
        CssValue(token.value);
      }
    }
  }
  platform::SetCodePage(platform::kUtf8);
  for (const std::string_view piece : kPieces) {
    std::string text;
    while (text.size() < 300'000) text += piece;
    const auto start = std::chrono::steady_clock::now();
    CssTokenizer tokens(text);
    while (tokens.Next().type != CssTokenType::kEnd) continue;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2)) << piece;
  }
}

}  // namespace
}  // namespace zvrsit
