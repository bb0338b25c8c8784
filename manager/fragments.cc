// Which fragments of links name nothing, and which names the pages have.
#include <algorithm>
#include <utility>

#include "links/fragment.h"
#include "links/page_file.h"
#include "links/text_places.h"
#include "links/url_text.h"
#include "manager/cells.h"
#include "manager/owned_document.h"
#include "manager/record_access.h"
#include "manager/work.h"

namespace zvrsit {

namespace {

// The IDs that are kept; `own` when none are kept.
PageIds& KeptOr(PageIds& own, const std::unique_ptr<PageIds>& kept) {
  return kept != nullptr ? *kept : own;
}

// The document of a page, good for as long as `page` is; null when it cannot be read.
OwnedDocument ReadInto(PageFile& page, const std::string& path, DocumentScope scope,
                       LinkRules rules, DOM* dom) {
  OwnedDocument document(dom->createDocument("HTML"), GiveBack{dom});
  if (document != nullptr && !page.Read(path, FlagsOf(rules), *document, scope)) document.reset();
  return document;
}

// The IDs of a page, without those that no fragment leads to.
std::vector<ElementAttribute> NamingIds(const Document& document) {
  std::vector<ElementAttribute> ids = document.attributesNamed(Attr::kId);
  std::erase_if(ids, [](const ElementAttribute& named) { return named.element.inShadow(); });
  return ids;
}

}  // namespace

void SiteMgr::KeepPageIds(bool keep) {
  inside->pageIds = keep ? std::make_unique<PageIds>() : nullptr;
}

void SiteMgr::Work::NoteIds(const std::string& path, const Document* document) {
  PageIds* const ids = m_.inside->pageIds.get();
  const int number = ids != nullptr ? m_.pathDB->Find(path) : -1;
  if (number < 0) return;
  if (document == nullptr) {
    ids->Forget(number);
  } else if (m_.inside->operationMemo->page.holdsServerCode()) {
    ids->NoteAny(number);
  } else {
    ids->Note(number, *document);
  }
}

bool SiteMgr::Work::ReadIds(int pathNumber, PageIds& ids) {
  if (ids.IsKnown(pathNumber)) return true;
  SitePathRec rec;
  if (m_.pathDB->Get(pathNumber, rec) < 0 || rec.exists == 0) return false;
  const std::string path(m_.pathDB->TextView(rec.name));
  if (rec.fileType == FT_CSS || !HoldsLinks(path, rec, m_.inside->types())) return false;
  PageFile page;
  const OwnedDocument document =
      ReadInto(page, path, DocumentScope::kReferencesAndIds, m_.GetLinkRules(), m_.dom);
  if (document == nullptr) return false;
  if (page.holdsServerCode()) {
    ids.NoteAny(pathNumber);
  } else {
    ids.Note(pathNumber, *document);
  }
  return true;
}

int SiteMgr::FindMissingFragments(std::vector<MissingFragment>& missing) {
  missing.clear();
  if (!HasFiles(linkDB) || !HasFiles(pathDB) || dom == nullptr) return -1;
  PageIds own;
  PageIds& ids = KeptOr(own, inside->pageIds);
  Work work(*this);
  std::string buffer;
  ForEachNumber(*linkDB, [&](int number) {
    SiteLinkRec link;
    if (linkDB->Get(number, link) < 0 || link.to.kind != kKindPath) return;
    const std::string_view fragment = FragmentOf(linkDB->TextView(link.text), buffer);
    if (!NamesAnElement(fragment) || !work.ReadIds(link.to.id, ids)) return;
    if (ids.Has(link.to.id, fragment)) return;
    std::string decoded;
    const bool isText = AppendPercentDecoded(fragment, decoded);
    if (!isText || !ids.Has(link.to.id, decoded)) missing.push_back({number, std::move(decoded)});
  });
  return 0;
}

int SiteMgr::FindRepeatedIds(std::vector<RepeatedId>& repeated) {
  repeated.clear();
  if (!HasFiles(pathDB) || dom == nullptr) return -1;
  PageIds own;
  PageIds& ids = KeptOr(own, inside->pageIds);
  Work work(*this);
  ForEachNumber(*pathDB, [&](int number) {
    const auto* const found = work.ReadIds(number, ids) ? ids.FindRepeated(number) : nullptr;
    if (found == nullptr) return;
    for (const PageIds::Repeated& one : *found) repeated.push_back({number, one.id, one.places});
  });
  return 0;
}

int SiteMgr::ListPageIds(const std::string& path, std::vector<PageId>& ids) {
  ids.clear();
  if (dom == nullptr) return -1;
  PageFile page;
  const OwnedDocument document = ReadInto(page, path, DocumentScope::kWhole, GetLinkRules(), dom);
  if (document == nullptr) return -1;
  std::vector<std::pair<std::uint32_t, PageId>> found;
  const auto add = [&](const Attribute& attribute, bool isName) {
    found.push_back({attribute.valueOffset(), {attribute.value(), isName, {}}});
  };
  for (const ElementAttribute& named : NamingIds(*document)) add(named.attribute, false);
  for (const std::uint32_t index : document->elementsOf(Tag::kA)) {
    const Attribute name = document->element(index).attributes().find(Attr::kName);
    if (name) add(name, true);
  }
  std::sort(found.begin(), found.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  TextPlaces places(document->text());
  for (auto& [offset, id] : found) {
    id.place = places.Of(offset);
    ids.push_back(std::move(id));
  }
  return 0;
}

}  // namespace zvrsit
