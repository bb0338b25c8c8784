#include "manager/update_note.h"

#include <charconv>
#include <cstddef>

#include "platform/file.h"
#include "util/whole_file.h"

namespace zvrsit {

namespace {

// A note is texts with a zero byte after each; a list has its length before it. It ends with kEnd,
// so that one that was not written to its end is none.
constexpr std::string_view kBegin = "zvrsit note 1";
constexpr std::string_view kEnd = "end";

void Put(std::string_view text, std::string& note) {
  note.append(text).push_back('\0');
}

void Put(const std::vector<std::string>& texts, std::string& note) {
  Put(std::to_string(texts.size()), note);
  for (const std::string& text : texts) Put(text, note);
}

class Reader {
 public:
  explicit Reader(std::string_view note) : rest_(note) {}

  std::string_view Text() {
    const std::size_t end = rest_.find('\0');
    if (end == std::string_view::npos) return {};
    const std::string_view text = rest_.substr(0, end);
    rest_.remove_prefix(end + 1);
    return text;
  }
  std::size_t Number() {
    const std::string_view text = Text();
    std::size_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
  }
  std::vector<std::string> Texts() {
    std::vector<std::string> texts;
    for (std::size_t count = Number(); count > 0 && !rest_.empty(); --count) {
      texts.emplace_back(Text());
    }
    return texts;
  }

 private:
  std::string_view rest_;
};

}  // namespace

bool UpdateNote::Read(const std::string& path) {
  std::string bytes;
  if (ReadWholeFile(path, bytes) != 0) return false;
  Reader note(bytes);
  if (note.Text() != kBegin || note.Texts() != conditions) return false;
  traits = static_cast<std::uint32_t>(note.Number());
  isExact = note.Number() != 0;
  linkedFolders = note.Texts();
  passedBy = note.Texts();
  young = note.Texts();
  saved = note.Texts();
  moved = note.Texts();
  return note.Text() == kEnd;
}

bool UpdateNote::Write(const std::string& path) const {
  std::string bytes;
  Put(kBegin, bytes);
  Put(conditions, bytes);
  Put(std::to_string(traits), bytes);
  Put(isExact ? "1" : "0", bytes);
  Put(linkedFolders, bytes);
  Put(passedBy, bytes);
  Put(young, bytes);
  Put(saved, bytes);
  Put(moved, bytes);
  Put(kEnd, bytes);
  const bool isWhole = WriteWholeFile(path, bytes) == 0;
  if (!isWhole) platform::Unlink(path);
  return isWhole;
}

}  // namespace zvrsit
