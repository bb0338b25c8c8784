// Proxies, as the environment names them.
#pragma once

#include <string>

#include "external/url.h"

namespace zvrsit {

// The proxy for a URL; empty for none. After http_proxy, https_proxy and all_proxy; no_proxy lists
// the domains and addresses that are asked directly, "*" for all. Of these names but the first,
// upper-case ones count too.
std::string ProxyFor(const AskableUrl& url);

}  // namespace zvrsit
