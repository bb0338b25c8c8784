// The findings of a site that is open, kept while the site changes.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "findings/broken_targets.h"
#include "findings/collect.h"
#include "findings/finding.h"
#include "findings/known_files.h"
#include "findings/subject.h"
#include "links/link_place.h"
#include "manager/site_changes.h"
#include "manager/site_link.h"

namespace zvrsit {

// Follow costs time in proportion to the names of all files, to the findings that there are, and to
// what the update has touched, with the links from and to it. SiteMgr::KeepPageIds should be on.
class SiteFindings {
 public:
  SiteFindings(SiteMgr& manager, FoundSite site, const Severities& severities);
  SiteFindings(const SiteFindings&) = delete;
  SiteFindings& operator=(const SiteFindings&) = delete;

  // Finds everything anew. False when a table cannot be read.
  [[nodiscard]] bool Collect();
  // After SiteUpdate has given `updates`: brings the findings to what Collect would find now. What
  // it has looked at again goes into two lists of findings, with only these places: as they were
  // (`before`) and as they are (`after`). False as above; then Collect is to be called.
  [[nodiscard]] bool Follow(const SiteUpdates& updates, std::vector<Finding>& before,
                            std::vector<Finding>& after);
  // All of them, in the order of a report.
  std::vector<Finding> List() const;

 private:
  // What is wrong with one link; or an ID, or a whole file, of `page`.
  struct Row {
    int link = -1;  // -1 for none
    int page = -1;
    int target = -1;  // the number of a file that is not there or not in the site; else -1
    bool namesFolder = false;
    bool unservable = false;
    bool outside = false;
    const Subject* subject = nullptr;  // null while the rule is off: only with a `target`
    int count = 1;
    std::string reference;
    std::vector<LinkPlace> places;
  };
  struct Ids {
    std::vector<std::string> names;
    std::unique_ptr<NameSuggestions> suggestions;
  };
  using Rows = std::vector<Row>;

  void LookAround();
  [[nodiscard]] bool CollectLinks();
  void AddRepeatedIds(const std::vector<RepeatedId>& repeated);
  void AddBroken(int number, const SiteLink& link);
  void AddMissingFragments(const std::vector<MissingFragment>& missing);
  void AddToUrl(int number, const SiteLink& link);
  void AddRow(int number, const SiteLink& link, const Subject* subject);
  void FindPlaces(std::size_t first);
  Rows ListLonely();
  void AddLonely(Rule rule, int number, const char* message, Rows& rows);
  std::string LikeliestId(int page, const std::string& fragment);
  std::vector<int> ListLinksOf(const std::vector<int>& files);
  void TakeOut(const std::vector<int>& files, const std::vector<int>& links, Rows& gone);
  void JudgeAgain(Rows& gone, Rows& come);
  [[nodiscard]] bool AddAgain(const std::vector<int>& files, const std::vector<int>& links);
  // The findings that these rows are.
  std::vector<Finding> FindingsOf(const std::vector<std::span<const Row>>& lists,
                                  const KnownFiles& names) const;

  SiteMgr& manager_;
  const FoundSite site_;
  Subjects subjects_;
  std::unordered_map<int, const UrlFinding*> urls_;  // of site_, by number
  Rows rows_;
  Rows lonely_;  // pages that the home page does not lead to, and files that nothing refers to

  // Of the files as they are now; made anew for each collection.
  std::shared_ptr<KnownFiles> names_;
  std::unique_ptr<BrokenTargets> broken_;
  std::unordered_map<int, Ids> idsOfPages_;
};

}  // namespace zvrsit
