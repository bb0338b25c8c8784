// An allocator of numbers: a bitmap in blocks, one for each range of 3200 ids that is in use.
#pragma once

#include <cstdint>

namespace zvrsit {

struct IdBlock {
  static constexpr std::int32_t kWords = 100;
  static constexpr std::int32_t kIds = kWords * 32;

  std::int32_t first = 0;  // a multiple of kIds
  std::int32_t last = 0;   // first + kIds - 1
  // Bit b of word w, from the lowest, is set while id first + 32 w + b is in use.
  std::uint32_t bits[kWords] = {};
  IdBlock* prev = nullptr;
  IdBlock* next = nullptr;
};

// Owns its blocks, a chain in the order of `first`. Ids are 0 or above; no block is made whose last
// id would not fit 32 bits.
class IdBitmap {
 public:
  IdBitmap() = default;
  IdBitmap(const IdBitmap&) = delete;
  IdBitmap& operator=(const IdBitmap&) = delete;
  ~IdBitmap() { Clear(); }

  // The state of the id after the call: 1 in use, 0 free, -1 when there is no block for it.
  // SetUsed and SetFree make the block where it is missing, IsUsed never does.
  int SetUsed(std::int32_t id);
  int SetFree(std::int32_t id);
  int IsUsed(std::int32_t id);

  // Takes a free id; -1 when there is none. The choice, in this order: `preferred` itself; the
  // lowest free id of its block; the lowest free id of the first block that has one; the first id
  // of a new block after the last.
  std::int32_t Allocate(std::int32_t preferred);

  // Frees all blocks.
  void Clear();

 private:
  IdBlock* FindBlock(std::int32_t id);
  IdBlock* FindOrMakeBlock(std::int32_t id);
  IdBlock* InsertBefore(IdBlock* next, std::int32_t first);

  IdBlock* head_ = nullptr;
  IdBlock* tail_ = nullptr;
  IdBlock* cache_ = nullptr;  // the block used last
};

}  // namespace zvrsit
