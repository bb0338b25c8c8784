// Links to folders: the pages that hold one are read again when another document stands for the
// folder.
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
#include "links/target_resolver.h"
#include "manager/record_access.h"
#include "manager/work.h"
#include "util/mb_string.h"

namespace zvrsit {

namespace {

// Links of these types do not depend on a document: a sheet that names a folder leads to the folder
// itself, and the text of an applet's file is only a name.
constexpr std::uint32_t kNeverFollowed =
    LT_CSS_OTHER | LT_CSS_LINK | LT_CSS_IMPORT | LT_CSS_IMAGE | LT_APPLET_FILE;

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
  // Those of the open site of `manager`; "/" is `root`.
  WebLinks(const SiteMgr& manager, std::string_view root, std::string_view siteDir)
      : paths_(*manager.GetPathDB()),
        links_(*manager.GetLinkDB()),
        root_(root),
        documents_(manager.GetDefaultUrl()) {
    if (manager.GetLiveUrl() != nullptr) resolver_.SetLiveUrl(*manager.GetLiveUrl(), siteDir);
  }

  bool MayBeDocument(std::string_view path) const { return documents_.MayBe(path); }

  // Whether the link of a page to a file would lead elsewhere now. True also when this is not
  // known, as in a page with a BASE.
  bool LeadElsewhere(const SiteLinkRec& link) {
    if (link.from.kind != kKindPath || link.to.kind != kKindPath ||
        (static_cast<std::uint32_t>(link.type) & kNeverFollowed) != 0) {
      return false;
    }
    if (!(link.from == page_)) {
      page_ = link.from;
      resolver_.BeginPage(root_, paths_.NameView(page_.id));
    }
    const std::string_view text = links_.TextView(link.text);
    if (resolver_.Resolve(text, place_) != TargetKind::kLocal) return true;
    const std::string_view target = paths_.NameView(link.to.id);
    // "#x" names the page itself; or, when a folder is its BASE, the document of that folder.
    if (link.from == link.to && !IsTargetOfFolder(text) && documents_.MayBe(target)) {
      place_ = FolderOf(target);
    }
    const int number = place_ == target ? link.to.id : paths_.Find(place_);
    std::int32_t exists = 0;
    if (paths_.GetNumber(number, &SitePathRec::exists, exists) < 0 || exists == 0) {
      documents_.ToDocument(place_);
    }
    return place_ != target;
  }

  // Adds the pages whose links to `folder`, which has no `\` at its end, would lead elsewhere now.
  // The folder may have come or gone; if `otherDocument`, one of its documents has.
  void AddFolderReferrers(const std::string& folder, bool otherDocument, Sources& sources) {
    AddReferrers(folder, sources);
    std::string document = folder;
    documents_.ToDocument(document);
    if (document != folder && !otherDocument) return;
    for (const std::string& name : documents_.names()) {
      const std::string other = folder + '\\' + name;
      // Links to the document of today are right.
      if (other != document) AddReferrers(other, sources);
    }
  }

 private:
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
  const std::string root_;
  FolderDocuments documents_;
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

std::vector<std::string> SiteMgr::ListFolderLinkSources() const {
  std::string siteDir;
  if (!HasFiles(linkDB) || !HasFiles(pathDB) || !ProfileUse(*this).ReadSiteFolder(siteDir)) {
    return {};
  }
  Sources sources(*pathDB);
  WebLinks web(*this, Work::RootOf(*this, siteDir), siteDir);
  ForEachNumber(*linkDB, [&](int number) {
    SiteLinkRec link;
    if (linkDB->Get(number, link) < 0 || link.to.kind != kKindPath) return;
    if (FlagsOf(GetLinkRules()).findsFolderDocuments ? web.LeadElsewhere(link)
                                                     : EndsAsFolder(linkDB->TextView(link.text))) {
      sources.Add(link.from);
    }
  });
  return sources.names();
}

void SiteMgr::Work::FollowFolderLinks(const std::string& path) {
  std::string siteDir;
  if (!FlagsOf(m_.GetLinkRules()).findsFolderDocuments || m_.dom == nullptr ||
      !HasFiles(m_.linkDB) || !ReadSiteFolder(siteDir)) {
    return;
  }
  WebLinks web(m_, RootOf(m_, siteDir), siteDir);
  Sources sources(*m_.pathDB);
  std::string folder(FolderAbove(path));
  web.AddFolderReferrers(folder, web.MayBeDocument(path), sources);
  for (;;) {
    folder.resize(FolderAbove(folder).size());
    if (!folder.starts_with(siteDir)) break;
    web.AddFolderReferrers(folder, false, sources);
  }
  for (const std::string& source : sources.names()) {
    if (source != path) Save(source, nullptr);
  }
}

}  // namespace zvrsit
