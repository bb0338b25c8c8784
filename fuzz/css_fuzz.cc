// A style sheet: decoding, tokens, and references.
#include <cstdlib>
#include <string>
#include <string_view>

#include "css/css_decode.h"
#include "css/css_references.h"
#include "css/css_tokenizer.h"
#include "fuzz/target.h"
#include "platform/code_page.h"

namespace zvrsit::fuzz {
namespace {

// Tokens cover the text without a gap.
void ReadTokens(std::string_view text) {
  CssTokenizer tokens(text);
  std::size_t covered = 0;
  for (CssToken token = tokens.Next(); token.type != CssTokenType::kEnd; token = tokens.Next()) {
    const auto begin = static_cast<std::size_t>(token.raw.data() - text.data());
    if (begin < covered || token.raw.empty() || token.raw.size() > text.size() - begin)
      std::abort();
    covered = begin + token.raw.size();
  }
}

void ReadSheet(std::string_view bytes, CssSource source) {
  std::string buffer;
  const std::string_view text = DecodeSheet(bytes, "", buffer);
  ReadTokens(text);
  std::vector<CssReference> found;
  CollectCssReferences(text, source, found);
  for (const CssReference& reference : found) {
    if (reference.text.empty() || reference.offset < 0) std::abort();
    if (static_cast<std::size_t>(reference.offset) >= text.size()) std::abort();
  }
}

// The first byte chooses the code page and what kind of text the rest is.
void ReadCss(std::string_view input) {
  if (input.empty()) return;
  platform::SetCodePage((input[0] & 1) == 0 ? platform::kUtf8 : 932);
  ReadSheet(input.substr(1), (input[0] & 2) == 0 ? CssSource::kSheet : CssSource::kDeclarations);
}

std::vector<std::string> CssSeeds() {
  using namespace std::string_literals;
  return {
      "0@charset \"utf-8\";@layer a;@import \"b.css\" screen;@import url( c.css );@namespace "
      "url(n);"
      "body{background:url(a.gif) no-repeat,image-set('b.png' 1x,url(c.png) 2x)}",
      "1@font-face{src:url('\x83\x5c.ttf')}/* url(x) */a:hover{content:\"\\\"\\A \";b:src(\"d\"}",
      "2background:u\\72l(\"e.gif\");--x:{url(f)};cursor:url(bad bad),url(\\\n",
      "0<!-- @media print{.a{.b &{list-style:url(#id)}}} --> @import "
      "url(late.css);x{y:[({url(z)})]}",
      "0\xFF\xFE@\0i\0m\0p\0o\0r\0t\0 \0\"\0a\0\"\0;\0"s,
  };
}

}  // namespace

const Target kCssTarget = {"css", &ReadCss, &CssSeeds};

}  // namespace zvrsit::fuzz
