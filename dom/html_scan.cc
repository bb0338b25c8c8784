#include "dom/html_scan.h"

namespace zvrsit {
namespace {

using Search = DefaultSearch;

char LowerAscii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

bool IsSpace(char c) {
  return IsByte(c, kSpaceByte);
}

std::string_view Slice(const char* from, const char* to) {
  return {from, static_cast<std::size_t>(to - from)};
}

// Comments.

// A comment that the text ends in loses the dashes of its unfinished end.
const char* DropUnfinishedEnd(const char* from, const char* end) {
  const std::string_view data = Slice(from, end);
  for (const std::string_view unfinished : {"--!", "--", "-"}) {
    if (data.ends_with(unfinished)) return end - unfinished.size();
  }
  return end;
}

// Document types: one function a group of states.
class DoctypeScanner {
 public:
  DoctypeScanner(const char* from, const char* end, DoctypeToken& doctype)
      : p_(from), end_(end), doctype_(doctype) {}

  const char* Scan() {
    BeforeDoctypeNameState();
    if (p_ < end_) ++p_;  // ">"
    return p_;
  }

 private:
  void SkipSpace() {
    while (IsSpace(*p_)) ++p_;
  }
  bool AtEnd() const { return p_ == end_; }

  // Leaves p_ at the closing ">" or at the end, as all of these do.
  void BogusDoctypeState() { p_ = Search::Byte(p_, end_, '>'); }
  void Quirks() {
    doctype_.forceQuirks = true;
    BogusDoctypeState();
  }

  void BeforeDoctypeNameState() {
    SkipSpace();
    if (AtEnd() || *p_ == '>') return Quirks();
    const char* name = p_;
    while (p_ < end_ && *p_ != '>' && !IsSpace(*p_)) ++p_;
    doctype_.name = Slice(name, p_);
    AfterDoctypeNameState();
  }

  void AfterDoctypeNameState() {
    SkipSpace();
    if (AtEnd()) return Quirks();
    if (*p_ == '>') return;
    if (BeginsWithNoCase(p_, end_, "public")) {
      p_ += 6;
      PublicIdentifierStates();
    } else if (BeginsWithNoCase(p_, end_, "system")) {
      p_ += 6;
      SystemIdentifierStates();
    } else {
      Quirks();
    }
  }

  void PublicIdentifierStates() {
    SkipSpace();
    if (!AtQuote()) return Quirks();
    if (!QuotedIdentifierState(doctype_.publicId)) return Quirks();
    SkipSpace();
    if (!AtEnd() && *p_ == '>') return;
    SystemIdentifierStates();
  }

  void SystemIdentifierStates() {
    SkipSpace();
    if (!AtQuote()) return Quirks();
    if (!QuotedIdentifierState(doctype_.systemId)) return Quirks();
    SkipSpace();
    if (AtEnd()) return Quirks();
    BogusDoctypeState();
  }

  bool AtQuote() const { return p_ < end_ && (*p_ == '"' || *p_ == '\''); }

  // False when a ">" or the end of the text cut the identifier short.
  bool QuotedIdentifierState(std::string_view& identifier) {
    const char quote = *p_++;
    const char* begin = p_;
    while (p_ < end_ && *p_ != quote && *p_ != '>') ++p_;
    identifier = Slice(begin, p_);
    if (AtEnd() || *p_ == '>') return false;
    ++p_;
    return true;
  }

  const char* p_;
  const char* end_;
  DoctypeToken& doctype_;
};

// Whether "<script" or "</script" with its delimiter begins at `name`.
bool IsScriptName(const char* name, const char* end) {
  return BeginsWithNoCase(name, end, "script") && IsByte(name[6], kTagNameEnd);
}

}  // namespace

bool BeginsWithNoCase(const char* from, const char* end, std::string_view lowerCase) {
  if (static_cast<std::size_t>(end - from) < lowerCase.size()) return false;
  for (const char c : lowerCase) {
    if (LowerAscii(*from++) != c) return false;
  }
  return true;
}

Extent ScanComment(const char* from, const char* end) {
  if (*from == '>') return {from, from + 1};
  if (from[0] == '-' && from[1] == '>') return {from, from + 2};
  for (const char* p = from; (p = Search::Byte(p, end, '>')) < end; ++p) {
    const std::string_view data = Slice(from, p);
    if (data.ends_with("--")) return {p - 2, p + 1};
    if (data.ends_with("--!")) return {p - 3, p + 1};
  }
  return {DropUnfinishedEnd(from, end), end};
}

Extent ScanBogusComment(const char* from, const char* end) {
  const char* close = Search::Byte(from, end, '>');
  return {close, close < end ? close + 1 : end};
}

Extent ScanCdata(const char* from, const char* end) {
  for (const char* p = from; (p = Search::Byte(p, end, '>')) < end; ++p) {
    if (Slice(from, p).ends_with("]]")) return {p - 2, p + 1};
  }
  return {end, end};
}

const char* ScanDoctype(const char* from, const char* end, DoctypeToken& doctype) {
  return DoctypeScanner(from, end, doctype).Scan();
}

bool IsEndTagOf(const char* from, const char* end, std::string_view name) {
  const char* p = from + 2;
  if (name.empty() || from[1] != '/' || static_cast<std::size_t>(end - from) < name.size() + 2) {
    return false;
  }
  for (const char c : name) {
    if (LowerAscii(*p++) != LowerAscii(c)) return false;
  }
  return IsByte(*p, kTagNameEnd);
}

// Inside "<!--" a nested "<script>" hides the next "</script>". Both end with "-->".
const char* ScanScriptData(const char* from, const char* end, std::string_view name) {
  enum { kPlain, kEscaped, kDoubleEscaped } state = kPlain;
  const char* dashes = from;  // dashes since here may be the beginning of "-->"
  for (const char* p = from; p < end; ++p) {
    if (state == kPlain) {
      p = Search::Byte(p, end, '<');
      if (p == end || IsEndTagOf(p, end, name)) return p;
      if (!BeginsWithNoCase(p, end, "<!--")) continue;
      state = kEscaped;
      dashes = p + 2;
      p += 3;
    } else if (*p == '>') {
      if (Slice(dashes, p).ends_with("--")) state = kPlain;
    } else if (*p != '<') {
      continue;
    } else if (state == kEscaped) {
      if (IsEndTagOf(p, end, name)) return p;
      if (!IsScriptName(p + 1, end)) continue;
      state = kDoubleEscaped;
      dashes = p += 7;
    } else if (p[1] == '/' && IsScriptName(p + 2, end)) {
      state = kEscaped;
      dashes = p += 8;
    }
  }
  return end;
}

}  // namespace zvrsit
