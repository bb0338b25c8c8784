#include "cli/unified_diff.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace zvrsit::cli {
namespace {

constexpr std::size_t kContext = 3;

// A name as git writes it: with bytes that are no printable ASCII as octal numbers, in quotes.
std::string GitName(const std::string& name) {
  std::string text;
  bool isPlain = true;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isEscaped = byte < 0x20 || byte >= 0x7F || c == '"' || c == '\\';
    text += isEscaped ? fmt::format("\\{:03o}", byte) : std::string(1, c);
    if (isEscaped) isPlain = false;
  }
  return isPlain ? text : '"' + text + '"';
}

// With its line end; the last one may have none.
std::vector<std::string_view> LinesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end);
  }
  return lines;
}

// Lines that are replaced: numbers before and after, from 0; ends are not included.
struct Block {
  std::size_t begin;
  std::size_t end;
  std::size_t newBegin;
  std::size_t newEnd;
};

// The number of the line that holds byte `offset`.
std::size_t LineAt(const std::vector<std::size_t>& begins, std::size_t offset) {
  const auto next = std::upper_bound(begins.begin(), begins.end(), offset);
  return static_cast<std::size_t>(next - begins.begin()) - 1;
}

void AppendLine(char mark, std::string_view line, std::string& text) {
  text += mark;
  text += line;
  if (!line.ends_with('\n')) text += "\n\\ No newline at end of file\n";
}

// As "begin,count" counted from 1.
std::string Range(std::size_t begin, std::size_t end) {
  if (end - begin == 1) return std::to_string(begin + 1);
  return fmt::format("{},{}", end == begin ? begin : begin + 1, end - begin);
}

class FileDiff {
 public:
  FileDiff(std::string_view before, std::string_view after, const FileEdits& edits)
      : before_(LinesOf(before)), after_(LinesOf(after)) {
    FindBlocks(before, edits);
  }

  std::string Text() const {
    std::string text;
    for (std::size_t first = 0; first < blocks_.size();) {
      std::size_t last = first;
      while (last + 1 < blocks_.size() &&
             blocks_[last + 1].begin - blocks_[last].end <= 2 * kContext) {
        ++last;
      }
      AppendHunk(first, last, text);
      first = last + 1;
    }
    return text;
  }

 private:
  void FindBlocks(std::string_view before, const FileEdits& edits) {
    std::vector<std::size_t> begins{0};
    for (std::size_t i = 0; i + 1 < before.size(); ++i) {
      if (before[i] == '\n') begins.push_back(i + 1);
    }
    std::ptrdiff_t added = 0;  // lines, by the edits so far
    for (const TextEdit& edit : edits.edits) {
      const auto offset = static_cast<std::size_t>(edit.offset);
      const auto length = static_cast<std::size_t>(edit.length);
      const std::size_t begin = LineAt(begins, offset);
      // A line end that is taken out joins a line with the next.
      const std::size_t end = LineAt(begins, std::min(offset + length, before.size() - 1)) + 1;
      const auto changed = std::count(edit.text.begin(), edit.text.end(), '\n') -
                           std::count(before.begin() + edit.offset,
                                      before.begin() + edit.offset + edit.length, '\n');
      const auto newBegin = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(begin) + added);
      added += changed;
      const auto newEnd = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(end) + added);
      if (!blocks_.empty() && begin < blocks_.back().end) {
        blocks_.back().end = std::max(blocks_.back().end, end);
        blocks_.back().newEnd = std::max(blocks_.back().newEnd, newEnd);
      } else {
        blocks_.push_back({begin, end, newBegin, newEnd});
      }
    }
  }

  void AppendHunk(std::size_t first, std::size_t last, std::string& text) const {
    const std::size_t lead = std::min(blocks_[first].begin, kContext);
    const std::size_t trail = std::min(before_.size() - blocks_[last].end, kContext);
    std::size_t line = blocks_[first].begin - lead;
    text += fmt::format("@@ -{} +{} @@\n", Range(line, blocks_[last].end + trail),
                        Range(blocks_[first].newBegin - lead, blocks_[last].newEnd + trail));
    for (std::size_t i = first; i <= last; ++i) {
      const Block& block = blocks_[i];
      for (; line < block.begin; ++line) AppendLine(' ', before_[line], text);
      for (; line < block.end; ++line) AppendLine('-', before_[line], text);
      for (std::size_t k = block.newBegin; k < block.newEnd; ++k) AppendLine('+', after_[k], text);
    }
    for (const std::size_t end = line + trail; line < end; ++line) {
      AppendLine(' ', before_[line], text);
    }
  }

  const std::vector<std::string_view> before_;
  const std::vector<std::string_view> after_;
  std::vector<Block> blocks_;
};

}  // namespace

std::string UnifiedDiff(const std::string& from, const std::string& to, std::string_view bytes,
                        const FileEdits* edits) {
  const std::string oldName = GitName("a/" + from);
  const std::string newName = GitName("b/" + to);
  std::string text = fmt::format("diff --git {} {}\n", oldName, newName);
  if (from != to) text += fmt::format("rename from {}\nrename to {}\n", GitName(from), GitName(to));
  std::string after;
  if (edits == nullptr || !ApplyEdits(bytes, *edits, after)) return text;
  text += fmt::format("--- {}\n+++ {}\n", oldName, newName);
  return text + FileDiff(bytes, after, *edits).Text();
}

std::string RemovalDiff(const std::string& name, std::string_view bytes, const char* mode) {
  const std::string oldName = GitName("a/" + name);
  std::string text =
      fmt::format("diff --git {} {}\ndeleted file mode {}\n", oldName, GitName("b/" + name), mode);
  if (bytes.empty()) return text;
  if (bytes.find('\0') != bytes.npos) {
    return text + fmt::format("Binary files {} and /dev/null differ\n", oldName);
  }
  const std::vector<std::string_view> lines = LinesOf(bytes);
  text += fmt::format("--- {}\n+++ /dev/null\n@@ -{} +0,0 @@\n", oldName, Range(0, lines.size()));
  for (const std::string_view line : lines) AppendLine('-', line, text);
  return text;
}

}  // namespace zvrsit::cli
