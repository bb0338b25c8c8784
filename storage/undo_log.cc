#include "storage/undo_log.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/file.h"
#include "storage/guarded.h"
#include "util/little_endian.h"
#include "util/path_parts.h"
#include "util/whole_file.h"

namespace zvrsit {

namespace {

constexpr std::string_view kUndoMagic = "ZVRSIT-UNDO 1\n";
constexpr const char* kBegunSuffix = ".new";  // of a log that is being written
constexpr std::size_t kUndoWord = 8;
constexpr std::uint64_t kFileEntry = 0;
constexpr std::uint64_t kPartEntry = 1;
constexpr std::uint64_t kRenameEntry = 2;
constexpr std::uint64_t kNotThere = ~std::uint64_t{0};
constexpr std::size_t kReadAtOnce = std::size_t{1} << 20;

// The function by Fowler, Noll and Vo (RFC 9923), with its constants for 64 bits.
constexpr std::uint64_t kUndoBasis = 0xCBF29CE484222325;
std::uint64_t GoOnWith(std::uint64_t hash, std::string_view bytes) {
  for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
  return hash;
}

std::array<char, kUndoWord> BytesOf(std::uint64_t number) {
  std::array<char, kUndoWord> bytes;
  StoreLEU32(bytes.data(), static_cast<std::uint32_t>(number));
  StoreLEU32(bytes.data() + kUndoWord / 2, static_cast<std::uint32_t>(number >> 32));
  return bytes;
}

int WriteAllBytes(int fd, std::string_view bytes) {
  const std::int64_t written = platform::Write(fd, bytes.data(), bytes.size());
  return written == static_cast<std::int64_t>(bytes.size()) ? 0 : -1;
}

bool IsMissing(int error) {
  return error == ENOENT || error == ENOTDIR;
}

// Of the folders that were there, so that a removed name stays removed.
int SyncFoldersOf(std::vector<std::string> folders) {
  std::ranges::sort(folders);
  folders.erase(std::unique(folders.begin(), folders.end()), folders.end());
  for (const std::string& folder : folders) {
    if (platform::SyncFolder(folder) != 0 && !IsMissing(platform::LastError())) return -1;
  }
  return 0;
}

std::string Bare(std::string path) {
  if (path.ends_with('\\')) path.pop_back();
  return path;
}

int RemoveLog(const std::string& path) {
  if (platform::Unlink(path) != 0 && !IsMissing(platform::LastError())) return -1;
  return platform::SyncFolder(std::string(FolderOf(path)));
}

// Reads the entries of a log. After a fault everything that is read is empty.
class UndoReader {
 public:
  explicit UndoReader(std::string_view bytes) : rest_(bytes) {}

  bool isAtEnd() const { return rest_.empty(); }
  bool isWhole() const { return isWhole_; }
  std::uint64_t Number() {
    if (rest_.size() < kUndoWord) return Fail();
    const std::uint64_t low = LoadLEU32(rest_.data());
    const std::uint64_t high = LoadLEU32(rest_.data() + kUndoWord / 2);
    rest_.remove_prefix(kUndoWord);
    return low | high << 32;
  }
  std::string_view Text() {
    const std::uint64_t length = Number();
    if (length > rest_.size()) return Fail(), std::string_view();
    const std::string_view text = rest_.substr(0, static_cast<std::size_t>(length));
    rest_.remove_prefix(text.size());
    return text;
  }

 private:
  std::uint64_t Fail() {
    isWhole_ = false;
    rest_ = {};
    return 0;
  }

  std::string_view rest_;
  bool isWhole_ = true;
};

// Makes files what they were, as far as the entries of a log say it.
class Undoing {
 public:
  Undoing(std::string folder, std::string_view entries)
      : folder_(std::move(folder)), entries_(entries) {}

  [[nodiscard]] int Run() {
    int result = 0;
    while (result == 0 && !entries_.isAtEnd()) result = UndoEntry(entries_.Number());
    if (CloseFile() != 0 || result != 0 || !entries_.isWhole()) return -1;
    for (auto rename = renames_.rbegin(); rename != renames_.rend(); ++rename) {
      if (UndoRename(rename->first, rename->second) != 0) return -1;
    }
    return platform::SyncFiles(files_) == 0 ? SyncFoldersOf(changedFolders_) : -1;
  }

 private:
  std::string PathOf(std::string_view text) const {
    const bool isRelative = text.find_first_of("\\/:") == text.npos;
    return isRelative ? folder_ + std::string(text) : std::string(text);
  }

  int UndoEntry(std::uint64_t kind) {
    if (kind == kPartEntry) {
      const std::uint64_t offset = entries_.Number();
      const std::string_view bytes = entries_.Text();
      if (!entries_.isWhole() || fd_ < 0) return -1;
      return platform::Seek(fd_, static_cast<std::int64_t>(offset)) < 0 ? -1
                                                                        : WriteAllBytes(fd_, bytes);
    }
    if (CloseFile() != 0) return -1;
    const std::string path = PathOf(entries_.Text());
    if (kind == kRenameEntry) {
      renames_.emplace_back(path, PathOf(entries_.Text()));
      return entries_.isWhole() ? 0 : -1;
    }
    const std::uint64_t size = entries_.Number();
    return kind == kFileEntry && entries_.isWhole() ? OpenFile(path, size) : -1;
  }

  int OpenFile(const std::string& path, std::uint64_t size) {
    changedFolders_.emplace_back(FolderOf(path));
    if (size == kNotThere) {
      return platform::Unlink(path) == 0 || IsMissing(platform::LastError()) ? 0 : -1;
    }
    files_.push_back(path);
    fd_ = platform::Open(path, platform::kOpenDatabase);
    return fd_ < 0 ? -1 : platform::SetLength(fd_, static_cast<std::int64_t>(size));
  }

  int CloseFile() {
    const int fd = std::exchange(fd_, -1);
    return fd < 0 ? 0 : platform::Close(fd);
  }

  int UndoRename(const std::string& from, const std::string& to) {
    platform::FileStat stat;
    if (platform::Stat(Bare(from), stat) == 0) return 0;
    if (platform::Stat(Bare(to), stat) != 0) return IsMissing(platform::LastError()) ? 0 : -1;
    for (const std::string& path : {from, to}) changedFolders_.emplace_back(FolderOf(Bare(path)));
    return platform::MakeFolderOfPath(Bare(from)) == 0 ? platform::Rename(Bare(to), Bare(from))
                                                       : -1;
  }

  const std::string folder_;
  UndoReader entries_;
  int fd_ = -1;
  std::vector<std::string> files_;
  std::vector<std::string> changedFolders_;
  std::vector<std::pair<std::string, std::string>> renames_;
};

}  // namespace

// Writes the log from its begin to its end; the hash comes last.
class UndoLog::Writer {
 public:
  Writer(const std::string& path, std::string folder)
      : fd_(platform::Open(path, platform::kOpenPack)), folder_(std::move(folder)) {
    if (fd_ < 0) return;
    Keep(WriteAllBytes(fd_, kUndoMagic));
    Keep(WriteAllBytes(fd_, {BytesOf(0).data(), kUndoWord}));
  }
  ~Writer() {
    if (fd_ >= 0) platform::Close(fd_);
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  void Bytes(std::string_view bytes) {
    hash_ = GoOnWith(hash_, bytes);
    if (fd_ >= 0) Keep(WriteAllBytes(fd_, bytes));
  }
  void Number(std::uint64_t number) { Bytes({BytesOf(number).data(), kUndoWord}); }
  void Path(std::string_view path) {
    const bool isBeside =
        path.starts_with(folder_) && path.substr(folder_.size()).find_first_of("\\/:") == path.npos;
    if (isBeside) path.remove_prefix(folder_.size());
    Number(path.size());
    Bytes(path);
  }
  [[nodiscard]] int Finish() {
    if (fd_ < 0) return -1;
    Keep(platform::Seek(fd_, kUndoMagic.size()) < 0 ? -1 : 0);
    Keep(WriteAllBytes(fd_, {BytesOf(hash_).data(), kUndoWord}));
    Keep(platform::Close(std::exchange(fd_, -1)));
    return result_;
  }

 private:
  void Keep(int result) {
    if (result < 0) result_ = -1;
  }

  int fd_;
  int result_ = 0;
  std::uint64_t hash_ = kUndoBasis;
  const std::string folder_;
};

int UndoLog::WriteFile(Writer& writer, const std::string& file, const Noted& noted) const {
  writer.Number(kFileEntry);
  writer.Path(file);
  const int fd = platform::Open(file, platform::kOpenReadOnly);
  if (fd < 0) {
    if (!IsMissing(platform::LastError())) return -1;
    writer.Number(kNotThere);
    return 0;
  }
  const std::int64_t size = platform::SeekEnd(fd);
  int result = size < 0 ? -1 : 0;
  writer.Number(static_cast<std::uint64_t>(std::max<std::int64_t>(size, 0)));
  const auto end = static_cast<std::uint64_t>(std::max<std::int64_t>(size, 0));
  auto parts = noted.parts;
  if (noted.isWhole) parts = {{0, end}};
  std::string bytes;
  for (auto [from, to] : parts) {
    to = std::min(to, end);
    for (; result == 0 && from < to; from += bytes.size()) {
      bytes.resize(static_cast<std::size_t>(std::min<std::uint64_t>(to - from, kReadAtOnce)));
      const bool isRead =
          platform::Seek(fd, static_cast<std::int64_t>(from)) >= 0 &&
          platform::Read(fd, bytes.data(), bytes.size()) == static_cast<std::int64_t>(bytes.size());
      if (!isRead) result = -1;
      writer.Number(kPartEntry);
      writer.Number(from);
      writer.Number(bytes.size());
      writer.Bytes(bytes);
    }
  }
  return platform::Close(fd) < 0 ? -1 : result;
}

int UndoLog::WriteLog(const std::string& path) const {
  Writer writer(path, std::string(FolderOf(path_)));
  for (const auto& [from, to] : renames_) {
    writer.Number(kRenameEntry);
    writer.Path(from);
    writer.Path(to);
  }
  for (const auto& [file, noted] : files_) {
    if (WriteFile(writer, file, noted) < 0) return -1;
  }
  return writer.Finish();
}

int UndoLog::Begin() {
  if (hasBegun_) return 0;
  return Guarded([&] {
    const std::string temporary = path_ + kBegunSuffix;
    const bool isThere = WriteLog(temporary) == 0 && platform::SyncFiles({temporary}) == 0 &&
                         platform::Replace(temporary, path_) == 0;
    if (!isThere) {
      platform::Unlink(temporary);
      return -1;
    }
    hasBegun_ = platform::SyncFolder(std::string(FolderOf(path_))) == 0;
    if (!hasBegun_) platform::Unlink(path_);
    return hasBegun_ ? 0 : -1;
  });
}

int UndoLog::End() {
  if (!hasBegun_) return 0;
  return Guarded([&] {
    std::vector<std::string> there;
    std::vector<std::string> folders;
    platform::FileStat stat;
    for (const auto& [file, noted] : files_) {
      if (platform::Stat(file, stat) == 0) there.push_back(file);
    }
    for (const auto& [from, to] : renames_) {
      for (const std::string& path : {from, to}) folders.emplace_back(FolderOf(Bare(path)));
    }
    if (platform::SyncFiles(there) != 0 || SyncFoldersOf(folders) != 0) return -1;
    if (RemoveLog(path_) != 0) return -1;
    hasBegun_ = false;
    renames_.clear();
    return 0;
  });
}

int UndoLog::Undo(const std::string& path) {
  platform::Unlink(path + kBegunSuffix);
  platform::FileStat stat;
  if (platform::Stat(path, stat) != 0) return IsMissing(platform::LastError()) ? 0 : -1;
  return Guarded([&] {
    std::string bytes;
    if (ReadWholeFile(path, bytes) != 0) return -1;
    const std::string_view log = bytes;
    const std::size_t head = kUndoMagic.size() + kUndoWord;
    const bool isWhole = log.starts_with(kUndoMagic) && log.size() >= head &&
                         UndoReader(log.substr(kUndoMagic.size())).Number() ==
                             GoOnWith(kUndoBasis, log.substr(head));
    if (isWhole && Undoing(std::string(FolderOf(path)), log.substr(head)).Run() != 0) return -1;
    return RemoveLog(path);
  });
}

}  // namespace zvrsit
