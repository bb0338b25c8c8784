#include "cli/legacy_session.h"

#include <filesystem>

#include "cli/exit_code.h"
#include "cli/native_name.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFolder = "legacy";
constexpr const char* kSites = "sites";
constexpr const char* kServers = "servers";

// The options as they are, when there is an older database.
const Options& Checked(const Options& options, Database database) {
  std::error_code error;
  const fs::path folder = PathOf(DatabaseFolder(options)) / kFolder;
  if (database == Database::kMustExist && !fs::exists(folder / kSites, error)) {
    throw Failure(kDatabase, NameOf(folder) +
                                 ": there is no older database here (zvrsit legacy add makes one)");
  }
  return options;
}

}  // namespace

LegacySession::LegacySession(const Options& options, Database database)
    : newer_(Checked(options, database), Database::kMake),
      folder_(FolderPath(NameOf(PathOf(DatabaseFolder(options)) / kFolder))) {
  if (manager_.setDB(folder_, kSites, kServers) != 0) {
    throw Failure(kDatabase, NativePath(folder_ + kSites) +
                                 ": this file, or another beside it, cannot be opened");
  }
}

LegacySession::~LegacySession() {
  manager_.SiteClose();
}

void LegacySession::Share(SitMgrBase& other) const {
  other.setDB(folder_, kSites, kServers);
}

SitSiteProperty LegacySession::Profile(const std::string& name) {
  SitSiteProperty profile;
  if (manager_.GetSiteProf(name, profile) != 0) {
    throw Failure(kUsage, "there is no older site named \"" + name + "\"");
  }
  return profile;
}

void LegacySession::Open(const std::string& name) {
  siteFolder_ = Profile(name).dir[1];
  if (PathOf(NativePath(siteFolder_)).has_filename()) siteFolder_ += '\\';
  nativeSiteFolder_ = NativePath(siteFolder_);
  if (manager_.SiteOpen(name) != 0) {
    throw Failure(kDatabase, NativePath(folder_ + name) + ": a file of the site cannot be opened");
  }
}

void LegacySession::NeedFolder() const {
  std::error_code error;
  if (!fs::is_directory(PathOf(nativeSiteFolder_), error)) {
    throw Failure(kFileSystem, nativeSiteFolder_ + ": the site folder is not there");
  }
}

void LegacySession::Close() {
  if (manager_.SiteClose() != 0) throw Failure(kDatabase, "the older database cannot be written");
}

std::string LegacySession::Shown(const std::string& path) const {
  const bool isInSite =
      !siteFolder_.empty() && path.size() > siteFolder_.size() && path.starts_with(siteFolder_);
  return isInSite ? NativePath(path).substr(nativeSiteFolder_.size()) : NativePath(path);
}

// The `\` paths that `native` may stand for, likeliest first.
std::array<std::string, 2> LegacySession::Candidates(const std::string& native) const {
  return {AbsolutePath(native), AbsolutePath(NameOf(PathOf(nativeSiteFolder_) / PathOf(native)))};
}

std::string LegacySession::FileOf(const std::string& native) const {
  for (const std::string& path : Candidates(native)) {
    std::error_code error;
    if (path.starts_with(siteFolder_) && fs::is_regular_file(PathOf(NativePath(path)), error))
      return path;
  }
  throw Failure(kFileSystem, native + ": no such file in the site");
}

std::string LegacySession::EntryOf(const std::string& native) {
  UrlID id;
  if (manager_.UrlFind(native, id) == 0) return native;
  for (const std::string& path : Candidates(native)) {
    if (manager_.UrlFind(path, id) == 0) return path;
  }
  throw Failure(kUsage, native + ": the site knows no such file or URL");
}

bool LegacySession::ReadLink(int number, LegacyLink& link) {
  UrlID from;
  UrlID to;
  if (manager_.LinkBothSides(number, from, to) != 0) return false;
  link.from = Shown(Take(manager_.UrlUrl(from)));
  const std::string target = Take(manager_.UrlUrl(to));
  link.to = to.kind == kKindPath ? Shown(target) : target;
  link.kind = to.kind;
  link.type = manager_.GetLinkType(number);
  link.text = Take(manager_.GetLinkAsIsUrl(number));
  link.alt = Take(manager_.GetLinkImgAlt(number));
  const int status = manager_.GetLinkStatus(number);
  link.exists = manager_.GetLastError() == kSitOk && (status & kStatusBroken) == 0;
  return true;
}

void LegacySession::ForEachLink(const std::string& from, const std::string& to,
                                const EachLink& each) {
  LegacyLink link;
  if (from.empty() && to.empty()) {
    const int count = manager_.LinkNum();
    for (int number = 0; number < count; ++number) {
      if (ReadLink(number, link)) each(link);
    }
    return;
  }
  UrlID id;
  manager_.UrlFind(EntryOf(from.empty() ? to : from), id);
  const auto next = from.empty() ? &SitMgrBase::UrlBackLinks : &SitMgrBase::UrlForeLinks;
  for (int number; (number = (manager_.*next)(id)) >= 0;) {
    if (ReadLink(number, link)) each(link);
  }
}

}  // namespace zvrsit::cli
