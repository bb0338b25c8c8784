#include "links/served_files.h"

#include <utility>

#include "dom/code_conv.h"
#include "dom/mapped_file.h"
#include "links/asset_name.h"
#include "links/page_types.h"
#include "links/url_text.h"

namespace zvrsit {
namespace {

// More rules than this after one another run in a circle.
constexpr int kMostRules = 10;

std::string ReadText(const std::string& path) {
  MappedFile file;
  CodeConv text;
  if (!file.open(path, 0) || !text.Import(file.top(), file.size(), 0)) return {};
  return {text.text(), text.length()};
}

// What stands between "?" and "#".
std::string_view QueryOf(std::string_view target) {
  target = target.substr(0, target.find('#'));
  const std::size_t begin = target.find('?');
  return begin == std::string_view::npos ? std::string_view() : target.substr(begin + 1);
}

}  // namespace

ServedFiles::ServedFiles(const ServedSite& site)
    : documents_(&site.defaultNames, site.fallbackExtensions) {
  if (site.folder.empty()) return;
  text_ = ReadText(site.folder + std::string(kRedirectsName));
  ReadRules(site);
}

ServedFiles::ServedFiles(const ServedSite& site, AskKind kinds, std::string redirects)
    : documents_(&site.defaultNames, site.fallbackExtensions, std::move(kinds)),
      text_(std::move(redirects)) {
  ReadRules(site);
}

void ServedFiles::ReadRules(const ServedSite& site) {
  if (text_.empty()) return;
  resolver_.SetLiveUrl(site.liveUrl, site.folder);
  resolver_.BeginPage(site.root, site.folder + std::string(kRedirectsName));
  rules_ = RedirectRules(text_, resolver_);
}

TargetKind ServedFiles::Serve(std::string_view target, std::string& place, From from) {
  if (redirects()) return FollowRules(target, place, from);
  if (from == From::kPage) documents_.ToDocument(place);
  return TargetKind::kLocal;
}

TargetKind ServedFiles::FollowRules(std::string_view target, std::string& place, From from) {
  std::string path = place;
  std::string query(QueryOf(target));
  replacesFragment_ = false;
  for (int count = 0; count <= kMostRules; ++count) {
    std::string file = path;
    if (count > 0 || from == From::kPage) documents_.ToDocument(file);
    std::string to;
    const RedirectRule* const rule =
        rules_.Match(path, query, documents_.KindOf(file) == FileKind::kFile, to);
    std::string next;
    const TargetKind kind =
        rule == nullptr || rule->status >= 400 ? TargetKind::kNone : resolver_.Resolve(to, next);
    // A rewrite for all pages of an application does not make an image of its page.
    const bool isPageForImage = kind == TargetKind::kLocal && rule->status == 200 &&
                                IsAssetName(path) && !IsAssetName(next);
    if (kind == TargetKind::kExternal || (kind == TargetKind::kLocal && !isPageForImage)) {
      path = next;
      query = QueryOf(to);
      // The browser does not see the target of a rewrite.
      replacesFragment_ |= rule->status != 200 && to.find('#') != std::string::npos;
      if (kind == TargetKind::kLocal) continue;
    } else {
      path = file;
    }
    place = path;
    return kind == TargetKind::kExternal ? kind : TargetKind::kLocal;
  }
  if (from == From::kPage) documents_.ToDocument(place);
  return TargetKind::kLocal;
}

}  // namespace zvrsit
