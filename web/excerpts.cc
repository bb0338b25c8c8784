#include "web/excerpts.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "dom/code_conv.h"
#include "dom/mapped_file.h"
#include "findings/escapes.h"
#include "platform/code_page.h"
#include "platform/native_path.h"

namespace zvrsit {
namespace {

constexpr std::size_t kLongest = 240;      // characters of an excerpt
constexpr std::size_t kBefore = 80;        // of them before the reference
constexpr std::size_t kLongestUser = 512;  // bytes

bool IsInside(char c) {
  return (c & 0xC0) == 0x80;
}

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// A page as text in UTF-8; places are looked up from front to back.
class PageLines {
 public:
  // `folder` and `name` as in a report; false when the file cannot be read.
  bool Open(const std::string& folder, const std::string& name) {
    text_ = {};
    line_ = 1;
    begin_ = 0;
    const bool isRead = Read(folder + name) || Read(name);
    ToLineEnd();
    return isRead;
  }

  // False when there is no such place. Lines and columns count from 1, in characters.
  bool GoTo(int line, int column) {
    while (line_ < line) {
      if (end_ == text_.size()) return false;
      begin_ = end_ + 1;
      ++line_;
      ToLineEnd();
    }
    while (column_ < column && at_ < end_) {
      ++at_;
      while (at_ < end_ && IsInside(text_[at_])) ++at_;
      ++column_;
    }
    return line_ == line && column_ == column;
  }

  std::string_view line() const {
    std::string_view line = text_.substr(begin_, end_ - begin_);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
  }
  std::size_t at() const { return std::min(at_ - begin_, line().size()); }

 private:
  // In the encoding of the page.
  bool Read(const std::string& native) {
    std::string path;
    if (!platform::FromNativePath(native, path) || !file_.open(path, 0)) return false;
    if (!page_.Import(file_.top(), file_.size(), 0)) return false;
    text_ = {page_.text(), page_.length()};
    if (platform::CodePage() != platform::kUtf8) {
      bytes_ = platform::ToUtf8(text_);
      text_ = bytes_;
    }
    return true;
  }

  void ToLineEnd() {
    end_ = std::min(text_.find('\n', begin_), text_.size());
    at_ = begin_;
    column_ = 1;
  }

  MappedFile file_;
  CodeConv page_;
  std::string bytes_;
  std::string_view text_;
  int line_ = 1;
  int column_ = 1;
  std::size_t begin_ = 0;  // of the line
  std::size_t end_ = 0;
  std::size_t at_ = 0;  // of the column
};

std::size_t Back(std::string_view line, std::size_t at, std::size_t characters) {
  for (; characters > 0 && at > 0; --characters) {
    do {
      --at;
    } while (at > 0 && IsInside(line[at]));
  }
  return at;
}
std::size_t Forth(std::string_view line, std::size_t at, std::size_t characters) {
  for (; characters > 0 && at < line.size(); --characters) {
    do {
      ++at;
    } while (at < line.size() && IsInside(line[at]));
  }
  return at;
}

std::size_t LengthInUtf16(std::string_view text) {
  std::size_t units = 0;
  for (const char c : text) {
    if (!IsInside(c)) units += (c & 0xF8) == 0xF0 ? 2 : 1;
  }
  return units;
}

// The bytes of a line that a reference takes up, which is said to begin at `at`: behind it in a
// style sheet, where `url(` comes first. Where it is not found, it is written otherwise, such as
// with character references.
std::pair<std::size_t, std::size_t> SpanOf(std::string_view line, std::size_t at,
                                           const std::string& reference) {
  constexpr std::size_t kLongestLead = 12;
  const std::size_t found =
      reference.empty() ? line.npos
                        : line.substr(0, at + reference.size() + kLongestLead).find(reference, at);
  if (found != line.npos) return {found, found + reference.size()};
  return {at, std::min(line.find_first_of("\"'<> \t)", at), line.size())};
}

// Writes `*` over each byte of the user and the password of each URL.
void HideUsers(std::string& text) {
  for (std::size_t at = text.find("//"); at != text.npos; at = text.find("//", at)) {
    at += 2;
    const std::size_t end = std::min(text.find_first_of("/?#\"'<> \t", at), text.size());
    const std::size_t sign = std::string_view(text).substr(0, end).rfind('@');
    if (sign == text.npos || sign < at) continue;
    std::fill(text.begin() + static_cast<std::ptrdiff_t>(at),
              text.begin() + static_cast<std::ptrdiff_t>(sign), '*');
  }
}

std::string Shown(std::string_view text) {
  if (std::ranges::all_of(text, [](char c) { return c >= ' ' && c < 0x7F; })) {
    return std::string(text);
  }
  std::string shown;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t next = Forth(text, at, 1);
    if (text[at] == '\t') {
      shown += ' ';
    } else if (ControlLength(text.substr(at)) > 0) {
      shown += "\xEF\xBF\xBD";
    } else {
      shown += text.substr(at, next - at);
    }
    at = next;
  }
  return shown;
}

// A line, or a long part of it, and the byte in it where a reference begins.
struct LinePart {
  std::string_view text;
  std::size_t at;
};

Excerpt CutOut(const LinePart& whole, const std::string& reference) {
  const std::string_view line = whole.text;
  const auto [first, last] = SpanOf(line, whole.at, reference);
  const std::size_t begin =
      std::max(Back(line, first, kBefore), std::min(line.find_first_not_of(" \t"), first));
  const std::size_t end = Forth(line, begin, kLongest);
  // A user may begin before the part, and a password end behind it.
  const std::size_t from = begin - std::min(begin, kLongestUser);
  std::string around(line.substr(from, end + kLongestUser - from));
  HideUsers(around);
  const std::string_view part = std::string_view(around).substr(begin - from, end - begin);
  return {Shown(part), LengthInUtf16(part.substr(0, first - begin)),
          LengthInUtf16(part.substr(first - begin, last - first))};
}

// Reads a little of a page around a reference that begins at a known byte, so that it need not be
// read up to there. Only for pages that are in the code page as they are, which is UTF-8.
class PageWindow {
 public:
  void Open(const std::string& folder, const std::string& name) {
    file_.reset(std::fopen((folder + name).c_str(), "rb"));
    if (file_ != nullptr) std::setvbuf(file_.get(), nullptr, _IONBF, 0);
  }

  // Good until the next call; nothing when the reference is not there.
  std::optional<LinePart> At(std::int64_t offset, const std::string& reference) {
    const std::int64_t from = std::max<std::int64_t>(offset - kAround, 0);
    if (file_ == nullptr || std::fseek(file_.get(), static_cast<long>(from), SEEK_SET) != 0) {
      return std::nullopt;
    }
    std::string_view text(bytes_.data(), std::fread(bytes_.data(), 1, bytes_.size(), file_.get()));
    auto at = static_cast<std::size_t>(offset - from);
    if (at > text.size() || !text.substr(at).starts_with(reference)) return std::nullopt;
    const std::size_t end = text.find('\n', at);
    const bool isCut = end == text.npos && text.size() == bytes_.size();
    text = text.substr(0, end);
    const std::size_t begin = text.substr(0, at).rfind('\n') + 1;  // 0 for none
    text.remove_prefix(begin);
    at -= begin;
    for (; at > 0 && IsInside(text.front()); --at) text.remove_prefix(1);
    while (isCut && text.size() > at && (text.back() & 0x80) != 0) text.remove_suffix(1);
    if (text.ends_with('\r')) text.remove_suffix(1);
    if (platform::ToUtf8(text) != text) return std::nullopt;
    return LinePart{text, at};
  }

 private:
  static constexpr std::int64_t kAround = 4 * (kLongest + kLongestUser);

  File file_;
  std::array<char, 2 * kAround> bytes_;
};

struct HashExcerpt {
  std::size_t operator()(const Excerpt& excerpt) const {
    return std::hash<std::string>()(excerpt.text) * 31 + excerpt.offset;
  }
};

struct AskedPlace {
  const FindingPlace* place;
  std::size_t number;  // among all places
  std::size_t file;    // as findings come to them

  bool ComesBefore(const AskedPlace& other) const {
    return std::tie(file, place->line, place->column) <
           std::tie(other.file, other.place->line, other.place->column);
  }
};

class ExcerptReader {
 public:
  ExcerptReader(const FindingReport& report, const ReferenceOffsets& offsets)
      : folder_(report.folder), offsets_(offsets) {
    std::size_t count = 0;
    std::unordered_map<std::string_view, std::size_t> files;
    for (const Finding& finding : report.findings) {
      for (const FindingPlace& place : finding.places) {
        if (place.line > 0) {
          const std::size_t file = files.try_emplace(place.file, files.size()).first->second;
          asked_.push_back({&place, count, file});
        }
        ++count;
      }
    }
    excerpts_.ofPlace.assign(count, -1);
  }

  Excerpts Read() {
    std::ranges::sort(asked_, std::mem_fn(&AskedPlace::ComesBefore));
    const AskedPlace* last = nullptr;
    for (const AskedPlace& asked : asked_) {
      if (last == nullptr || last->file != asked.file) {
        isLinesOpen_ = false;
        window_.Open(folder_, asked.place->file);
      }
      excerpts_.ofPlace[asked.number] = ReadOne(*asked.place);
      last = &asked;
    }
    return std::move(excerpts_);
  }

 private:
  // The index of its excerpt; -1 for none.
  std::int32_t ReadOne(const FindingPlace& place) {
    const std::string& reference = place.reference;
    const auto known = offsets_.find(place.file + '\n' + reference);
    if (known != offsets_.end() && known->second >= 0 && !reference.empty()) {
      const std::optional<LinePart> part = window_.At(known->second, reference);
      if (part) return IndexOf(*part, reference);
    }
    if (!isLinesOpen_) hasLines_ = lines_.Open(folder_, place.file);
    isLinesOpen_ = true;
    if (!hasLines_ || !lines_.GoTo(place.line, place.column)) return -1;
    return IndexOf({lines_.line(), lines_.at()}, reference);
  }

  // The pages of a site are much alike: most of their lines have been cut before.
  std::int32_t IndexOf(const LinePart& part, const std::string& reference) {
    constexpr std::size_t kLongestKept = 4096;
    if (part.text.size() > kLongestKept) return IndexOf(CutOut(part, reference));
    key_ = part.text;
    key_ += fmt::format("\n{}\n{}", part.at, reference);
    const auto [entry, isNew] = ofLine_.try_emplace(key_, -1);
    if (isNew) entry->second = IndexOf(CutOut(part, reference));
    return entry->second;
  }
  std::int32_t IndexOf(Excerpt excerpt) {
    const auto [entry, isNew] =
        known_.try_emplace(std::move(excerpt), static_cast<std::int32_t>(excerpts_.all.size()));
    if (isNew) excerpts_.all.push_back(entry->first);
    return entry->second;
  }

  const std::string& folder_;
  const ReferenceOffsets& offsets_;
  std::vector<AskedPlace> asked_;
  Excerpts excerpts_;
  std::unordered_map<Excerpt, std::int32_t, HashExcerpt> known_;
  std::unordered_map<std::string, std::int32_t> ofLine_;  // by line, place in it and reference
  std::string key_;                                       // of it
  // The file that is being looked at:
  PageWindow window_;
  PageLines lines_;
  bool isLinesOpen_ = false;
  bool hasLines_ = false;
};

}  // namespace

Excerpts ReadExcerpts(const FindingReport& report, const ReferenceOffsets& offsets) {
  return ExcerptReader(report, offsets).Read();
}

}  // namespace zvrsit
