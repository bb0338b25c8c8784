// Where broken links stand in their files.
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <iconv.h>

#include "cli/program.h"

namespace zvrsit::test {
namespace {

namespace fs = std::filesystem;

// A text of UTF-8 in another encoding; what is no character of it must not be in the text.
std::string Encoded(std::string text, const char* encoding) {
  const iconv_t conversion = iconv_open(encoding, "UTF-8");
  std::string out(text.size() * 4 + 16, '\0');
  char* from = text.data();
  char* to = out.data();
  std::size_t fromLeft = text.size();
  std::size_t toLeft = out.size();
  const std::size_t lost = iconv(conversion, &from, &fromLeft, &to, &toLeft);
  EXPECT_TRUE(lost == 0 && iconv(conversion, nullptr, nullptr, &to, &toLeft) == 0) << encoding;
  iconv_close(conversion);
  out.resize(out.size() - toLeft);
  return out;
}

// The lines and columns of all "|" in a text of UTF-8, as a person would count them.
void AddPlacesOfMarks(const std::string& file, const std::string& text, Words& places) {
  int line = 1;
  int column = 1;
  for (const char c : text) {
    if (c == '|') places.push_back(fmt::format("{}:{}:{}", file, line, column));
    if (c == '\n') ++line;
    if ((c & 0xC0) != 0x80 && c != '|') ++column;
    if (c == '\n') column = 1;
  }
}

std::string WithoutMarks(std::string text) {
  std::erase(text, '|');
  return text;
}

// The places of all findings of a report, sorted as strings.
Words PlacesOf(const Json& report) {
  Words places;
  const Json rows = Rows(report);
  for (const Json& row : rows) {
    places.push_back(row["from"].get<std::string>() + ":" + row["line"].dump() + ":" +
                     row["column"].dump());
  }
  std::sort(places.begin(), places.end());
  return places;
}

struct Encoding {
  const char* label;  // what a page declares
  const char* name;   // for iconv
  std::string mark;   // the byte-order mark
  std::string word;   // in its characters
};
const Encoding kEncodings[] = {
    {"utf-8", "UTF-8", "", "žluťoučký 表 𝄞"},
    {"utf-8", "UTF-8", "\xEF\xBB\xBF", "表"},
    {"windows-1252", "CP1252", "", "ascii"},
    {"windows-1252", "CP1252", "", "café"},
    {"iso-8859-2", "ISO-8859-2", "", "žluťoučký"},
    {"koi8-r", "KOI8-R", "", "море"},
    {"shift_jis", "SHIFT_JIS", "", "表ソ"},
    {"iso-2022-jp", "ISO-2022-JP", "", "表の"},
    {"euc-jp", "EUC-JP", "", "表"},
    {"gbk", "GBK", "", "表"},
    {"big5", "BIG5", "", "表功"},
    {"euc-kr", "EUC-KR", "", "표"},
    {"utf-16", "UTF-16LE", "\xFF\xFE", "表 𝄞"},
    {"utf-16", "UTF-16BE", "\xFE\xFF", "é"},
};

// Every reference is marked with "|", which the files themselves do not have.
TEST(Places, AreToldInEveryEncodingUnderBothRuleSets) {
  for (const Encoding& encoding : kEncodings) {
    const std::string& word = encoding.word;
    const std::string page = fmt::format(
        "<meta charset={0}><title>{1}</title>\r\n{1} <a href=\"|gone.htm\">{1}</a>"
        "<a title='{1}' href=|gone.htm>\n<img src='|gone.gif' alt='{1}'>"
        "<img src=|gone.gif alt=other>\n\n{1}<p style='background: |url(gone.gif)'>"
        "<style>/* {1} */ i {{ background: |url(gone.gif) }}</style>{1}"
        "<body background=|gone.gif>{1}<a href=|gone.htm><link rel=stylesheet "
        "href=s.css>",
        encoding.label, word);
    const std::string sheet = fmt::format(
        "@charset \"{0}\";\n@import |\"none.css\"; /* {1}\n{1} */ i {{ background: "
        "|url(gone.gif) }} b {{ cursor: |url(gone.gif); src: |url(gone.gif) }}",
        encoding.label, word);
    Words expected;
    AddPlacesOfMarks("index.htm", page, expected);
    AddPlacesOfMarks("s.css", sheet, expected);
    std::sort(expected.begin(), expected.end());
    for (const char* rules : {"web", "classic"}) {
      const Program program;
      program.Page("index.htm", encoding.mark + Encoded(WithoutMarks(page), encoding.name));
      program.Page("s.css", encoding.mark + Encoded(WithoutMarks(sheet), encoding.name));
      const Json found = program.Ask({"check", program.folder.native("site"), "--rules", rules});
      EXPECT_EQ(PlacesOf(found), expected) << encoding.label << " " << rules << found.dump(1);
    }
  }
}

TEST(Places, AreCountedBesideTheErrors) {
  const Program program;
  program.Page("index.html", "<a href=gone.html></a><a href=no.html></a><img src=gone.html>");
  const std::string site = program.folder.native("site");
  const std::string out = program.Run({"check", site}).out;
  EXPECT_NE(out.find("2 errors in 3 places;"), std::string::npos) << out;
}

// `check` notes places while it reads a page; `broken` looks for them later, without and with (two
// links with one text) reading the page as HTML.
TEST(Places, OfIgnoredReferencesAreNotTold) {
  const struct {
    const char* markup;
    bool isTold;
  } rows[] = {
      {"<a href='gone' data-zvrsit-ignore>", false},
      {"<a data-zvrsit-ignore='' title=\">\" href=gone>", false},
      {"<img alt='a > b' DATA-ZVRSIT-IGNORE src=gone>", false},
      {"<style data-zvrsit-ignore>b { background: url(gone) }</style>", false},
      {"<a data-zvrsit-ignore></a><a href=gone>", true},
      {"<a href=gone title='data-zvrsit-ignore'>", true},
      {"<a href=gone data-zvrsit-ignored>", true},
      {"<a href=gone>data-zvrsit-ignore", true},
      {"<a href=gone data-zvrsit-ignore></a><a href=gone>", true},
      {"<a href=gone data-zvrsit-ignore></a><a href=gone data-zvrsit-ignore>", false},
  };
  for (const auto& row : rows) {
    const Program program;
    program.Page("index.html", row.markup);
    const std::string site = program.folder.native("site");
    const std::size_t count = row.isTold ? 1 : 0;
    EXPECT_EQ(program.Run({"check", site, "--format", "json"}).json()["findings"].size(), count)
        << row.markup;
    program.Run({"add", "demo", site});
    program.Run({"rebuild", "demo"});
    EXPECT_EQ(program.Run({"broken", "demo", "--format", "json"}).json()["findings"].size(), count)
        << row.markup;
  }
}

}  // namespace
}  // namespace zvrsit::test
