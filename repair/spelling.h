// How a reference can be written so that it leads to another place and is still like the old one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "repair/file_references.h"
#include "repair/site_world.h"

namespace zvrsit {

// The parts of a target: what stands before its path, the path, and the query and fragment.
struct TargetParts {
  std::string_view before;  // white space; a scheme and a host
  std::string_view path;
  std::string_view after;
  bool hasHost = false;
};
TargetParts PartsOf(std::string_view target, const RuleFlags& rules);

// The folder to which a relative path climbs from `folder` although the shortest way to `direct`,
// where it leads, is inside: "../../a/b/x" in a/b/. Empty when it takes the shortest way.
std::string TopOf(std::string_view path, std::string folder, const std::string& direct);

// One target, written for other places.
class Spelling {
 public:
  // `world` stands at the file, with the bases, in which the new text will stand. `top`: a folder
  // to which relative paths climb if they can; may be empty.
  Spelling(const FoundReference& old, SiteWorld& world, std::string top);

  // The ways to write `path`, the likeliest first. A path that ends in "\" means a folder.
  // `ofOtherKind`: relative ones in place of all others, and the other way round. `encodesAll`:
  // with nothing but ASCII.
  std::vector<std::string> ListFor(const std::string& path, bool ofOtherKind,
                                   bool encodesAll) const;
  // The same for a URL on the server of the site.
  std::vector<std::string> ListForUrl(const std::string& url) const;

 private:
  using Names = std::vector<std::string_view>;

  std::string Relative(std::string_view path, bool encodesAll) const;
  bool WantsDot(const std::string& path) const;
  void AddFromRoot(std::string_view path, bool encodesAll, std::vector<std::string>& out) const;
  void AddWithHost(std::string_view path, bool encodesAll, std::vector<std::string>& out) const;
  std::string Joined(const Names& names, bool isFolder, bool encodesAll) const;
  std::string Spelled(std::string_view name, bool encodesAll) const;
  std::string Encoded(std::string_view name, bool encodesAll) const;
  bool StaysRaw(char c, bool encodesAll) const;
  std::string LivePath() const;

  const FoundReference& old_;
  SiteWorld& world_;
  const std::string top_;
  const TargetParts parts_;
  std::vector<std::pair<std::string, std::string_view>> spelled_;  // names as the old text has them
  char slash_ = '/';
  bool hasRawBytes_ = false;
  bool lowerHex_ = false;
};

}  // namespace zvrsit
