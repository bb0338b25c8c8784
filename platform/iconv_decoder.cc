#include "platform/iconv_decoder.h"

#include <bit>
#include <cerrno>
#include <map>
#include <string>

#include "platform/utf8.h"

namespace zvrsit::platform {
namespace {

constexpr std::size_t kCodePointsAtOnce = 4096;

bool IsAscii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

// Bytes that begin no character of any double-byte charset.
bool IsNoLead(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte <= 0x80 || byte == 0xFF;
}

// Where the Encoding Standard's indexes have a character and the system has none, or another.
struct Correction {
  std::string_view charset;
  unsigned char byte;
  char32_t meaning;
};
constexpr Correction kCorrections[] = {
    {"CP932", 0x80, 0x80},       {"CP1255", 0xCA, 0x05BA}, {"KOI8-U", 0xAE, 0x045E},
    {"KOI8-U", 0xBE, 0x040E},    {"MAC-UK", 0xFF, 0x20AC}, {"MACINTOSH", 0xC6, 0x2206},
    {"MACINTOSH", 0xF0, 0xF8FF},
};

// What a byte that the system refuses means; U+FFFD for most.
char32_t MeaningOfRefused(std::string_view charset, char byte) {
  for (const Correction& correction : kCorrections) {
    if (correction.charset == charset && static_cast<char>(correction.byte) == byte) {
      return correction.meaning;
    }
  }
  return kReplacementCharacter;
}

// Decodes one byte alone; U+FFFD when that gives no character. In charsets with combining accents
// the system holds a letter back until it is flushed.
char32_t MeaningOf(iconv_t descriptor, unsigned char byte) {
  char in = static_cast<char>(byte);
  char* source = &in;
  std::size_t sourceLeft = 1;
  char32_t meaning = 0;
  char* target = reinterpret_cast<char*>(&meaning);
  std::size_t targetLeft = sizeof meaning;
  ::iconv(descriptor, nullptr, nullptr, nullptr, nullptr);
  if (::iconv(descriptor, &source, &sourceLeft, &target, &targetLeft) ==
          static_cast<std::size_t>(-1) ||
      ::iconv(descriptor, nullptr, nullptr, &target, &targetLeft) == static_cast<std::size_t>(-1) ||
      targetLeft != 0) {
    return kReplacementCharacter;
  }
  return meaning;
}

ByteMeanings AskMeanings(const char* charset) {
  ByteMeanings meanings;
  const Iconv descriptor = OpenIconv(kCodePointCharset, charset);
  for (unsigned byte = 0; byte < meanings.size(); ++byte) {
    char32_t& meaning = meanings[byte];
    meaning = byte;
    if (byte < 0x80) continue;
    meaning = descriptor ? MeaningOf(descriptor.get(), static_cast<unsigned char>(byte))
                         : kReplacementCharacter;
    if (meaning == kReplacementCharacter && byte < 0xA0) meaning = byte;
  }
  for (const Correction& correction : kCorrections) {
    if (correction.charset == charset) meanings[correction.byte] = correction.meaning;
  }
  return meanings;
}

// How many bytes at the start of a text that iconv refuses are one malformed part.
std::size_t MalformedLength(std::string_view rest) {
  // Some decoders of the system have already stepped over the malformed character.
  if (IsAscii(rest[0])) return 0;
  return rest.size() < 2 || IsNoLead(rest[0]) || IsAscii(rest[1]) ? 1 : 2;
}

}  // namespace

const char* const kCodePointCharset =
    std::endian::native == std::endian::little ? "UTF-32LE" : "UTF-32BE";

Iconv OpenIconv(const char* to, const char* from) {
  const iconv_t descriptor = ::iconv_open(to, from);
  return Iconv(descriptor == reinterpret_cast<iconv_t>(-1) ? nullptr : descriptor);
}

const ByteMeanings& MeaningsOf(const char* charset) {
  thread_local std::map<std::string, ByteMeanings, std::less<>> known;
  const auto found = known.find(std::string_view(charset));
  if (found != known.end()) return found->second;
  return known.emplace(charset, AskMeanings(charset)).first->second;
}

bool DecodeByIconv(const char* charset, std::string_view bytes, const CodePointSink& sink) {
  const Iconv descriptor = OpenIconv(kCodePointCharset, charset);
  if (!descriptor) return false;
  std::array<char32_t, kCodePointsAtOnce> codePoints;
  while (!bytes.empty()) {
    char* source = const_cast<char*>(bytes.data());
    std::size_t sourceLeft = bytes.size();
    char* target = reinterpret_cast<char*>(codePoints.data());
    std::size_t targetLeft = sizeof codePoints;
    const std::size_t result =
        ::iconv(descriptor.get(), &source, &sourceLeft, &target, &targetLeft);
    const int error = result == static_cast<std::size_t>(-1) ? errno : 0;
    sink({codePoints.data(), codePoints.size() - targetLeft / sizeof(char32_t)});
    bytes = bytes.substr(bytes.size() - sourceLeft);
    if (error == 0 || error == E2BIG) continue;
    const char32_t meaning = MeaningOfRefused(charset, bytes[0]);
    sink({&meaning, 1});
    if (error == EINVAL) break;
    bytes.remove_prefix(meaning != kReplacementCharacter ? 1 : MalformedLength(bytes));
  }
  char* target = reinterpret_cast<char*>(codePoints.data());
  std::size_t targetLeft = sizeof codePoints;
  ::iconv(descriptor.get(), nullptr, nullptr, &target, &targetLeft);
  sink({codePoints.data(), codePoints.size() - targetLeft / sizeof(char32_t)});
  return true;
}

}  // namespace zvrsit::platform
