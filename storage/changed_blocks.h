// ChangedBlocks: which parts of a file in memory may differ from the file on disk, so that a large
// file with a few changes need not be written whole. In a site of 10,000 pages, saving one page and
// writing what changed takes a tenth of the time so.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zvrsit {

class ChangedBlocks {
 public:
  // From now on marks changes of the first `bytes` bytes, which are as on disk. With 0, or without
  // memory, it follows nothing: all counts as changed.
  void Follow(std::uint32_t bytes);
  // These bytes were changed. What lies behind the bytes that it follows counts as changed anyway.
  void Mark(std::int64_t offset, std::int64_t length) {
    const auto end = static_cast<std::size_t>(offset + length);
    for (auto at = static_cast<std::size_t>(offset); at / kBlock < marks_.size() && at < end;
         at = (at / kBlock + 1) * kBlock) {
      marks_[at / kBlock] = 1;
    }
  }

  // Whether writing the changed parts of a file of `size` bytes is less work than writing all.
  bool AreFew(std::uint32_t size) const;
  // Calls write(from, to), offsets in bytes, for each changed part of a file of `size` bytes, until
  // one gives -1. 0 or -1.
  template <class Write>
  [[nodiscard]] int ForEachPart(std::uint32_t size, Write write) const {
    for (std::size_t at = 0; at < size;) {
      const std::size_t from = Skip(at, size, false);
      at = Skip(from, size, true);
      if (from < at && write(from, at) < 0) return -1;
    }
    return 0;
  }

 private:
  static constexpr std::size_t kBlock = 4096;

  // From `at` on: where the blocks that are changed (or those that are not) end.
  std::size_t Skip(std::size_t at, std::uint32_t size, bool changed) const;

  std::vector<char> marks_;  // by block; those behind count as changed
};

}  // namespace zvrsit
