#include "repair/journal.h"

#include <array>
#include <cerrno>

#include "platform/file.h"
#include "util/little_endian.h"
#include "util/mb_string.h"
#include "util/whole_file.h"

namespace zvrsit {

namespace {

// The file: this line, the hash of the rest, and the fields one after the other. Numbers have eight
// bytes, little-endian; a text or a list begins with its length.
constexpr std::string_view kMagic = "ZVRSIT-REPAIR 1\n";
constexpr std::size_t kWord = 8;

class Writer {
 public:
  void Number(std::uint64_t number) {
    std::array<char, kWord> word;
    StoreLEU32(word.data(), static_cast<std::uint32_t>(number));
    StoreLEU32(word.data() + kWord / 2, static_cast<std::uint32_t>(number >> 32));
    bytes_.append(word.data(), word.size());
  }
  void Text(std::string_view text) {
    Number(text.size());
    bytes_ += text;
  }
  void Mark(const ContentMark& mark) {
    Number(mark.size);
    Number(mark.hash);
  }
  template <class Rows, class Put>
  void List(const Rows& rows, Put put) {
    Number(rows.size());
    for (const auto& row : rows) put(row);
  }
  const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

// After a fault everything that is read is empty.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : rest_(bytes) {}

  std::uint64_t Number() {
    if (rest_.size() < kWord) return Fail();
    const std::uint64_t low = LoadLEU32(rest_.data());
    const std::uint64_t high = LoadLEU32(rest_.data() + kWord / 2);
    rest_.remove_prefix(kWord);
    return low | high << 32;
  }
  std::string Text() {
    const std::uint64_t length = Number();
    if (length > rest_.size()) return Fail(), std::string();
    std::string text(rest_.substr(0, static_cast<std::size_t>(length)));
    rest_.remove_prefix(text.size());
    return text;
  }
  ContentMark Mark() {
    ContentMark mark;
    mark.size = Number();
    mark.hash = Number();
    return mark;
  }
  // Each row takes a word at least, so that a wrong count ends with the text.
  template <class Row, class Get>
  void List(std::vector<Row>& rows, Get get) {
    for (std::uint64_t left = Number(); left > 0 && isWhole_; --left) rows.push_back(get());
  }
  bool isAtEnd() const { return isWhole_ && rest_.empty(); }

 private:
  std::uint64_t Fail() {
    isWhole_ = false;
    rest_ = {};
    return 0;
  }

  std::string_view rest_;
  bool isWhole_ = true;
};

JournalFile ReadFile(Reader& reader) {
  JournalFile file;
  file.path = reader.Text();
  file.temporary = reader.Text();
  file.before = reader.Mark();
  file.after = reader.Mark();
  reader.List(file.edits, [&] {
    JournalEdit edit;
    edit.offset = reader.Number();
    edit.before = reader.Text();
    edit.after = reader.Text();
    return edit;
  });
  return file;
}

// Replaces `from` by `to` where `edits` have it; `shift` is what the edits before have added.
bool Exchange(std::string_view bytes, const JournalFile& file, bool undoes, std::string& result) {
  std::string changed;
  std::size_t done = 0;
  std::uint64_t added = 0;  // modulo 2^64: to the offset of the next edit in `bytes`
  for (const JournalEdit& edit : file.edits) {
    const std::string& from = undoes ? edit.after : edit.before;
    const std::string& to = undoes ? edit.before : edit.after;
    const std::uint64_t offset = undoes ? edit.offset + added : edit.offset;
    if (offset < done || offset > bytes.size()) return false;
    const auto begin = static_cast<std::size_t>(offset);
    if (bytes.substr(begin, from.size()) != from) return false;
    changed.append(bytes.substr(done, begin - done)).append(to);
    done = begin + from.size();
    added += edit.after.size() - edit.before.size();
  }
  changed.append(bytes.substr(done));
  result = std::move(changed);
  return true;
}

}  // namespace

// The function by Fowler, Noll and Vo (RFC 9923), with its constants for 64 bits.
ContentMark ContentMark::Of(std::string_view bytes) {
  constexpr std::uint64_t kBasis = 0xCBF29CE484222325;
  constexpr std::uint64_t kPrime = 0x100000001B3;
  ContentMark mark{bytes.size(), kBasis};
  for (const char byte : bytes) mark.hash = (mark.hash ^ static_cast<unsigned char>(byte)) * kPrime;
  return mark;
}

bool JournalFile::Apply(std::string_view bytes, std::string& result) const {
  return ContentMark::Of(bytes) == before && Exchange(bytes, *this, false, result);
}

bool JournalFile::Undo(std::string_view bytes, std::string& result) const {
  return ContentMark::Of(bytes) == after && Exchange(bytes, *this, true, result) &&
         ContentMark::Of(result) == before;
}

int WriteJournal(const std::string& path, const Journal& journal) {
  Writer writer;
  writer.List(journal.folders, [&](const std::string& folder) { writer.Text(folder); });
  writer.List(journal.files, [&](const JournalFile& file) {
    writer.Text(file.path);
    writer.Text(file.temporary);
    writer.Mark(file.before);
    writer.Mark(file.after);
    writer.List(file.edits, [&](const JournalEdit& edit) {
      writer.Number(edit.offset);
      writer.Text(edit.before);
      writer.Text(edit.after);
    });
  });
  writer.List(journal.renames, [&](const JournalRename& rename) {
    writer.Text(rename.from);
    writer.Text(rename.to);
    writer.Number(rename.isRemoval ? 1 : 0);
  });
  Writer head;
  head.Number(ContentMark::Of(writer.bytes()).hash);
  const std::string temporary = path + ".new";
  const bool isThere =
      WriteWholeFile(temporary, std::string(kMagic) + head.bytes() + writer.bytes()) == 0 &&
      platform::SyncFiles({temporary}) == 0 && platform::Replace(temporary, path) == 0;
  if (isThere && platform::SyncFolder(std::string(FolderOf(path))) == 0) return 0;
  platform::Unlink(isThere ? path : temporary);
  return -1;
}

JournalState ReadJournal(const std::string& path, Journal& journal) {
  journal = {};
  platform::FileStat found;
  if (platform::Stat(path, found) != 0) {
    const int reason = platform::LastError();
    return reason == ENOENT || reason == ENOTDIR ? JournalState::kNone : JournalState::kUnreadable;
  }
  std::string bytes;
  if (ReadWholeFile(path, bytes) != 0) return JournalState::kUnreadable;
  if (!bytes.starts_with(kMagic)) return JournalState::kDamaged;
  const std::string_view rest = std::string_view(bytes).substr(kMagic.size());
  Reader head(rest.substr(0, kWord));
  const std::uint64_t hash = head.Number();
  if (rest.size() < kWord || ContentMark::Of(rest.substr(kWord)).hash != hash) {
    return JournalState::kDamaged;
  }
  Reader reader(rest.substr(kWord));
  reader.List(journal.folders, [&] { return reader.Text(); });
  reader.List(journal.files, [&] { return ReadFile(reader); });
  reader.List(journal.renames, [&] {
    JournalRename rename;
    rename.from = reader.Text();
    rename.to = reader.Text();
    rename.isRemoval = reader.Number() != 0;
    return rename;
  });
  return reader.isAtEnd() ? JournalState::kWhole : JournalState::kDamaged;
}

}  // namespace zvrsit
