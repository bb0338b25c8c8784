// The URLs of other sites that are worth asking.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "findings/ignores.h"
#include "util/url_id.h"

namespace zvrsit {

class SiteMgr;

struct LinkedUrl {
  UrlID id;
  std::string url;  // as the site knows it: with its fragment, and with a password where it has one
};

// The http and https URLs that links of these files lead to, by record number. `folder` is the site
// folder, a `\` path; `isWanted` takes files as findings name them. Left out are URLs that are
// ignored, also by an attribute in their pages, or malformed; those of forms and pings alone, which
// only answer what is sent to them; and hosts alone in LINK elements, which browsers connect to
// without asking for anything.
std::vector<LinkedUrl> ListLinkedUrls(SiteMgr& manager, const std::string& folder,
                                      const Ignores& ignores,
                                      const std::function<bool(const std::string&)>& isWanted);

}  // namespace zvrsit
