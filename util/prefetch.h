// Asking for memory ahead of its use.
#pragma once

namespace zvrsit {

// Asks for memory that is to be read or written a little later, to be there by then; null is
// allowed.
inline void PrefetchMemory(const void* place) {
#if defined(__GNUC__)
  __builtin_prefetch(place, 1);
#else
  static_cast<void>(place);
#endif
}

}  // namespace zvrsit
