#include "dom/code_conv.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "dom/byte_search.h"
#include "dom/charset_prescan.h"
#include "platform/code_page_text.h"
#include "platform/utf8.h"

namespace zvrsit {
namespace {

constexpr std::size_t kLargestText = 0x7FFFFFFF;

// The labels that pages use for the code pages; the first of each page names it to the platform.
struct PageLabel {
  unsigned codePage;
  std::string_view label;
};
constexpr PageLabel kPageLabels[] = {
    {platform::kUtf8, "utf-8"},
    {platform::kUtf8, "utf8"},
    {platform::kUtf8, "unicode-1-1-utf-8"},
    {932, "shift_jis"},
    {932, "shift-jis"},
    {932, "sjis"},
    {932, "x-sjis"},
    {932, "windows-31j"},
    {932, "ms932"},
    {932, "ms_kanji"},
    {932, "csshiftjis"},
    {936, "gbk"},
    {936, "gb2312"},
    {936, "gb_2312-80"},
    {936, "x-gbk"},
    {936, "chinese"},
    {949, "euc-kr"},
    {949, "ks_c_5601-1987"},
    {949, "korean"},
    {949, "ksc5601"},
    {949, "windows-949"},
    {950, "big5"},
    {950, "big5-hkscs"},
    {950, "cn-big5"},
    {950, "x-x-big5"},
    {874, "windows-874"},
    {874, "tis-620"},
    {1250, "windows-1250"},
    {1251, "windows-1251"},
    {1252, "windows-1252"},
    {1252, "iso-8859-1"},
    {1252, "iso8859-1"},
    {1252, "latin1"},
    {1252, "us-ascii"},
    {1252, "ascii"},
    {1252, "cp1252"},
    {1253, "windows-1253"},
    {1254, "windows-1254"},
    {1254, "iso-8859-9"},
    {1255, "windows-1255"},
    {1256, "windows-1256"},
    {1257, "windows-1257"},
    {1258, "windows-1258"},
    {20866, "koi8-r"},
    {21866, "koi8-u"},
    {28592, "iso-8859-2"},
    {28593, "iso-8859-3"},
    {28594, "iso-8859-4"},
    {28595, "iso-8859-5"},
    {28596, "iso-8859-6"},
    {28597, "iso-8859-7"},
    {28598, "iso-8859-8"},
    {28603, "iso-8859-13"},
    {28605, "iso-8859-15"},
};

bool NamesCodePage(std::string_view label, unsigned codePage) {
  return std::any_of(std::begin(kPageLabels), std::end(kPageLabels), [&](const PageLabel& known) {
    return known.codePage == codePage && known.label == label;
  });
}

// The label of a code page, "" for one without.
std::string_view LabelOf(unsigned codePage) {
  for (const PageLabel& known : kPageLabels) {
    if (known.codePage == codePage) return known.label;
  }
  return {};
}

// Whether at least half of the sequences beyond ASCII are well-formed.
bool IsMostlyUtf8(std::string_view text) {
  std::size_t wellFormed = 0;
  std::size_t malformed = 0;
  for (;;) {
    text.remove_prefix(platform::AsciiPrefix(text));
    if (text.empty()) return wellFormed >= malformed;
    const platform::Utf8Step step = platform::DecodeUtf8(text);
    ++(step.valid ? wellFormed : malformed);
    text.remove_prefix(step.length);
  }
}

}  // namespace

bool CodeConv::Import(const char* top, std::size_t size, int charset) {
  text_ = nullptr;
  length_ = textOffset_ = 0;
  borrowed_ = false;
  charset_.clear();
  if (top == nullptr || size > kLargestText || charset < 0) return false;
  const std::string_view page(top, size);
  if (charset != 0) {
    const auto codePage = static_cast<unsigned>(charset);
    charset_ = LabelOf(codePage);
    if (codePage == platform::CodePage()) return ImportOwnPage(page, 0);
    return Convert(page, charset_);
  }
  const ByteOrderMark mark = FindByteOrderMark(page);
  if (!mark.label.empty()) return ImportLabelled(page, mark.label, mark.length);
  const std::string declared = PrescanCharset(page);
  if (!declared.empty() && ImportLabelled(page, declared, 0)) return true;
  return ImportUndeclared(page);
}

bool CodeConv::ImportLabelled(std::string_view page, std::string_view label, std::size_t skip) {
  charset_ = label;
  if (NamesCodePage(label, platform::CodePage())) return ImportOwnPage(page, skip);
  return Convert(page.substr(skip), label);
}

bool CodeConv::ImportOwnPage(std::string_view page, std::size_t skip) {
  const std::string_view text = page.substr(skip);
  if (platform::CodePage() == platform::kUtf8 && !platform::IsValidUtf8(text))
    return Convert(text, "utf-8");
  text_ = text.data();
  length_ = text.size();
  textOffset_ = skip;
  borrowed_ = true;
  return true;
}

bool CodeConv::ImportUndeclared(std::string_view page) {
  charset_ = LabelOf(platform::CodePage());
  if (platform::CodePage() != platform::kUtf8 || platform::IsValidUtf8(page))
    return ImportOwnPage(page, 0);
  if (!IsMostlyUtf8(page)) charset_ = "windows-1252";
  return Convert(page, charset_);
}

bool CodeConv::Convert(std::string_view bytes, std::string_view label) {
  converted_.clear();
  if (label.empty() || !platform::ConvertToCodePage(bytes, label, converted_)) return false;
  if (converted_.size() > kLargestText) return false;
  length_ = converted_.size();
  converted_.append(kTextPadding, '\0');
  text_ = converted_.data();
  return true;
}

}  // namespace zvrsit
