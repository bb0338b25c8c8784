#include <windows.h>

#include "platform/charset.h"
#include "platform/code_page.h"
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
  const int length = static_cast<int>(text.size());
  const int wideLength = ::MultiByteToWideChar(page, 0, text.data(), length, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(wideLength), L'\0');
  ::MultiByteToWideChar(page, 0, text.data(), length, wide.data(), wideLength);
  return wide;
}

void AppendNarrow(std::string& out, std::wstring_view wide, unsigned page) {
  const int wideLength = static_cast<int>(wide.size());
  const int length =
      ::WideCharToMultiByte(page, 0, wide.data(), wideLength, nullptr, 0, nullptr, nullptr);
  const std::size_t start = out.size();
  out.resize(start + static_cast<std::size_t>(length));
  ::WideCharToMultiByte(page, 0, wide.data(), wideLength, out.data() + start, length, nullptr,
                        nullptr);
}

std::wstring WideOfUtf16(std::string_view bytes, bool bigEndian) {
  std::wstring wide;
  wide.reserve(bytes.size() / 2);
  for (std::size_t at = 0; bytes.size() - at >= 2; at += 2) {
    const auto a = static_cast<unsigned char>(bytes[at]);
    const auto b = static_cast<unsigned char>(bytes[at + 1]);
    wide += static_cast<wchar_t>(bigEndian ? a << 8 | b : b << 8 | a);
  }
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

std::wstring WideOf(const Charset& charset, std::string_view bytes) {
  switch (charset.kind) {
    case CharsetKind::kUtf16LittleEndian:
      return WideOfUtf16(bytes, false);
    case CharsetKind::kUtf16BigEndian:
      return WideOfUtf16(bytes, true);
    case CharsetKind::kUserDefined:
      return WideOfUserDefined(bytes);
    default:
      return ToWide(bytes, charset.codePage);
  }
}

}  // namespace

int SetCodePage(unsigned codePage) {
  if (!::IsValidCodePage(codePage)) return -1;
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
  wchar_t units[2] = {static_cast<wchar_t>(codePoint)};
  std::size_t count = 1;
  if (codePoint >= 0x10000) {
    units[0] = static_cast<wchar_t>(0xD800 + ((codePoint - 0x10000) >> 10));
    units[1] = static_cast<wchar_t>(0xDC00 + (codePoint & 0x3FF));
    count = 2;
  }
  AppendNarrow(out, {units, count}, CodePage());
}

bool ConvertToCodePage(std::string_view bytes, std::string_view label, std::string& out) {
  const Charset* charset = FindCharset(label);
  if (!charset) return false;
  out.clear();
  if (charset->kind == CharsetKind::kUtf8 && CodePage() == kUtf8) {
    AppendUtf8Repaired(out, bytes);
  } else if (!bytes.empty()) {
    AppendNarrow(out, WideOf(*charset, bytes), CodePage());
  }
  return true;
}

bool IsCodePageUtf8(std::string_view label) {
  const Charset* charset = CodePage() == kUtf8 ? FindCharset(label) : nullptr;
  return charset && charset->kind == CharsetKind::kUtf8;
}

std::string ToUtf8(std::string_view text) {
  std::string out;
  if (!text.empty()) AppendNarrow(out, ToWide(text, CodePage()), kUtf8);
  return out;
}

}  // namespace zvrsit::platform
