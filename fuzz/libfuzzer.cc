// A target with libFuzzer writes its seeds too:  fuzz_X --seeds FOLDER
#include <cstdlib>
#include <string_view>

#include "fuzz/seeds.h"

// libcurl 7.88 loses 8 bytes of each host that is no name.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libcurl";
}

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments) {
  const char* const* const words = *arguments;
  if (*count == 3 && std::string_view(words[1]) == "--seeds") std::exit(WriteSeeds(words[2]));
  return 0;
}
