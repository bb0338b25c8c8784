// ProbeBatch: many entries on their way into a ProbeTable. A search in a large table waits for
// memory; the memory of several is asked for first, so that they wait together.
#pragma once

#include <array>
#include <cstddef>

#include "storage/probe_table.h"

namespace zvrsit {

// Item is a small plain struct with a member `std::uint32_t hash`. `enter(item)` is called for each
// in the order in which they were added, some time after that, at the latest in Finish.
template <class Item, class Entry, class Enter>
class ProbeBatch {
 public:
  // Where items must not wait, each is entered at once.
  ProbeBatch(const ProbeTable<Entry>& table, bool mayWait, Enter enter)
      : table_(table), atOnce_(mayWait ? kMost : 1), enter_(enter) {}

  void Add(const Item& item) {
    table_.Prefetch(item.hash);
    items_[count_++] = item;
    if (count_ == atOnce_) Finish();
  }
  void Finish() {
    for (std::size_t i = 0; i < count_; ++i) enter_(items_[i]);
    count_ = 0;
  }

 private:
  static constexpr std::size_t kMost = 32;

  const ProbeTable<Entry>& table_;
  const std::size_t atOnce_;
  Enter enter_;
  std::array<Item, kMost> items_;
  std::size_t count_ = 0;
};

template <class Item, class Entry, class Enter>
auto MakeProbeBatch(const ProbeTable<Entry>& table, bool mayWait, Enter enter) {
  return ProbeBatch<Item, Entry, Enter>(table, mayWait, enter);
}

}  // namespace zvrsit
