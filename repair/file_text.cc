#include "repair/file_text.h"

#include <algorithm>
#include <cstdint>

#include "css/css_decode.h"
#include "dom/byte_search.h"
#include "dom/charset_prescan.h"
#include "platform/code_page.h"
#include "platform/code_page_text.h"
#include "platform/utf8.h"
#include "repair/source_text.h"

namespace zvrsit {
namespace {

using platform::CharsetKind;

constexpr std::uint32_t kUnknown = 0xFFFFFFFF;
constexpr std::size_t kLongestUnit = 4;
constexpr char kEscape = '\x1B';

std::string Replacement() {
  std::string text;
  platform::AppendCodePoint(text, platform::kReplacementCharacter);
  return text;
}

// All that a character of one or two bytes, or of EUC with its shift, could be written as; a line
// each, so that a malformed one does not run into the next.
std::vector<std::string> ListUnits() {
  std::vector<std::string> units;
  for (int first = 0x80; first <= 0xFF; ++first) {
    const std::string lead(1, static_cast<char>(first));
    units.push_back(lead);
    for (int second = 0x30; second <= 0xFE; ++second) {
      units.push_back(lead + static_cast<char>(second));
      const bool isShift = first == 0x8F && second >= 0xA1;
      for (int third = 0xA1; isShift && third <= 0xFE; ++third) {
        units.push_back(units.back().substr(0, 2) + static_cast<char>(third));
      }
    }
  }
  return units;
}

void AppendUtf16(std::string& bytes, char32_t code, bool isBig) {
  const auto append = [&](unsigned unit) {
    const char high = static_cast<char>(unit >> 8);
    const char low = static_cast<char>(unit & 0xFF);
    bytes.append({isBig ? high : low, isBig ? low : high});
  };
  if (code < 0x10000) return append(code);
  append(0xD800 + ((code - 0x10000) >> 10));
  append(0xDC00 + ((code - 0x10000) & 0x3FF));
}

}  // namespace

bool FileText::ReadPage(const std::string& path) {
  isSheet_ = false;
  if (!file_.open(path, 0) || !page_.Import(file_.top(), file_.size(), 0)) return false;
  return Keep({page_.text(), page_.length()}, page_.charset());
}

bool FileText::ReadSheet(const std::string& path, const std::string& charset) {
  isSheet_ = true;
  charset_ = charset;
  if (!file_.open(path, 0)) return false;
  const std::string_view declared = DeclaredCharset(bytes());
  const std::string_view text = DecodeSheet(bytes(), charset, buffer_);
  if (text.data() == buffer_.data()) {
    const std::size_t size = buffer_.size();
    buffer_.append(kTextPadding, '\0');
    return Keep({buffer_.data(), size}, declared.empty() ? std::string_view(charset) : declared);
  }
  return Keep(text, {});
}

bool FileText::Keep(std::string_view text, std::string_view label) {
  text_ = text;
  label_ = label;
  const std::string_view all = bytes();
  isInFile_ = text.data() >= all.data() && text.data() <= all.data() + all.size();
  start_ = isInFile_ ? static_cast<std::size_t>(text.data() - all.data())
                     : FindByteOrderMark(all).length;
  kind_ = platform::FindCharset(label.empty() ? "utf-8" : label);
  firstBytes_.clear();
  endBytes_.clear();
  return isInFile_ || kind_ != nullptr;
}

bool FileText::FindBytes(std::size_t begin, std::size_t end, std::size_t& firstByte,
                         std::size_t& lastByte) {
  if (isInFile_) {
    firstByte = start_ + begin;
    lastByte = start_ + end;
    return true;
  }
  if (firstBytes_.empty()) MapPlaces();
  // Between two characters there may be bytes that switch character sets.
  firstByte = endBytes_[begin];
  lastByte = end > begin ? firstBytes_[end] : endBytes_[begin];
  return firstByte != kUnknown && lastByte != kUnknown;
}

void FileText::Note(std::size_t place, std::size_t length, std::size_t firstByte,
                    std::size_t lastByte) {
  if (endBytes_[place] == kUnknown) endBytes_[place] = static_cast<std::uint32_t>(firstByte);
  firstBytes_[place] = static_cast<std::uint32_t>(firstByte);
  firstBytes_[place + length] = endBytes_[place + length] = static_cast<std::uint32_t>(lastByte);
}

void FileText::MapPlaces() {
  firstBytes_.assign(text_.size() + 1, kUnknown);
  endBytes_.assign(text_.size() + 1, kUnknown);
  switch (kind_->kind) {
    case CharsetKind::kUtf16LittleEndian:
    case CharsetKind::kUtf16BigEndian:
      return MapUtf16();
    case CharsetKind::kIso2022Jp:
      return MapIso2022Jp();
    default:
      return MapUnits();
  }
}

void FileText::MapUtf16() {
  std::size_t byte = start_;
  std::size_t place = 0;
  ForEachCharacter(text_, [&](std::string_view character) {
    const std::string utf8 = platform::ToUtf8(character);
    const std::size_t length = platform::DecodeUtf8(utf8).codePoint < 0x10000 ? 2 : 4;
    Note(place, character.size(), byte, byte + length);
    byte += length;
    place += character.size();
  });
}

// In this encoding escape sequences switch between one and two bytes a character.
void FileText::MapIso2022Jp() {
  const std::string_view all = bytes();
  std::size_t byte = start_;
  std::size_t length = 1;
  std::size_t place = 0;
  ForEachCharacter(text_, [&](std::string_view character) {
    while (all.substr(byte).starts_with(kEscape) && byte + 3 <= all.size()) {
      length = all[byte + 1] == '$' ? 2 : 1;
      byte += 3;
    }
    Note(place, character.size(), byte, byte + length);
    byte += length;
    place += character.size();
  });
}

// Where a part cannot be matched, the matching goes on at the next line.
void FileText::MapUnits() {
  const std::string_view all = bytes();
  std::size_t byte = start_;
  std::size_t place = 0;
  while (place < text_.size() && byte < all.size()) {
    std::size_t meant = 0;
    const std::size_t length = UnitAt(byte, place, meant);
    if (length > 0) {
      Note(place, meant, byte, byte + length);
      byte += length;
      place += meant;
      continue;
    }
    byte = all.find('\n', byte);
    place = text_.find('\n', place);
    if (byte == all.npos || place == text_.npos) return;
  }
}

// The length of the character at `byte` that is the one at `place`; 0 when there is none.
std::size_t FileText::UnitAt(std::size_t byte, std::size_t place, std::size_t& meant) {
  const std::string_view rest = bytes().substr(byte);
  const std::string_view text = text_.substr(place);
  if (static_cast<unsigned char>(rest.front()) < 0x80 && rest.front() == text.front()) {
    return meant = 1;
  }
  if (kind_->kind == CharsetKind::kUtf8Bytes) {
    const platform::Utf8Step step = platform::DecodeUtf8(rest);
    std::string meaning;
    platform::AppendCodePoint(meaning, step.codePoint);
    meant = meaning.size();
    return text.starts_with(meaning) ? step.length : 0;
  }
  for (std::size_t length = 1; length <= std::min(kLongestUnit, rest.size()); ++length) {
    const std::string& meaning = Meaning(rest.substr(0, length));
    meant = meaning.size();
    if (meant > 0 && text.starts_with(meaning)) return length;
  }
  return 0;
}

// What a unit stands for; empty for one that is malformed.
const std::string& FileText::Meaning(std::string_view unit) {
  if (meaningsOf_ != label_) meanings_.clear();
  meaningsOf_ = label_;
  const auto [known, isNew] = meanings_.try_emplace(std::string(unit));
  if (isNew && platform::ConvertToCodePage(unit, label_, known->second) &&
      known->second.find(Replacement()) != std::string::npos) {
    known->second.clear();
  }
  return known->second;
}

const FileText::Units& FileText::UnitsOf(const std::string& label) {
  const auto [known, isNew] = units_.try_emplace(label);
  if (!isNew) return known->second;
  const std::vector<std::string> units = ListUnits();
  std::string bytes;
  for (const std::string& unit : units) bytes.append(unit).push_back('\n');
  std::string text;
  if (!platform::ConvertToCodePage(bytes, label, text)) return known->second;
  const std::string none = Replacement();
  std::size_t begin = 0;
  for (const std::string& unit : units) {
    const std::size_t end = text.find('\n', begin);
    if (end == std::string::npos) break;
    const std::string meaning = text.substr(begin, end - begin);
    if (meaning.find(none) == std::string::npos) known->second.emplace(meaning, unit);
    begin = end + 1;
  }
  return known->second;
}

bool FileText::EncodeCharacter(std::string_view character, std::string& bytes) {
  const bool isBig = kind_->kind == CharsetKind::kUtf16BigEndian;
  if (isBig || kind_->kind == CharsetKind::kUtf16LittleEndian) {
    AppendUtf16(bytes, platform::DecodeUtf8(platform::ToUtf8(character)).codePoint, isBig);
    return true;
  }
  if (static_cast<unsigned char>(character.front()) < 0x80) {
    bytes += character;
    return true;
  }
  if (kind_->kind == CharsetKind::kUtf8Bytes) {
    bytes += platform::ToUtf8(character);
    return true;
  }
  if (kind_->kind == CharsetKind::kIso2022Jp) return false;
  const Units& units = UnitsOf(label_);
  const auto unit = units.find(std::string(character));
  if (unit == units.end()) return false;
  bytes += unit->second;
  return true;
}

bool FileText::Encode(std::string_view text, std::string& bytes) {
  bytes.clear();
  if (isInFile_) {
    bytes = text;
    return true;
  }
  bool isWhole = true;
  ForEachCharacter(text, [&](std::string_view character) {
    isWhole = isWhole && EncodeCharacter(character, bytes);
  });
  return isWhole;
}

bool FileText::WouldRead(std::string_view otherBytes, std::string_view text) const {
  if (isSheet_) {
    std::string buffer;
    return DecodeSheet(otherBytes, charset_, buffer) == text;
  }
  CodeConv page;
  return page.Import(otherBytes.data(), otherBytes.size(), 0) &&
         std::string_view(page.text(), page.length()) == text;
}

}  // namespace zvrsit
