// The file calls' side of file_fault.h.
#pragma once

#include "platform/file_fault.h"

namespace zvrsit::platform {

struct FileFault {
  FileFaultHook hook = nullptr;
  void* context = nullptr;
};

extern constinit thread_local FileFault fileFault;

// Whether the hook of this thread wants this call to fail.
inline bool MustFail(FileCall call) {
  return fileFault.hook && fileFault.hook(call, fileFault.context);
}

}  // namespace zvrsit::platform
