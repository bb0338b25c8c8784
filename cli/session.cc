#include "cli/session.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "cli/output.h"
#include "platform/native_path.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSiteProfiles = "sites.R";
constexpr const char* kServerProfiles = "servers.R";
// The profiles are opened with a backup, which is taken when they cannot be read.
constexpr int kWithBackup = 3;
constexpr std::chrono::milliseconds kPatience{3000};

std::string DefaultDatabase() {
#if defined(_WIN32)
  const char* base = std::getenv("LOCALAPPDATA");
  if (base != nullptr && *base != '\0') return NameOf(PathOf(base) / "zvrsit");
#else
  const char* base = std::getenv("XDG_DATA_HOME");
  if (base != nullptr && *base == '/') return NameOf(PathOf(base) / "zvrsit");
  const char* home = std::getenv("HOME");
  if (home != nullptr && *home == '/') return NameOf(PathOf(home) / ".local/share/zvrsit");
#endif
  throw Failure(kUsage, "no home folder is known: name the database with --db FOLDER");
}

void Need(bool done, const std::string& name, const std::error_code& error) {
  if (!done) throw Failure(kFileSystem, name + ": " + error.message());
}

// Throws Failure(kFileSystem) when the file may not be read and written.
void NeedAccess(const fs::path& path) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
      std::fopen(NameOf(path).c_str(), "r+b"), &std::fclose);
  Need(file != nullptr || errno == ENOENT, NameOf(path), {errno, std::generic_category()});
}

constexpr const char* kTables[] = {"UR", "US", "PR", "PS", "LR", "LS", "FR", "FS", "RR", "RS"};

// Whether all files of a site that was rebuilt once are in `folder`.
bool HasTables(const std::string& folder) {
  return std::all_of(std::begin(kTables), std::end(kTables), [&](const char* file) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(PathOf(folder) / file, error);
    return !error && size != 0;
  });
}

// Makes the folder if it is missing.
void RemoveTables(const std::string& folder) {
  std::error_code error;
  fs::create_directory(PathOf(folder), error);
  for (const char* file : kTables) {
    const fs::path path = PathOf(folder) / file;
    fs::remove(path, error);
    Need(!error, NameOf(path), error);
  }
}

}  // namespace

std::string DatabaseFolder(const Options& options) {
  return options.database.empty() ? DefaultDatabase() : options.database;
}

std::string AbsolutePath(const std::string& native) {
  std::error_code error;
  const fs::path absolute = AsOnDisk(fs::absolute(PathOf(native), error).lexically_normal());
  std::string path;
  if (error || !platform::FromNativePath(NameOf(absolute), path)) {
    throw Failure(kUsage, native + ": a name with this character cannot be used");
  }
  return path;
}

std::string FolderPath(const std::string& native) {
  return AbsolutePath(NameOf(PathOf(native) / ""));
}

std::string PathBelow(const std::string& folder, const std::string& native) {
  std::string path = AbsolutePath(native);
  if (path.starts_with(folder)) return path;
  const fs::path site = PathOf(NativePath(folder));
  std::error_code error;
  const fs::path root = fs::canonical(site, error);
  const fs::path below = fs::weakly_canonical(PathOf(native), error).lexically_relative(root);
  if (error || below.empty() || *below.begin() == "..") return std::string();
  return AbsolutePath(NameOf(site / below));
}

std::string NativePath(const std::string& path) {
  std::string native;
  return platform::ToNativePath(path, native) ? native : path;
}

std::string Take(std::string* text) {
  std::string result = text == nullptr ? std::string() : *text;
  SiteMgr::DeleteString(text);
  return result;
}

std::vector<std::string> TakeList(std::vector<std::string*>* list) {
  std::vector<std::string> result;
  if (list == nullptr) return result;
  for (std::string* text : *list) result.push_back(Take(text));
  SiteMgr::DeleteStrings(list);
  delete list;
  return result;
}

Session::Session(const Options& options, Database database) {
  const fs::path folder = PathOf(DatabaseFolder(options));
  std::error_code error;
  if (database == Database::kMake) {
    fs::create_directories(folder, error);
    if (error) throw Failure(kFileSystem, NameOf(folder) + ": " + error.message());
  } else if (!fs::exists(folder / kSiteProfiles, error)) {
    throw Failure(kDatabase, NameOf(folder) + ": there is no database here (zvrsit add makes one)");
  }
  database_ = NameOf(folder);
  lock_ = std::make_unique<LockFile>(NameOf(folder / "lock"), kPatience);
  manager_ = std::make_unique<SiteMgr>();
  manager_->setDom(&dom_);
  manager_->setDB(FolderPath(database_).c_str(), kSiteProfiles, kServerProfiles, kWithBackup);
  std::vector<std::string*>* const names = manager_->EnumSiteProf();
  TakeList(names);
  if (names == nullptr) {
    for (const char* file : {kSiteProfiles, "sites.S"}) NeedAccess(folder / file);
    throw Failure(kDatabase,
                  NameOf(folder / kSiteProfiles) + ": this file, or sites.S beside it, is damaged");
  }
}

Session::~Session() {
  if (manager_ != nullptr) manager_->SiteClose();
}

std::string Session::FolderOfTables() const {
  return NameOf(PathOf(database_) / PathOf(site_));
}

// False when the tables are damaged.
bool Session::OpenTables(const std::string& name) {
  SiteProfile profile;
  if (manager_->GetSiteProf(name, profile) != 0) {
    throw Failure(kUsage, "there is no site named \"" + name + "\"");
  }
  site_ = name;
  siteFolder_ = profile.folders[kSlotSiteFolder];
  nativeSiteFolder_ = NativePath(siteFolder_);
  // Opening would make what is missing, and all answers would be empty.
  if (profile.rebuildState != 0 && !HasTables(FolderOfTables())) return false;
  const int result = manager_->SiteOpen(name, 0);
  if (result == -2) {
    std::error_code error;
    const bool folderIsThere = fs::is_directory(PathOf(nativeSiteFolder_), error);
    throw Failure(kFileSystem,
                  folderIsThere ? NativePath(profile.topFile) + ": the site's top file is not there"
                                : nativeSiteFolder_ + ": the site folder is not there");
  }
  if (result != 0) throw Failure(kDatabase, "the profile of \"" + name + "\" is damaged");
  if (manager_->GetPathDB() != nullptr) return true;
  manager_->SiteClose();
  for (const char* file : kTables) NeedAccess(PathOf(FolderOfTables()) / file);
  return false;
}

void Session::Open(const std::string& name) {
  if (OpenTables(name)) return;
  throw Failure(kDatabase,
                FolderOfTables() + ": a table of the site is damaged: zvrsit rebuild " + name);
}

void Session::OpenToRebuild(const std::string& name) {
  if (OpenTables(name)) return;
  RemoveTables(FolderOfTables());
  manager_->SetSiteProfRebuildState(0, manager_->FindSiteProf(name));
  Warn(FolderOfTables() + ": a table of the site was damaged; all are made anew");
  Open(name);
}

void Session::OpenToAsk(const std::string& name) {
  Open(name);
  const int state = manager_->GetSiteProfRebuildState();
  if (state == 0) Warn("\"" + name + "\" was not rebuilt: zvrsit rebuild " + name);
  if (state == 1) Warn("the last rebuild of \"" + name + "\" did not reach its end");
}

void Session::Close() {
  if (manager_->FlushSite() != 0 || manager_->SiteClose() != 0) FailToWrite();
}

void Session::FailToWrite() {
  manager_->SetSiteProfRebuildState(1, manager_->FindSiteProf(site_));
  throw Failure(
      kFileSystem,
      FolderOfTables() + ": the tables cannot be written; when they can: zvrsit rebuild " + site_);
}

std::string Session::Shown(const std::string& path) const {
  if (path.size() > siteFolder_.size() && IsInSite(path)) {
    return NativePath(path).substr(nativeSiteFolder_.size());
  }
  return NativePath(path);
}

std::string Session::ShownEntry(const UrlID& id) {
  if (id.kind == kKindUrl) return Take(manager_->UrlUrl(id.id));
  return Shown(
      Take(id.kind == kKindFolder ? manager_->FolderName(id.id) : manager_->UrlPath(id.id)));
}

// The `\` paths that `native` may stand for, likeliest first.
std::vector<std::string> Session::Candidates(const std::string& native) const {
  std::vector<std::string> paths{AbsolutePath(native)};
  const std::string below = PathBelow(siteFolder_, native);
  if (!below.empty()) paths.push_back(below);
  paths.push_back(AbsolutePath(NameOf(PathOf(nativeSiteFolder_) / PathOf(native))));
  return paths;
}

std::string Session::FileOf(const std::string& native) const {
  const char* what = ": no such file";
  ExitCode code = kFileSystem;
  for (const std::string& path : Candidates(native)) {
    std::error_code error;
    const fs::file_status status = fs::status(PathOf(NativePath(path)), error);
    if (!fs::is_regular_file(status)) {
      if (fs::is_directory(status) && code == kFileSystem) what = ": this is a folder";
      continue;
    }
    if (IsInSite(path)) return path;
    what = ": this file lies outside of the site";
    code = kUsage;
  }
  throw Failure(code, native + what);
}

int Session::FindEntry(const std::string& native) {
  for (const std::string& path : Candidates(native)) {
    const int number = manager_->FindPath(path);
    if (number >= 0) return number;
  }
  return -1;
}

UrlID Session::EntryOf(const std::string& native) {
  const int number = FindEntry(native);
  if (number < 0) throw Failure(kUsage, native + ": the site knows no such file");
  return UrlID(kKindPath, number);
}

UrlID Session::TargetOf(const std::string& nativeOrUrl) {
  const std::unique_ptr<vec<SiteRecCell>> urls(manager_->EnumUrl());
  for (std::size_t i = 0; urls != nullptr && i < urls->size(); ++i) {
    if ((*urls)[i].GetName() == nativeOrUrl) return (*urls)[i].GetID();
  }
  const int number = FindEntry(nativeOrUrl);
  if (number < 0) throw Failure(kUsage, nativeOrUrl + ": the site knows no such file or URL");
  return UrlID(kKindPath, number);
}

}  // namespace zvrsit::cli
