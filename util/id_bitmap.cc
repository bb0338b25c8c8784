#include "util/id_bitmap.h"

#include <bit>
#include <limits>
#include <new>

namespace zvrsit {
namespace {

constexpr std::int32_t kMostId = std::numeric_limits<std::int32_t>::max();

std::int32_t BlockStart(std::int32_t id) {
  return id / IdBlock::kIds * IdBlock::kIds;
}
bool Covers(const IdBlock& block, std::int32_t id) {
  return block.first <= id && id <= block.last;
}

std::uint32_t& Word(IdBlock& block, std::int32_t id) {
  return block.bits[(id - block.first) / 32];
}
std::uint32_t Bit(std::int32_t id) {
  return 1u << (id % 32);
}

// Takes the lowest free id of the block; -1 when it is full.
std::int32_t TakeLowest(IdBlock& block) {
  for (std::int32_t w = 0; w < IdBlock::kWords; ++w) {
    const int bit = std::countr_one(block.bits[w]);
    if (bit == 32) continue;
    block.bits[w] |= 1u << bit;
    return block.first + 32 * w + bit;
  }
  return -1;
}

}  // namespace

int IdBitmap::SetUsed(std::int32_t id) {
  IdBlock* block = FindOrMakeBlock(id);
  if (!block) return -1;
  Word(*block, id) |= Bit(id);
  return 1;
}

int IdBitmap::SetFree(std::int32_t id) {
  IdBlock* block = FindOrMakeBlock(id);
  if (!block) return -1;
  Word(*block, id) &= ~Bit(id);
  return 0;
}

int IdBitmap::IsUsed(std::int32_t id) {
  IdBlock* block = FindBlock(id);
  if (!block || !Covers(*block, id)) return -1;
  cache_ = block;
  return (Word(*block, id) & Bit(id)) != 0 ? 1 : 0;
}

std::int32_t IdBitmap::Allocate(std::int32_t preferred) {
  IdBlock* block = FindOrMakeBlock(preferred);
  if (!block) return -1;
  if ((Word(*block, preferred) & Bit(preferred)) == 0) {
    Word(*block, preferred) |= Bit(preferred);
    return preferred;
  }
  if (const std::int32_t id = TakeLowest(*block); id >= 0) return id;
  for (IdBlock* other = head_; other; other = other->next) {
    if (other == block) continue;
    if (const std::int32_t id = TakeLowest(*other); id >= 0) return id;
  }
  return Allocate(tail_->last + 1);
}

void IdBitmap::Clear() {
  while (head_) {
    IdBlock* next = head_->next;
    delete head_;
    head_ = next;
  }
  tail_ = cache_ = nullptr;
}

// The block that covers `id`, or the first block after it; null when there is neither.
IdBlock* IdBitmap::FindBlock(std::int32_t id) {
  if (cache_ && Covers(*cache_, id)) return cache_;
  if (id < 0 || !tail_ || id > tail_->last) return nullptr;
  IdBlock* block = head_;
  while (block->last < id) block = block->next;
  return block;
}

IdBlock* IdBitmap::FindOrMakeBlock(std::int32_t id) {
  if (id < 0) return nullptr;
  IdBlock* block = FindBlock(id);
  if (!block || !Covers(*block, id)) block = InsertBefore(block, BlockStart(id));
  if (block) cache_ = block;
  return block;
}

// Makes a block before `next`, at the end when that is null; null when it cannot be made.
IdBlock* IdBitmap::InsertBefore(IdBlock* next, std::int32_t first) {
  if (first > kMostId - (IdBlock::kIds - 1)) return nullptr;
  auto* block = new (std::nothrow) IdBlock;
  if (!block) return nullptr;
  block->first = first;
  block->last = first + (IdBlock::kIds - 1);
  block->next = next;
  block->prev = next ? next->prev : tail_;
  (block->prev ? block->prev->next : head_) = block;
  (next ? next->prev : tail_) = block;
  return block;
}

}  // namespace zvrsit
