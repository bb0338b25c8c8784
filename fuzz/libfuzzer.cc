// The targets with libFuzzer:  fuzz --target=NAME [--seeds FOLDER] [OPTION OF LIBFUZZER]...
// libFuzzer leaves out what begins with two hyphens.
#include <cstddef>
#include <cstdint>

#include "fuzz/target.h"

namespace {

const zvrsit::fuzz::Target* chosen = nullptr;

}  // namespace

// libcurl 7.88 loses 8 bytes of each host that is no name.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libcurl";
}

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments) {
  chosen = &zvrsit::fuzz::TargetOf(*count, *arguments);
  zvrsit::fuzz::WriteSeedsIfWanted(*chosen, *count, *arguments);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  chosen->read({reinterpret_cast<const char*>(data), size});
  return 0;
}
