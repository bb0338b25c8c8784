#include "cli/legacy_session.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "cli/exit_code.h"
#include "cli/finished_files.h"
#include "cli/native_name.h"
#include "cli/private_folder.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSites = "sites";
constexpr const char* kServers = "servers";
// Where a change is made, in the folder of the database.
constexpr const char* kNewFolder = "new";

void RemoveFolder(const fs::path& folder) {
  std::error_code ignored;
  fs::remove_all(folder, ignored);
}

// Whether a file is there and holds anything.
bool IsThere(const std::string& native) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(PathOf(native), error);
  return !error && size != 0;
}

// Without the file of their texts, profiles have no names; opening would make an empty one.
void NeedTexts(const fs::path& profiles) {
  constexpr std::uintmax_t kHeaderSize = 8;
  std::error_code error;
  const std::uintmax_t size = fs::file_size(profiles, error);
  const std::string texts = NameOf(profiles) + "_S";
  if (error || size <= kHeaderSize || IsThere(texts)) return;
  throw Failure(kDatabase, texts + ": this file is missing; put a copy of it here");
}

// The native folder of the older database. No file of the profiles is missing in it. With kMake the
// folder itself may be missing.
std::string OlderFolder(const Options& options, Database database) {
  std::error_code error;
  const fs::path folder = PathOf(DatabaseFolder(options)) / kOlderFolder;
  if (database != Database::kMake && !fs::exists(folder / kSites, error)) {
    throw Failure(kDatabase, NameOf(folder) +
                                 ": there is no older database here (zvrsit legacy add makes one)");
  }
  for (const char* profiles : {kSites, kServers}) NeedTexts(folder / profiles);
  return NameOf(folder);
}

std::string MendOf(const std::string& site) {
  return ": zvrsit legacy rebuild " + site + " makes it anew";
}

}  // namespace

LegacySession::LegacySession(const Options& options, Database database) {
  const fs::path older = PathOf(DatabaseFolder(options)) / kOlderFolder;
  if (database != Database::kAsk || HasFinishedFiles(older)) HoldNewer(options, older);
  database_ = FolderPath(OlderFolder(options, database));
  if (database == Database::kAsk) {
    newer_.reset();
    copy_ = std::make_unique<OlderCopy>(DatabaseFolder(options), kOlderFolder);
    folder_ = FolderPath(NameOf(copy_->path()));
  } else {
    const fs::path copy = older / kNewFolder;
    RemoveFolder(copy);
    const std::error_code error = MakeOwnFolder(copy);
    if (error) throw Failure(kFileSystem, NameOf(copy) + ": " + error.message());
    folder_ = FolderPath(NameOf(copy));
    CopyOlderProfiles(older, copy);
  }
  manager_.emplace();
  if (manager_->setDB(folder_, kSites, kServers) != 0) {
    throw Failure(kDatabase,
                  Native(kSites) + ": this file, or another beside it, cannot be opened");
  }
}

// Keeps others from the older database, and ends a change of it that was cut off.
void LegacySession::HoldNewer(const Options& options, const fs::path& older) {
  newer_ = std::make_unique<Session>(options, Database::kMake);
  newer_->LetProfilesGo();
  newer_->HoldOlder();
  if (!HasFinishedFiles(older)) return;
  PutFinishedFiles(older);
  EndFinishedFiles(older);
}

LegacySession::~LegacySession() {
  LetGo();
}

void LegacySession::LetGo() {
  if (manager_) manager_->SiteClose();
  manager_.reset();
  copy_.reset();
  if (newer_ != nullptr) RemoveFolder(PathOf(NativePath(database_)) / kNewFolder);
  newer_.reset();
}

void LegacySession::Share(SitMgrBase& other) const {
  other.setDB(folder_, kSites, kServers);
}

// The native path of a file of the older database.
std::string LegacySession::Native(const std::string& file) const {
  return NativePath(database_ + file);
}

// Copies these files of the database.
void LegacySession::Bring(const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    CopyOlderFile(PathOf(NativePath(database_)), PathOf(NativePath(folder_)),
                  PathOf(NativePath(file)));
  }
}

SitSiteProperty LegacySession::Profile(const std::string& name) {
  SitSiteProperty profile;
  if (manager_->GetSiteProf(name, profile) != 0) {
    throw Failure(kUsage, "there is no older site named \"" + name + "\"");
  }
  return profile;
}

// A site's files in the database. The one with the user's marks comes last.
std::vector<std::string> LegacySession::FilesOf(const std::string& name) {
  Profile(name);
  const int number = manager_->SiteProfGetID(name);
  const std::string links = Take(manager_->GetSiteProfLinkDB(number));
  const std::string relations = Take(manager_->GetSiteProfRelDB(number));
  std::vector<std::string> files{links, relations, Take(manager_->GetSiteProfFolderDB(number)),
                                 Take(manager_->GetSiteProfJunkDB(number)),
                                 Take(manager_->GetSiteProfUrlDB(number))};
  for (const std::string& pairs : {relations, links}) {
    if (!pairs.empty()) files.insert(files.begin(), pairs.substr(0, pairs.size() - 1) + "S");
  }
  return files;
}

bool LegacySession::HasFiles(const std::string& name) {
  const std::vector<std::string> files = FilesOf(name);
  return std::any_of(files.begin(), files.end(),
                     [this](const std::string& file) { return IsThere(Native(file)); });
}

void LegacySession::NeedFiles(const std::string& name) {
  if (HasFiles(name)) return;
  throw Failure(kDatabase,
                "\"" + name + "\" was not rebuilt yet: run zvrsit legacy rebuild " + name);
}

void LegacySession::NeedToPeep(SitPeeper& peeper, const std::string& name) {
  NeedFiles(name);
  Bring({FilesOf(name).back()});
  if (peeper.IsWhole(name)) return;
  throw Failure(kDatabase,
                Native(FilesOf(name).back()) + ": this file is missing or damaged" + MendOf(name));
}

void LegacySession::NeedWhole(const std::string& name) {
  const std::string mend = MendOf(name);
  NeedFiles(name);
  for (const std::string& file : FilesOf(name)) {
    if (!IsThere(Native(file))) {
      throw Failure(kDatabase, Native(file) + ": this file is missing" + mend);
    }
  }
  Bring(FilesOf(name));
  if (manager_->SiteOpen(name) != 0) {
    throw Failure(kDatabase, Native(name) + ": a file of the site cannot be opened" + mend);
  }
  if (!manager_->IsSiteWhole()) {
    throw Failure(kDatabase, Native(name) + ": a file of the site is damaged" + mend);
  }
}

void LegacySession::KnowFolder(const std::string& name) {
  site_ = name;
  names_ = SiteNames(Profile(name).dir[kSlotSiteFolder]);
}

void LegacySession::Open(const std::string& name) {
  KnowFolder(name);
  NeedWhole(name);
}

void LegacySession::OpenToRebuild(const std::string& name) {
  KnowFolder(name);
  Bring(FilesOf(name));
  if (manager_->SiteOpen(name) == 0) return;
  for (const std::string& file : FilesOf(name)) {
    std::error_code error;
    const fs::path path = PathOf(NativePath(folder_ + file));
    if (!fs::is_regular_file(path, error)) continue;
    fs::remove(path, error);
    if (manager_->SiteOpen(name) != 0) continue;
    Warn("the files of \"" + name + "\" were damaged and are made anew");
    return;
  }
  FailToWrite();
}

void LegacySession::NeedFolder() const {
  std::error_code error;
  if (!fs::is_directory(PathOf(names_.nativeFolder()), error)) {
    throw Failure(kFileSystem, names_.nativeFolder() + ": the site folder is not there");
  }
}

void LegacySession::Commit() {
  if (!site_.empty() && manager_->SiteClose() != 0) FailToWrite();
  manager_.reset();
  const fs::path older = PathOf(NativePath(database_));
  FinishFiles(older / kNewFolder, older);
  PutFinishedFiles(older);
  EndFinishedFiles(older);
}

void LegacySession::FailToWrite() {
  const std::error_code error(manager_->lastErrno(), std::generic_category());
  const std::string reason = error ? ": " + error.message() : std::string();
  throw Failure(kFileSystem, Native(site_) + ": the files here cannot be written" + reason);
}

std::string LegacySession::EntryOf(const std::string& native) {
  UrlID id;
  if (manager_->UrlFind(native, id) == 0) return native;
  for (const std::string& path : names_.Candidates(native)) {
    if (manager_->UrlFind(path, id) == 0) return path;
  }
  throw Failure(kUsage, native + ": the site knows no such file or URL");
}

bool LegacySession::ReadLink(int number, LegacyLink& link) {
  UrlID from;
  UrlID to;
  if (manager_->LinkBothSides(number, from, to) != 0) return false;
  link.from = names_.Shown(Take(manager_->UrlUrl(from)));
  const std::string target = Take(manager_->UrlUrl(to));
  link.to = to.kind == kKindPath ? names_.Shown(target) : target;
  link.kind = to.kind;
  link.type = manager_->GetLinkType(number);
  link.text = Take(manager_->GetLinkAsIsUrl(number));
  link.alt = Take(manager_->GetLinkImgAlt(number));
  const int status = manager_->GetLinkStatus(number);
  link.exists = manager_->GetLastError() == kSitOk && (status & kStatusBroken) == 0;
  return true;
}

void LegacySession::ForEachLink(const std::string& from, const std::string& to,
                                const EachLink& each) {
  UrlID source = kAnyUrlID;
  UrlID target = kAnyUrlID;
  if (!from.empty()) manager_->UrlFind(EntryOf(from), source);
  if (!to.empty()) manager_->UrlFind(EntryOf(to), target);
  for (const int number : manager_->LinksBetween(source, target)) {
    Interrupts::Check();
    LegacyLink link;
    if (ReadLink(number, link)) each(link);
  }
}

}  // namespace zvrsit::cli
