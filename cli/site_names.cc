#include "cli/site_names.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "findings/url_check.h"
#include "platform/native_path.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

}  // namespace

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

SiteNames::SiteNames(std::string folder) : folder_(std::move(folder)) {
  if (PathOf(NativePath(folder_)).has_filename()) folder_ += '\\';
  native_ = NativePath(folder_);
}

std::string SiteNames::ShownNative(const std::string& native) const {
  const bool isBelow = native.size() > native_.size() && native.starts_with(native_);
  return WithoutCredentials(isBelow ? native.substr(native_.size()) : native);
}

std::vector<std::string> SiteNames::Candidates(const std::string& native) const {
  std::vector<std::string> paths{AbsolutePath(native)};
  const std::string below = PathBelow(folder_, native);
  if (!below.empty()) paths.push_back(below);
  paths.push_back(AbsolutePath(NameOf(PathOf(native_) / PathOf(native))));
  return paths;
}

std::string SiteNames::FileOf(const std::string& native) const {
  const char* what = ": no such file";
  ExitCode code = kFileSystem;
  for (const std::string& path : Candidates(native)) {
    std::error_code error;
    const fs::file_status status = fs::status(PathOf(NativePath(path)), error);
    if (!fs::is_regular_file(status)) {
      if (fs::is_directory(status) && code == kFileSystem) what = ": this is a folder";
      continue;
    }
    if (AreOf(path)) return path;
    what = ": this file lies outside of the site";
    code = kUsage;
  }
  throw Failure(code, native + what);
}

}  // namespace zvrsit::cli
