#include "cli/rebuild.h"

#include <fmt/core.h>

#include <filesystem>
#include <memory>

#include "cli/exit_code.h"
#include "cli/progress.h"
#include "util/file_type.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

std::string FolderPath(const std::string& native) {
  std::error_code error;
  if (!fs::is_directory(native, error)) {
    throw Failure(kFileSystem, native + (error ? ": " + error.message() : ": not a folder"));
  }
  std::string path = AbsolutePath(native);
  if (path.back() != '\\') path += '\\';
  return path;
}

// The first of the usual names that is there, else the first page of the folder by name.
std::string LookForTop(const fs::path& folder) {
  std::error_code error;
  for (const char* name : {"index.html", "index.htm", "default.htm", "default.html"}) {
    if (fs::is_regular_file(folder / name, error)) return name;
  }
  std::string first;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    const std::string name = entry.path().filename().string();
    if (ClassifyFileType(name.c_str()) != FT_HTML || !entry.is_regular_file(error)) continue;
    if (first.empty() || name < first) first = name;
  }
  if (first.empty()) {
    throw Failure(kFileSystem, folder.string() + ": no page here; name the top file with --top");
  }
  return first;
}

std::string TopPath(const NewSite& site) {
  const std::string top = site.top.empty() ? LookForTop(site.folder) : site.top;
  std::error_code error;
  fs::path path = fs::path(site.folder) / top;
  if (!fs::is_regular_file(path, error) && fs::is_regular_file(top, error)) path = top;
  if (!fs::is_regular_file(path, error))
    throw Failure(kFileSystem, path.string() + ": no such file");
  return AbsolutePath(path.string());
}

void NameSkipped(Session& session) {
  for (const std::string& path : session.manager().SkippedByRebuild()) {
    fmt::print(stderr, "zvrsit: {}: could not be read\n", LineText(NativePath(path)));
  }
}

}  // namespace

bool ParseRules(const std::string& word, LinkRules& rules) {
  if (word != "web" && word != "classic") return false;
  rules = word == "web" ? LinkRules::Web : LinkRules::Classic;
  return true;
}

const char* RulesName(LinkRules rules) {
  return rules == LinkRules::Web ? "web" : "classic";
}

void AddSite(Session& session, const std::string& name, const NewSite& site) {
  SiteProfile profile;
  if (session.manager().GetSiteProf(name, profile) == 0) {
    throw Failure(kUsage, "there is a site named \"" + name + "\" already");
  }
  profile = SiteProfile{};
  profile.folders[kSlotSiteFolder] = FolderPath(site.folder);
  if (!site.docRoot.empty()) {
    profile.folders[kSlotDocumentRoot] = FolderPath(site.docRoot);
    profile.useDocumentRoot = true;
  }
  profile.topFile = TopPath(site);
  profile.defaultUrl = site.defaultUrl;
  profile.linkRules = site.rules;
  if (session.manager().SetSiteProf(name, profile) < 0) {
    throw Failure(kUsage, "\"" + name + "\" cannot be the name of a site");
  }
}

int RebuildSite(Session& session, bool complete) {
  SiteMgr& manager = session.manager();
  TerminalProgress progress;
  const int stored = manager.SiteRebuildDB(complete ? 1 : 0, progress.dialog());
  if (progress.cancelled()) throw Failure(kFileSystem, "interrupted; the site wants a rebuild");
  if (stored != 0 || manager.GetSiteProfRebuildState() != 2) {
    throw Failure(kDatabase, "the rebuild failed");
  }
  if (manager.UpdateLinkFamily() != 0) {
    const std::string top = NativePath(Take(manager.GetSiteProfTopFile()));
    fmt::print(stderr, "zvrsit: {}: the top file is not among the files of the site\n",
               LineText(top));
  }
  if (manager.IsWorthPacking() && manager.PackSite() != 0) throw Failure(kDatabase, "packing the tables failed");
  NameSkipped(session);
  return manager.SkippedByRebuild().empty() ? kClean : kFileSystem;
}

SiteTotals CountSite(Session& session) {
  SiteMgr& manager = session.manager();
  SiteTotals totals;
  vec<SiteRecCell>* const paths = manager.EnumPath();
  vec<SiteRecCell>* const urls = manager.EnumUrl();
  if (paths != nullptr) {
    for (const SiteRecCell& cell : *paths) {
      if (cell.GetFlag() == 0) continue;
      ++totals.files;
      if (cell.GetFileType() == static_cast<int>(FT_HTML)) ++totals.pages;
      if (cell.GetFileType() == static_cast<int>(FT_CSS)) ++totals.sheets;
    }
  }
  if (urls != nullptr) totals.urls = static_cast<long>(urls->size());
  SiteMgr::DeleteVecRecCell(paths);
  SiteMgr::DeleteVecRecCell(urls);
  const std::unique_ptr<std::vector<int>> links(manager.EnumLink());
  if (links != nullptr) totals.links = static_cast<long>(links->size());
  return totals;
}

void PrintTotals(const SiteTotals& totals) {
  fmt::print("{}, {}, {}, {}, {}\n", Counted(totals.files, "file", "files"),
             Counted(totals.pages, "page", "pages"),
             Counted(totals.sheets, "style sheet", "style sheets"),
             Counted(totals.links, "link", "links"),
             Counted(totals.urls, "external URL", "external URLs"));
}

Json TotalsAsJson(const SiteTotals& totals) {
  return {{"files", totals.files},
          {"pages", totals.pages},
          {"sheets", totals.sheets},
          {"links", totals.links},
          {"urls", totals.urls}};
}

}  // namespace zvrsit::cli
