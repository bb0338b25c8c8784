#include "repair/site_world.h"

#include <utility>

#include "links/url_text.h"
#include "util/mb_string.h"

namespace zvrsit {

SiteWorld::SiteWorld(LinkRules rules, const ServedSite& site, const std::string& defaultName,
                     AskKind kinds, std::string redirects)
    : site_(site), defaultName_(defaultName), resolver_(rules) {
  if (!FlagsOf(rules).findsFolderDocuments) redirects.clear();
  served_ = std::make_unique<ServedFiles>(site, std::move(kinds), std::move(redirects));
  resolver_.SetLiveUrl(site.liveUrl, site.folder);
}

void SiteWorld::BeginFile(const std::string& path) {
  file_ = path;
  resolver_.BeginPage(site_.root, path);
}

void SiteWorld::UseBases(const std::vector<std::string>& hrefs) {
  resolver_.BeginPage(site_.root, file_);
  for (const std::string& href : hrefs) resolver_.SetBase(href);
}

Place SiteWorld::PlaceOf(std::string_view target, From from, bool takesName) {
  Place place;
  place.kind = resolver_.Resolve(target, place.direct);
  place.path = place.direct;
  if (place.kind != TargetKind::kLocal || from == From::kBase) return place;
  if (rules().findsFolderDocuments) {
    if (from == From::kSheet && !redirects()) return place;
    const auto asked = from == From::kSheet ? ServedFiles::From::kSheet : ServedFiles::From::kPage;
    place.kind = served_->Serve(target, place.path, asked);
  } else if (takesName && from == From::kPage && !defaultName_.empty() && EndsAsFolder(target)) {
    place.kind = resolver_.Resolve(std::string(target) + defaultName_, place.path);
  }
  return place;
}

std::string SiteWorld::BaseFolder() {
  std::string folder;
  if (!rules().resolvesAsBrowser) return std::string(FolderOf(file_));
  if (resolver_.Resolve("./", folder) != TargetKind::kLocal) folder.clear();
  return folder;
}

bool SiteWorld::ClimbsTooHigh(std::string_view target) {
  if (!rules().resolvesAsBrowser || !SchemeOf(target).empty()) return false;
  const std::string_view path = WithoutQueryAndFragment(target);
  const std::string folder = BaseFolder();
  const bool fromRoot = !path.empty() && IsSlash(path.front());
  if (!fromRoot && !folder.starts_with(site_.root)) return false;
  int depth = 0;
  for (std::size_t i = site_.root.size(); !fromRoot && i < folder.size(); ++depth) {
    i = FindMB(folder, i, [](char c) { return c == '\\'; }) + 1;
  }
  for (std::size_t begin = fromRoot ? 1 : 0; begin < path.size();) {
    const std::size_t end = FindMB(path, begin, IsSlash);
    const int dots = DotsOf(path.substr(begin, end - begin));
    depth += dots == 2 ? -1 : dots == 1 ? 0 : 1;
    if (depth < 0) return true;
    begin = end + 1;
  }
  return false;
}

}  // namespace zvrsit
