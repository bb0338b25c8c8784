// The operations that ask.
#include "legacy/sit_block_db.h"
#include "legacy/sit_mgr.h"
#include "legacy/sit_mgr_inside.h"
#include "legacy/sit_pair_db.h"
#include "util/mb_string.h"

namespace zvrsit {

namespace {

// The positions of the enumerations; meant to be one for all managers.
int sitePosition = 0;
int servPosition = 0;
int linkPosition = 0;
int pathPosition = 0;
int urlPosition = 0;
int folderPosition = 0;
int searchPosition = 0;

// Steps over deleted entries (15) to the next name; starts again after the last one (16).
template <class NameOf>
std::string* NextName(int reset, int& position, int& lastError, NameOf nameOf) {
  if (reset != 0) {
    position = 0;
    lastError = kSitOk;
    return nullptr;
  }
  for (;;) {
    std::string* name = nameOf(position);
    if (name == nullptr && lastError == kSitPastEnd) {
      position = 0;
      return nullptr;
    }
    ++position;
    if (name != nullptr || lastError != kSitNotFound) return name;
  }
}

bool HoldsWord(std::string text, const std::string& lowerWord) {
  ToLowerMB(text);
  return text.find(lowerWord) != std::string::npos;
}

}  // namespace

std::string* SitMgr::EnumSiteProf(int reset) {
  return NextName(reset, sitePosition, inside_->lastError,
                  [this](int i) { return SiteProfName(i); });
}

std::string* SitMgr::EnumServProf(int reset) {
  return NextName(reset, servPosition, inside_->lastError,
                  [this](int i) { return ServProfName(i); });
}

std::string* SitMgr::NextEntry(int reset, int kind, int& position) {
  return NextName(reset, position, inside_->lastError, [&](int i) { return UrlUrl({kind, i}); });
}

std::string* SitMgr::EnumPath(int reset) {
  return NextEntry(reset, kKindPath, pathPosition);
}

std::string* SitMgr::EnumUrl(int reset) {
  return NextEntry(reset, kKindUrl, urlPosition);
}

std::string* SitMgr::EnumFolder(int reset) {
  return NextName(reset, folderPosition, inside_->lastError,
                  [this](int i) { return FolderName(i); });
}

std::string* SitMgr::SearchKeyword(int reset, const std::string& word) {
  std::string lowerWord = word;
  ToLowerMB(lowerWord);
  return NextName(reset, searchPosition, inside_->lastError, [&](int i) -> std::string* {
    SitUrlRec record;
    if (GetUrlRec({kKindPath, i}, record) < 0) return nullptr;
    if (HoldsWord(record.title, lowerWord) || HoldsWord(record.keywords, lowerWord) ||
        HoldsWord(record.description, lowerWord)) {
      return new std::string(record.key);
    }
    return inside_->FailText(kSitNotFound);
  });
}

int SitMgr::GetUrlProperty(const std::string& url, SitUrlRec& property) {
  UrlID id;
  return UrlFind(url, id) < 0 ? -1 : GetUrlRec(id, property);
}

int SitMgr::EnumLink(int reset, std::string** from, std::string** to) {
  if (reset != 0) {
    linkPosition = 0;
    return inside_->Succeed();
  }
  if (from == nullptr || to == nullptr) return inside_->Fail(kSitBadArgument);
  UrlID source;
  UrlID target;
  while (LinkBothSides(linkPosition, source, target) < 0) {
    if (inside_->lastError == kSitPastEnd) {
      linkPosition = 0;
      return -1;
    }
    ++linkPosition;
    if (inside_->lastError != kSitNotFound) return -1;
  }
  ++linkPosition;
  *from = UrlUrl(source);
  if (*from == nullptr) return inside_->Fail(kSitNoStore);
  *to = UrlUrl(target);
  if (*to != nullptr) return inside_->Succeed();
  DeleteString(*from);
  *from = nullptr;
  return inside_->FailTarget();
}

std::string* SitMgr::NextLink(const std::string& url, LinkQuery query) {
  UrlID entry;
  if (UrlFind(url, entry) < 0) return nullptr;
  const int link = query == LinkQuery::kBack ? UrlBackLinks(entry) : UrlForeLinks(entry);
  if (link < 0) return nullptr;
  if (query == LinkQuery::kBroken) {
    const int status = GetLinkStatus(link);
    if (inside_->lastError != kSitOk) return nullptr;
    // Null for a link that is not broken does not end the enumeration; the last error, 0, tells.
    if ((status & kStatusBroken) == 0) return nullptr;
  }
  UrlID from;
  UrlID to;
  if (LinkBothSides(link, from, to) < 0) return nullptr;
  std::string* text = UrlUrl(query == LinkQuery::kBack ? from : to);
  if (text == nullptr)
    query == LinkQuery::kBack ? inside_->Fail(kSitNoStore) : inside_->FailTarget();
  return text;
}

std::string* SitMgr::GetForeLinks(const std::string& url) {
  return NextLink(url, LinkQuery::kFore);
}

std::string* SitMgr::GetBackLinks(const std::string& url) {
  return NextLink(url, LinkQuery::kBack);
}

std::string* SitMgr::GetBrokenLinks(const std::string& url) {
  return NextLink(url, LinkQuery::kBroken);
}

int SitMgr::FindLink(const std::string& from, const std::string& to) {
  UrlID source;
  UrlID target;
  if (UrlFind(from, source) < 0 || UrlFind(to, target) < 0) return -1;
  const std::vector<int> links = inside_->linkDB->Matching(source, target);
  return links.empty() ? inside_->Fail(kSitNotFound) : inside_->Succeed(links.front());
}

int SitMgr::GetLinkProperty(const std::string& from, const std::string& to,
                            SitLinkProperty& property) {
  const int link = FindLink(from, to);
  if (link < 0) return -1;
  const auto record = inside_->ReadLink(link);
  if (!record) return -1;
  property.type = record->linkType;
  property.count = record->refCount;
  property.asIsUrl = inside_->linkDB->GetString(record->asIsUrlId).value_or("");
  property.imgAlt = inside_->linkDB->GetString(record->imgAltId).value_or("");
  property.status = GetLinkStatus(link);
  return inside_->Succeed();
}

std::string* SitMgr::NextChild(const std::string& folder, int kind) {
  const UrlID parent(kKindFolder, FolderFind(folder));
  if (parent.id < 0) return nullptr;
  UrlID child;
  do {
    if (RelNextChild(parent, child) < 0) return nullptr;
  } while (child.kind != kind);
  return kind == kKindFolder ? FolderName(child.id) : UrlPath(child);
}

std::string* SitMgr::GetSubFolder(const std::string& folder) {
  return NextChild(folder, kKindFolder);
}

std::string* SitMgr::GetChild(const std::string& folder) {
  return NextChild(folder, kKindPath);
}

std::string* SitMgr::GetRel(const std::string& path) {
  if (!inside_->linkDB) return inside_->FailText(kSitNotOpen);
  UrlID child(kKindPath, inside_->urlDB->Find(path));
  if (child.id < 0) child = {kKindFolder, FolderFind(path)};
  UrlID parent;
  if (child.id < 0 || RelNextParent(child, parent) < 0) return nullptr;
  return FolderName(parent.id);
}

}  // namespace zvrsit
