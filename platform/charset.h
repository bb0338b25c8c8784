// The charsets that pages are written in, by their labels.
#pragma once

#include <string_view>

namespace zvrsit::platform {

enum class CharsetKind {
  kUtf8Bytes,
  kUtf16LittleEndian,
  kUtf16BigEndian,
  kUserDefined,  // bytes from 0x80 on are U+F780 and so on
  kSingleByte,
  kDoubleByte,
  kEucJp,      // one to three bytes a character
  kIso2022Jp,  // escape sequences choose its character sets
};

struct Charset {
  CharsetKind kind;
  const char* systemName;  // its name for iconv, if it has one byte per character
  unsigned codePage;       // its number on Windows; 0 if none is needed
  const char* labels;      // in lower case, separated by spaces
};

// The charset of a label of the WHATWG Encoding Standard (section 4.2, "Names and labels"), in any
// letter case and with white space around it; null when there is none. Labels of its replacement
// encoding are not known.
const Charset* FindCharset(std::string_view label);

}  // namespace zvrsit::platform
