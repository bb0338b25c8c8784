#include "exports/site_rows.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "exports/words.h"
#include "findings/escapes.h"
#include "findings/owned_cells.h"
#include "findings/url_check.h"
#include "manager/site_mgr.h"
#include "platform/version.h"

namespace zvrsit {
namespace {

using Column = ExportColumn;
constexpr auto kId = Column::Kind::kId;
constexpr auto kNumber = Column::Kind::kNumber;
constexpr auto kText = Column::Kind::kText;

constexpr Column kMetaColumns[] = {{"key", kText}, {"value", kText}};
constexpr Column kFolderColumns[] = {
    {"id", kId}, {"path", kText}, {"parent", kNumber, true, "folders"}};
constexpr Column kFileColumns[] = {
    {"id", kId},          {"path", kText, true}, {"folder", kNumber, true, "folders"},
    {"type", kText},      {"title", kText},      {"description", kText},
    {"keywords", kText},  {"present", kNumber},  {"family", kNumber},
    {"size", kNumber},    {"modified", kNumber}, {"created", kNumber},
    {"accessed", kNumber}};
constexpr Column kUrlColumns[] = {{"id", kId}, {"url", kText, true}};
constexpr Column kLinkColumns[] = {{"id", kId},
                                   {"source", kNumber, true, "files"},
                                   {"file", kNumber, true, "files"},
                                   {"url", kNumber, true, "urls"},
                                   {"state", kText},
                                   {"type", kText},
                                   {"reference", kText},
                                   {"alternative", kText},
                                   {"count", kNumber},
                                   {"offset", kNumber},
                                   {"line", kNumber},
                                   {"column", kNumber}};
constexpr Column kFindingColumns[] = {{"id", kId},       {"rule", kText},    {"severity", kText},
                                      {"target", kText}, {"message", kText}, {"suggestion", kText}};
constexpr Column kPlaceColumns[] = {{"finding", kNumber, true, "findings"},
                                    {"file", kText, true},
                                    {"line", kNumber},
                                    {"column", kNumber},
                                    {"reference", kText}};

constexpr ExportTable kMeta{"meta", kMetaColumns};
constexpr ExportTable kFolders{"folders", kFolderColumns};
constexpr ExportTable kFiles{"files", kFileColumns};
constexpr ExportTable kUrls{"urls", kUrlColumns};
constexpr ExportTable kLinks{"links", kLinkColumns};
constexpr ExportTable kFindings{"findings", kFindingColumns};
constexpr ExportTable kPlaces{"places", kPlaceColumns};

ExportValue Number(std::int64_t number) {
  return number;
}
// Nothing for an empty text.
ExportValue Text(std::string_view text) {
  return text.empty() ? ExportValue() : ExportValue(JsonText(text));
}

const DumpedWord& FieldOf(const DumpedRecord& record, std::string_view name) {
  static const DumpedWord kNone;
  const auto found = std::ranges::find(
      record.words, name, [](const DumpedWord& word) { return std::string_view(word.name); });
  return found == record.words.end() ? kNone : *found;
}
std::int64_t NumberOf(const DumpedRecord& record, std::string_view name) {
  return FieldOf(record, name).number;
}
std::string TextOf(const DumpedRecord& record, std::string_view name) {
  const DumpedWord& word = FieldOf(record, name);
  return word.texts.empty() ? std::string() : word.texts.front();
}

class SiteExport {
 public:
  SiteExport(SiteMgr& manager, const ExportedSite& site, ExportRows& rows)
      : manager_(manager), site_(site), rows_(rows) {}

  int Write(const FindingReport* report) {
    WriteMeta();
    if (ReadFamily() < 0 || ReadRelations() < 0 || WriteFolders() < 0 || WriteFiles() < 0 ||
        WriteUrls() < 0 || WriteLinks() < 0) {
      return -1;
    }
    if (report != nullptr) WriteFindings(*report);
    return 0;
  }

 private:
  void WriteMeta() {
    rows_.Begin(kMeta);
    const auto add = [this](const char* key, const std::string& value) {
      rows_.Add({ExportValue(key), ExportValue(JsonText(value))});
    };
    add("version", std::to_string(kExportVersion));
    add("program", std::string("zvrsit ") + Version());
    add("site", site_.name);
    add("folder", site_.folder);
  }

  // Calls each(record) for the records of a table; 0, or -1 when they cannot all be read.
  template <class Each>
  int ForEachRecord(TableKind table, Each each) {
    std::vector<TableFault> stopped;
    const auto call = [](const DumpedRecord& record, void* context) {
      (*static_cast<Each*>(context))(record);
    };
    const int result = manager_.DumpTable(table, site_.name, false, call, &each, stopped);
    return result == 0 && stopped.empty() ? 0 : -1;
  }

  int ReadFamily() {
    if (manager_.UpdateLinkFamily() < 0) return -1;
    const OwnedCells members(manager_.GetFtpMember());
    if (members == nullptr) return -1;
    for (const SiteRecCell& member : *members) family_.insert(member.GetID().id);
    return 0;
  }
  int ReadRelations() {
    return ForEachRecord(TableKind::kRelations, [this](const DumpedRecord& record) {
      const UrlID child = FieldOf(record, "to").end;
      const int parent = FieldOf(record, "from").end.id;
      (child.kind == kKindFolder ? parents_ : folders_).emplace(child.id, parent);
    });
  }
  static ExportValue Known(const std::unordered_map<int, int>& numbers, int number) {
    const auto found = numbers.find(number);
    return found == numbers.end() ? ExportValue() : Number(found->second);
  }

  int WriteFolders() {
    rows_.Begin(kFolders);
    return ForEachRecord(TableKind::kFolders, [this](const DumpedRecord& record) {
      const std::string name = site_.nameOf(TextOf(record, "name"));
      rows_.Add({Number(record.number), ExportValue(JsonText(name == site_.folder ? "." : name)),
                 Known(parents_, record.number)});
    });
  }

  int WriteFiles() {
    rows_.Begin(kFiles);
    return ForEachRecord(TableKind::kFiles, [this](const DumpedRecord& record) {
      // A file that was never seen on disk has neither size nor times.
      const bool wasSeen = NumberOf(record, "modificationTime") != 0;
      const auto seen = [&](const char* word) {
        return wasSeen ? Number(NumberOf(record, word)) : ExportValue();
      };
      const auto type = static_cast<std::uint32_t>(NumberOf(record, "fileType"));
      rows_.Add({Number(record.number), Text(site_.nameOf(TextOf(record, "name"))),
                 Known(folders_, record.number), ExportValue(WordOfFileType(type)),
                 Text(TextOf(record, "title")), Text(TextOf(record, "description")),
                 Text(TextOf(record, "keywords")), Number(NumberOf(record, "exists")),
                 Number(family_.contains(record.number) ? 1 : 0), seen("size"),
                 seen("modificationTime"), seen("creationTime"), seen("accessTime")});
    });
  }

  int WriteUrls() {
    rows_.Begin(kUrls);
    return ForEachRecord(TableKind::kUrls, [this](const DumpedRecord& record) {
      rows_.Add({Number(record.number), Text(WithoutCredentials(TextOf(record, "name")))});
    });
  }

  // The places are looked up for many links at a time: each time their pages are read.
  int WriteLinks() {
    constexpr std::size_t kAtOnce = 1 << 17;
    const std::unique_ptr<std::vector<int>> numbers(manager_.EnumLink());
    if (numbers == nullptr) return -1;
    rows_.Begin(kLinks);
    for (std::size_t from = 0; from < numbers->size(); from += kAtOnce) {
      const std::size_t count = std::min(kAtOnce, numbers->size() - from);
      const auto first = numbers->begin() + static_cast<std::ptrdiff_t>(from);
      const std::vector<int> part(first, first + static_cast<std::ptrdiff_t>(count));
      std::vector<std::vector<LinkPlace>> places;
      if (manager_.FindLinkPlaces(part, places) < 0) return -1;
      for (std::size_t i = 0; i < part.size(); ++i) {
        SiteLink link;
        if (manager_.GetLink(part[i], link) == 0) WriteLink(part[i], link, places[i]);
      }
    }
    return 0;
  }

  void WriteLink(int number, const SiteLink& link, const std::vector<LinkPlace>& places) {
    const bool isUrl = link.to.kind == kKindUrl;
    const char* const state = link.outside ? "outside" : link.exists ? "there" : "missing";
    const auto place = [&](int LinkPlace::*word) {
      return places.empty() ? ExportValue() : Number(places.front().*word);
    };
    rows_.Add({Number(number), Number(link.from.id), isUrl ? ExportValue() : Number(link.to.id),
               isUrl ? Number(link.to.id) : ExportValue(),
               isUrl ? ExportValue() : ExportValue(state), ExportValue(WordOfLinkType(link.type)),
               Text(WithoutCredentials(link.text)), Text(link.alt), Number(link.count),
               link.offset < 0 ? ExportValue() : Number(link.offset), place(&LinkPlace::line),
               place(&LinkPlace::column)});
  }

  void WriteFindings(const FindingReport& report) {
    rows_.Begin(kFindings);
    std::int64_t id = 0;
    for (const Finding& finding : report.findings) {
      rows_.Add({Number(id++), ExportValue(std::string(TraitsOf(finding.rule).name)),
                 ExportValue(std::string(SeverityName(finding.severity))), Text(finding.target),
                 Text(finding.message), Text(finding.suggestion)});
    }
    rows_.Begin(kPlaces);
    id = 0;
    for (const Finding& finding : report.findings) {
      for (const FindingPlace& place : finding.places) {
        rows_.Add({Number(id), Text(place.file),
                   place.line > 0 ? Number(place.line) : ExportValue(),
                   place.line > 0 ? Number(place.column) : ExportValue(), Text(place.reference)});
      }
      ++id;
    }
  }

  SiteMgr& manager_;
  const ExportedSite& site_;
  ExportRows& rows_;
  std::unordered_set<int> family_;
  std::unordered_map<int, int> parents_;  // of folders, by number
  std::unordered_map<int, int> folders_;  // of files, by number
};

}  // namespace

int ExportSite(SiteMgr& manager, const ExportedSite& site, const FindingReport* report,
               ExportRows& rows) {
  return SiteExport(manager, site, rows).Write(report);
}

}  // namespace zvrsit
