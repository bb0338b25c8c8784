#include "links/json_strings.h"

#include <cstdint>

#include "links/url_text.h"
#include "platform/code_page_text.h"
#include "util/ascii.h"

namespace zvrsit {
namespace {

constexpr int kDeepestJson = 64;
constexpr std::size_t kLongestName = 64;

class JsonReader {
 public:
  JsonReader(std::string_view text, const JsonVisit& visit) : text_(text), visit_(visit) {}

  bool Read() {
    if (!ReadValue(0)) return false;
    SkipBlanks();
    return at_ == text_.size();
  }

 private:
  char Next() const { return at_ < text_.size() ? text_[at_] : '\0'; }
  bool Take(char wanted) {
    if (Next() != wanted || at_ == text_.size()) return false;
    ++at_;
    return true;
  }
  void SkipBlanks() {
    while (Next() == ' ' || Next() == '\t' || Next() == '\n' || Next() == '\r') ++at_;
  }

  bool ReadValue(int depth) {
    SkipBlanks();
    if (depth > kDeepestJson) return false;
    if (Take('{')) return ReadMembers(depth);
    if (Take('[')) return ReadElements(depth);
    if (Next() != '"')
      return TakeWord("true") || TakeWord("false") || TakeWord("null") || TakeNumber();
    const std::size_t offset = at_ + 1;
    std::string text;
    if (!ReadString(text)) return false;
    visit_(path_, text, offset);
    return true;
  }

  // What follows a "{", to its end.
  bool ReadMembers(int depth) {
    SkipBlanks();
    if (Take('}')) return true;
    const std::size_t outer = path_.size();
    do {
      SkipBlanks();
      std::string name;
      if (!ReadString(name)) return false;
      SkipBlanks();
      if (!Take(':')) return false;
      path_.append(outer > 0 ? "." : "").append(name, 0, kLongestName);
      if (!ReadValue(depth + 1)) return false;
      path_.resize(outer);
      SkipBlanks();
    } while (Take(','));
    return Take('}');
  }

  // What follows a "[", to its end.
  bool ReadElements(int depth) {
    SkipBlanks();
    if (Take(']')) return true;
    path_.append("[]");
    do {
      if (!ReadValue(depth + 1)) return false;
      SkipBlanks();
    } while (Take(','));
    path_.resize(path_.size() - 2);
    return Take(']');
  }

  bool TakeWord(std::string_view word) {
    if (!text_.substr(at_).starts_with(word)) return false;
    at_ += word.size();
    return true;
  }

  bool TakeDigits() {
    const std::size_t begin = at_;
    while (IsAsciiDigit(Next())) ++at_;
    return at_ > begin;
  }

  bool TakeNumber() {
    Take('-');
    if (!Take('0') && !TakeDigits()) return false;
    if (Take('.') && !TakeDigits()) return false;
    if (!Take('e') && !Take('E')) return true;
    if (!Take('+')) Take('-');
    return TakeDigits();
  }

  bool ReadString(std::string& out) {
    if (!Take('"')) return false;
    while (at_ < text_.size()) {
      const char c = text_[at_++];
      if (c == '"') return true;
      if (static_cast<unsigned char>(c) < ' ') return false;
      if (c == '\\') {
        if (!ReadEscape(out)) return false;
        continue;
      }
      out.push_back(c);
      // A trail byte may look like a backslash.
      const bool isLead = platform::IsDbcsLeadByte(static_cast<unsigned char>(c));
      if (isLead && at_ < text_.size()) out.push_back(text_[at_++]);
    }
    return false;
  }

  // What follows a backslash.
  bool ReadEscape(std::string& out) {
    constexpr std::string_view kLetters = "\"\\/bfnrt";
    constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
    if (Take('u')) return ReadCode(out);
    const std::size_t index = at_ < text_.size() ? kLetters.find(text_[at_]) : kLetters.npos;
    if (index == kLetters.npos) return false;
    out.push_back(kMeanings[index]);
    ++at_;
    return true;
  }

  // What follows a "\u"; a pair of surrogates is one character.
  bool ReadCode(std::string& out) {
    std::uint32_t code = 0;
    if (!TakeHex(code)) return false;
    std::uint32_t low = 0;
    if (code >= 0xD800 && code < 0xDC00 && TakeWord("\\u") && TakeHex(low)) {
      code = low >= 0xDC00 && low < 0xE000 ? 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00)
                                           : 0xFFFD;
    }
    platform::AppendCodePoint(out, static_cast<char32_t>(code));  // half a pair is none
    return true;
  }

  bool TakeHex(std::uint32_t& code) {
    code = 0;
    for (int i = 0; i < 4; ++i) {
      const int digit = at_ < text_.size() ? HexValue(text_[at_]) : -1;
      if (digit < 0) return false;
      code = code * 16 + static_cast<std::uint32_t>(digit);
      ++at_;
    }
    return true;
  }

  const std::string_view text_;
  const JsonVisit& visit_;
  std::size_t at_ = 0;
  std::string path_;
};

}  // namespace

bool ReadJsonStrings(std::string_view text, const JsonVisit& visit) {
  return JsonReader(text, visit).Read();
}

}  // namespace zvrsit
