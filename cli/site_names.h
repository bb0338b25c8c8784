// The names of one site's files: as the user gives them, as they are shown, and as `\` paths.
#pragma once

#include <string>
#include <vector>

namespace zvrsit::cli {

// The `\` path of a native path, made absolute. On Windows it has the letter case of the disk;
// elsewhere the disk is not asked. Throws Failure(kUsage) for a name that no path can have.
std::string AbsolutePath(const std::string& native);
// The same for a folder: it ends in `\`.
std::string FolderPath(const std::string& native);
// The `\` path below the `\` path `folder` that a native name leads to, also through links of the
// file system. Empty when it leads elsewhere.
std::string PathBelow(const std::string& folder, const std::string& native);
// The native form of a `\` path.
std::string NativePath(const std::string& path);

class SiteNames {
 public:
  SiteNames() = default;
  // `folder` is the `\` path of the site folder; one without a `\` at its end is given one.
  explicit SiteNames(std::string folder);

  const std::string& folder() const { return folder_; }  // the `\` path
  const std::string& nativeFolder() const { return native_; }
  // Whether a `\` path lies below the folder.
  bool AreOf(const std::string& path) const { return path.starts_with(folder_); }

  // How a `\` path is shown: the native path, relative to the site folder when it lies below it.
  std::string Shown(const std::string& path) const { return ShownNative(NativePath(path)); }
  // The same for a native path.
  std::string ShownNative(const std::string& native) const;

  // What the user may mean by `native`. It is relative to the working folder or to the site folder,
  // or leads to a file of the site through links of the file system.
  //
  // The `\` paths, likeliest first.
  std::vector<std::string> Candidates(const std::string& native) const;
  // The `\` path of a file of the site that is there; throws Failure: kFileSystem when it is not,
  // kUsage when it lies elsewhere.
  std::string FileOf(const std::string& native) const;

 private:
  std::string folder_;
  std::string native_;
};

}  // namespace zvrsit::cli
