// Making the Nth allocation of an operation fail, for every N. A program that uses it is linked
// with memory_fault.cc.
#pragma once

#include <gtest/gtest.h>

#include <new>

namespace zvrsit::test {

// While it lives, counts the allocations of this thread, through `new` or of large memory, and
// fails the one numbered `failing` (from 1; 0 fails none), or all from that on.
class MemoryFault {
 public:
  MemoryFault(int failing, bool isLasting);
  MemoryFault(const MemoryFault&) = delete;
  MemoryFault& operator=(const MemoryFault&) = delete;
  ~MemoryFault();

  // Whether the allocation was reached.
  bool fired() const { return failing_ > 0 && calls_ >= failing_; }
  bool MustFail();

 private:
  int failing_;
  bool isLasting_;
  int calls_ = 0;
};

// For N = 1, 2, 3 ...: `prepare()`, then `operate()` with its Nth allocation failing, then
// `check(N)`, with memory again; then the same with all allocations from the Nth on failing. Ends
// after the first run that makes fewer than N, which is not handed to `check`. What gets out of
// `operate` for want of memory is a fault. Gives the number of allocations of the operation.
template <class Prepare, class Operate, class Check>
int FailEachAllocation(Prepare prepare, Operate operate, Check check) {
  constexpr int kMost = 100000;
  for (int n = 1; n <= kMost; ++n) {
    for (const bool isLasting : {false, true}) {
      prepare();
      bool escaped = false;
      bool fired = false;
      {
        MemoryFault fault(n, isLasting);
        try {
          operate();
        } catch (const std::bad_alloc&) {
          escaped = true;
        }
        fired = fault.fired();
      }
      EXPECT_FALSE(escaped) << "allocation " << n;
      if (!fired) return n - 1;
      check(n);
    }
  }
  return -1;  // the operation does not end
}

}  // namespace zvrsit::test
