#include "platform/file_fault.h"

#include "platform/file_fault_check.h"

namespace zvrsit::platform {

constinit thread_local FileFault fileFault;

void SetFileFaultHook(FileFaultHook hook, void* context) {
  fileFault = {hook, context};
}

}  // namespace zvrsit::platform
