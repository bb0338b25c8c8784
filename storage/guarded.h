// Guarded: the operations of files and tables throw nothing but std::out_of_range. When there is no
// memory they give -1, as they do when the disk fails.
#pragma once

#include <new>
#include <stdexcept>
#include <type_traits>

namespace zvrsit {

// What `operate()` gives, or `failed` when it had no memory.
template <class Operate, class Result = std::invoke_result_t<Operate>>
Result Guarded(Operate operate, Result failed) {
  try {
    return operate();
  } catch (const std::bad_alloc&) {
    return failed;
  } catch (const std::length_error&) {  // of a text that no memory could hold
    return failed;
  }
}

template <class Operate>
int Guarded(Operate operate) {
  return Guarded(operate, -1);
}

}  // namespace zvrsit
