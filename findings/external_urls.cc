#include "findings/external_urls.h"

#include <algorithm>
#include <memory>
#include <span>

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

// The URLs, each with the links that make it worth asking unless their pages say otherwise.
class Candidates {
 public:
  // `links` are numbers, at least one.
  void Add(LinkedUrl url, const std::vector<int>& links) {
    links_.insert(links_.end(), links.begin(), links.end());
    urlOfLinks_.resize(links_.size(), urls_.size());
    urls_.push_back(std::move(url));
  }

  // Those that a page refers to without the attribute for ignoring. Reads the pages again.
  std::vector<LinkedUrl> WithoutIgnored(SiteMgr& manager) {
    constexpr std::size_t kAtOnce = 1 << 17;
    std::vector<bool> isWanted(urls_.size());
    for (std::size_t from = 0; from < links_.size(); from += kAtOnce) {
      const auto part = std::span(links_).subspan(from, std::min(kAtOnce, links_.size() - from));
      std::vector<std::vector<LinkPlace>> places;
      if (manager.FindLinkPlaces({part.begin(), part.end()}, places) != 0) return urls_;
      for (std::size_t i = 0; i < part.size(); ++i) {
        const bool isIgnored =
            !places[i].empty() && std::ranges::all_of(places[i], &LinkPlace::isIgnored);
        if (!isIgnored) isWanted[urlOfLinks_[from + i]] = true;
      }
    }
    std::vector<LinkedUrl> wanted;
    for (std::size_t i = 0; i < urls_.size(); ++i) {
      if (isWanted[i]) wanted.push_back(std::move(urls_[i]));
    }
    return wanted;
  }

 private:
  std::vector<LinkedUrl> urls_;
  std::vector<int> links_;
  std::vector<std::size_t> urlOfLinks_;
};

}  // namespace

std::vector<LinkedUrl> ListLinkedUrls(SiteMgr& manager, const std::string& folder,
                                      const Ignores& ignores,
                                      const std::function<bool(const std::string&)>& isWanted) {
  const KnownFiles names(manager, folder);
  const auto linksTo = [&](const UrlID& id, const std::string& url) {
    const std::unique_ptr<std::vector<int>> numbers(manager.GetBackLinks(id));
    std::vector<int> links;
    SiteLink link;
    for (std::size_t i = 0; numbers != nullptr && i < numbers->size(); ++i) {
      if (manager.GetLink((*numbers)[i], link) != 0 || AsksForNothing(link, url)) continue;
      const std::string& file = names.Of(link.from.id);
      const bool isIgnored = ignores.HaveFile(file) || ignores.HaveTarget(link.text);
      if (!isIgnored && isWanted(file)) links.push_back((*numbers)[i]);
    }
    return links;
  };
  Candidates candidates;
  const OwnedCells urls(manager.EnumUrl());
  for (std::size_t i = 0; urls != nullptr && i < urls->size(); ++i) {
    const std::string url = (*urls)[i].GetName();
    const std::string shown = WithoutCredentials(url.substr(0, url.find('#')));
    if (!IsWebUrl(url) || ignores.HaveTarget(shown)) continue;
    const std::vector<int> links = linksTo((*urls)[i].GetID(), url);
    if (!links.empty()) candidates.Add({(*urls)[i].GetID(), url}, links);
  }
  return candidates.WithoutIgnored(manager);
}

}  // namespace zvrsit
