// Links whose meaning depends on which files are there: to folders, to pages without their
// extensions, and to what a rule of `_redirects` answers for. The pages and sheets that hold one
// are read again when it leads elsewhere.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "links/folder_documents.h"
#include "links/link_type.h"
#include "links/served_files.h"
#include "links/target_resolver.h"
#include "manager/record_access.h"
#include "manager/work.h"
#include "util/mb_string.h"

namespace zvrsit {

namespace {

// Links of these types do not depend on a document: a sheet that names a folder leads to the folder
// itself. Neither does that to an applet's file, whose text is only a name.
constexpr std::uint32_t kOfSheets = LT_CSS_OTHER | LT_CSS_LINK | LT_CSS_IMPORT | LT_CSS_IMAGE;

// The files that hold certain links, each once, in the order in which they were met.
class Sources {
 public:
  explicit Sources(const SitePathDB& paths) : paths_(paths) {}
  void Add(const UrlID& page) {
    std::string name;
    if (page.kind == kKindPath && seen_.insert(page.id).second && paths_.Name(page.id, name) == 0) {
      names_.push_back(std::move(name));
    }
  }
  const std::vector<std::string>& names() const { return names_; }

 private:
  const SitePathDB& paths_;
  std::unordered_set<int> seen_;
  std::vector<std::string> names_;
};

// The links of a site with RuleFlags::findsFolderDocuments, and where they would lead if their
// pages were read now.
class WebLinks {
 public:
  // Which links count: those of pages to files; or all.
  enum class Scope { kOfPages, kAll };

  // Those of the open site of `manager`, which `site` describes.
  WebLinks(const SiteMgr& manager, const ServedSite& site, Scope scope)
      : paths_(*manager.GetPathDB()),
        links_(*manager.GetLinkDB()),
        urls_(*manager.GetUrlDB()),
        root_(site.root),
        scope_(scope),
        served_(site) {
    resolver_.SetLiveUrl(site.liveUrl, site.folder);
  }

  bool MayBeDocument(std::string_view path) const { return served_.documents().MayBe(path); }
  bool redirects() const { return served_.redirects(); }

  // Whether a link would lead elsewhere now. True also when this is not known, as in a page with a
  // BASE.
  bool LeadElsewhere(const SiteLinkRec& link) {
    if (!Counts(link)) return false;
    const std::string_view text = links_.TextView(link.text);
    const bool isLocal = Resolve(link, text) == TargetKind::kLocal;
    if (link.to.kind == kKindUrl) {
      return isLocal &&
             !(Serve(link, text) == TargetKind::kExternal && place_ == urls_.NameView(link.to.id));
    }
    if (!isLocal) return true;
    const std::string_view target = paths_.NameView(link.to.id);
    // "#x" names the page itself; or, when a folder is its BASE, the document of that folder.
    if (link.from == link.to && !IsTargetOfFolder(text) && MayBeDocument(target)) {
      place_ = FolderOf(target);
    }
    const int number = place_ == target ? link.to.id : paths_.Find(place_);
    std::int32_t exists = 0;
    const bool isKnown = paths_.GetNumber(number, &SitePathRec::exists, exists) == 0 && exists != 0;
    const bool isAsked = !isKnown || served_.mayPassFiles();
    return (isAsked && Serve(link, text) == TargetKind::kExternal) || place_ != target;
  }

  // Whether a rule leads to a fragment of its own. False when this is not known.
  bool IsFragmentReplaced(const SiteLinkRec& link) {
    const std::string_view text = links_.TextView(link.text);
    return Counts(link) && Resolve(link, text) == TargetKind::kLocal &&
           Serve(link, text) == TargetKind::kLocal && served_.replacesFragment() &&
           place_ == paths_.NameView(link.to.id);
  }

  // Adds the pages whose links to `folder`, which has no `\` at its end, would lead elsewhere now.
  // The folder may have come or gone; if `otherDocument`, one of its documents has.
  void AddFolderReferrers(const std::string& folder, bool otherDocument, Sources& sources) {
    AddReferrers(folder, sources);
    std::string document = folder;
    served_.documents().ToDocument(document);
    if (document != folder && !otherDocument) return;
    for (const std::string& name : served_.documents().names()) {
      const std::string other = folder + '\\' + name;
      // Links to the document of today are right.
      if (other != document) AddReferrers(other, sources);
    }
  }

  // The same for links to what may stand for the file `path` where its extension may be left out.
  void AddAlternatives(std::string_view path, Sources& sources) {
    const std::vector<std::string> all = served_.documents().AlternativesOf(path);
    for (const std::string& other : all) AddReferrers(other, sources);
  }

 private:
  static bool IsOfSheet(const SiteLinkRec& link) {
    return (static_cast<std::uint32_t>(link.type) & kOfSheets) != 0;
  }

  bool Counts(const SiteLinkRec& link) const {
    if (link.from.kind != kKindPath || link.type == static_cast<int>(LT_APPLET_FILE)) return false;
    return scope_ == Scope::kAll || (link.to.kind == kKindPath && !IsOfSheet(link));
  }

  // Sets place_. A BASE is not known.
  TargetKind Resolve(const SiteLinkRec& link, std::string_view text) {
    if (!(link.from == page_)) {
      page_ = link.from;
      resolver_.BeginPage(root_, paths_.NameView(page_.id));
    }
    return resolver_.Resolve(text, place_);
  }

  TargetKind Serve(const SiteLinkRec& link, std::string_view text) {
    const auto from = IsOfSheet(link) ? ServedFiles::From::kSheet : ServedFiles::From::kPage;
    return served_.Serve(text, place_, from);
  }

  // Adds the pages whose links to the file `target` would lead elsewhere now.
  void AddReferrers(const std::string& target, Sources& sources) {
    const int file = paths_.Find(target);
    std::vector<int> numbers;
    if (file < 0 || links_.Query(kAnyUrlID, PathID(file), numbers) < 0) return;
    for (const int number : numbers) {
      SiteLinkRec link;
      if (links_.Get(number, link) == 0 && LeadElsewhere(link)) sources.Add(link.from);
    }
  }

  const SitePathDB& paths_;
  SiteLinkDB& links_;
  const SiteUrlDB& urls_;
  const std::string root_;
  const Scope scope_;
  ServedFiles served_;
  TargetResolver resolver_{LinkRules::Web};
  UrlID page_;  // of the link before
  std::string place_;
};

// The folder of a file or a folder, without a `\` at its end; empty when there is none.
std::string_view FolderAbove(std::string_view path) {
  const std::string_view folder = FolderOf(path);
  return folder.substr(0, folder.empty() ? 0 : folder.size() - 1);
}

}  // namespace

// The sources are listed before the first save, because saving gives links new numbers. A page
// that cannot be saved is passed over.
int SiteMgr::ReflectDefaultUrl(const std::string&) {
  Work work(*this);
  std::string siteDir;
  if (!HasFiles(linkDB) || !HasFiles(pathDB) ||
      (defaultUrl == nullptr && !FlagsOf(GetLinkRules()).findsFolderDocuments) ||
      !work.ReadSiteFolder(siteDir)) {
    return -1;
  }
  for (const std::string& source : ListFolderLinkSources()) work.Save(source, nullptr);
  return 0;
}

std::vector<std::string> SiteMgr::ListFolderDocuments() const {
  return FolderDocuments(defaultUrl).names();
}

std::vector<std::string> SiteMgr::ListFolderLinkSources() const {
  return Work::ListMovedLinkSources(*this, false);
}

// The pages, and with `all` the sheets too, whose links lead elsewhere now.
std::vector<std::string> SiteMgr::Work::ListMovedLinkSources(const SiteMgr& manager, bool all) {
  std::string siteDir;
  if (!HasFiles(manager.linkDB) || !HasFiles(manager.pathDB) || !HasFiles(manager.urlDB) ||
      !ProfileUse(manager).ReadSiteFolder(siteDir)) {
    return {};
  }
  Sources sources(*manager.pathDB);
  WebLinks web(manager, ServedSiteOf(manager),
               all ? WebLinks::Scope::kAll : WebLinks::Scope::kOfPages);
  const bool isWeb = FlagsOf(manager.GetLinkRules()).findsFolderDocuments;
  ForEachNumber(*manager.linkDB, [&](int number) {
    SiteLinkRec link;
    if (manager.linkDB->Get(number, link) < 0) return;
    const bool leads =
        isWeb ? web.LeadElsewhere(link)
              : link.to.kind == kKindPath && EndsAsFolder(manager.linkDB->TextView(link.text));
    if (leads) sources.Add(link.from);
  });
  return sources.names();
}

void SiteMgr::Work::FollowFolderLinks(const std::string& path, bool cameOrWent) {
  std::string siteDir;
  if (!FlagsOf(m_.GetLinkRules()).findsFolderDocuments || m_.dom == nullptr ||
      !HasFiles(m_.linkDB) || !HasFiles(m_.urlDB) || !ReadSiteFolder(siteDir)) {
    return;
  }
  WebLinks web(m_, ServedSiteOf(m_), WebLinks::Scope::kOfPages);
  if (path == siteDir + std::string(kRedirectsName) || (cameOrWent && web.redirects())) {
    SaveAll(ListMovedLinkSources(m_, true), path);
    return;
  }
  Sources sources(*m_.pathDB);
  std::string folder(FolderAbove(path));
  web.AddFolderReferrers(folder, web.MayBeDocument(path), sources);
  if (cameOrWent) web.AddAlternatives(path, sources);
  for (;;) {
    folder.resize(FolderAbove(folder).size());
    if (!folder.starts_with(siteDir)) break;
    web.AddFolderReferrers(folder, false, sources);
  }
  SaveAll(sources.names(), path);
}

std::vector<std::string> SiteMgr::Work::ListSourcesOf(const CameOrGone& moved) const {
  if (!FlagsOf(m_.GetLinkRules()).findsFolderDocuments) return {};
  const ServedSite site = ServedSiteOf(m_);
  WebLinks web(m_, site, WebLinks::Scope::kOfPages);
  Sources sources(*m_.pathDB);
  for (const std::string& folder : moved.folders) {
    web.AddFolderReferrers(folder, true, sources);
    if (!site.fallbackExtensions.empty()) web.AddAlternatives(folder, sources);
  }
  for (const std::string& file : moved.files) {
    if (web.MayBeDocument(file)) {
      web.AddFolderReferrers(std::string(FolderAbove(file)), true, sources);
    }
    if (!site.fallbackExtensions.empty()) web.AddAlternatives(file, sources);
  }
  return sources.names();
}

void SiteMgr::Work::DropReplacedFragments(std::vector<MissingFragment>& missing) const {
  if (missing.empty() || !FlagsOf(m_.GetLinkRules()).findsFolderDocuments || m_.urlDB == nullptr) {
    return;
  }
  WebLinks web(m_, ServedSiteOf(m_), WebLinks::Scope::kOfPages);
  if (!web.redirects()) return;
  std::erase_if(missing, [&](const MissingFragment& one) {
    SiteLinkRec link;
    return m_.linkDB->Get(one.link, link) == 0 && web.IsFragmentReplaced(link);
  });
}

// Reads again all of these but one.
void SiteMgr::Work::SaveAll(const std::vector<std::string>& sources, const std::string& but) {
  for (const std::string& source : sources) {
    if (source != but) Save(source, nullptr);
  }
}

}  // namespace zvrsit
