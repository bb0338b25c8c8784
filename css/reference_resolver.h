// From the references of pages and sheets to files of the site and external URLs.
#pragma once

#include <string>
#include <string_view>

#include "links/link_rules.h"
#include "links/target_resolver.h"

namespace zvrsit {

// A TargetResolver that is told of a file when its first reference comes: many have none.
class ReferenceResolver {
 public:
  explicit ReferenceResolver(LinkRules rules = LinkRules::Classic) : resolver_(rules) {}

  // Begins a page or a sheet: references are resolved from `path`, and "/" is `root`.
  void BeginFile(const std::string& root, const std::string& path);
  // As those of TargetResolver. A live URL must be set before files are begun.
  void SetLiveUrl(std::string_view url, std::string_view siteFolder);
  void SetBase(std::string_view baseHref);
  TargetKind Resolve(std::string_view reference, std::string& out) {
    return Begun().Resolve(reference, out);
  }
  const RuleFlags& rules() const { return resolver_.rules(); }

 private:
  TargetResolver& Begun();

  TargetResolver resolver_;
  std::string root_;
  std::string file_;
  bool isBegun_ = false;  // resolver_ has been told of the file
};

}  // namespace zvrsit
