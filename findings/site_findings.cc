#include "findings/site_findings.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "findings/owned_cells.h"
#include "findings/url_check.h"
#include "manager/family_marks.h"
#include "manager/site_mgr.h"
#include "util/file_type.h"

namespace zvrsit {
namespace {

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

std::string TextOf(std::string* text) {
  std::string result = text != nullptr ? *text : "";
  SiteMgr::DeleteString(text);
  return result;
}

// A link whose places are not known gets places without a line, as many as it occurs.
void AppendPlaces(const std::string& file, const std::string& reference, int count,
                  const std::vector<LinkPlace>& places, std::vector<FindingPlace>& all) {
  if (places.empty())
    all.insert(all.end(), static_cast<std::size_t>(std::max(count, 1)),
               FindingPlace{file, 0, 0, reference});
  for (const LinkPlace& place : places) {
    if (place.isIgnored) continue;
    const bool isKnown = place.line > 0 && count > 0;
    all.push_back({file, isKnown ? place.line : 0, isKnown ? place.column : 0, reference});
  }
}

}  // namespace

SiteFindings::SiteFindings(SiteMgr& manager, FoundSite site, const Severities& severities)
    : manager_(manager), site_(std::move(site)), subjects_(severities) {
  for (const UrlFinding& url : site_.urls) urls_.emplace(url.url.id, &url);
}

void SiteFindings::LookAround() {
  names_ = std::make_shared<KnownFiles>(manager_, site_.folder, names_.get());
  broken_ = std::make_unique<BrokenTargets>(manager_, site_, *names_, subjects_);
  idsOfPages_.clear();
}

bool SiteFindings::Collect() {
  rows_.clear();
  LookAround();
  if (!CollectLinks()) return false;
  FindPlaces(0);
  if (subjects_.severities().IsOn(Rule::kDuplicateId)) {
    std::vector<RepeatedId> repeated;
    if (manager_.FindRepeatedIds(repeated) != 0) return false;
    AddRepeatedIds(repeated);
  }
  lonely_ = ListLonely();
  return true;
}

bool SiteFindings::CollectLinks() {
  const Numbers numbers(manager_.EnumBrokenLink());
  if (numbers == nullptr) return false;
  SiteLink link;
  for (const int number : *numbers) {
    if (manager_.GetLink(number, link) == 0) AddBroken(number, link);
  }
  if (subjects_.severities().IsOn(Rule::kMissingFragment)) {
    std::vector<MissingFragment> missing;
    if (manager_.FindMissingFragments(missing) != 0) return false;
    AddMissingFragments(missing);
  }
  const OwnedCells urls(manager_.EnumUrl());
  if (urls == nullptr) return false;
  for (std::size_t i = 0; i < urls->size(); ++i) {
    const UrlID& url = (*urls)[i].GetID();
    const bool isMalformed = subjects_.severities().IsOn(Rule::kMalformedUrl) &&
                             !FaultOfUrl((*urls)[i].GetName()).empty();
    if (!isMalformed && !urls_.contains(url.id)) continue;
    const Numbers links(manager_.GetBackLinks(url));
    for (std::size_t j = 0; links != nullptr && j < links->size(); ++j) {
      if (manager_.GetLink((*links)[j], link) == 0) AddToUrl((*links)[j], link);
    }
  }
  return true;
}

void SiteFindings::AddBroken(int number, const SiteLink& link) {
  const bool namesFolder = broken_->NamesFolder(link);
  AddRow(number, link, broken_->Of(link, namesFolder));
  Row& row = rows_.back();
  row.target = link.to.id;
  row.namesFolder = namesFolder;
  row.unservable = link.unservable;
  row.outside = link.outside;
}

void SiteFindings::AddMissingFragments(const std::vector<MissingFragment>& missing) {
  SiteLink link;
  for (const auto& [number, fragment] : missing) {
    if (manager_.GetLink(number, link) != 0) continue;
    const std::string& file = names_->Of(link.to.id);
    AddRow(number, link,
           subjects_.Of(Rule::kMissingFragment, file + "#" + fragment,
                        file + " has nothing named \"" + fragment + "\"",
                        LikeliestId(link.to.id, fragment)));
  }
}

std::string SiteFindings::LikeliestId(int page, const std::string& fragment) {
  const auto [entry, isNew] = idsOfPages_.try_emplace(page);
  Ids& ids = entry->second;
  if (isNew) {
    std::vector<PageId> found;
    manager_.ListPageIds(TextOf(manager_.UrlPath(page)), found);
    for (PageId& id : found) ids.names.push_back(std::move(id.text));
    ids.suggestions = std::make_unique<NameSuggestions>(ids.names);
  }
  const int likeliest = ids.suggestions->Likeliest(fragment);
  return likeliest < 0 ? "" : "#" + ids.names[static_cast<std::size_t>(likeliest)];
}

// A link to the URL of another site.
void SiteFindings::AddToUrl(int number, const SiteLink& link) {
  const std::string address = TextOf(manager_.UrlUrl(link.to.id));
  const std::string fault = FaultOfUrl(address);
  if (!fault.empty()) {
    const std::string url = WithoutCredentials(address);
    const Subject* const subject =
        subjects_.Of(Rule::kMalformedUrl, url, url + " is no URL: " + fault);
    if (subject != nullptr) AddRow(number, link, subject);
  }
  const auto asked = urls_.find(link.to.id);
  if (asked == urls_.end()) return;
  const UrlFinding& url = *asked->second;
  const Subject* const subject = subjects_.Of(url.rule, url.target, url.message, url.suggestion);
  if (subject != nullptr) AddRow(number, link, subject);
}

void SiteFindings::AddRow(int number, const SiteLink& link, const Subject* subject) {
  Row row;
  row.link = number;
  row.page = link.from.id;
  row.subject = subject;
  row.count = link.count;
  row.reference = WithoutCredentials(link.text);
  rows_.push_back(std::move(row));
}

// Of the rows from that one on.
void SiteFindings::FindPlaces(std::size_t first) {
  std::vector<int> links;
  std::vector<Row*> rows;
  for (std::size_t i = first; i < rows_.size(); ++i) {
    if (rows_[i].subject == nullptr) continue;
    links.push_back(rows_[i].link);
    rows.push_back(&rows_[i]);
  }
  std::vector<std::vector<LinkPlace>> places;
  if (manager_.FindLinkPlaces(links, places) != 0) return;
  for (std::size_t i = 0; i < rows.size(); ++i) rows[i]->places = std::move(places[i]);
}

void SiteFindings::AddRepeatedIds(const std::vector<RepeatedId>& repeated) {
  for (const RepeatedId& one : repeated) {
    Row row;
    row.page = one.page;
    row.subject = subjects_.Of(Rule::kDuplicateId, "#" + one.id,
                               "the ID \"" + one.id + "\" stands more than once in this page");
    row.places = one.places;
    for (LinkPlace& place : row.places) place.isIgnored = false;
    rows_.push_back(std::move(row));
  }
}

// Pages that the home page does not lead to, and other files that nothing refers to.
SiteFindings::Rows SiteFindings::ListLonely() {
  Rows rows;
  if (subjects_.severities().IsOn(Rule::kOrphanPage) && manager_.FindPath(site_.top) >= 0) {
    for (const int number : names_->numbers()) {
      const UrlID id(kKindPath, number);
      if (!names_->IsThere(number) || manager_.GetUrlFileType(id) != FT_HTML) continue;
      const int member = manager_.GetUrlFtpMember(id);
      if (member != -1 && (member & kFamilyMember) != 0) continue;
      AddLonely(Rule::kOrphanPage, number, "the home page does not lead to this page", rows);
    }
  }
  if (!subjects_.severities().IsOn(Rule::kUnusedFile)) return rows;
  const OwnedCells unused(manager_.GetUnusedFiles());
  for (std::size_t i = 0; unused != nullptr && i < unused->size(); ++i) {
    const SiteRecCell& cell = (*unused)[i];
    if (cell.GetFileType() == FT_HTML) continue;
    AddLonely(Rule::kUnusedFile, cell.GetID().id, "nothing refers to this file", rows);
  }
  return rows;
}

void SiteFindings::AddLonely(Rule rule, int number, const char* message, Rows& rows) {
  Row row;
  row.page = number;
  row.subject = subjects_.Of(rule, names_->Of(number), message);
  rows.push_back(std::move(row));
}

bool SiteFindings::Follow(const SiteUpdates& updates, std::vector<Finding>& before,
                          std::vector<Finding>& after) {
  const std::shared_ptr<KnownFiles> names = names_;
  LookAround();
  const std::vector<int> links = ListLinksOf(updates.touched);
  Rows gone;
  Rows come;
  TakeOut(updates.touched, links, gone);
  JudgeAgain(gone, come);
  const std::size_t first = rows_.size();
  if (!AddAgain(updates.touched, links)) return false;
  const Rows lonely = std::exchange(lonely_, ListLonely());
  before = FindingsOf({gone, lonely}, *names);
  after = FindingsOf({come, std::span<const Row>(rows_).subspan(first), lonely_}, *names_);
  return true;
}

// The links from and to these files, ascending.
std::vector<int> SiteFindings::ListLinksOf(const std::vector<int>& files) {
  std::vector<int> links;
  for (const int file : files) {
    const UrlID id(kKindPath, file);
    for (const Numbers& numbers :
         {Numbers(manager_.GetForeLinks(id)), Numbers(manager_.GetBackLinks(id))}) {
      if (numbers != nullptr) links.insert(links.end(), numbers->begin(), numbers->end());
    }
  }
  std::ranges::sort(links);
  links.erase(std::unique(links.begin(), links.end()), links.end());
  return links;
}

void SiteFindings::TakeOut(const std::vector<int>& files, const std::vector<int>& links,
                           Rows& gone) {
  const auto isKept = [&](const Row& row) {
    return !std::ranges::binary_search(files, row.page) &&
           !std::ranges::binary_search(links, row.link);
  };
  const auto end = std::stable_partition(rows_.begin(), rows_.end(), isKept);
  gone.assign(std::move_iterator(end), std::move_iterator(rows_.end()));
  rows_.erase(end, rows_.end());
}

// What a link to a file that is not there means depends on the names of the others.
void SiteFindings::JudgeAgain(Rows& gone, Rows& come) {
  SiteLink link;
  for (Row& row : rows_) {
    if (row.target < 0) continue;
    link.to = UrlID(kKindPath, row.target);
    link.unservable = row.unservable;
    link.outside = row.outside;
    const Subject* const subject = broken_->Of(link, row.namesFolder);
    if (subject == row.subject) continue;
    if (row.subject != nullptr) gone.push_back(row);
    const bool hadPlaces = row.subject != nullptr;
    row.subject = subject;
    if (subject == nullptr) continue;
    if (!hadPlaces) {
      std::vector<std::vector<LinkPlace>> places;
      if (manager_.FindLinkPlaces({row.link}, places) == 0) row.places = std::move(places.front());
    }
    come.push_back(row);
  }
}

bool SiteFindings::AddAgain(const std::vector<int>& files, const std::vector<int>& links) {
  const std::size_t first = rows_.size();
  std::vector<int> toFiles;
  SiteLink link;
  for (const int number : links) {
    if (manager_.GetLink(number, link) != 0) continue;
    if (link.to.kind == kKindUrl) {
      AddToUrl(number, link);
    } else if (!link.exists) {
      AddBroken(number, link);
    } else {
      toFiles.push_back(number);
    }
  }
  if (subjects_.severities().IsOn(Rule::kMissingFragment)) {
    std::vector<MissingFragment> missing;
    if (manager_.FindMissingFragments(toFiles, missing) != 0) return false;
    AddMissingFragments(missing);
  }
  FindPlaces(first);
  if (!subjects_.severities().IsOn(Rule::kDuplicateId)) return true;
  std::vector<RepeatedId> repeated;
  if (manager_.FindRepeatedIds(files, repeated) != 0) return false;
  AddRepeatedIds(repeated);
  return true;
}

std::vector<Finding> SiteFindings::List() const {
  return FindingsOf({rows_, lonely_}, *names_);
}

std::vector<Finding> SiteFindings::FindingsOf(const std::vector<std::span<const Row>>& lists,
                                              const KnownFiles& names) const {
  std::vector<Finding> findings;
  std::unordered_map<const Subject*, std::size_t> known;
  for (const std::span<const Row> rows : lists) {
    for (const Row& row : rows) {
      if (row.subject == nullptr) continue;
      const auto [entry, isNew] = known.try_emplace(row.subject, findings.size());
      if (isNew) {
        const Subject& subject = *row.subject;
        findings.push_back({subject.rule,
                            subjects_.severities().Of(subject.rule),
                            subject.target,
                            subject.message,
                            subject.suggestion,
                            {}});
      }
      AppendPlaces(names.Of(row.page), row.reference, row.count, row.places,
                   findings[entry->second].places);
    }
  }
  std::erase_if(findings, [](const Finding& finding) { return finding.places.empty(); });
  for (Finding& finding : findings) {
    std::sort(finding.places.begin(), finding.places.end(), &IsBefore);
  }
  std::sort(findings.begin(), findings.end(), &ComesBefore);
  return findings;
}

}  // namespace zvrsit
