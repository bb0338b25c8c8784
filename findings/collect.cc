#include "findings/collect.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "findings/known_files.h"
#include "findings/owned_cells.h"
#include "findings/url_check.h"
#include "manager/family_marks.h"
#include "manager/site_mgr.h"
#include "platform/native_path.h"
#include "util/file_type.h"
#include "util/path_parts.h"

namespace zvrsit {
namespace {

namespace fs = std::filesystem;

using Numbers = std::unique_ptr<std::vector<int>>;

bool IsBefore(const FindingPlace& a, const FindingPlace& b) {
  return std::tie(a.file, a.line, a.column) < std::tie(b.file, b.line, b.column);
}

bool ComesBefore(const Finding& a, const Finding& b) {
  const FindingPlace& first = a.places.front();
  const FindingPlace& second = b.places.front();
  if (IsBefore(first, second)) return true;
  if (IsBefore(second, first)) return false;
  return std::tie(a.rule, a.target) < std::tie(b.rule, b.target);
}

// One collection.
class Collector {
 public:
  Collector(SiteMgr& manager, const FoundSite& site, const Severities& severities,
            FindingReport& report)
      : manager_(manager),
        site_(site),
        severities_(severities),
        report_(report),
        names_(manager, site.folder),
        documents_(manager.ListFolderDocuments()) {}

  bool Collect() {
    if (!AddBroken() || !AddMissingFragments() || !AddMalformedUrls() || !AddRepeatedIds()) {
      return false;
    }
    for (const UrlFinding& url : site_.urls) AddLinksToUrl(url);
    AddPlaces();
    AddLonelyFiles();
    std::erase_if(report_.findings, [](const Finding& finding) { return finding.places.empty(); });
    for (Finding& finding : report_.findings) {
      std::sort(finding.places.begin(), finding.places.end(), &IsBefore);
    }
    std::sort(report_.findings.begin(), report_.findings.end(), &ComesBefore);
    return true;
  }

 private:
  // The finding of a rule about a target; it is made when it is the first one. Null when the rule
  // is off.
  Finding* FindingOf(Rule rule, const std::string& target, bool& isNew) {
    isNew = false;
    if (!severities_.IsOn(rule)) return nullptr;
    const auto [entry, added] = known_.try_emplace({rule, target}, report_.findings.size());
    isNew = added;
    if (added) {
      Finding finding;
      finding.rule = rule;
      finding.severity = severities_.Of(rule);
      finding.target = target;
      report_.findings.push_back(std::move(finding));
    }
    return &report_.findings[entry->second];
  }

  // Adds a link to a finding. The places of all links are looked up together later.
  void AddLink(int number, const SiteLink& link, const Finding& finding) {
    links_.push_back(number);
    rows_.push_back({static_cast<std::size_t>(&finding - report_.findings.data()), link.from.id,
                     link.count, link.text});
  }

  bool AddBroken() {
    const Numbers numbers(manager_.EnumBrokenLink());
    if (numbers == nullptr) return false;
    SiteLink link;
    for (const int number : *numbers) {
      if (manager_.GetLink(number, link) != 0) continue;
      const Verdict& verdict = VerdictOf(link);
      bool isNew = false;
      Finding* const finding = FindingOf(verdict.rule, verdict.target, isNew);
      if (finding == nullptr) continue;
      if (isNew) {
        finding->message = verdict.message;
        finding->suggestion = verdict.suggestion;
      }
      AddLink(number, link, *finding);
    }
    return true;
  }

  // What is wrong with all links to one file that is not there, or not in the site.
  struct Verdict {
    Rule rule;
    std::string target;
    std::string message;
    std::string suggestion;
  };
  struct BrokenTarget {
    std::string path;
    std::array<std::optional<Verdict>, 2> verdicts;  // by NamesNoFile
  };

  const Verdict& VerdictOf(const SiteLink& link) {
    const auto [entry, isNew] = broken_.try_emplace(link.to.id);
    BrokenTarget& target = entry->second;
    if (isNew) target.path = PathOf(link.to.id);
    const bool namesNoFile = !link.unservable && NamesNoFile(link, target.path);
    std::optional<Verdict>& verdict = target.verdicts[namesNoFile];
    if (!verdict) verdict = Judge(link, target.path, namesNoFile);
    return *verdict;
  }

  Verdict Judge(const SiteLink& link, const std::string& path, bool namesNoFile) {
    std::string target = names_.Of(link.to.id);
    if (link.unservable) {
      target.pop_back();  // the separator by which the table marks such a name
      return {Rule::kUnservableName, target, target + ": no server has a file of such a name", ""};
    }
    if (link.outside && TypeOnDisk(path) == fs::file_type::regular) {
      return {Rule::kOutsideSite, target, target + " lies outside of the site", ""};
    }
    if (namesNoFile && TypeOnDisk(path.substr(0, path.size() - NameInFolder(path).size())) ==
                           fs::file_type::directory) {
      const std::string folder =
          target.substr(0, target.size() - KnownFiles::LastNameOf(target).size());
      return {Rule::kFolderWithoutIndex, folder, folder + " has no document to show", ""};
    }
    const std::string other = names_.SameButForCase(target);
    if (!other.empty()) {
      return {Rule::kWrongCase, target,
              target + " is not there, but " + other + " is: letter case counts on most servers",
              other};
    }
    return {Rule::kMissingFile, target, target + " is not there", names_.Likeliest(target)};
  }

  fs::file_type TypeOnDisk(const std::string& path) const {
    std::string native;
    return platform::ToNativePath(path, native) ? site_.typeOf(native) : fs::file_type::none;
  }

  // Whether a link leads to a folder: it does not end in the name of its file, which is that of a
  // document for folders and was added.
  bool NamesNoFile(const SiteLink& link, const std::string& path) const {
    const std::string_view name = NameInFolder(path);
    std::string_view written = link.text;
    written = written.substr(0, written.find('#'));
    written = written.substr(0, written.find('?'));
    return !name.empty() && !written.ends_with(name) &&
           std::ranges::find(documents_, name) != documents_.end();
  }

  // The `\` path of a file by its number; empty for none.
  std::string PathOf(int number) {
    std::string* const text = manager_.UrlPath(number);
    std::string path = text != nullptr ? *text : "";
    SiteMgr::DeleteString(text);
    return path;
  }

  bool AddMissingFragments() {
    if (!severities_.IsOn(Rule::kMissingFragment)) return true;
    std::vector<MissingFragment> missing;
    if (manager_.FindMissingFragments(missing) != 0) return false;
    SiteLink link;
    for (const auto& [number, fragment] : missing) {
      if (manager_.GetLink(number, link) != 0) continue;
      const std::string& file = names_.Of(link.to.id);
      bool isNew = false;
      Finding* const finding = FindingOf(Rule::kMissingFragment, file + "#" + fragment, isNew);
      if (isNew) {
        finding->message = file + " has nothing named \"" + fragment + "\"";
        finding->suggestion = LikeliestId(link.to.id, fragment);
      }
      AddLink(number, link, *finding);
    }
    return true;
  }

  std::string LikeliestId(int page, const std::string& fragment) {
    const auto [entry, isNew] = idsOfPages_.try_emplace(page);
    Ids& ids = entry->second;
    if (isNew) {
      std::vector<PageId> found;
      manager_.ListPageIds(PathOf(page), found);
      for (PageId& id : found) ids.names.push_back(std::move(id.text));
      ids.near = std::make_unique<NameSuggestions>(ids.names);
    }
    const int likeliest = ids.near->Likeliest(fragment);
    return likeliest < 0 ? "" : "#" + ids.names[static_cast<std::size_t>(likeliest)];
  }

  bool AddMalformedUrls() {
    if (!severities_.IsOn(Rule::kMalformedUrl)) return true;
    const OwnedCells urls(manager_.EnumUrl());
    if (urls == nullptr) return false;
    for (std::size_t i = 0; i < urls->size(); ++i) {
      const std::string fault = FaultOfUrl((*urls)[i].GetName());
      if (fault.empty()) continue;
      const std::string url = WithoutCredentials((*urls)[i].GetName());
      AddLinksToUrl(
          {(*urls)[i].GetID(), Rule::kMalformedUrl, url, url + " is no URL: " + fault, ""});
    }
    return true;
  }

  void AddLinksToUrl(const UrlFinding& url) {
    if (!severities_.IsOn(url.rule)) return;
    const Numbers numbers(manager_.GetBackLinks(url.url));
    SiteLink link;
    for (std::size_t i = 0; numbers != nullptr && i < numbers->size(); ++i) {
      if (manager_.GetLink((*numbers)[i], link) != 0) continue;
      bool isNew = false;
      Finding* const finding = FindingOf(url.rule, url.target, isNew);
      if (isNew) {
        finding->message = url.message;
        finding->suggestion = url.suggestion;
      }
      link.text = WithoutCredentials(link.text);
      AddLink((*numbers)[i], link, *finding);
    }
  }

  bool AddRepeatedIds() {
    if (!severities_.IsOn(Rule::kDuplicateId)) return true;
    std::vector<RepeatedId> repeated;
    if (manager_.FindRepeatedIds(repeated) != 0) return false;
    for (const RepeatedId& one : repeated) {
      bool isNew = false;
      Finding* const finding = FindingOf(Rule::kDuplicateId, "#" + one.id, isNew);
      finding->message = "the ID \"" + one.id + "\" stands more than once in this page";
      for (const LinkPlace& place : one.places) {
        finding->places.push_back({names_.Of(one.page), place.line, place.column, ""});
      }
    }
    return true;
  }

  // A link whose places are not known gets places without a line, as many as it occurs.
  void AddPlaces() {
    std::vector<std::vector<LinkPlace>> places;
    if (manager_.FindLinkPlaces(links_, places) != 0) places.assign(links_.size(), {});
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      const Row& row = rows_[i];
      auto& all = report_.findings[row.finding].places;
      const std::string& file = names_.Of(row.source);
      if (places[i].empty()) places[i].resize(static_cast<std::size_t>(std::max(row.count, 1)));
      for (const LinkPlace& place : places[i]) {
        if (place.isIgnored) continue;
        const bool isKnown = place.line > 0 && row.count > 0;
        all.push_back({file, isKnown ? place.line : 0, isKnown ? place.column : 0, row.text});
      }
    }
  }

  // Pages that the home page does not lead to, and other files that nothing refers to.
  void AddLonelyFiles() {
    if (severities_.IsOn(Rule::kOrphanPage) && manager_.FindPath(site_.top) >= 0) {
      for (const int number : names_.numbers()) {
        const UrlID id(kKindPath, number);
        if (!names_.IsThere(number) || manager_.GetUrlFileType(id) != FT_HTML) continue;
        const int member = manager_.GetUrlFtpMember(id);
        if (member != -1 && (member & kFamilyMember) != 0) continue;
        AddLonely(Rule::kOrphanPage, number, "the home page does not lead to this page");
      }
    }
    if (!severities_.IsOn(Rule::kUnusedFile)) return;
    const OwnedCells unused(manager_.GetUnusedFiles());
    for (std::size_t i = 0; unused != nullptr && i < unused->size(); ++i) {
      const SiteRecCell& cell = (*unused)[i];
      if (cell.GetFileType() == FT_HTML) continue;
      AddLonely(Rule::kUnusedFile, cell.GetID().id, "nothing refers to this file");
    }
  }

  void AddLonely(Rule rule, int number, const char* message) {
    const std::string& file = names_.Of(number);
    bool isNew = false;
    Finding* const finding = FindingOf(rule, file, isNew);
    finding->message = message;
    finding->places.push_back({file, 0, 0, ""});
  }

  // A link of a finding.
  struct Row {
    std::size_t finding;
    int source;  // its page
    int count;
    std::string text;
  };
  struct Ids {
    std::vector<std::string> names;
    std::unique_ptr<NameSuggestions> near;
  };

  SiteMgr& manager_;
  const FoundSite& site_;
  const Severities& severities_;
  FindingReport& report_;
  KnownFiles names_;
  const std::vector<std::string> documents_;  // that stand for their folders
  std::map<std::pair<Rule, std::string>, std::size_t> known_;
  std::unordered_map<int, BrokenTarget> broken_;  // by number
  std::unordered_map<int, Ids> idsOfPages_;
  std::vector<int> links_;
  std::vector<Row> rows_;  // of links_
};

}  // namespace

int CollectFindings(SiteMgr& manager, const FoundSite& site, const Severities& severities,
                    FindingReport& report) {
  if (!platform::ToNativePath(site.folder, report.folder)) return -1;
  report.findings.clear();
  manager.CountSite(report.totals);
  return Collector(manager, site, severities, report).Collect() ? 0 : -1;
}

std::size_t FindingReport::Count(Severity severity) const {
  return static_cast<std::size_t>(std::ranges::count(findings, severity, &Finding::severity));
}

std::size_t FindingReport::CountPlaces() const {
  std::size_t places = 0;
  for (const Finding& finding : findings) places += finding.places.size();
  return places;
}

}  // namespace zvrsit
