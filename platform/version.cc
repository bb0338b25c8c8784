#include "platform/version.h"

#define ZVRSIT_TEXT_OF(number) #number
#define ZVRSIT_DOTTED(major, minor, patch) \
  ZVRSIT_TEXT_OF(major) "." ZVRSIT_TEXT_OF(minor) "." ZVRSIT_TEXT_OF(patch)

namespace zvrsit {

const char* Version() {
  return ZVRSIT_DOTTED(ZVRSIT_VERSION_MAJOR, ZVRSIT_VERSION_MINOR, ZVRSIT_VERSION_PATCH);
}

}  // namespace zvrsit
