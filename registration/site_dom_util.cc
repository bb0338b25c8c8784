#include "registration/site_dom_util.h"

#include <array>
#include <cstdint>
#include <vector>

#include "dom/document.h"
#include "links/classic_target.h"
#include "links/page_types.h"
#include "links/site_data.h"
#include "manager_base/kept_places.h"
#include "manager_base/operation_memo.h"
#include "manager_base/site_mgr_base.h"
#include "platform/file.h"
#include "platform/folder_search.h"
#include "registration/link_memo.h"
#include "tables/site_link_db.h"
#include "tables/site_path_db.h"
#include "util/mb_string.h"

namespace zvrsit {
namespace {

std::shared_ptr<LinkMemo> MemoOf(SiteMgrBase* manager, LinkRules rules) {
  OperationMemo* const operation = manager != nullptr ? manager->GetOperationMemo() : nullptr;
  if (operation != nullptr && operation->links != nullptr) return operation->links;
  std::shared_ptr<ServedFiles> served = operation != nullptr ? operation->served : nullptr;
  if (served == nullptr) {
    ServedSite site;
    const std::string* const names = manager != nullptr ? manager->GetDefaultUrl() : nullptr;
    if (names != nullptr) site.defaultNames = *names;
    served = std::make_shared<ServedFiles>(site);
  }
  auto memo = std::make_shared<LinkMemo>(rules, std::move(served));
  if (operation != nullptr) operation->links = memo;
  return memo;
}

// The words of a path record that MetaKey numbers.
constexpr std::int32_t SitePathRec::*kPropertyWords[kMetaProperties] = {
    &SitePathRec::lastModified, &SitePathRec::expires,     &SitePathRec::generator,
    &SitePathRec::keywords,     &SitePathRec::description, &SitePathRec::contentType,
};

}  // namespace

// How a target is looked up among the targets that were registered before.
struct SiteDOMUtil::MemoKey {
  std::string_view text;  // empty: not at all
  bool isWhole = true;    // false: without its fragment, good for a file but not for a URL
  bool isOfPage = false;  // only a fragment: all of those in a page name the same file
};

SiteDOMUtil::MemoKey SiteDOMUtil::MemoKeyOf(std::string_view target) const {
  const auto hash = target.find('#');
  if ((hash != 0 && !IsTargetOfFolder(target)) || target.size() > TargetMemo::kLongest) return {};
  if (hash == std::string_view::npos) return {target};
  // Without this flag a ".." in a fragment counts.
  if (!rules_.resolvesAsBrowser && target.find_first_of("/\\", hash) != std::string_view::npos) {
    return hash == 0 ? MemoKey() : MemoKey{target};
  }
  return {target.substr(0, hash), hash == 0, hash == 0};
}

SiteDOMUtil::SiteDOMUtil(SiteMgrBase* theManager, DOM* theParser, SitePathDB* thePathTable,
                         SiteUrlDB* theUrlTable, SiteLinkDB* theLinkTable,
                         const std::string& thePagePath)
    : manager(theManager),
      parser(theParser),
      pathTable(thePathTable),
      linkTable(theLinkTable),
      pagePath(thePagePath),
      pathStrings(thePathTable != nullptr ? thePathTable->strings() : nullptr),
      linkRules_(theManager != nullptr ? theManager->GetLinkRules() : LinkRules::Classic),
      rules_(FlagsOf(linkRules_)),
      registrar_(theManager, thePathTable, theUrlTable),
      memo_(MemoOf(theManager, linkRules_)) {
  const OperationMemo* const operation = manager != nullptr ? manager->GetOperationMemo() : nullptr;
  if (operation != nullptr) places_ = operation->places;
  if (pathStrings == nullptr) return;
  const int found = pathTable->Find(pagePath);
  if (found >= 0 && pathTable->Get(found, pageRecord) == 0) pageId = found;
}

SiteDOMUtil::~SiteDOMUtil() {
  SitePathRec stored;
  if (pageId < 0 || pathTable->Get(pageId, stored) < 0) return;
  // What a link to the page itself has found out is undone here, so the next link to it must find
  // it out again.
  if (stored.exists != pageRecord.exists) memo_->targets.Clear();
  if (stored != pageRecord) static_cast<void>(pathTable->Update(pageRecord));
}

int SiteDOMUtil::CollectLinks(const std::string& siteRoot, Document* theDocument) {
  return CollectLinks(siteRoot, theDocument, siteRoot);
}

int SiteDOMUtil::CollectLinks(const std::string& siteRoot, Document* theDocument,
                              const std::string& siteFolder) {
  if (theDocument == nullptr || parser == nullptr || pagePath.empty()) return -1;
  if (manager == nullptr || pageId < 0) return -1;
  document = theDocument;
  siteRoot_ = siteRoot;
  siteFolder_ = rules_.knowsFilesBySiteFolder ? siteFolder : siteRoot;
  PageRows& rows = memo_->rows;
  ExtractFile(pagePath, *document, linkRules_, rows);
  if (!CountsInItsFolder()) rows.links.clear();
  const std::string* const live = manager->GetLiveUrl();
  if (live != nullptr) memo_->resolver.SetLiveUrl(*live, siteFolder_);
  UseBase(rows.parts.parts().front().base);
  linkTexts_ = linkTable != nullptr ? linkTable->strings() : nullptr;
  if (linkTable != nullptr) linkTable->PrepareFor(UrlID(kKindPath, pageId), rows.links.size());

  if (places_ != nullptr) places_->BeginPage();
  LookAhead();
  if (StoreTitle() < 0 || StoreMetas() < 0) return -1;
  if (AddRows(0, rows.anchorLinks) < 0) return -1;
  if (StoreAnchors() < 0) return -1;
  const int result = AddRows(rows.anchorLinks, rows.links.size());
  if (places_ != nullptr) places_->EndPage(UrlID(kKindPath, pageId), document->text());
  return result;
}

// Search engines and hosts look for these two in one folder only.
bool SiteDOMUtil::CountsInItsFolder() const {
  const PageSyntax syntax = rules_.readsSiteData ? PageSyntaxOf(pagePath) : PageSyntax::kHtml;
  const bool isBound = syntax == PageSyntax::kRobots || syntax == PageSyntax::kRedirects;
  return !isBound || FolderOf(pagePath) == siteFolder_;
}

// Has all texts of the page looked for together, when this is less work than one by one.
void SiteDOMUtil::LookAhead() {
  const PageRows& rows = memo_->rows;
  std::vector<std::string_view> texts;
  if (linkTexts_ != nullptr && !linkTexts_->hasStringIndex()) {
    for (const LinkRow& row : rows.links) {
      texts.push_back(row.target);
      if (!row.alternative.empty()) texts.push_back(row.alternative);
    }
    // Those of style sheets are entered after the page's own.
    for (const std::uint32_t index : document->elementsOf(Tag::kLink)) {
      const Attribute sheet = document->element(index).attributes().find(Attr::kHref);
      if (sheet) texts.push_back(sheet.rawValue());
    }
    linkTexts_->LookAhead(texts);
  }
  if (pathStrings->hasStringIndex()) return;
  texts = rows.anchors;
  texts.push_back(rows.title);
  for (const MetaRow& meta : rows.metas) texts.push_back(meta.content);
  pathStrings->LookAhead(texts);
}

// A title that cannot be stored is passed over.
int SiteDOMUtil::StoreTitle() {
  if (!memo_->rows.hasTitle || registrar_.IsHidden(memo_->rows.title)) return 0;
  if (StoreProperty(pageRecord.title, memo_->rows.title) == 0) {
    static_cast<void>(pathTable->Update(pageRecord));
  }
  return 0;
}

// Of several properties with one key the last wins; only that one is stored, so that a page full of
// them leaves no dead texts behind.
int SiteDOMUtil::StoreMetas() {
  std::array<const MetaRow*, kMetaProperties> last{};
  for (const MetaRow& meta : memo_->rows.metas) {
    if (meta.key != MetaKey::kRefresh && !registrar_.IsHidden(meta.content))
      last[static_cast<std::size_t>(meta.key)] = &meta;
  }
  for (const MetaRow& meta : memo_->rows.metas) {
    if (meta.key == MetaKey::kRefresh) {
      LinkRow row;
      row.type = LT_META_REFRESH;
      row.offset = meta.offset;
      row.target = meta.content;
      row.base = meta.base;
      if (AddRow(row, {SiteVarRecDB::HashOf(row.target)}) == Outcome::kFailed) return -1;
      continue;
    }
    const auto property = static_cast<std::size_t>(meta.key);
    if (last[property] != &meta) continue;
    if (StoreProperty(pageRecord.*kPropertyWords[property], meta.content) < 0) return -1;
  }
  // The text that comes after the properties is always empty, and the store takes no empty text.
  const std::int32_t old = pageRecord.metaText;
  pageRecord.metaText = -1;
  return old < 0 ? 0 : pathStrings->ReleaseString(old);
}

// Sets a text word: the new text is stored before the old one is given back.
int SiteDOMUtil::StoreProperty(std::int32_t& word, std::string_view text) {
  const int added = pathStrings->AddString(text);
  if (added < 0) return -1;
  const std::int32_t old = word;
  word = added;
  return old < 0 ? 0 : pathStrings->ReleaseString(old);
}

int SiteDOMUtil::StoreAnchors() {
  std::vector<std::int32_t> names;
  names.reserve(memo_->rows.anchors.size());
  for (const std::string_view anchor : memo_->rows.anchors) {
    if (registrar_.IsHidden(anchor)) continue;
    const int added = pathStrings->AddString(anchor);
    if (added < 0) return -1;
    names.push_back(added);
  }
  return pathTable->SetList(pageRecord, names);
}

int SiteDOMUtil::AddRows(std::size_t begin, std::size_t end) {
  const std::vector<LinkRow>& rows = memo_->rows.links;
  RowsAhead ahead(rows, end, linkTexts_, memo_->targets);
  Outcome last = Outcome::kDone;
  for (std::size_t i = begin; i < end; ++i) {
    const FoundString& guess = ahead.GuessFor(i);
    if (rows[i].ofSameElement && last != Outcome::kDone && !rules_.goesOnAfterFailure) continue;
    last = AddRow(rows[i], guess);
    if (last == Outcome::kFailed) return -1;
  }
  return 0;
}

// From here on targets are resolved from this base. Few pages have more than one.
void SiteDOMUtil::UseBase(std::int32_t base) {
  TargetResolver& resolver = memo_->resolver;
  resolver.BeginPage(siteRoot_, pagePath);
  memo_->rows.parts.ForEachBase(base, [&](const std::string& href) { resolver.SetBase(href); });
  memo_->targets.SetBase(resolver.baseText(), siteRoot_, linkTable);
  self_ = UrlID();
  base_ = base;
}

// Registers the target of one reference and adds the link. For most references of a site, a page
// with the same base has had the same text before. Such a reference costs one look-up in addition
// to that of its text. `guess` is what a search for the target among the texts of the link table
// will most likely find.
Outcome SiteDOMUtil::AddRow(const LinkRow& row, const FoundString& guess) {
  if (row.base != base_) UseBase(row.base);
  if (row.isPrefix) registrar_.Note(kMindsFolders);
  if (registrar_.IsHidden(row.target) || (row.isPrefix && LeadsToFolder(row.target))) {
    return Outcome::kSkipped;
  }
  FoundString text;
  if (linkTexts_ != nullptr) text = linkTexts_->Search(row.target, guess);
  const bool takesName = TakesDefaultName(row);
  const UrlID* const known = text.id < 0 ? nullptr : memo_->targets.FindText(text.id, takesName);
  UrlID target;
  Outcome outcome;
  if (known != nullptr) {
    target = *known;
    outcome = AddLink(row, target, text);
  } else {
    outcome = AddNewTarget(row, takesName, text, target);
  }
  if (outcome == Outcome::kDone && row.type == LT_APPLET && target.kind == kKindPath) {
    outcome = AddCodeBase(row, target);
  }
  return outcome == Outcome::kFailed && rules_.goesOnAfterFailure ? Outcome::kSkipped : outcome;
}

// Of a prefix nothing is shown: a folder that is there will do, with a document or without.
bool SiteDOMUtil::LeadsToFolder(std::string_view target) {
  std::string& path = memo_->path;
  platform::FileStat stat;
  return memo_->resolver.Resolve(target, path) == TargetKind::kLocal &&
         platform::Stat(path, stat) == 0 && stat.isFolder();
}

// Adds a link whose text no page of the same base had before. Sets `target`.
Outcome SiteDOMUtil::AddNewTarget(const LinkRow& row, bool takesName, FoundString& text,
                                  UrlID& target) {
  const MemoKey key = MemoKeyOf(row.target);
  Outcome outcome = FindTarget(row, key, takesName, target);
  if (outcome == Outcome::kDone) outcome = AddLink(row, target, text);
  if (outcome == Outcome::kDone && !key.text.empty()) {
    memo_->targets.PutText(text.id, takesName, target);
  }
  return outcome;
}

// `text` is the result of a search for the row's target among the texts of the link table.
Outcome SiteDOMUtil::AddLink(const LinkRow& row, const UrlID& target, FoundString& text) {
  const UrlID page(kKindPath, pageId);
  std::uint32_t type = row.type;
  if (type == LT_ANCHOR && target == page && HasFragment(row.target)) type = LT_SELF_ANCHOR;
  const int code = static_cast<int>(type);
  const int offset = rules_.storesOffsets ? registrar_.OffsetInFile(row.offset) : -1;
  const std::string_view alternative =
      registrar_.IsHidden(row.alternative) ? std::string_view() : row.alternative;
  const int link = linkTable != nullptr
                       ? linkTable->Add(row.target, text, page, target, alternative, code, offset)
                       : -1;
  if (link >= 0) {
    if (places_ != nullptr && row.type != LT_APPLET_FILE) {
      registrar_.NotePlace(*places_, link, target, row.offset, offset);
    }
    return Outcome::kDone;
  }
  return target.kind == kKindUrl ? Outcome::kFailed : Outcome::kSkipped;
}

// Links to every entry of the folder that the applet's file lies in. An entry that cannot be
// registered is skipped.
Outcome SiteDOMUtil::AddCodeBase(const LinkRow& applet, const UrlID& target) {
  registrar_.Note(kListsFolders);
  std::string folder;
  if (pathTable->Name(target.id, folder) < 0) return Outcome::kDone;
  folder.resize(FolderOf(folder).size());
  if (folder.empty()) return Outcome::kDone;
  std::vector<std::string> names;
  platform::FindData found;
  const platform::FindHandle search = platform::FindFirst(folder + "*.*", found);
  for (bool more = search != nullptr; more; more = platform::FindNext(search, found)) {
    if (found.name != "." && found.name != "..") names.push_back(found.name);
  }
  platform::FindClose(search);
  for (const std::string& name : names) AddCodeBaseFile(applet, folder + name);
  return Outcome::kDone;
}

Outcome SiteDOMUtil::AddCodeBaseFile(const LinkRow& applet, const std::string& path) {
  platform::FileStat stat;
  const bool isFile = platform::Stat(path, stat) == 0 && stat.isRegular();
  if (!isFile && !rules_.linksFoldersOfCodeBase) return Outcome::kSkipped;
  UrlID target;
  if (registrar_.AddFile(path, siteFolder_, TargetRegistrar::From::kPage, target) !=
      Outcome::kDone) {
    return Outcome::kSkipped;
  }
  LinkRow row;
  row.type = LT_APPLET_FILE;
  row.offset = applet.offset;
  row.target = NameInFolder(path);
  FoundString text;
  if (linkTexts_ != nullptr) text = linkTexts_->Search(row.target);
  return AddLink(row, target, text);
}

bool SiteDOMUtil::TakesDefaultName(const LinkRow& row) const {
  if (rules_.findsFolderDocuments) return false;
  const std::string* const name = manager->GetDefaultUrl();
  // External targets take it too, refreshes and applets do not, on purpose.
  return name != nullptr && !name->empty() && row.type != LT_META_REFRESH &&
         row.type != LT_APPLET && EndsAsFolder(row.target);
}

// The entry of a target; from the memo if the target was met before.
Outcome SiteDOMUtil::FindTarget(const LinkRow& row, const MemoKey& key, bool takesName,
                                UrlID& target) {
  if (rules_.resolvesAsBrowser && row.target.empty()) return Outcome::kSkipped;
  if (key.isOfPage && self_.id >= 0) {
    target = self_;
    return Outcome::kDone;
  }
  const UrlID* known = key.text.empty() ? nullptr : memo_->targets.Find(key.text, takesName);
  if (!key.isWhole && (known == nullptr || known->kind == kKindUrl)) {
    known = memo_->targets.Find(row.target, takesName);
  }
  if (known != nullptr) {
    target = *known;
    return target.id >= 0 ? Outcome::kDone : Outcome::kSkipped;
  }
  const Outcome outcome =
      takesName ? RegisterTarget(std::string(row.target) + *manager->GetDefaultUrl(), target)
                : RegisterTarget(row.target, target);
  if (outcome != Outcome::kDone) return outcome;
  if (key.isOfPage && target.kind == kKindPath) self_ = target;
  if (!key.text.empty()) {
    const std::string_view text = target.kind == kKindUrl ? row.target : key.text;
    memo_->targets.Put(text, takesName, target);
  }
  return outcome;
}

Outcome SiteDOMUtil::RegisterTarget(std::string_view target, UrlID& place) {
  std::string& path = memo_->path;
  switch (memo_->resolver.Resolve(target, path)) {
    case TargetKind::kExternal:
      if (registrar_.IsHidden(path)) return Outcome::kSkipped;
      return registrar_.AddUrl(path, place);
    case TargetKind::kUnservable:
      return registrar_.AddFile(path, siteFolder_, TargetRegistrar::From::kPage, place);
    case TargetKind::kLocal:
      if (path.empty() || registrar_.IsHidden(path)) return Outcome::kSkipped;
      return RegisterFile(target, path, place);
    default:
      return Outcome::kSkipped;
  }
}

Outcome SiteDOMUtil::RegisterFile(std::string_view target, std::string& path, UrlID& place) {
  ServedFiles& served = *memo_->served;
  place = UrlID(kKindPath, pathTable->Find(path));
  if (!served.mayPassFiles() && registrar_.IsKnownFile(place.id)) return Outcome::kDone;
  if (rules_.findsFolderDocuments && served.Serve(target, path) == TargetKind::kExternal) {
    return registrar_.AddUrl(path, place);
  }
  return registrar_.AddFile(path, siteFolder_, TargetRegistrar::From::kPage, place);
}

}  // namespace zvrsit
