#include "cli/legacy_session.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

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

// Whether a file is there and holds anything.
bool IsThere(const std::string& native) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(PathOf(native), error);
  return !error && size != 0;
}

}  // namespace

LegacySession::LegacySession(const Options& options, Database database)
    : newer_(Checked(options, database), Database::kMake),
      folder_(FolderPath(NameOf(PathOf(DatabaseFolder(options)) / kFolder))) {
  newer_.LetProfilesGo();
  newer_.HoldOlder();
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

// The native paths of a site's files; the one that holds the user's marks stands last.
std::vector<std::string> LegacySession::FilesOf(const std::string& name) {
  Profile(name);
  const int number = manager_.SiteProfGetID(name);
  const std::string links = Take(manager_.GetSiteProfLinkDB(number));
  const std::string relations = Take(manager_.GetSiteProfRelDB(number));
  std::vector<std::string> files{links, relations, Take(manager_.GetSiteProfFolderDB(number)),
                                 Take(manager_.GetSiteProfJunkDB(number)),
                                 Take(manager_.GetSiteProfUrlDB(number))};
  for (const std::string& pairs : {relations, links}) {
    if (!pairs.empty()) files.insert(files.begin(), pairs.substr(0, pairs.size() - 1) + "S");
  }
  for (std::string& file : files) file = NativePath(folder_ + file);
  return files;
}

bool LegacySession::HasFiles(const std::string& name) {
  const std::vector<std::string> files = FilesOf(name);
  return std::any_of(files.begin(), files.end(), IsThere);
}

void LegacySession::NeedWhole(const std::string& name, const std::vector<std::string>& files) {
  const std::string mend = ": zvrsit legacy rebuild " + name + " makes it anew";
  if (std::none_of(files.begin(), files.end(), IsThere)) {
    throw Failure(kDatabase,
                  "\"" + name + "\" was not rebuilt yet: run zvrsit legacy rebuild " + name);
  }
  for (const std::string& file : files) {
    if (!IsThere(file)) throw Failure(kDatabase, file + ": this file is missing" + mend);
  }
  if (manager_.SiteOpen(name) != 0) {
    throw Failure(kDatabase,
                  NativePath(folder_ + name) + ": a file of the site cannot be opened" + mend);
  }
  if (!manager_.IsSiteWhole()) {
    throw Failure(kDatabase, NativePath(folder_ + name) + ": a file of the site is damaged" + mend);
  }
}

void LegacySession::KnowFolder(const std::string& name) {
  site_ = name;
  siteFolder_ = Profile(name).dir[1];
  if (PathOf(NativePath(siteFolder_)).has_filename()) siteFolder_ += '\\';
  nativeSiteFolder_ = NativePath(siteFolder_);
}

void LegacySession::Open(const std::string& name) {
  KnowFolder(name);
  NeedWhole(name, FilesOf(name));
}

void LegacySession::OpenToRebuild(const std::string& name) {
  KnowFolder(name);
  if (manager_.SiteOpen(name) == 0) return;
  for (const std::string& file : FilesOf(name)) {
    std::error_code error;
    if (!fs::is_regular_file(PathOf(file), error)) continue;
    fs::remove(PathOf(file), error);
    if (manager_.SiteOpen(name) != 0) continue;
    Warn("the files of \"" + name + "\" were damaged and are made anew");
    return;
  }
  FailToWrite();
}

void LegacySession::NeedFolder() const {
  std::error_code error;
  if (!fs::is_directory(PathOf(nativeSiteFolder_), error)) {
    throw Failure(kFileSystem, nativeSiteFolder_ + ": the site folder is not there");
  }
}

void LegacySession::Close() {
  if (manager_.SiteClose() != 0) FailToWrite();
}

void LegacySession::FailToWrite() {
  const std::error_code error(manager_.lastErrno(), std::generic_category());
  const std::string reason = error ? ": " + error.message() : std::string();
  throw Failure(kFileSystem,
                NativePath(folder_ + site_) + ": the files here cannot be written" + reason);
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
  UrlID source = kAnyUrlID;
  UrlID target = kAnyUrlID;
  if (!from.empty()) manager_.UrlFind(EntryOf(from), source);
  if (!to.empty()) manager_.UrlFind(EntryOf(to), target);
  for (const int number : manager_.LinksBetween(source, target)) {
    LegacyLink link;
    if (ReadLink(number, link)) each(link);
  }
}

}  // namespace zvrsit::cli
