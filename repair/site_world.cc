#include "repair/site_world.h"

#include <utility>

#include "links/redirect_rules.h"
#include "links/url_text.h"
#include "manager/site_mgr.h"
#include "repair/file_text.h"
#include "util/mb_string.h"

namespace zvrsit {

std::string ReadRedirects(const SiteMgr& manager) {
  FileText text;
  const std::string path = manager.DescribeServer().folder + std::string(kRedirectsName);
  return text.ReadPage(path) ? std::string(text.text()) : std::string();
}

SiteWorld::SiteWorld(const SiteMgr& manager, AskKind kinds, std::string redirects)
    : site_(manager.DescribeServer()), resolver_(manager.GetLinkRules()) {
  const std::string* const name = manager.GetDefaultUrl();
  if (name != nullptr) defaultName_ = *name;
  if (!rules().findsFolderDocuments) redirects.clear();
  served_ = std::make_unique<ServedFiles>(site_, std::move(kinds), std::move(redirects));
  resolver_.SetLiveUrl(site_.liveUrl, site_.folder);
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
  while (!target.empty() && static_cast<unsigned char>(target.front()) <= ' ') {
    target.remove_prefix(1);
  }
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
