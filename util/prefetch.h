// Asking for memory ahead of its use.
#pragma once

namespace zvrsit {

// Tells the processor that this memory will be read or written soon, so that it is fetched by then.
// Null is allowed.
inline void PrefetchMemory(const void* place) {
#if defined(__GNUC__)
  __builtin_prefetch(place, 1);
#else
  static_cast<void>(place);
#endif
}

}  // namespace zvrsit
