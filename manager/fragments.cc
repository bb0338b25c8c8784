// Which fragments of links name nothing, and which names the pages have.
#include <algorithm>
#include <cstdint>
#include <utility>

#include "links/fragment.h"
#include "links/link_type.h"
#include "links/page_file.h"
#include "links/text_places.h"
#include "links/url_text.h"
#include "manager/cells.h"
#include "manager/owned_document.h"
#include "manager/record_access.h"
#include "manager/work.h"
#include "storage/id_table.h"

namespace zvrsit {

namespace {

// What the fragments of links name, by the number of the link's text: many links have one text.
class Fragments {
 public:
  explicit Fragments(const SiteLinkDB& links) : links_(links) {}

  // The hash of the fragment that an element is to be found by; 0 for none.
  std::uint64_t HashIn(std::int32_t text) {
    const auto at = static_cast<std::size_t>(text);
    if (text < 0) return 0;
    if (at >= hashes_.size()) hashes_.Grow(at + 1);
    std::uint64_t& hash = hashes_.slot(at);
    if (hash == kUnknown) {
      const std::string_view fragment = Of(text);
      hash = NamesAnElement(fragment) ? PageIds::HashOf(fragment) : kNone;
    }
    return hash == kNone ? 0 : hash;
  }
  // Good until the next call.
  std::string_view Of(std::int32_t text) { return FragmentOf(links_.TextView(text), buffer_); }

 private:
  static constexpr std::uint64_t kUnknown = 0;
  static constexpr std::uint64_t kNone = 1;

  const SiteLinkDB& links_;
  IdTable<std::uint64_t> hashes_;
  std::string buffer_;
};

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
  if (keep == (inside->kept != nullptr)) return;
  inside->kept = keep ? std::make_unique<Inside::Kept>() : nullptr;
}

void SiteMgr::Work::NoteIds(const std::string& path, const Document* document) {
  if (m_.inside->kept == nullptr) return;
  PageIds& ids = m_.inside->kept->ids;
  const int number = m_.pathDB->Find(path);
  if (number < 0) return;
  if (document == nullptr) {
    ids.Forget(number);
  } else if (m_.inside->operationMemo->page.holdsServerCode()) {
    ids.NoteAny(number);
  } else {
    ids.Note(number, *document);
  }
}

bool SiteMgr::Work::ReadIds(int pathNumber, PageIds& ids) {
  if (ids.IsKnown(pathNumber)) return true;
  SitePathRec rec;
  if (m_.pathDB->Get(pathNumber, rec) < 0 || rec.exists == 0) return false;
  const std::string path(m_.pathDB->TextView(rec.name));
  if (rec.fileType == FT_CSS || !HoldsLinks(path, rec, m_.inside->types()) ||
      IsSiteData(PageSyntaxOf(path))) {
    return false;
  }
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
  std::vector<int> links;
  if (HasFiles(linkDB)) ForEachNumber(*linkDB, [&](int number) { links.push_back(number); });
  return FindMissingFragments(links, missing);
}

int SiteMgr::FindMissingFragments(const std::vector<int>& links,
                                  std::vector<MissingFragment>& missing) {
  missing.clear();
  if (!HasFiles(linkDB) || !HasFiles(pathDB) || dom == nullptr) return -1;
  PageIds own;
  PageIds& ids = inside->kept != nullptr ? inside->kept->ids : own;
  Work work(*this);
  Fragments fragments(*linkDB);
  for (const int number : links) {
    SiteLinkRec link;
    // In linked data a fragment makes a name, which need not stand in the page.
    if (linkDB->Get(number, link) < 0 || link.to.kind != kKindPath ||
        link.type == static_cast<int>(LT_LINKED_DATA)) {
      continue;
    }
    const std::uint64_t hash = fragments.HashIn(link.text);
    if (hash == 0 || !work.ReadIds(link.to.id, ids) || ids.Has(link.to.id, hash)) continue;
    std::string decoded;
    const bool isText = AppendPercentDecoded(fragments.Of(link.text), decoded);
    if (!isText || !ids.Has(link.to.id, PageIds::HashOf(decoded))) {
      missing.push_back({number, std::move(decoded)});
    }
  }
  work.DropReplacedFragments(missing);
  return 0;
}

int SiteMgr::FindRepeatedIds(std::vector<RepeatedId>& repeated) {
  std::vector<int> files;
  if (HasFiles(pathDB)) ForEachNumber(*pathDB, [&](int number) { files.push_back(number); });
  return FindRepeatedIds(files, repeated);
}

int SiteMgr::FindRepeatedIds(const std::vector<int>& files, std::vector<RepeatedId>& repeated) {
  repeated.clear();
  if (!HasFiles(pathDB) || dom == nullptr) return -1;
  PageIds own;
  PageIds& ids = inside->kept != nullptr ? inside->kept->ids : own;
  Work work(*this);
  for (const int number : files) {
    const auto* const found = work.ReadIds(number, ids) ? ids.FindRepeated(number) : nullptr;
    if (found == nullptr) continue;
    for (const PageIds::Repeated& one : *found) repeated.push_back({number, one.id, one.places});
  }
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
