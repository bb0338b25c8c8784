// Batch: a loop over items, where the work on each item needs some memory at an unpredictable
// place. If they were worked on one by one, the processor would wait for memory at every item. A
// batch collects some items first and asks for the memory of each one at once. It works on them
// when it is full, so that the waits overlap.
#pragma once

#include <array>
#include <cstddef>

#include "util/prefetch.h"

namespace zvrsit {

// Calls `work(item)` for each item, in the order in which they were added, at the latest in Finish.
template <class Item, class Work>
class Batch {
 public:
  // With `mayWait` false each item is worked on at once. This is for items that are no longer good
  // when the next one is made.
  Batch(Work work, bool mayWait) : work_(work), atOnce_(mayWait ? kMost : 1) {}

  // `place` is the memory that the work will need first; null for none.
  void Add(const void* place, const Item& item) {
    PrefetchMemory(place);
    items_[count_++] = item;
    if (count_ == atOnce_) Finish();
  }
  void Finish() {
    for (std::size_t i = 0; i < count_; ++i) work_(items_[i]);
    count_ = 0;
  }

 private:
  static constexpr std::size_t kMost = 32;

  Work work_;
  const std::size_t atOnce_;
  std::array<Item, kMost> items_;
  std::size_t count_ = 0;
};

template <class Item, class Work>
auto MakeBatch(Work work, bool mayWait = true) {
  return Batch<Item, Work>(work, mayWait);
}

}  // namespace zvrsit
