#include "manager/update_note.h"

#include <charconv>
#include <cstddef>

#include "platform/file.h"
#include "util/whole_file.h"

namespace zvrsit {

namespace {

// A note is texts with a zero byte after each; a list has its length before it. After the first
// text stands the hash of all that follow it: a power cut may keep any part of a file.
constexpr std::string_view kBegin = "zvrsit note 2";
constexpr std::string_view kEnd = "end";

// By the function of Fowler, Noll and Vo (RFC 9923), with its constants for 64 bits.
std::string HashOfNote(std::string_view bytes) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
  return std::to_string(hash);
}

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
  std::string_view rest() const { return rest_; }
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
  if (note.Text() != kBegin) return false;
  const std::string_view hash = note.Text();
  if (hash != HashOfNote(note.rest()) || note.Texts() != conditions) return false;
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
  Put(conditions, bytes);
  Put(std::to_string(traits), bytes);
  Put(isExact ? "1" : "0", bytes);
  Put(linkedFolders, bytes);
  Put(passedBy, bytes);
  Put(young, bytes);
  Put(saved, bytes);
  Put(moved, bytes);
  Put(kEnd, bytes);
  std::string head;
  Put(kBegin, head);
  Put(HashOfNote(bytes), head);
  const bool isWhole = WriteWholeFile(path, head + bytes) == 0;
  if (!isWhole) platform::Unlink(path);
  return isWhole;
}

}  // namespace zvrsit
