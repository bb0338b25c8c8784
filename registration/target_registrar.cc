#include "registration/target_registrar.h"

#include "links/server_code.h"
#include "manager_base/kept_places.h"
#include "manager_base/operation_memo.h"
#include "manager_base/site_mgr_base.h"
#include "tables/site_path_db.h"
#include "tables/site_url_db.h"

namespace zvrsit {

TargetRegistrar::TargetRegistrar(SiteMgrBase* manager, SitePathDB* paths, SiteUrlDB* urls)
    : manager_(manager),
      paths_(paths),
      urls_(urls),
      rules_(FlagsOf(manager != nullptr ? manager->GetLinkRules() : LinkRules::Classic)) {}

Outcome TargetRegistrar::AddFile(const std::string& path, const std::string& siteFolder, From from,
                                 UrlID& place) {
  const bool looks = from == From::kPage || rules_.looksAgainAtSheetTargets;
  int number = paths_->Find(path);
  int result = number;
  if (number < 0) {
    result = manager_->AddPath(path, siteFolder, looks ? 1 : 0);
  } else if (looks) {
    result = manager_->CheckPath(path, siteFolder);
  }
  if (result < 0 && !rules_.goesOnAfterFailure) {
    return number < 0 ? Outcome::kFailed : Outcome::kSkipped;
  }
  if (number < 0) number = paths_->Find(path);
  if (number < 0) return Outcome::kFailed;
  place = UrlID(kKindPath, number);
  return Outcome::kDone;
}

Outcome TargetRegistrar::AddUrl(const std::string& url, UrlID& place) {
  if (urls_ == nullptr) return Outcome::kFailed;
  int number = urls_->Find(url);
  if (number < 0) number = manager_->AddUrl(url);
  if (number < 0) return Outcome::kFailed;
  place = UrlID(kKindUrl, number);
  return Outcome::kDone;
}

bool TargetRegistrar::IsHidden(std::string_view text) const {
  const OperationMemo* const memo = manager_->GetOperationMemo();
  return memo != nullptr && memo->page.holdsServerCode() && HoldsServerCode(text);
}

std::int32_t TargetRegistrar::OffsetInFile(std::int64_t offsetInText) const {
  const OperationMemo* const memo = manager_->GetOperationMemo();
  return memo != nullptr ? memo->page.OffsetInFile(offsetInText)
                         : static_cast<std::int32_t>(offsetInText);
}

bool TargetRegistrar::IsKnownFile(int pathNumber) const {
  std::int32_t exists = 0;
  return pathNumber >= 0 && paths_->GetNumber(pathNumber, &SitePathRec::exists, exists) == 0 &&
         exists != 0;
}

void TargetRegistrar::NotePlace(KeptPlaces& places, int number, const UrlID& target,
                                std::size_t offsetInText, std::int32_t offsetInFile) const {
  if (number < 0 || offsetInFile < 0 || target.kind != kKindPath) return;
  if (places.IsMissing(target.id, [&] { return IsKnownFile(target.id); })) {
    places.Note(number, offsetInText, offsetInFile);
  }
}

void TargetRegistrar::Note(std::uint32_t trait) const {
  OperationMemo* const memo = manager_->GetOperationMemo();
  if (memo != nullptr) memo->traits |= trait;
}

}  // namespace zvrsit
