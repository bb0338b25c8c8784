#include "repair/file_edits.h"

#include "util/hash.h"

namespace zvrsit {

bool ApplyEdits(std::string_view bytes, const FileEdits& edits, std::string& result) {
  if (static_cast<std::int64_t>(bytes.size()) != edits.size || HashBytes(bytes) != edits.hash) {
    return false;
  }
  std::string changed;
  std::size_t done = 0;
  for (const TextEdit& edit : edits.edits) {
    const auto offset = static_cast<std::size_t>(edit.offset);
    const auto length = static_cast<std::size_t>(edit.length);
    if (offset < done || offset > bytes.size() || length > bytes.size() - offset) return false;
    changed.append(bytes, done, offset - done).append(edit.text);
    done = offset + length;
  }
  changed.append(bytes, done);
  result = std::move(changed);
  return true;
}

}  // namespace zvrsit
