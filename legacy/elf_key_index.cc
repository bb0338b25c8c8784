#include "legacy/elf_key_index.h"

#include <algorithm>
#include <utility>

#include "util/elf_hash.h"
#include "util/hash.h"

namespace zvrsit {

namespace {

constexpr std::size_t kKeysPerBucket = 4;
constexpr int kLongChain = 64;

}  // namespace

void ElfKeyIndex::Reset(int bucketCount) {
  entries_.clear();
  linked_.clear();
  keys_ = 0;
  keyed_ = false;
  buckets_.assign(static_cast<std::size_t>(std::max(bucketCount, 1)), kNone);
}

std::size_t ElfKeyIndex::BucketOf(std::string_view key) const {
  return (keyed_ ? HashBytes(key) : ElfHash(key)) % buckets_.size();
}

int ElfKeyIndex::Link(int number) {
  Entry& added = entries_[static_cast<std::size_t>(number)];
  int* place = &buckets_[BucketOf(added.key)];
  int length = 0;
  for (; *place != kNone && *place < number; ++length) {
    place = &entries_[static_cast<std::size_t>(*place)].next;
  }
  added.next = *place;
  *place = number;
  return length;
}

void ElfKeyIndex::Rebuild(std::size_t bucketCount) {
  buckets_.assign(bucketCount, kNone);
  // From the highest number down, each entry goes to the front of its chain.
  for (std::size_t i = entries_.size(); i-- > 0;) {
    if (linked_[i] != 0) Link(static_cast<int>(i));
  }
}

void ElfKeyIndex::Insert(int number, std::string key) {
  const auto slot = static_cast<std::size_t>(number);
  if (slot >= entries_.size()) {
    entries_.resize(slot + 1);
    linked_.resize(slot + 1, 0);
  }
  entries_[slot].key = std::move(key);
  linked_[slot] = 1;
  ++keys_;
  const int chain = Link(number);
  if (keys_ > kKeysPerBucket * buckets_.size()) {
    Rebuild(buckets_.size() * 4 + 1);
  } else if (chain > kLongChain && !keyed_) {
    keyed_ = true;
    Rebuild(buckets_.size());
  }
}

void ElfKeyIndex::Erase(int number) {
  const auto slot = static_cast<std::size_t>(number);
  if (slot >= entries_.size() || linked_[slot] == 0) return;
  int* place = &buckets_[BucketOf(entries_[slot].key)];
  while (*place != number) place = &entries_[static_cast<std::size_t>(*place)].next;
  *place = entries_[slot].next;
  entries_[slot] = {};
  linked_[slot] = 0;
  --keys_;
}

int ElfKeyIndex::Find(std::string_view key) const {
  if (buckets_.empty()) return kNone;
  int number = buckets_[BucketOf(key)];
  while (number != kNone && entries_[static_cast<std::size_t>(number)].key != key) {
    number = entries_[static_cast<std::size_t>(number)].next;
  }
  return number;
}

const std::string& ElfKeyIndex::KeyOf(int number) const {
  static const std::string none;
  const auto slot = static_cast<std::size_t>(number);
  return number >= 0 && slot < entries_.size() ? entries_[slot].key : none;
}

}  // namespace zvrsit
