// Sets the code page of a test program before its tests run, where the system's is another.
#include "platform/code_page.h"

namespace zvrsit::test {
namespace {

[[maybe_unused]] const int done = platform::SetCodePage(platform::kUtf8);

}  // namespace
}  // namespace zvrsit::test
