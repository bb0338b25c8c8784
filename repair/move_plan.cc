// Which files a move or a retarget concerns.
#include <algorithm>
#include <memory>
#include <set>
#include <utility>

#include "dom/code_conv.h"
#include "links/html_values.h"
#include "links/link_type.h"
#include "links/page_types.h"
#include "links/redirect_rules.h"
#include "manager/site_mgr.h"
#include "repair/file_planner.h"
#include "repair/repair_plan.h"
#include "tables/site_link_db.h"
#include "tables/site_path_db.h"
#include "tables/site_url_db.h"
#include "util/ascii.h"
#include "util/file_type.h"
#include "util/mb_string.h"

namespace zvrsit {
namespace {

std::string TextOf(std::string_view bytes) {
  CodeConv text;
  if (!text.Import(bytes.data(), bytes.size(), 0)) return {};
  return {text.text(), text.length()};
}

// The site as it is and as it will be, and what of it is concerned.
class Repair {
 public:
  Repair(SiteMgr& manager, PathMap map)
      : manager_(manager),
        paths_(*manager.GetPathDB()),
        links_(*manager.GetLinkDB()),
        folder_(manager.DescribeServer().folder),
        map_(std::move(map)),
        redirects_(ReadRedirects(manager)) {
    before_ = std::make_unique<SiteWorld>(manager, AskKind(), redirects_);
    after_ = std::make_unique<SiteWorld>(manager, After(),
                                         map_.Moves(redirectsPath()) ? std::string() : redirects_);
  }

  void AddReferrers(UrlID target) {
    std::vector<int> found;
    if (target.id < 0 || links_.Query(kAnyUrlID, target, found) < 0) return;
    for (const int link : found) AddSource(link);
  }
  // `target` is a path or a URL.
  void AddReferrers(const std::string& target) {
    AddReferrers(UrlID(kKindPath, paths_.Find(target)));
    AddReferrers(UrlID(kKindUrl, manager_.GetUrlDB()->Find(target)));
  }

  // A file that moves, with what it refers to and what refers to it.
  void AddMoved(const std::string& path) {
    const int number = paths_.Find(path);
    AddReferrers(UrlID(kKindPath, number));
    std::vector<int> found;
    const bool refers =
        number >= 0 && links_.Query(UrlID(kKindPath, number), kAnyUrlID, found) >= 0;
    const bool isServed = PageSyntaxOf(path) == PageSyntax::kServer;
    if ((refers && !found.empty()) || isServed) concerned_.insert(path);
  }

  void AddFolder(const std::string& folder) {
    if (before_->redirects()) concerned_.insert(redirectsPath());
    std::string path;
    for (int number = paths_.NextNumber(0); number >= 0; number = paths_.NextNumber(number + 1)) {
      if (paths_.Name(number, path) < 0) continue;
      if (path.starts_with(folder)) AddMoved(path);
      if (MayNamePrefix(path)) concerned_.insert(path);
    }
  }

  // What may lead elsewhere now that there is a file at `path`.
  void AddRivals(const std::string& path) {
    if (!FlagsOf(manager_.GetLinkRules()).findsFolderDocuments) return;
    for (const std::string& other : after_->AlternativesOf(path)) AddReferrers(other);
    if (after_->MayBeDocument(path)) {
      const std::string folder(FolderOf(path));
      for (const std::string& name : after_->documentNames()) AddReferrers(folder + name);
    }
  }

  // The classic rules take all of a META refresh for a target.
  void AddRefreshes() {
    if (FlagsOf(manager_.GetLinkRules()).parsesRefresh) return;
    std::string page;
    for (int number = links_.NextNumber(0); number >= 0; number = links_.NextNumber(number + 1)) {
      SiteLinkRec link;
      if (links_.Get(number, link) < 0 || link.type != static_cast<int>(LT_META_REFRESH)) continue;
      const std::string_view target = RefreshTarget(links_.TextView(link.text));
      if (target.empty() || paths_.Name(link.from.id, page) < 0) continue;
      before_->BeginFile(page);
      const Place place = before_->PlaceOf(target, SiteWorld::From::kPage, false);
      if (map_.Of(place.path) != place.path) concerned_.insert(page);
    }
  }

  // With rules of the server any link may lead elsewhere.
  void AddRedirected() {
    if (!before_->redirects() && !after_->redirects()) return;
    std::string page;
    UrlID last;
    for (int number = links_.NextNumber(0); number >= 0; number = links_.NextNumber(number + 1)) {
      SiteLinkRec link;
      if (links_.Get(number, link) < 0 || paths_.Name(link.from.id, page) < 0) continue;
      if (!(link.from == last)) {
        before_->BeginFile(page);
        after_->BeginFile(page);
        last = link.from;
      }
      const std::string_view text = links_.TextView(link.text);
      const Place old = before_->PlaceOf(text, SiteWorld::From::kPage, true);
      const Place now = after_->PlaceOf(text, SiteWorld::From::kPage, true);
      if (old.kind != now.kind || now.path != map_.Of(old.path)) concerned_.insert(page);
    }
  }

  void Run(RepairPlan& plan) {
    plan = {};
    if (before_->redirects() && concerned_.contains(redirectsPath()) &&
        !map_.Moves(redirectsPath())) {
      SettleRedirects();
    }
    FilePlanner planner(manager_, *before_, *after_, map_);
    for (const std::string& path : concerned_) {
      // In another place it is no list of rules.
      if (path != redirectsPath() || !map_.Moves(path)) planner.Plan(path, plan);
    }
  }

 private:
  // Whether the file may name a folder for all that lies in it: as the scope of a manifest, or in
  // an import map. Where the folder is there, this is no link.
  bool MayNamePrefix(const std::string& path) {
    if (!FlagsOf(manager_.GetLinkRules()).readsSiteData) return false;
    const PageSyntax syntax = PageSyntaxOf(path);
    if (syntax == PageSyntax::kManifest) return true;
    const bool isPage =
        ClassifyFileType(path) == FT_HTML || (syntax != PageSyntax::kHtml && !IsSiteData(syntax));
    constexpr std::string_view kImportMap = "importmap";
    if (!isPage || concerned_.contains(path) || !file_.ReadPage(path)) return false;
    const std::string_view text = file_.text();
    return std::search(text.begin(), text.end(), kImportMap.begin(), kImportMap.end(),
                       [](char a, char b) { return LowerAscii(a) == b; }) != text.end();
  }

  std::string redirectsPath() const { return folder_ + std::string(kRedirectsName); }
  AskKind After() const {
    return [map = map_](const std::string& path) { return map.KindAfter(path); };
  }

  void AddSource(int number) {
    SiteLinkRec link;
    std::string path;
    if (links_.Get(number, link) == 0 && paths_.Name(link.from.id, path) == 0) {
      concerned_.insert(path);
    }
  }

  // The rules of afterwards decide how the rules themselves are written.
  void SettleRedirects() {
    constexpr int kMostRounds = 3;
    std::string text = redirects_;
    for (int round = 0; round < kMostRounds; ++round) {
      RepairPlan plan;
      FilePlanner(manager_, *before_, *after_, map_).Plan(redirectsPath(), plan);
      std::string bytes;
      std::string next = redirects_;
      if (!plan.files.empty() && file_.ReadPage(redirectsPath()) &&
          ApplyEdits(file_.bytes(), plan.files.front(), bytes)) {
        next = TextOf(bytes);
      }
      if (next == text) return;
      text = next;
      after_ = std::make_unique<SiteWorld>(manager_, After(), text);
    }
  }

  SiteMgr& manager_;
  SitePathDB& paths_;
  SiteLinkDB& links_;
  const std::string folder_;
  const PathMap map_;
  const std::string redirects_;
  FileText file_;
  std::unique_ptr<SiteWorld> before_;
  std::unique_ptr<SiteWorld> after_;
  std::set<std::string> concerned_;
};

bool IsOpen(const SiteMgr& manager) {
  const SitePathDB* const paths = manager.GetPathDB();
  const SiteLinkDB* const links = manager.GetLinkDB();
  return paths != nullptr && paths->strings() != nullptr && links != nullptr &&
         links->strings() != nullptr && manager.GetCssCtrl() != nullptr;
}

}  // namespace

int PlanMove(SiteMgr& manager, const std::string& from, const std::string& to, RepairPlan& plan) {
  const bool isFolder = FolderOf(from) == from;
  const FileKind wanted = isFolder ? FileKind::kFolder : FileKind::kFile;
  if (!IsOpen(manager) || from.empty() || to.empty() || isFolder != (FolderOf(to) == to) ||
      KindOnDisk(from) != wanted || manager.DescribeServer().folder.starts_with(from)) {
    return -1;
  }
  const std::string place = isFolder ? to.substr(0, to.size() - 1) : to;
  if (KindOnDisk(place) != FileKind::kNone || (isFolder && to.starts_with(from))) return -1;
  Repair repair(manager, PathMap(from, to));
  if (isFolder) {
    repair.AddFolder(from);
  } else {
    repair.AddMoved(from);
    repair.AddRivals(to);
  }
  repair.AddRefreshes();
  repair.AddRedirected();
  repair.Run(plan);
  return 0;
}

int PlanRetarget(SiteMgr& manager, const std::vector<Retarget>& targets, RepairPlan& plan) {
  if (!IsOpen(manager)) return -1;
  PathMap map;
  for (const Retarget& target : targets) map.Add(target.from, target.to);
  Repair repair(manager, std::move(map));
  for (const Retarget& target : targets) repair.AddReferrers(target.from);
  repair.AddRefreshes();
  repair.Run(plan);
  return 0;
}

}  // namespace zvrsit
