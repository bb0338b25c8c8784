#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/file.h"
#include "platform/file_posix.h"
#include "platform/folder_search.h"
#include "platform/native_path.h"
#include "platform/single_byte.h"

namespace zvrsit::platform {

using Folder = std::unique_ptr<DIR, int (*)(DIR*)>;

struct FindState {
  explicit FindState(std::string folderPath) : path(std::move(folderPath)) {}

  std::string path;                 // of the folder, as it stood in the pattern
  std::size_t nativeLength = 0;     // of the folder's native path
  Folder folder{nullptr, nullptr};  // open as long as the search; null when it is for one entry

  struct Name {
    std::size_t start;
    std::size_t length;
    bool mayBeLink;
  };
  std::string names;        // those of the folder, one after the other
  std::vector<Name> order;  // of the answers
  std::vector<std::string> unnamed;
  std::size_t next = 0;

  std::string_view textOf(const Name& name) const {
    return {names.data() + name.start, name.length};
  }
};

namespace {

constexpr std::string_view kEverything = "*.*";

Folder OpenFolder(const std::string& native) {
  return {::opendir(native.c_str()), ::closedir};
}

// Calls `each` with every name of the folder, and its type (DT_UNKNOWN where the file system does
// not tell); false when it cannot be read to its end.
template <class Each>
bool ForEachName(DIR* folder, Each each) {
  for (;;) {
    errno = 0;
    const dirent* entry = ::readdir(folder);
    if (!entry) return errno == 0;
    each(std::string_view(entry->d_name), entry->d_type);
  }
}

// A name with a `\` of its own cannot be named by a `\` path.
bool CanBeNamed(std::string_view name) {
  return FindLastSingleByte(name, '\\') == std::string_view::npos;
}

// Every entry of a folder.
FindHandle ListFolder(const std::string& folderPath) {
  std::string native;
  if (!ToNativePath(folderPath, native)) return nullptr;
  auto state = std::make_unique<FindState>(folderPath);
  state->nativeLength = native.size();
  state->folder = OpenFolder(native.empty() ? "." : native);
  if (!state->folder) return nullptr;
  const auto add = [&state](std::string_view name, unsigned char type) {
    if (!CanBeNamed(name)) {
      state->unnamed.emplace_back(name);
      return;
    }
    const bool mayBeLink = type == DT_UNKNOWN || type == DT_LNK;
    state->order.push_back({state->names.size(), name.size(), mayBeLink});
    state->names.append(name);
  };
  if (!ForEachName(state->folder.get(), add)) return nullptr;
  using Name = FindState::Name;
  std::sort(state->order.begin(), state->order.end(),
            [&state](const Name& a, const Name& b) { return state->textOf(a) < state->textOf(b); });
  std::sort(state->unnamed.begin(), state->unnamed.end());
  return state.release();
}

// Looks a name up in the listing of its folder. Gives `name` itself when it is there; else, of the
// names that differ from it in ASCII letter case only, the first in byte order. Empty when there is
// none.
std::string SpellingInListing(const std::string& nativeFolder, std::string_view name) {
  const Folder folder = OpenFolder(nativeFolder);
  if (!folder) return {};
  std::string best;
  ForEachName(folder.get(), [&](std::string_view entry, unsigned char) {
    if (!EqualButForCase(entry, name) || !CanBeNamed(entry)) return;
    if (best != name && (best.empty() || entry == name || entry < best)) best = entry;
  });
  return best;
}

// Whether an existing name is certainly spelled as on disk. If the file system distinguishes letter
// case, the name with the case of one letter changed is missing, or is another file. This question
// costs one call; listing the folder costs much more. The answer is also right in a file system
// where single folders ignore case.
bool IsSurelyOwnSpelling(std::string& native, std::size_t nameStart, const struct stat& status) {
  for (std::size_t i = native.size(); i > nameStart; --i) {
    char& letter = native[i - 1];
    if (!IsAsciiLetter(letter)) continue;
    letter ^= 0x20;
    struct stat other;
    const bool found = ::lstat(native.c_str(), &other) == 0;
    letter ^= 0x20;
    return !found || other.st_dev != status.st_dev || other.st_ino != status.st_ino;
  }
  // Without letters of either alphabet there is only one spelling.
  return std::all_of(native.begin() + static_cast<std::ptrdiff_t>(nameStart), native.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// The spelling on disk of the last component of a path; empty when it is not there.
std::string SpellingOnDisk(const std::string& path, std::string_view name) {
  std::string native;
  if (name.empty() || !ToNativePath(path, native)) return {};
  const std::size_t nameStart = native.size() - name.size();
  struct stat status;
  const bool exists = ::lstat(native.c_str(), &status) == 0;
  if (!exists && errno != ENOENT) return {};
  if (exists && IsSurelyOwnSpelling(native, nameStart, status)) return std::string(name);
  const std::string folder = nameStart == 0 ? "." : native.substr(0, nameStart);
  std::string found = SpellingInListing(folder, name);
  // The name exists, but under no spelling that we compare: the file system ignores case for more
  // than ASCII letters.
  if (found.empty() && exists) return std::string(name);
  return found;
}

}  // namespace

FindHandle FindFirst(const std::string& pattern, FindData& found) {
  const std::size_t nameStart = LastComponent(pattern);
  const std::string_view name = std::string_view(pattern).substr(nameStart);
  if (name == kEverything) {
    FindHandle handle = ListFolder(pattern.substr(0, nameStart));
    if (handle && FindNext(handle, found)) return handle;
    FindClose(handle);
    return nullptr;
  }
  std::string spelling = SpellingOnDisk(pattern, name);
  if (spelling.empty()) return nullptr;
  found = {std::move(spelling)};
  return new FindState(pattern.substr(0, nameStart));
}

bool FindNext(FindHandle handle, FindData& found) {
  if (!handle || handle->next >= handle->order.size()) return false;
  const FindState::Name& next = handle->order[handle->next++];
  found.name = handle->textOf(next);
  found.mayBeLink = next.mayBeLink;
  return true;
}

int StatFound(FindHandle handle, const FindData& found, FileStat& result) {
  // An entry whose path is too long for the system does not count as found either.
  const bool hasPath = handle->nativeLength + found.name.size() < PATH_MAX;
  if (!handle->folder || !hasPath) return Stat(handle->path + found.name, result);
  return StatIn(::dirfd(handle->folder.get()), found.name.c_str(), result);
}

const std::vector<std::string>& FindNamesWithBackslash(FindHandle handle) {
  return handle->unnamed;
}

void FindClose(FindHandle handle) {
  delete handle;
}

}  // namespace zvrsit::platform
