#include "storage/changed_blocks.h"

#include <new>
#include <tuple>

namespace zvrsit {

void ChangedBlocks::Follow(std::uint32_t bytes) {
  marks_.clear();
  try {
    marks_.resize(bytes / kBlock, 0);
  } catch (const std::bad_alloc&) {
  }
}

std::size_t ChangedBlocks::Skip(std::size_t at, std::uint32_t size, bool changed) const {
  while (at < size) {
    const std::size_t block = at / kBlock;
    if (block >= marks_.size()) return changed ? size : at;
    if ((marks_[block] != 0) != changed) return at;
    at = (block + 1) * kBlock;
  }
  return size;
}

// A call of the system costs about as much as writing four blocks.
bool ChangedBlocks::AreFew(std::uint32_t size) const {
  std::size_t bytes = 0;
  std::ignore = ForEachPart(size, [&bytes](std::size_t from, std::size_t to) {
    bytes += to - from + 4 * kBlock;
    return 0;
  });
  return bytes < size;
}

}  // namespace zvrsit
