#include "support/memory_fault.h"

#include <cstdlib>

#include "platform/memory_fault.h"

namespace {

thread_local zvrsit::test::MemoryFault* current = nullptr;

void* Allocate(std::size_t bytes) {
  if (current != nullptr && current->MustFail()) return nullptr;
  return std::malloc(bytes == 0 ? 1 : bytes);
}

void* AllocateOrThrow(std::size_t bytes) {
  void* const block = Allocate(bytes);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

}  // namespace

void* operator new(std::size_t bytes) {
  return AllocateOrThrow(bytes);
}
void* operator new[](std::size_t bytes) {
  return AllocateOrThrow(bytes);
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return Allocate(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
  return Allocate(bytes);
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  std::free(block);
}

namespace zvrsit::test {

MemoryFault::MemoryFault(int failing, bool isLasting) : failing_(failing), isLasting_(isLasting) {
  current = this;
  const auto ask = [](void* fault) { return static_cast<MemoryFault*>(fault)->MustFail(); };
  platform::SetMemoryFaultHook(ask, this);
}

MemoryFault::~MemoryFault() {
  current = nullptr;
  platform::SetMemoryFaultHook(nullptr, nullptr);
}

bool MemoryFault::MustFail() {
  ++calls_;
  return failing_ > 0 && (isLasting_ ? calls_ >= failing_ : calls_ == failing_);
}

}  // namespace zvrsit::test
