#include <windows.h>

#include <utility>

#include "platform/charset.h"
#include "platform/code_page_text.h"
#include "platform/pair_decoder.h"
#include "platform/utf8.h"

namespace zvrsit::platform {
namespace {

// The page in force and its lead bytes; the system's page until SetCodePage is called.
struct State {
  unsigned page = ::GetACP();
  bool hasLeadBytes = false;
  std::array<bool, 256> isLead{};

  State() { readLeadBytes(); }
  explicit State(unsigned thePage) : page(thePage) { readLeadBytes(); }

  void readLeadBytes() {
    for (unsigned byte = 0x80; byte < 0x100; ++byte) {
      isLead[byte] = ::IsDBCSLeadByteEx(page, static_cast<BYTE>(byte)) != 0;
      hasLeadBytes |= isLead[byte];
    }
  }
};

State& TheState() {
  static State state;
  return state;
}

std::wstring ToWide(std::string_view text, unsigned page) {
  if (text.empty()) return {};
  const int length = static_cast<int>(text.size());
  const int wideLength = ::MultiByteToWideChar(page, 0, text.data(), length, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(wideLength), L'\0');
  ::MultiByteToWideChar(page, 0, text.data(), length, wide.data(), wideLength);
  return wide;
}

// Characters of two UTF-16 units lose the second one: no page of Windows has such a character.
void DropSecondUnits(std::wstring& wide) {
  std::size_t kept = 0;
  for (std::size_t at = 0; at < wide.size(); ++at) {
    wide[kept++] = wide[at];
    const bool isPair =
        at + 1 < wide.size() && (wide[at] & 0xFC00) == 0xD800 && (wide[at + 1] & 0xFC00) == 0xDC00;
    if (isPair) ++at;
  }
  wide.resize(kept);
}

// A character that the page lacks becomes one '?', never a character that looks alike.
void AppendNarrow(std::string& out, std::wstring wide, unsigned page) {
  const bool toUtf8 = page == kUtf8;
  if (!toUtf8) DropSecondUnits(wide);
  const DWORD flags = toUtf8 ? 0 : WC_NO_BEST_FIT_CHARS;
  const char* replacement = toUtf8 ? nullptr : "?";
  const int wideLength = static_cast<int>(wide.size());
  const int length =
      ::WideCharToMultiByte(page, flags, wide.data(), wideLength, nullptr, 0, replacement, nullptr);
  const std::size_t start = out.size();
  out.resize(start + static_cast<std::size_t>(length));
  ::WideCharToMultiByte(page, flags, wide.data(), wideLength, out.data() + start, length,
                        replacement, nullptr);
}

// Bytes that mean nothing become characters of this private range, one for each byte, so that they
// could be written back (Microsoft's best-fit tables, unicode.org). U+F8FF, after the range, is a
// logo.
void ReplaceMeaningless(std::wstring& wide) {
  for (wchar_t& unit : wide) {
    if (unit >= 0xF880 && unit < 0xF8FF) unit = static_cast<wchar_t>(kReplacementCharacter);
  }
}

void AppendWide(std::wstring& wide, char32_t codePoint) {
  if (codePoint < 0x10000) {
    wide += static_cast<wchar_t>(codePoint);
  } else {
    wide += static_cast<wchar_t>(0xD800 + ((codePoint - 0x10000) >> 10));
    wide += static_cast<wchar_t>(0xDC00 + (codePoint & 0x3FF));
  }
}

std::wstring WideOfUtf16(std::string_view bytes, bool bigEndian) {
  std::wstring wide;
  wide.reserve(bytes.size() / 2);
  for (std::size_t at = 0; bytes.size() - at >= 2; at += 2) {
    const auto a = static_cast<unsigned char>(bytes[at]);
    const auto b = static_cast<unsigned char>(bytes[at + 1]);
    wide += static_cast<wchar_t>(bigEndian ? a << 8 | b : b << 8 | a);
  }
  if (bytes.size() % 2 != 0) wide += static_cast<wchar_t>(kReplacementCharacter);
  return wide;
}

std::wstring WideOfUserDefined(std::string_view bytes) {
  std::wstring wide;
  wide.reserve(bytes.size());
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    wide += static_cast<wchar_t>(byte < 0x80 ? byte : 0xF780 + (byte - 0x80));
  }
  return wide;
}

// When the system lacks the page of a label, the label counts as unknown. So no text is lost.
bool WideInPage(const Charset& charset, std::string_view bytes, std::wstring& wide) {
  if (!::IsValidCodePage(charset.codePage)) return false;
  wide = ToWide(bytes, charset.codePage);
  ReplaceMeaningless(wide);
  return true;
}

// False when the system does not know the charset.
bool WideOf(const Charset& charset, std::string_view bytes, std::wstring& wide) {
  switch (charset.kind) {
    case CharsetKind::kUtf8Bytes:
      wide = ToWide(bytes, kUtf8);
      return true;
    case CharsetKind::kUtf16LittleEndian:
    case CharsetKind::kUtf16BigEndian:
      wide = WideOfUtf16(bytes, charset.kind == CharsetKind::kUtf16BigEndian);
      return true;
    case CharsetKind::kUserDefined:
      wide = WideOfUserDefined(bytes);
      return true;
    case CharsetKind::kSingleByte:
      return WideInPage(charset, bytes, wide);
    case CharsetKind::kDoubleByte:
    case CharsetKind::kEucJp:
    case CharsetKind::kIso2022Jp:
      return DecodePairs(charset, bytes, [&wide](std::u32string_view piece) {
        for (const char32_t c : piece) AppendWide(wide, c);
      });
  }
  return false;
}

// For pages with more than two bytes a character, pages with shifts and the page of symbols, the
// system cannot be told to use exact characters only.
bool CanBeWritten(unsigned codePage) {
  constexpr unsigned kSymbols = 42;
  CPINFO info;
  return codePage == kUtf8 ||
         (codePage != kSymbols && ::GetCPInfo(codePage, &info) && info.MaxCharSize <= 2);
}

}  // namespace

int SetCodePage(unsigned codePage) {
  if (!::IsValidCodePage(codePage) || !CanBeWritten(codePage)) return -1;
  TheState() = State(codePage);
  return 0;
}

unsigned CodePage() {
  return TheState().page;
}
const std::array<bool, 256>& LeadBytes() {
  return TheState().isLead;
}
bool HasLeadBytes() {
  return TheState().hasLeadBytes;
}

void AppendCodePoint(std::string& out, char32_t codePoint) {
  if (codePoint < 0x80) {
    out += static_cast<char>(codePoint);
    return;
  }
  if (CodePage() == kUtf8) return AppendUtf8(out, codePoint);
  if (codePoint > 0x10FFFF) codePoint = kReplacementCharacter;
  std::wstring wide;
  AppendWide(wide, codePoint);
  AppendNarrow(out, std::move(wide), CodePage());
}

bool ConvertToCodePage(std::string_view bytes, std::string_view label, std::string& out) {
  const Charset* charset = FindCharset(label);
  if (!charset) return false;
  if (charset->kind == CharsetKind::kUtf8Bytes && CodePage() == kUtf8) {
    out.clear();
    AppendUtf8Repaired(out, bytes);
    return true;
  }
  std::wstring wide;
  if (!WideOf(*charset, bytes, wide)) return false;
  out.clear();
  if (!wide.empty()) AppendNarrow(out, std::move(wide), CodePage());
  return true;
}

bool IsCodePageUtf8(std::string_view label) {
  const Charset* charset = CodePage() == kUtf8 ? FindCharset(label) : nullptr;
  return charset && charset->kind == CharsetKind::kUtf8Bytes;
}

std::string ToUtf8(std::string_view text) {
  std::string out;
  if (!text.empty()) AppendNarrow(out, ToWide(text, CodePage()), kUtf8);
  return out;
}

}  // namespace zvrsit::platform
