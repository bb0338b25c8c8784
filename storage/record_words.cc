#include "storage/record_words.h"

#include "storage/records.h"

namespace zvrsit {
namespace {

using Is = WordKind;

constexpr RecordWord kNodeWords[] = {{"name", 4, Is::kName}};
constexpr RecordWord kUrlWords[] = {
    {"name", 4, Is::kName}, {"state", 8, Is::kNumber}, {"lastChecked", 12, Is::kNumber}};
constexpr RecordWord kRelWords[] = {{"from", SiteRelRec::kFromAt, Is::kEnd},
                                    {"to", SiteRelRec::kToAt, Is::kEnd}};
constexpr RecordWord kLinkWords[] = {{"from", SiteRelRec::kFromAt, Is::kEnd},
                                     {"to", SiteRelRec::kToAt, Is::kEnd},
                                     {"text", SiteLinkRec::kTextAt, Is::kName},
                                     {"type", SiteLinkRec::kTypeAt, Is::kUnsigned},
                                     {"count", SiteLinkRec::kCountAt, Is::kNumber},
                                     {"alternative", SiteLinkRec::kAlternativeAt, Is::kText},
                                     {"offset", 36, Is::kNumber}};
constexpr RecordWord kPathWords[] = {{"name", 4, Is::kName},
                                     {"fileType", 8, Is::kUnsigned},
                                     {"title", 12, Is::kText},
                                     {"exists", 16, Is::kNumber},
                                     {"size", 20, Is::kUnsigned},
                                     {"creationTime", 24, Is::kNumber},
                                     {"modificationTime", 28, Is::kNumber},
                                     {"accessTime", 32, Is::kNumber},
                                     {"membership", 36, Is::kUnsigned},
                                     {"anchorCount", 40, Is::kCount},
                                     {"anchors", 44, Is::kList},
                                     {"lastModified", 48, Is::kText},
                                     {"expires", 52, Is::kText},
                                     {"generator", 56, Is::kText},
                                     {"keywords", 60, Is::kText},
                                     {"description", 64, Is::kText},
                                     {"contentType", 68, Is::kText},
                                     {"metaText", 72, Is::kText},
                                     {"unread", 76, Is::kNumber}};
constexpr RecordWord kSiteWords[] = {
    {"name", 4, Is::kName},        {"rebuildState", 8, Is::kNumber},
    {"topFile", 12, Is::kText},    {"useDocRoot", 16, Is::kNumber},
    {"defaultUrl", 20, Is::kText}, {"linkRules", 24, Is::kUnsigned},
    {"server", 28, Is::kText},     {"documentRoot", 32, Is::kText},
    {"siteFolder", 36, Is::kText}, {"folder2", 40, Is::kText},
    {"moreParts", 44, Is::kText},  {"folder4", 48, Is::kText},
    {"folder5", 52, Is::kText},    {"folder6", 56, Is::kText},
    {"pageParts", 60, Is::kText},  {"pageTypes", 64, Is::kText},
    {"liveUrl", 68, Is::kText},    {"urlFile", 72, Is::kName},
    {"pathFile", 76, Is::kName},   {"linkFile", 80, Is::kName},
    {"folderFile", 84, Is::kName}, {"relFile", 88, Is::kName}};
constexpr RecordWord kServWords[] = {{"name", 4, Is::kName},
                                     {"host", 8, Is::kText},
                                     {"user", 12, Is::kText},
                                     {"password", 16, Is::kSecret},
                                     {"dir", 20, Is::kText},
                                     {"firewall", 24, Is::kNumber},
                                     {"firewallHost", 28, Is::kText},
                                     {"firewallUser", 32, Is::kText},
                                     {"firewallPassword", 36, Is::kSecret},
                                     {"fxferType", 40, Is::kNumber},
                                     {"initDirMode", 44, Is::kNumber},
                                     {"lockDir", 48, Is::kNumber},
                                     {"initRemoteDir", 52, Is::kText},
                                     {"mruDirRemote", 56, Is::kText},
                                     {"mruDirLocal", 60, Is::kText},
                                     {"asciiSuffix", 64, Is::kText}};

}  // namespace

std::span<const RecordWord> WordsOf(int recordType) {
  switch (recordType) {
    case SiteNodeRec::kRecordType:
      return kNodeWords;
    case SiteUrlRec::kRecordType:
      return kUrlWords;
    case SiteRelRec::kRecordType:
      return kRelWords;
    case SiteLinkRec::kRecordType:
      return kLinkWords;
    case SitePathRec::kRecordType:
      return kPathWords;
    case SiteSiteRec::kRecordType:
      return kSiteWords;
    case SiteServRec::kRecordType:
      return kServWords;
    default:
      return {};
  }
}

}  // namespace zvrsit
