// Here the program is built without external checks.
#include "cli/exit_code.h"
#include "cli/external_check.h"

namespace zvrsit::cli {

void NeedExternalChecks() {
  throw Failure(kUsage,
                "this program asks no servers of other sites: it has no external checks on "
                "Windows");
}

AskedUrls AskWithProgress(const std::vector<LinkedUrl>&, Asking) {
  NeedExternalChecks();
  return {};
}

std::vector<UrlResult> KeptResults(const std::vector<LinkedUrl>& urls, const std::string&) {
  UrlResult unasked;
  unasked.state = UrlState::kUnasked;
  return std::vector(urls.size(), unasked);
}

}  // namespace zvrsit::cli
