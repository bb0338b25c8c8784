// Failing file calls on purpose, for tests that make the Nth call of an operation fail.
#pragma once

namespace zvrsit::platform {

enum class FileCall {
  kOpen,
  kRead,
  kWrite,
  kSeek,
  kClose,
  kStat,
  kMakeFolder,
  kUnlink,
  kRename,
  kSync
};

// Asked before each file call of this thread; true makes that call fail with an I/O error.
using FileFaultHook = bool (*)(FileCall call, void* context);

// Sets the hook of this thread; null takes it away.
void SetFileFaultHook(FileFaultHook hook, void* context);

}  // namespace zvrsit::platform
