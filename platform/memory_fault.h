// Failing allocations of large memory on purpose, for tests that make the Nth one of an operation
// fail.
#pragma once

namespace zvrsit::platform {

// Asked before each block of this thread that comes from platform/large_memory.h; true makes that
// allocation fail.
using MemoryFaultHook = bool (*)(void* context);

// Sets the hook of this thread; null takes it away.
void SetMemoryFaultHook(MemoryFaultHook hook, void* context);

}  // namespace zvrsit::platform
