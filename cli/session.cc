#include "cli/session.h"

#include <cstdlib>
#include <filesystem>

#include "cli/exit_code.h"
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
  if (base != nullptr && *base != '\0') return (fs::path(base) / "zvrsit").string();
#else
  const char* base = std::getenv("XDG_DATA_HOME");
  if (base != nullptr && *base == '/') return (fs::path(base) / "zvrsit").string();
  const char* home = std::getenv("HOME");
  if (home != nullptr && *home == '/') return (fs::path(home) / ".local/share/zvrsit").string();
#endif
  throw Failure(kUsage, "no home folder is known: name the database with --db FOLDER");
}

bool StartsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

}  // namespace

std::string AbsolutePath(const std::string& native) {
  std::error_code error;
  const fs::path absolute = fs::absolute(native, error).lexically_normal();
  std::string path;
  if (error || !platform::FromNativePath(absolute.string(), path)) {
    throw Failure(kUsage, native + ": a name with this character cannot be used");
  }
  return path;
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

Session::Session(const Options& options, Database database) {
  const fs::path folder = options.database.empty() ? DefaultDatabase() : options.database;
  std::error_code error;
  if (database == Database::kMake) {
    fs::create_directories(folder, error);
    if (error) throw Failure(kFileSystem, folder.string() + ": " + error.message());
  } else if (!fs::exists(folder / kSiteProfiles, error)) {
    throw Failure(kDatabase,
                  folder.string() + ": there is no database here (zvrsit add makes one)");
  }
  lock_ = std::make_unique<LockFile>((folder / "lock").string(), kPatience);
  manager_ = std::make_unique<SiteMgr>();
  manager_->setDom(&dom_);
  std::string dir = AbsolutePath(folder.string());
  if (dir.back() != '\\') dir += '\\';
  manager_->setDB(dir.c_str(), kSiteProfiles, kServerProfiles, 0);
  if (!ProfilesAreReadable()) {
    throw Failure(kDatabase, (folder / kSiteProfiles).string() + ": damaged or not readable");
  }
}

Session::~Session() {
  if (manager_ != nullptr) manager_->SiteClose();
}

bool Session::ProfilesAreReadable() {
  const std::unique_ptr<std::vector<std::string*>> names(manager_->EnumSiteProf());
  if (names == nullptr) return false;
  for (std::string* name : *names) SiteMgr::DeleteString(name);
  return true;
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
    const bool folderIsThere = fs::is_directory(nativeSiteFolder_, error);
    throw Failure(kFileSystem,
                  folderIsThere ? NativePath(profile.topFile) + ": the site's top file is not there"
                                : nativeSiteFolder_ + ": the site folder is not there");
  }
  if (result != 0 || manager_->GetPathDB() == nullptr) {
    throw Failure(kDatabase, "the tables of \"" + name + "\" are damaged or cannot be read");
  }
}

void Session::Close() {
  const int flushed = manager_->FlushSite();
  if (manager_->SiteClose() != 0 || flushed != 0) {
    throw Failure(kFileSystem, "the database could not be written");
  }
}

std::string Session::Shown(const std::string& path) const {
  if (path.size() > siteFolder_.size() && StartsWith(path, siteFolder_)) {
    return NativePath(path).substr(nativeSiteFolder_.size());
  }
  return NativePath(path);
}

std::string Session::ShownEntry(const UrlID& id) {
  if (id.kind == kKindUrl) return Take(manager_->UrlUrl(id.id));
  return Shown(
      Take(id.kind == kKindFolder ? manager_->FolderName(id.id) : manager_->UrlPath(id.id)));
}

std::string Session::PathOf(const std::string& native) const {
  std::error_code error;
  const fs::path real = fs::canonical(native, error);
  if (!error) {
    const fs::path root = fs::canonical(nativeSiteFolder_, error);
    if (!error) {
      const fs::path below = real.lexically_relative(root);
      if (!below.empty() && *below.begin() != "..") {
        return AbsolutePath((fs::path(nativeSiteFolder_) / below).string());
      }
    }
  }
  const fs::path inSite = fs::path(nativeSiteFolder_) / native;
  return AbsolutePath(error || !fs::exists(native, error) ? inSite.string() : native);
}

UrlID Session::EntryOf(const std::string& native) {
  int number = manager_->FindPath(PathOf(native));
  if (number < 0) number = manager_->FindPath(AbsolutePath(native));
  if (number < 0) throw Failure(kUsage, native + ": the site has no such file");
  return UrlID(kKindPath, number);
}

}  // namespace zvrsit::cli
