// Batch: many items on their way to be worked on, each with memory that lies anywhere. The memory
// of several is asked for, to be read or written, before the first of them is worked on, so that
// they wait for it together.
#pragma once

#include <array>
#include <cstddef>

#include "util/prefetch.h"

namespace zvrsit {

// `work(item)` is called for each in the order in which they were added, some time after that, at
// the latest in Finish.
template <class Item, class Work>
class Batch {
 public:
  // Without `mayWait` each item is worked on at once, for items that the next one spoils.
  Batch(Work work, bool mayWait) : work_(work), atOnce_(mayWait ? kMost : 1) {}

  // `place` is what the work will look at first; null for nothing.
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
