#include "cli/given_site.h"

#include "links/live_address.h"
#include "links/page_types.h"

namespace zvrsit::cli {

std::string FaultOfExtensions(const std::string& list) {
  if (list.empty() || PageTypes::IsList(list)) return "";
  return "\"" + list + "\" is no list of extensions, such as php,xhtml";
}

std::string FaultOfBaseUrl(const std::string& url) {
  if (url.empty() || LiveAddress(url).isSet()) return "";
  return "\"" + url + "\" is not the address of a folder, such as https://example.org/docs/";
}

std::string FaultOfRules(const std::string& rules) {
  if (rules == "web" || rules == "classic") return "";
  return "\"" + rules + "\" is neither web nor classic";
}

}  // namespace zvrsit::cli
