// The version of the library. The build reads the three numbers here.
#pragma once

#include "platform/api.h"

#define ZVRSIT_VERSION_MAJOR 0
#define ZVRSIT_VERSION_MINOR 2
#define ZVRSIT_VERSION_PATCH 0

// For #if: 200 is 0.2.0, and 10203 is 1.2.3.
#define ZVRSIT_VERSION_NUMBER \
  (ZVRSIT_VERSION_MAJOR * 10000 + ZVRSIT_VERSION_MINOR * 100 + ZVRSIT_VERSION_PATCH)

namespace zvrsit {

// The version of the library that runs, as "0.2.0". The macros are that of the headers, which the
// application was compiled with.
ZVRSIT_API const char* Version();

}  // namespace zvrsit
