// From a file on disk to text in the code page.
#include <gtest/gtest.h>

#include <filesystem>

#include "dom/code_conv.h"
#include "dom/mapped_file.h"
#include "dom/page.h"
#include "support/temp_folder.h"

namespace zvrsit::test {
namespace {

class MappedFileTest : public testing::Test {
 protected:
  // The `\` path of a file with the content.
  std::string Write(const char* name, const std::string& content) {
    folder_.write(name, content);
    return folder_.path(name);
  }

  TempFolder folder_;
};

TEST_F(MappedFileTest, HoldsTheWholeFileUntilItIsClosed) {
  const std::string content("<a>\0\r\n\xFF", 8);
  MappedFile file;
  ASSERT_TRUE(file.open(Write("a.htm", content), 0));
  EXPECT_EQ(std::string(file.top(), file.size()), content);
  file.close();
  EXPECT_EQ(file.top(), nullptr);
  EXPECT_EQ(file.size(), 0u);
  ASSERT_TRUE(file.open(Write("empty.htm", ""), 0));
  EXPECT_NE(file.top(), nullptr);
  EXPECT_EQ(file.size(), 0u);
  const std::string large(5'000'000, 'x');
  ASSERT_TRUE(file.open(Write("large.htm", large), 0));
  EXPECT_EQ(file.size(), large.size());
}

TEST_F(MappedFileTest, WhatIsNoReadableFileFailsAndClosesTheOneBefore) {
  const std::string good = Write("a.htm", "x");
  MappedFile file;
  for (const std::string& bad : {folder_.path("missing.htm"), folder_.path(""), std::string()}) {
    ASSERT_TRUE(file.open(good, 0));
    EXPECT_FALSE(file.open(bad, 0)) << bad;
    EXPECT_EQ(file.top(), nullptr);
  }
  EXPECT_FALSE(file.open(good, 1));
  const std::string sparse = Write("sparse.htm", "");
  std::filesystem::resize_file(folder_.native("sparse.htm"), std::uintmax_t{1} << 31);
  EXPECT_FALSE(file.open(sparse, 0));
}

struct ImportCase {
  unsigned codePage;
  std::string_view page;
  std::string_view text;
};

TEST(CodeConv, FindsTheEncodingOfAPage) {
  const ImportCase cases[] = {
      // A byte-order mark is worth more than a declaration.
      {65001, "\xEF\xBB\xBF<meta charset=big5>\xC3\xA9", "<meta charset=big5>\xC3\xA9"},
      {65001, std::string_view("\xFF\xFE<\0b\0>\0\xE9\0", 10), "<b>\xC3\xA9"},
      {65001, std::string_view("\xFE\xFF\0<\0b\0>\0\xE9", 10), "<b>\xC3\xA9"},
      // Declarations.
      {65001, "<meta charset='ISO-8859-1'>\xE9", "<meta charset='ISO-8859-1'>\xC3\xA9"},
      {65001, "<META content='text/html; CharSet = \"Shift_JIS\"' http-equiv=Content-Type>\x82\xA0",
       "<META content='text/html; CharSet = \"Shift_JIS\"' http-equiv=Content-Type>\xE3\x81\x82"},
      {65001, "<?xml version='1.0' encoding='latin1'?>\xE9",
       "<?xml version='1.0' encoding='latin1'?>\xC3\xA9"},
      {65001, "<meta charset=utf-16>\xC3\xA9", "<meta charset=utf-16>\xC3\xA9"},
      // What looks like one and is none.
      {65001, "<!-- <meta charset=big5> --><p title='<meta charset=big5>'>\xC3\xA9",
       "<!-- <meta charset=big5> --><p title='<meta charset=big5>'>\xC3\xA9"},
      {65001, "<meta name=x content='charset=big5'>\xC3\xA9",
       "<meta name=x content='charset=big5'>\xC3\xA9"},
      {65001, "<meta charset=no-such-charset>\xE9", "<meta charset=no-such-charset>\xC3\xA9"},
      // One with an unknown label is passed over.
      {65001, "<meta charset=x-no><meta charset=koi8-r>\xC1",
       "<meta charset=x-no><meta charset=koi8-r>\xD0\xB0"},
      {65001, "<meta http-equiv=Content-Type content='charset=no'><meta charset=koi8-r>\xC1",
       "<meta http-equiv=Content-Type content='charset=no'><meta charset=koi8-r>\xD0\xB0"},
      // Nothing declared.
      {65001, "caf\xE9", "caf\xC3\xA9"},
      {65001, "\xC3\xA9\xC3\xA9 \xFF", "\xC3\xA9\xC3\xA9 \xEF\xBF\xBD"},
      {65001, "<meta charset=utf-8>\xE9", "<meta charset=utf-8>\xEF\xBF\xBD"},
      {65001, "", ""},
      // Into other code pages.
      {932, "\x83\x5C\xFF", "\x83\x5C\xFF"},
      {932, "<meta charset=x-sjis>\x83\x5C", "<meta charset=x-sjis>\x83\x5C"},
      {932, "<meta charset=utf-8>\xE3\x81\x82", "<meta charset=utf-8>\x82\xA0"},
      {1252, "<meta charset=utf-8>\xC3\xA9\xE3\x81\x82", "<meta charset=utf-8>\xE9?"},
  };
  for (const ImportCase& row : cases) {
    CodePageScope codePage(row.codePage);
    CodeConv conv;
    ASSERT_TRUE(conv.Import(row.page.data(), row.page.size(), 0)) << row.page;
    EXPECT_EQ(std::string_view(conv.text(), conv.length()), row.text) << row.page;
    const std::string_view rest = row.page.substr(conv.borrowed() ? conv.textOffset() : 0);
    EXPECT_EQ(conv.borrowed(), conv.text() == rest.data());
  }
}

// As a browser was seen to do it. Behind the head, only one within the first 1024 bytes counts.
TEST(CodeConv, ADeclarationCountsInTheHead) {
  const std::string meta = "<meta charset=koi8-r>";
  const std::string gap(20000, 'x');
  const std::pair<std::string, bool> cases[] = {
      {"<p>" + std::string(1024 - 3 - meta.size(), 'x'), true},
      {"<p>" + std::string(1025 - 3 - meta.size(), 'x'), false},
      {"</p>" + gap, false},
      {gap, true},
      {"<!--" + gap + "--><title><p>" + gap + "</title>", true},
      {"<html><head><base><link><script>'<p>" + gap + "'</script><style></style>", true},
      {"<noscript><object></object></noscript></head>" + gap, true},
      {"<body>" + gap, false},
      {"<?xml version='1.0' encoding='big5'?>" + gap, true},
  };
  for (const auto& [before, counts] : cases) {
    const std::string page = before + meta + "\xC1";
    CodeConv conv;
    ASSERT_TRUE(conv.Import(page.data(), page.size(), 0));
    const std::string text(conv.text(), conv.length());
    EXPECT_EQ(text.substr(before.size() + meta.size()), counts ? "\xD0\xB0" : "\xC3\x81")
        << before.substr(0, 60);
  }
}

TEST(CodeConv, TakesACodePageByNumberAndRefusesWhatIsNone) {
  CodeConv conv;
  ASSERT_TRUE(conv.Import("\x82\xA0", 2, 932));
  EXPECT_EQ(std::string(conv.text(), conv.length()), "\xE3\x81\x82");
  EXPECT_FALSE(conv.Import("x", 1, 12345));
  EXPECT_EQ(conv.text(), nullptr);
  EXPECT_FALSE(conv.Import("x", 1, -1));
  EXPECT_FALSE(conv.Import(nullptr, 1, 0));
  EXPECT_FALSE(conv.Import("x", std::size_t{1} << 31, 0));
}

}  // namespace
}  // namespace zvrsit::test
