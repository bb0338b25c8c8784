#include "links/html_values.h"

#include <algorithm>
#include <iterator>

#include "util/ascii.h"

namespace zvrsit {
namespace {

bool IsLetter(char c, char lower) {
  return LowerAscii(c) == lower;
}

template <class Predicate>
std::string_view TakeWhile(std::string_view& text, Predicate predicate) {
  const auto end = std::find_if_not(text.begin(), text.end(), predicate);
  const std::string_view taken = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(taken.size());
  return taken;
}

void SkipSpaces(std::string_view& text) {
  TakeWhile(text, IsHtmlSpace);
}

std::string_view TakeWord(std::string_view& text) {
  return TakeWhile(text, [](char c) { return !IsHtmlSpace(c); });
}

bool IsInteger(std::string_view number) {
  return !number.empty() && std::all_of(number.begin(), number.end(), IsAsciiDigit);
}

bool IsPositiveInteger(std::string_view number) {
  return IsInteger(number) && number.find_first_not_of('0') != std::string_view::npos;
}

// A valid floating-point number that is not below zero.
bool IsDensity(std::string_view number) {
  const bool negative = !number.empty() && number.front() == '-';
  if (negative) number.remove_prefix(1);
  const std::string_view whole = TakeWhile(number, IsAsciiDigit);
  std::string_view fraction;
  if (!number.empty() && number.front() == '.') {
    number.remove_prefix(1);
    fraction = TakeWhile(number, IsAsciiDigit);
    if (fraction.empty()) return false;
  }
  if (whole.empty() && fraction.empty()) return false;
  const bool zero = whole.find_first_not_of('0') == std::string_view::npos &&
                    fraction.find_first_not_of('0') == std::string_view::npos;
  if (negative && !zero) return false;
  if (number.empty()) return true;
  if (!IsLetter(number.front(), 'e')) return false;
  number.remove_prefix(1);
  if (!number.empty() && (number.front() == '+' || number.front() == '-')) number.remove_prefix(1);
  return IsInteger(number);
}

// The descriptors of one candidate; they are added one by one.
class Descriptors {
 public:
  void Add(std::string_view descriptor) {
    if (descriptor.empty()) return;
    const std::string_view number = descriptor.substr(0, descriptor.size() - 1);
    bool good = false;
    switch (descriptor.back()) {
      case 'w':
        good = !width_ && !density_ && IsPositiveInteger(number);
        width_ = true;
        break;
      case 'x':
        good = !width_ && !density_ && !height_ && IsDensity(number);
        density_ = true;
        break;
      case 'h':
        good = !height_ && !density_ && IsPositiveInteger(number);
        height_ = true;
        break;
    }
    bad_ |= !good;
  }

  bool AreGood() const { return !bad_ && (!height_ || width_); }

 private:
  bool width_ = false;
  bool density_ = false;
  bool height_ = false;
  bool bad_ = false;
};

// Reads the descriptors up to and including the comma that ends the candidate.
Descriptors TakeDescriptors(std::string_view& text) {
  Descriptors descriptors;
  bool inParentheses = false;
  std::size_t begin = 0;
  std::size_t i = 0;
  for (; i < text.size(); ++i) {
    const char c = text[i];
    if (inParentheses) {
      inParentheses = c != ')';
    } else if (c == '(') {
      inParentheses = true;
    } else if (c == ',') {
      break;
    } else if (IsHtmlSpace(c)) {
      descriptors.Add(text.substr(begin, i - begin));
      begin = i + 1;
    }
  }
  descriptors.Add(text.substr(begin, i - begin));
  text.remove_prefix(std::min(i + 1, text.size()));
  return descriptors;
}

// Takes "url =", which may have white space in it; false when it is not there.
bool TakeUrlKeyword(std::string_view& text) {
  std::string_view rest = text;
  for (const char letter : {'u', 'r', 'l'}) {
    if (rest.empty() || !IsLetter(rest.front(), letter)) return false;
    rest.remove_prefix(1);
  }
  SkipSpaces(rest);
  if (rest.empty() || rest.front() != '=') return false;
  rest.remove_prefix(1);
  SkipSpaces(rest);
  text = rest;
  return true;
}

// What runs as a script, without the "text/" or "application/" in front: the JavaScript MIME types
// (mimesniff.spec.whatwg.org) of either.
constexpr std::string_view kTextScripts[] = {"ecmascript",    "javascript",    "javascript1.0",
                                             "javascript1.1", "javascript1.2", "javascript1.3",
                                             "javascript1.4", "javascript1.5", "jscript",
                                             "livescript",    "x-ecmascript",  "x-javascript"};
constexpr std::string_view kApplicationScripts[] = {"ecmascript", "javascript", "x-ecmascript",
                                                    "x-javascript"};

// The words of social networks and of tiles on desktops, in lower case.
constexpr std::string_view kAddressMetas[] = {"og:url",
                                              "og:image",
                                              "og:image:url",
                                              "og:image:secure_url",
                                              "og:video",
                                              "og:video:url",
                                              "og:video:secure_url",
                                              "og:audio",
                                              "og:audio:url",
                                              "og:audio:secure_url",
                                              "og:see_also",
                                              "twitter:image",
                                              "twitter:image:src",
                                              "twitter:player",
                                              "twitter:player:stream",
                                              "msapplication-config",
                                              "msapplication-starturl",
                                              "msapplication-tileimage",
                                              "msapplication-square70x70logo",
                                              "msapplication-square150x150logo",
                                              "msapplication-wide310x150logo",
                                              "msapplication-square310x310logo"};

}  // namespace

std::string_view Trimmed(std::string_view text) {
  SkipSpaces(text);
  while (!text.empty() && IsHtmlSpace(text.back())) text.remove_suffix(1);
  return text;
}

void AppendWords(std::string_view list, std::vector<std::string_view>& words) {
  for (SkipSpaces(list); !list.empty(); SkipSpaces(list)) {
    words.push_back(TakeWord(list));
  }
}

bool IsStyleSheetRel(std::string_view rel) {
  return EqualsLower(rel, "stylesheet");
}

bool HoldsStyleSheetRel(std::string_view rel) {
  for (SkipSpaces(rel); !rel.empty(); SkipSpaces(rel)) {
    if (IsStyleSheetRel(TakeWord(rel))) return true;
  }
  return false;
}

bool NamesServerAlone(std::string_view rel) {
  bool isNamed = false;
  for (SkipSpaces(rel); !rel.empty(); SkipSpaces(rel)) {
    const std::string_view word = TakeWord(rel);
    if (!EqualsLower(word, "preconnect") && !EqualsLower(word, "dns-prefetch")) return false;
    isNamed = true;
  }
  return isNamed;
}

bool IsAddressMeta(std::string_view word) {
  word = Trimmed(word);
  if (word.find_first_of(":-") == std::string_view::npos) return false;
  return IsAmongLower(word, kAddressMetas);
}

bool IsScriptType(std::string_view type) {
  type = Trimmed(type);
  const auto slash = type.find('/');
  if (slash == std::string_view::npos) return EqualsLower(type, "module");
  const std::string_view kind = type.substr(0, slash);
  const std::string_view name = type.substr(slash + 1);
  if (EqualsLower(kind, "text")) return IsAmongLower(name, kTextScripts);
  return EqualsLower(kind, "application") && IsAmongLower(name, kApplicationScripts);
}

bool IsCssType(std::string_view type, bool parameters) {
  if (type.empty()) return true;
  if (parameters) type = Trimmed(type.substr(0, type.find(';')));
  return EqualsLower(type, "text/css");
}

void AppendImageCandidates(std::string_view srcset, std::vector<std::string_view>& urls) {
  for (;;) {
    TakeWhile(srcset, [](char c) { return IsHtmlSpace(c) || c == ','; });
    if (srcset.empty()) return;
    std::string_view url = TakeWord(srcset);
    if (url.back() == ',') {  // a candidate without descriptors
      url.remove_suffix(url.size() - 1 - url.find_last_not_of(','));
      urls.push_back(url);
      continue;
    }
    SkipSpaces(srcset);
    if (TakeDescriptors(srcset).AreGood()) urls.push_back(url);
  }
}

std::string_view RefreshTarget(std::string_view content) {
  SkipSpaces(content);
  const bool hasDigits = !TakeWhile(content, IsAsciiDigit).empty();
  if (!hasDigits && (content.empty() || content.front() != '.')) return {};
  TakeWhile(content, [](char c) { return IsAsciiDigit(c) || c == '.'; });
  if (content.empty()) return {};
  if (content.front() != ';' && content.front() != ',' && !IsHtmlSpace(content.front())) return {};
  SkipSpaces(content);
  if (!content.empty() && (content.front() == ';' || content.front() == ',')) {
    content.remove_prefix(1);
  }
  SkipSpaces(content);
  // A text that begins like the keyword but is another word is a URL as it is, quotes included.
  const bool likeKeyword = !content.empty() && IsLetter(content.front(), 'u');
  if (!TakeUrlKeyword(content) && likeKeyword) return content;
  if (content.empty() || (content.front() != '"' && content.front() != '\'')) return content;
  const char quote = content.front();
  content.remove_prefix(1);
  return content.substr(0, content.find(quote));
}

}  // namespace zvrsit
