// Here the program serves no pages.
#include "cli/exit_code.h"
#include "cli/web_listener.h"

namespace zvrsit::cli {

std::unique_ptr<WebListener> ListenOnLoopback(WebHandler&, int) {
  throw Failure(kUsage, "this program serves no pages on Windows: zvrsit report NAME writes one");
}

}  // namespace zvrsit::cli
