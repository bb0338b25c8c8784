#include "cli/unread_pages.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <map>
#include <memory>

#include "cli/native_name.h"
#include "cli/output.h"
#include "links/page_types.h"
#include "util/file_type.h"

namespace zvrsit::cli {
namespace {

// Whether the file begins as an HTML page does.
bool BeginsAsPage(const std::string& native) {
  std::array<char, 1024> head{};
  std::ifstream file(PathOf(native), std::ios::binary);
  file.read(head.data(), static_cast<std::streamsize>(head.size()));
  std::string text(head.data(), static_cast<std::size_t>(file.gcount()));
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return text.find("<!doctype html") != std::string::npos ||
         text.find("<html") != std::string::npos;
}

}  // namespace

void WarnOfUnreadPages(Session& session) {
  SiteMgr& manager = session.manager();
  if (!FlagsOf(manager.GetLinkRules()).readsOtherPageTypes) return;
  const PageTypes types(Take(manager.GetSiteProfDir(kSlotPageTypes)));
  const PageTypes usual;
  const std::unique_ptr<vec<SiteRecCell>> files(manager.GetFilesByType(FT_OTHER));
  std::map<std::string, long> counts;  // by extension
  for (std::size_t i = 0; files != nullptr && i < files->size(); ++i) {
    const SiteRecCell& file = (*files)[i];
    const std::string name = file.GetName();
    if (file.GetFlag() == 0 || types.Hold(name)) continue;
    if (usual.Hold(name) || BeginsAsPage(NativePath(name))) ++counts[ExtensionOf(name)];
  }
  std::string list;
  for (const auto& [extension, count] : counts) {
    list += list.empty() ? "" : ", ";
    list += std::to_string(count) + (extension.empty() ? " without extension" : " ." + extension);
  }
  if (!list.empty()) Warn("pages that were not read for links: " + list + " (see --page-types)");
}

}  // namespace zvrsit::cli
