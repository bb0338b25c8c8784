#include "platform/charset.h"

#include <algorithm>
#include <string>

namespace zvrsit::platform {
namespace {

using enum CharsetKind;

constexpr Charset kCharsets[] = {
    {kUtf8Bytes, "UTF-8", 65001,
     "utf-8 utf8 unicode-1-1-utf-8 unicode11utf8 unicode20utf8 x-unicode20utf8"},
    {kSingleByte, "CP1252", 1252,
     "iso-8859-1 windows-1252 us-ascii ascii latin1 ansi_x3.4-1968 cp1252 cp819 csisolatin1 ibm819 "
     "iso-ir-100 iso8859-1 iso88591 iso_8859-1 iso_8859-1:1987 l1 x-cp1252"},
    {kDoubleByte, "", 932, "shift_jis shift-jis x-sjis sjis windows-31j csshiftjis ms932 ms_kanji"},
    {kEucJp, "", 0, "euc-jp x-euc-jp cseucpkdfmtjapanese"},
    {kIso2022Jp, "", 0, "iso-2022-jp csiso2022jp"},
    {kDoubleByte, "", 936,
     "gb2312 gbk gb18030 chinese csgb2312 csiso58gb231280 gb_2312 gb_2312-80 iso-ir-58 x-gbk"},
    {kDoubleByte, "", 950, "big5 big5-hkscs cn-big5 csbig5 x-x-big5"},
    {kDoubleByte, "", 949,
     "euc-kr ks_c_5601-1987 cseuckr csksc56011987 iso-ir-149 korean ks_c_5601-1989 ksc5601 "
     "ksc_5601 "
     "windows-949"},
    {kUtf16LittleEndian, "UTF-16LE", 1200,
     "utf-16 utf-16le csunicode iso-10646-ucs-2 ucs-2 unicode unicodefeff"},
    {kUtf16BigEndian, "UTF-16BE", 1201, "utf-16be unicodefffe"},
    {kUserDefined, "", 0, "x-user-defined"},
    {kSingleByte, "IBM866", 866, "ibm866 866 cp866 csibm866"},
    {kSingleByte, "ISO-8859-2", 28592,
     "iso-8859-2 csisolatin2 iso-ir-101 iso8859-2 iso88592 iso_8859-2 iso_8859-2:1987 l2 latin2"},
    {kSingleByte, "ISO-8859-3", 28593,
     "iso-8859-3 csisolatin3 iso-ir-109 iso8859-3 iso88593 iso_8859-3 iso_8859-3:1988 l3 latin3"},
    {kSingleByte, "ISO-8859-4", 28594,
     "iso-8859-4 csisolatin4 iso-ir-110 iso8859-4 iso88594 iso_8859-4 iso_8859-4:1988 l4 latin4"},
    {kSingleByte, "ISO-8859-5", 28595,
     "iso-8859-5 csisolatincyrillic cyrillic iso-ir-144 iso8859-5 iso88595 iso_8859-5 "
     "iso_8859-5:1988"},
    {kSingleByte, "ISO-8859-6", 28596,
     "iso-8859-6 arabic asmo-708 csiso88596e csiso88596i csisolatinarabic ecma-114 iso-8859-6-e "
     "iso-8859-6-i iso-ir-127 iso8859-6 iso88596 iso_8859-6 iso_8859-6:1987"},
    {kSingleByte, "ISO-8859-7", 28597,
     "iso-8859-7 csisolatingreek ecma-118 elot_928 greek greek8 iso-ir-126 iso8859-7 iso88597 "
     "iso_8859-7 iso_8859-7:1987 sun_eu_greek"},
    {kSingleByte, "ISO-8859-8", 28598,
     "iso-8859-8 csiso88598e csisolatinhebrew hebrew iso-8859-8-e iso-ir-138 iso8859-8 iso88598 "
     "iso_8859-8 iso_8859-8:1988 visual iso-8859-8-i csiso88598i logical"},
    {kSingleByte, "ISO-8859-10", 28600,
     "iso-8859-10 csisolatin6 iso-ir-157 iso8859-10 iso885910 l6 latin6"},
    {kSingleByte, "ISO-8859-13", 28603, "iso-8859-13 iso8859-13 iso885913"},
    {kSingleByte, "ISO-8859-14", 28604, "iso-8859-14 iso8859-14 iso885914"},
    {kSingleByte, "ISO-8859-15", 28605,
     "iso-8859-15 csisolatin9 iso8859-15 iso885915 iso_8859-15 l9"},
    {kSingleByte, "ISO-8859-16", 28606, "iso-8859-16"},
    {kSingleByte, "KOI8-R", 20866, "koi8-r koi8 cskoi8r koi koi8_r"},
    {kSingleByte, "KOI8-U", 21866, "koi8-u koi8-ru"},
    {kSingleByte, "MACINTOSH", 10000, "macintosh csmacintosh mac x-mac-roman"},
    {kSingleByte, "MAC-UK", 10017, "x-mac-cyrillic x-mac-ukrainian"},
    {kSingleByte, "CP874", 874, "windows-874 dos-874 iso-8859-11 iso8859-11 iso885911 tis-620"},
    {kSingleByte, "CP1250", 1250, "windows-1250 cp1250 x-cp1250"},
    {kSingleByte, "CP1251", 1251, "windows-1251 cp1251 x-cp1251"},
    {kSingleByte, "CP1253", 1253, "windows-1253 cp1253 x-cp1253"},
    {kSingleByte, "CP1254", 1254,
     "windows-1254 iso-8859-9 latin5 cp1254 csisolatin5 iso-ir-148 iso8859-9 iso88599 iso_8859-9 "
     "iso_8859-9:1989 l5 x-cp1254"},
    {kSingleByte, "CP1255", 1255, "windows-1255 cp1255 x-cp1255"},
    {kSingleByte, "CP1256", 1256, "windows-1256 cp1256 x-cp1256"},
    {kSingleByte, "CP1257", 1257, "windows-1257 cp1257 x-cp1257"},
    {kSingleByte, "CP1258", 1258, "windows-1258 cp1258 x-cp1258"},
};

constexpr std::size_t kLongestLabel = 32;

std::string_view Trimmed(std::string_view label) {
  constexpr std::string_view kSpace = " \t\n\f\r";
  const std::size_t first = label.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return label.substr(first, label.find_last_not_of(kSpace) - first + 1);
}

// Whether a list of words with one space between two holds the word.
bool HoldsWord(std::string_view words, std::string_view word) {
  for (;;) {
    const std::size_t end = words.find(' ');
    if (words.substr(0, end) == word) return true;
    if (end == std::string_view::npos) return false;
    words.remove_prefix(end + 1);
  }
}

}  // namespace

const Charset* FindCharset(std::string_view label) {
  label = Trimmed(label);
  if (label.empty() || label.size() > kLongestLabel) return nullptr;
  std::string lowered(label);
  for (char& c : lowered) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  }
  const auto* found = std::find_if(
      std::begin(kCharsets), std::end(kCharsets),
      [&lowered](const Charset& charset) { return HoldsWord(charset.labels, lowered); });
  return found == std::end(kCharsets) ? nullptr : found;
}

}  // namespace zvrsit::platform
