#include "storage/record_words.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

#include "storage/records.h"
#include "util/server_fields.h"

namespace zvrsit {
namespace {

using Is = WordKind;

// Says where the words of a class lie: one after the other, behind the number of the record. With
// the four bytes at the end of a slot they are all that the slot has.
template <class Rec, std::size_t kCount>
consteval std::array<RecordWord, kCount> Placed(std::array<RecordWord, kCount> words) {
  int at = 4;
  for (RecordWord& word : words) {
    word.at = at;
    at += word.kind == Is::kEnd ? 8 : 4;
  }
  if (at + 4 != Rec::kSlotLength) throw "a word is missing, or is not of this class";
  return words;
}

constexpr auto kNodeWords = Placed<SiteNodeRec>(std::to_array<RecordWord>({{"name", Is::kName}}));
constexpr auto kUrlWords = Placed<SiteUrlRec>(std::to_array<RecordWord>(
    {{"name", Is::kName}, {"state", Is::kNumber}, {"lastChecked", Is::kNumber}}));
constexpr auto kRelWords =
    Placed<SiteRelRec>(std::to_array<RecordWord>({{"from", Is::kEnd}, {"to", Is::kEnd}}));
constexpr auto kLinkWords =
    Placed<SiteLinkRec>(std::to_array<RecordWord>({{"from", Is::kEnd},
                                                   {"to", Is::kEnd},
                                                   {"text", Is::kName},
                                                   {"type", Is::kUnsigned},
                                                   {"count", Is::kNumber},
                                                   {"alternative", Is::kText},
                                                   {"offset", Is::kNumber}}));
constexpr auto kPathWords =
    Placed<SitePathRec>(std::to_array<RecordWord>({{"name", Is::kName},
                                                   {"fileType", Is::kUnsigned},
                                                   {"title", Is::kText},
                                                   {"exists", Is::kNumber},
                                                   {"size", Is::kUnsigned},
                                                   {"creationTime", Is::kNumber},
                                                   {"modificationTime", Is::kNumber},
                                                   {"accessTime", Is::kNumber},
                                                   {"membership", Is::kUnsigned},
                                                   {"anchorCount", Is::kCount},
                                                   {"anchors", Is::kList},
                                                   {"lastModified", Is::kText},
                                                   {"expires", Is::kText},
                                                   {"generator", Is::kText},
                                                   {"keywords", Is::kText},
                                                   {"description", Is::kText},
                                                   {"contentType", Is::kText},
                                                   {"metaText", Is::kText},
                                                   {"unread", Is::kNumber}}));
// The folders in the order of util/site_slots.h.
constexpr auto kSiteWords = Placed<SiteSiteRec>(
    std::to_array<RecordWord>({{"name", Is::kName},       {"rebuildState", Is::kNumber},
                               {"topFile", Is::kText},    {"useDocRoot", Is::kNumber},
                               {"defaultUrl", Is::kText}, {"linkRules", Is::kUnsigned},
                               {"server", Is::kText},     {"documentRoot", Is::kText},
                               {"siteFolder", Is::kText}, {"folder2", Is::kText},
                               {"moreParts", Is::kText},  {"folder4", Is::kText},
                               {"folder5", Is::kText},    {"fallbackExtensions", Is::kText},
                               {"pageParts", Is::kText},  {"pageTypes", Is::kText},
                               {"liveUrl", Is::kText},    {"urlFile", Is::kName},
                               {"pathFile", Is::kName},   {"linkFile", Is::kName},
                               {"folderFile", Is::kName}, {"relFile", Is::kName}}));

// The names of the fields that ForEachServerField tells, in its order.
consteval auto ServerWords() {
  constexpr const char* kNames[] = {
      "host",         "user",          "password",         "dir",         "firewall",
      "firewallHost", "firewallUser",  "firewallPassword", "fxferType",   "initDirMode",
      "lockDir",      "initRemoteDir", "mruDirRemote",     "mruDirLocal", "asciiSuffix"};
  std::array<RecordWord, 1 + std::size(kNames)> words{{{"name", Is::kName}}};
  std::size_t count = 0;
  ForEachServerField<SiteServRec>([&](ServerField field, std::int32_t SiteServRec::*) {
    const Is kind = field == ServerField::kText       ? Is::kText
                    : field == ServerField::kPassword ? Is::kSecret
                                                      : Is::kNumber;
    words[count + 1] = {kNames[count], kind};
    ++count;
  });
  return words;
}
constexpr auto kServWords = Placed<SiteServRec>(ServerWords());

struct RecordClass {
  int recordType;
  std::span<const RecordWord> words;
};
constexpr RecordClass kClasses[] = {
    {SiteNodeRec::kRecordType, kNodeWords}, {SiteUrlRec::kRecordType, kUrlWords},
    {SiteRelRec::kRecordType, kRelWords},   {SiteLinkRec::kRecordType, kLinkWords},
    {SitePathRec::kRecordType, kPathWords}, {SiteSiteRec::kRecordType, kSiteWords},
    {SiteServRec::kRecordType, kServWords}};

}  // namespace

std::span<const RecordWord> WordsOf(int recordType) {
  const auto found = std::ranges::find(kClasses, recordType, &RecordClass::recordType);
  return found == std::end(kClasses) ? std::span<const RecordWord>() : found->words;
}

}  // namespace zvrsit
