// Enters in the tables what pages and style sheets refer to. Both use this one class.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "links/link_rules.h"
#include "util/url_id.h"

namespace zvrsit {

class KeptPlaces;
class SiteMgrBase;
class SitePathDB;
class SiteUrlDB;

// What became of a reference.
enum class Outcome {
  kDone,
  kSkipped,  // it is left out
  kFailed,   // the rest of its page is lost too (without goesOnAfterFailure)
};

class TargetRegistrar {
 public:
  enum class From { kPage, kSheet };

  // The handles stay the caller's. Without a manager nothing may be entered.
  TargetRegistrar(SiteMgrBase* manager, SitePathDB* paths, SiteUrlDB* urls);

  const RuleFlags& rules() const { return rules_; }

  // Both set `place` when they give kDone. A file counts as the site's if it lies below
  // `siteFolder`.
  [[nodiscard]] Outcome AddFile(const std::string& path, const std::string& siteFolder, From from,
                                UrlID& place);
  Outcome AddUrl(const std::string& url, UrlID& place);

  // Whether the meaning of a text of the page is known only after the server has run the page's
  // code.
  bool IsHidden(std::string_view text) const;
  // The place in the page's file that belongs to a place in its text; -1 when the page had to be
  // converted.
  std::int32_t OffsetInFile(std::int64_t offsetInText) const;
  // Notes one of the SiteTraits (manager_base/operation_memo.h) in the operation's memory.
  void Note(std::uint32_t trait) const;

  // Whether CheckPath would leave this entry as it is.
  bool IsKnownFile(int pathNumber) const;
  // Keeps where link `number` stands if it leads to a file that is not there.
  void NotePlace(KeptPlaces& places, int number, const UrlID& target, std::size_t offsetInText,
                 std::int32_t offsetInFile) const;

 private:
  SiteMgrBase* manager_;
  SitePathDB* paths_;
  SiteUrlDB* urls_;
  RuleFlags rules_;  // of the manager
};

}  // namespace zvrsit
