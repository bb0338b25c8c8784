#include "platform/large_memory.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "platform/memory_fault.h"

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace zvrsit::platform {

namespace {

struct MemoryFault {
  MemoryFaultHook hook = nullptr;
  void* context = nullptr;
};

constinit thread_local MemoryFault memoryFault;

bool MustFail() {
  return memoryFault.hook && memoryFault.hook(memoryFault.context);
}

}  // namespace

void SetMemoryFaultHook(MemoryFaultHook hook, void* context) {
  memoryFault = {hook, context};
}

#if defined(__linux__)

namespace {

constexpr std::size_t kPage = std::size_t{2} << 20;  // a large page of x86-64 and of most ARM

bool IsLarge(std::size_t bytes) {
  return bytes >= kLargeBlock;
}

std::size_t WholePages(std::size_t bytes) {
  return (bytes + kPage - 1) / kPage * kPage;
}

// Where the system has no large pages, the advice has no effect.
void* Advised(void* block, std::size_t bytes) {
  if (block == MAP_FAILED) return nullptr;
  madvise(block, bytes, MADV_HUGEPAGE);
  return block;
}

// Some systems do not place a mapping at a boundary of large pages by themselves. There the mapping
// is made one page longer, and its two ends are given back.
void* Map(std::size_t bytes) {
  constexpr int kFlags = MAP_PRIVATE | MAP_ANONYMOUS;
  void* const block = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, kFlags, -1, 0);
  if (block == MAP_FAILED || reinterpret_cast<std::uintptr_t>(block) % kPage == 0) {
    return Advised(block, bytes);
  }
  munmap(block, bytes);
  void* const longer = mmap(nullptr, bytes + kPage, PROT_READ | PROT_WRITE, kFlags, -1, 0);
  if (longer == MAP_FAILED) return nullptr;
  char* const begin = static_cast<char*>(longer);
  const std::size_t before = (kPage - reinterpret_cast<std::uintptr_t>(longer) % kPage) % kPage;
  if (before > 0) munmap(begin, before);
  munmap(begin + before + bytes, kPage - before);
  return Advised(begin + before, bytes);
}

}  // namespace

void* AllocateLarge(std::size_t bytes) {
  if (MustFail()) return nullptr;
  return IsLarge(bytes) ? Map(WholePages(bytes)) : std::malloc(bytes == 0 ? 1 : bytes);
}

void* ResizeLarge(void* block, std::size_t oldBytes, std::size_t newBytes) {
  if (block == nullptr) return AllocateLarge(newBytes);
  if (newBytes > oldBytes && MustFail()) return nullptr;
  if (IsLarge(oldBytes) && IsLarge(newBytes)) {
    const std::size_t bytes = WholePages(newBytes);
    return Advised(mremap(block, WholePages(oldBytes), bytes, MREMAP_MAYMOVE), bytes);
  }
  if (!IsLarge(oldBytes) && !IsLarge(newBytes)) {
    return std::realloc(block, newBytes == 0 ? 1 : newBytes);
  }
  return CopyLarge(block, oldBytes, newBytes);
}

void* MapLarge(int fd, std::size_t fileBytes, std::size_t bytes) {
#if defined(MADV_POPULATE_READ)
  if (MustFail()) return nullptr;
  constexpr int kProtection = PROT_READ | PROT_WRITE;
  const std::size_t length = WholePages(bytes);
  void* const block = mmap(nullptr, length, kProtection, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (block == MAP_FAILED) return nullptr;
  // Without the advice a file that cannot be read would end the process when it is first used.
  if (mmap(block, fileBytes, kProtection, MAP_PRIVATE | MAP_FIXED, fd, 0) != MAP_FAILED &&
      madvise(block, fileBytes, MADV_POPULATE_READ) == 0) {
    return block;
  }
  munmap(block, length);
#endif
  return nullptr;
}

void FreeLarge(void* block, std::size_t bytes) {
  if (block == nullptr) return;
  if (IsLarge(bytes)) {
    munmap(block, WholePages(bytes));
  } else {
    std::free(block);
  }
}

#else

void* AllocateLarge(std::size_t bytes) {
  if (MustFail()) return nullptr;
  return std::malloc(bytes == 0 ? 1 : bytes);
}

void* ResizeLarge(void* block, std::size_t oldBytes, std::size_t newBytes) {
  if (newBytes > oldBytes && MustFail()) return nullptr;
  return std::realloc(block, newBytes == 0 ? 1 : newBytes);
}

void* MapLarge(int, std::size_t, std::size_t) {
  return nullptr;
}

void FreeLarge(void* block, std::size_t) {
  std::free(block);
}

#endif

void* CopyLarge(void* block, std::size_t oldBytes, std::size_t newBytes) {
  void* const copy = AllocateLarge(newBytes);
  if (copy == nullptr) return nullptr;
  std::memcpy(copy, block, std::min(oldBytes, newBytes));
  FreeLarge(block, oldBytes);
  return copy;
}

}  // namespace zvrsit::platform
