#include "cli/session.h"

#include <cstdlib>
#include <filesystem>

#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "cli/output.h"
#include "platform/native_path.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSiteProfiles = "sites.R";
constexpr const char* kServerProfiles = "servers.R";
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
  manager_->setDB(FolderPath(database_).c_str(), kSiteProfiles, kServerProfiles, 0);
  std::vector<std::string*>* const names = manager_->EnumSiteProf();
  TakeList(names);
  if (names == nullptr) {
    throw Failure(kDatabase,
                  NameOf(folder / kSiteProfiles) + ": this file, or sites.S beside it, is damaged");
  }
}

Session::~Session() {
  if (manager_ != nullptr) manager_->SiteClose();
}

void Session::Open(const std::string& name) {
  SiteProfile profile;
  if (manager_->GetSiteProf(name, profile) != 0) {
    throw Failure(kUsage, "there is no site named \"" + name + "\"");
  }
  siteFolder_ = profile.folders[kSlotSiteFolder];
  nativeSiteFolder_ = NativePath(siteFolder_);
  const int result = manager_->SiteOpen(name, 0);
  if (result == -2) {
    std::error_code error;
    const bool folderIsThere = fs::is_directory(PathOf(nativeSiteFolder_), error);
    throw Failure(kFileSystem,
                  folderIsThere ? NativePath(profile.topFile) + ": the site's top file is not there"
                                : nativeSiteFolder_ + ": the site folder is not there");
  }
  if (result != 0 || manager_->GetPathDB() == nullptr) {
    throw Failure(kDatabase, NameOf(PathOf(database_) / PathOf(name)) +
                                 ": a table of the site is damaged; remove the files of this "
                                 "folder, and rebuild the site");
  }
}

void Session::OpenToAsk(const std::string& name) {
  Open(name);
  const int state = manager_->GetSiteProfRebuildState();
  if (state == 0) Warn("\"" + name + "\" was not rebuilt: zvrsit rebuild " + name);
  if (state == 1) Warn("the last rebuild of \"" + name + "\" did not reach its end");
}

void Session::Close() {
  const int flushed = manager_->FlushSite();
  if (manager_->SiteClose() != 0 || flushed != 0) {
    throw Failure(kFileSystem, "the database could not be written");
  }
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
  const fs::path site = PathOf(nativeSiteFolder_);
  const fs::path given = PathOf(native);
  std::error_code error;
  const fs::path root = fs::canonical(site, error);
  const fs::path below = fs::weakly_canonical(given, error).lexically_relative(root);
  if (!error && !below.empty() && *below.begin() != "..") {
    paths.push_back(AbsolutePath(NameOf(site / below)));
  }
  paths.push_back(AbsolutePath(NameOf(site / given)));
  return paths;
}

std::string Session::FileOf(const std::string& native) const {
  bool isThere = false;
  for (const std::string& path : Candidates(native)) {
    std::error_code error;
    if (!fs::is_regular_file(PathOf(NativePath(path)), error)) continue;
    if (IsInSite(path)) return path;
    isThere = true;
  }
  if (isThere) throw Failure(kUsage, native + ": this file lies outside of the site");
  throw Failure(kFileSystem, native + ": no such file");
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
  return EntryOf(nativeOrUrl);
}

}  // namespace zvrsit::cli
