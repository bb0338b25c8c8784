#include "findings/broken_targets.h"

#include <algorithm>
#include <string_view>

#include "manager/site_mgr.h"
#include "platform/native_path.h"
#include "util/path_parts.h"

namespace zvrsit {

namespace fs = std::filesystem;

BrokenTargets::BrokenTargets(SiteMgr& manager, const FoundSite& site, KnownFiles& names,
                             Subjects& subjects)
    : manager_(manager),
      site_(site),
      names_(names),
      subjects_(subjects),
      documents_(manager.ListFolderDocuments()) {}

BrokenTargets::Target& BrokenTargets::TargetOf(int number) {
  const auto [entry, isNew] = targets_.try_emplace(number);
  if (isNew) {
    std::string* const path = manager_.UrlPath(number);
    if (path != nullptr) entry->second.path = *path;
    SiteMgr::DeleteString(path);
  }
  return entry->second;
}

bool BrokenTargets::NamesFolder(const SiteLink& link) {
  if (link.unservable) return false;
  const std::string_view name = NameInFolder(TargetOf(link.to.id).path);
  std::string_view written = link.text;
  written = written.substr(0, written.find('#'));
  written = written.substr(0, written.find('?'));
  return !name.empty() && !written.ends_with(name) &&
         std::ranges::find(documents_, name) != documents_.end();
}

const Subject* BrokenTargets::Of(const SiteLink& link, bool namesFolder) {
  Target& target = TargetOf(link.to.id);
  std::optional<const Subject*>& subject = target.subjects[namesFolder];
  if (!subject) subject = Judge(link, target.path, namesFolder);
  return *subject;
}

const Subject* BrokenTargets::Judge(const SiteLink& link, const std::string& path,
                                    bool namesFolder) {
  std::string target = names_.Of(link.to.id);
  if (link.unservable) {
    if (!target.empty()) target.pop_back();  // the separator by which the table marks such a name
    return subjects_.Of(Rule::kUnservableName, target,
                        target + ": no server has a file of such a name");
  }
  if (link.outside && TypeOnDisk(path) == fs::file_type::regular) {
    return subjects_.Of(Rule::kOutsideSite, target, target + " lies outside of the site");
  }
  if (namesFolder && TypeOnDisk(path.substr(0, path.size() - NameInFolder(path).size())) ==
                         fs::file_type::directory) {
    const std::string folder =
        target.substr(0, target.size() - KnownFiles::LastNameOf(target).size());
    return subjects_.Of(Rule::kFolderWithoutIndex, folder, folder + " has no document to show");
  }
  const std::string other = names_.SameButForCase(target);
  if (!other.empty()) {
    return subjects_.Of(
        Rule::kWrongCase, target,
        target + " is not there, but " + other + " is: letter case counts on most servers", other);
  }
  return subjects_.Of(Rule::kMissingFile, target, target + " is not there",
                      names_.Likeliest(target));
}

fs::file_type BrokenTargets::TypeOnDisk(const std::string& path) const {
  std::string native;
  return platform::ToNativePath(path, native) ? site_.typeOf(native) : fs::file_type::none;
}

}  // namespace zvrsit
