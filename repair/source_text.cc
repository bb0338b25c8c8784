#include "repair/source_text.h"

#include <algorithm>
#include <utility>

#include "dom/character_reference.h"
#include "platform/code_page.h"
#include "platform/code_page_text.h"
#include "platform/utf8.h"
#include "util/ascii.h"

namespace zvrsit {
namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";

// Whether a "&" stands in `raw` that begins no character reference.
bool HasBareAmpersand(std::string_view raw, bool inAttribute) {
  for (std::size_t at = 0; (at = raw.find('&', at)) != std::string_view::npos; ++at) {
    if (MatchCharacterReference(raw.substr(at), inAttribute).length == 0) return true;
  }
  return false;
}

bool MayBeginReference(std::string_view rest) {
  return !rest.empty() && (rest.front() == '#' || IsAsciiLetter(rest.front()));
}

std::string AsMarkup(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c == '&') {
      out += "&amp;";
    } else if (c == '<') {
      out += "&lt;";
    } else {
      out += c;
    }
  }
  return out;
}

// `special` are the characters that need a backslash before them.
std::string AsCss(std::string_view text, std::string_view special) {
  std::string out;
  ForEachCharacter(text, [&](std::string_view character) {
    const char c = character.front();
    const auto byte = static_cast<unsigned char>(c);
    if (byte < ' ' || byte == 0x7F) {
      out.append({'\\', kHexDigits[byte >> 4], kHexDigits[byte & 15], ' '});
      return;
    }
    if (character.size() == 1 && special.find(c) != std::string_view::npos) out += '\\';
    out += character;
  });
  return out;
}

void AppendJsonUnit(std::string& out, unsigned unit) {
  out += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) out += kHexDigits[unit >> shift & 15];
}

// As escapes of UTF-16 units.
void AppendJsonEscapes(std::string& out, std::string_view character) {
  const std::string utf8 = platform::ToUtf8(character);
  const char32_t code = platform::DecodeUtf8(utf8).codePoint;
  if (code < 0x10000) return AppendJsonUnit(out, code);
  AppendJsonUnit(out, 0xD800 + ((code - 0x10000) >> 10));
  AppendJsonUnit(out, 0xDC00 + ((code - 0x10000) & 0x3FF));
}

}  // namespace

void ForEachCharacter(std::string_view text,
                      const std::function<void(std::string_view character)>& visit) {
  const bool isUtf8 = platform::CodePage() == platform::kUtf8;
  while (!text.empty()) {
    const auto first = static_cast<unsigned char>(text.front());
    std::size_t length = platform::IsDbcsLeadByte(first) ? 2 : 1;
    if (isUtf8 && first >= 0x80) length = platform::DecodeUtf8(text).length;
    length = std::min(length, text.size());
    visit(text.substr(0, length));
    text.remove_prefix(length);
  }
}

void SourceText::Append(std::string_view meaning, std::size_t place, std::size_t length) {
  if (ends_.empty()) ends_.push_back(static_cast<std::uint32_t>(place));
  ends_.insert(ends_.end(), meaning.size(), static_cast<std::uint32_t>(place + length));
  // What stands for nothing belongs to the character before it.
  if (meaning.empty()) ends_.back() = static_cast<std::uint32_t>(place + length);
  decoded_ += meaning;
}

void SourceText::AppendRaw() {
  for (std::size_t i = 0; i < raw_.size(); ++i) Append(raw_.substr(i, 1), begin_ + i, 1);
}

std::string SourceText::AsAttribute(std::string_view text, char quote) const {
  const bool keepsBare = HasBareAmpersand(raw_, true);
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '&' && !(keepsBare && !MayBeginReference(text.substr(i + 1)))) {
      out += "&amp;";
    } else if (c == quote && quote == '"') {
      out += "&quot;";
    } else if (c == quote && quote == '\'') {
      out += "&#39;";
    } else {
      out += c;
    }
  }
  return out;
}

std::string SourceText::AsJson(std::string_view text) const {
  const bool escapesSlash = raw_.find("\\/") != std::string_view::npos;
  const bool escapesCodes = raw_.find("\\u") != std::string_view::npos;
  std::string out;
  ForEachCharacter(text, [&](std::string_view character) {
    const char c = character.front();
    const auto byte = static_cast<unsigned char>(c);
    const bool isControl = byte < ' ';
    if (isControl || (escapesCodes && byte >= 0x80)) {
      AppendJsonEscapes(out, character);
    } else if (c == '"' || c == '\\' || (c == '/' && escapesSlash)) {
      out.append({'\\', c});
    } else {
      out += character;
    }
  });
  return out;
}

std::string SourceText::Written(std::string_view text) const {
  switch (writing_) {
    case Writing::kAttribute:
      return AsAttribute(text, quote_);
    case Writing::kMarkup:
      return AsMarkup(text);
    case Writing::kCssString:
      return AsCss(text, quote_ == '"' ? "\\\"" : "\\'");
    case Writing::kCssUrl:
      return AsCss(text, "\\\"'() ");
    case Writing::kJson:
      return AsJson(text);
    case Writing::kAsIs:
      break;
  }
  return std::string(text);
}

// Whether an attribute without quotes cannot do without them any more.
bool SourceText::NeedsQuotes() const {
  if (writing_ != Writing::kAttribute || quote_ != '\0' || edits_.empty()) return false;
  std::size_t left = decoded_.size();
  for (const SourceEdit& edit : edits_) {
    if (edit.text.find_first_of(" \t\n\f\r\"'=<>`") != std::string_view::npos) return true;
    left = left + edit.text.size() - (edit.end - edit.begin);
  }
  return left == 0;
}

// Makes one edit of all: the whole value in quotes.
void SourceText::Quote() {
  const char quote = raw_.find('"') == std::string_view::npos ? '"' : '\'';
  SourceEdit all{begin_, begin_ + raw_.size(), std::string(1, quote), {}};
  std::size_t done = begin_;
  const auto copy = [&](std::size_t end) {
    for (const char c : raw_.substr(done - begin_, end - done)) {
      all.text += c == quote ? std::string(quote == '"' ? "&quot;" : "&#39;") : std::string(1, c);
    }
  };
  for (const SourceEdit& edit : edits_) {
    copy(ends_[edit.begin]);
    all.text += AsAttribute(edit.text, quote);
    done = edit.end > edit.begin ? ends_[edit.end] : ends_[edit.begin];
    all.references.insert(all.references.end(), edit.references.begin(), edit.references.end());
  }
  copy(begin_ + raw_.size());
  all.text += quote;
  outer_->Edit(std::move(all));
}

void SourceText::HandOn() {
  if (outer_ == nullptr) return;
  if (ends_.empty()) ends_.push_back(static_cast<std::uint32_t>(begin_));
  std::sort(edits_.begin(), edits_.end(),
            [](const SourceEdit& a, const SourceEdit& b) { return a.begin < b.begin; });
  if (NeedsQuotes()) {
    Quote();
  } else {
    for (SourceEdit& edit : edits_) {
      const std::size_t begin = ends_[edit.begin];
      const std::size_t end = edit.end > edit.begin ? ends_[edit.end] : begin;
      outer_->Edit({begin, end, Written(edit.text), std::move(edit.references)});
    }
  }
  edits_.clear();
}

}  // namespace zvrsit
