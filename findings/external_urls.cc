#include "findings/external_urls.h"

#include <memory>

#include "findings/known_files.h"
#include "findings/owned_cells.h"
#include "findings/url_check.h"
#include "links/link_type.h"
#include "manager/site_mgr.h"

namespace zvrsit {
namespace {

bool IsHostAlone(const std::string& url) {
  const std::size_t host = url.find_first_not_of("/\\", url.find(':') + 1);
  const std::size_t end = url.find_first_of("/\\?#", host);
  return end == url.npos || end + 1 == url.size();
}

bool AsksForNothing(const SiteLink& link, const std::string& url) {
  return link.type == LT_FORM || link.type == LT_FORMACTION ||
         (link.type == LT_LINK && IsHostAlone(url));
}

}  // namespace

std::vector<LinkedUrl> ListLinkedUrls(SiteMgr& manager, const std::string& folder,
                                      const Ignores& ignores,
                                      const std::function<bool(const std::string&)>& isWanted) {
  const KnownFiles names(manager, folder);
  const auto isLinkedTo = [&](const UrlID& id, const std::string& url) {
    const std::unique_ptr<std::vector<int>> numbers(manager.GetBackLinks(id));
    SiteLink link;
    for (std::size_t i = 0; numbers != nullptr && i < numbers->size(); ++i) {
      if (manager.GetLink((*numbers)[i], link) != 0 || AsksForNothing(link, url)) continue;
      const std::string& file = names.Of(link.from.id);
      const bool isIgnored = ignores.HaveFile(file) || ignores.HaveTarget(link.text);
      if (!isIgnored && isWanted(file)) return true;
    }
    return false;
  };
  std::vector<LinkedUrl> linked;
  const OwnedCells urls(manager.EnumUrl());
  for (std::size_t i = 0; urls != nullptr && i < urls->size(); ++i) {
    const std::string url = (*urls)[i].GetName();
    const std::string shown = WithoutCredentials(url.substr(0, url.find('#')));
    if (!IsWebUrl(url) || ignores.HaveTarget(shown)) continue;
    if (isLinkedTo((*urls)[i].GetID(), url)) linked.push_back({(*urls)[i].GetID(), url});
  }
  return linked;
}

}  // namespace zvrsit
