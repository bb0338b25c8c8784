#include "legacy/sit_id_set.h"

#include <cstdint>
#include <limits>

namespace zvrsit {

SitIdSet::Block& SitIdSet::BlockOf(int number) {
  const auto [entry, made] = blocks_.try_emplace(number);
  if (made) open_.insert(number);
  return entry->second;
}

void SitIdSet::Take(int number, Block& block, int bit) {
  block.set(static_cast<std::size_t>(bit));
  if (block.all()) open_.erase(number);
}

bool SitIdSet::IsUsed(int id) const {
  if (id < 0) return false;
  const auto entry = blocks_.find(id / kBlockSize);
  return entry != blocks_.end() && entry->second.test(static_cast<std::size_t>(id % kBlockSize));
}

bool SitIdSet::SetUsed(int id) {
  if (id < 0) return false;
  Take(id / kBlockSize, BlockOf(id / kBlockSize), id % kBlockSize);
  return true;
}

void SitIdSet::SetFree(int id) {
  if (!IsUsed(id)) return;
  blocks_[id / kBlockSize].reset(static_cast<std::size_t>(id % kBlockSize));
  open_.insert(id / kBlockSize);
}

int SitIdSet::TakeFirstFree(int number, Block& block) {
  for (int bit = 0; bit < kBlockSize; ++bit) {
    if (block.test(static_cast<std::size_t>(bit))) continue;
    const std::int64_t id = std::int64_t{number} * kBlockSize + bit;
    if (id > std::numeric_limits<int>::max()) return -1;
    Take(number, block, bit);
    return static_cast<int>(id);
  }
  return -1;
}

int SitIdSet::Allocate(int wanted) {
  if (wanted < 0) return -1;
  const int number = wanted / kBlockSize;
  Block& block = BlockOf(number);
  if (!block.test(static_cast<std::size_t>(wanted % kBlockSize))) {
    Take(number, block, wanted % kBlockSize);
    return wanted;
  }
  if (const int id = TakeFirstFree(number, block); id >= 0) return id;
  if (!open_.empty()) return TakeFirstFree(*open_.begin(), blocks_[*open_.begin()]);
  const int behind = blocks_.rbegin()->first + 1;
  return TakeFirstFree(behind, BlockOf(behind));
}

void SitIdSet::Clear() {
  blocks_.clear();
  open_.clear();
}

}  // namespace zvrsit
