#include "css/reference_resolver.h"

namespace zvrsit {

void ReferenceResolver::BeginFile(const std::string& root, const std::string& path) {
  root_ = root;
  file_ = path;
  isBegun_ = false;
}

void ReferenceResolver::SetLiveUrl(std::string_view url, std::string_view siteFolder) {
  resolver_.SetLiveUrl(url, siteFolder);
}

void ReferenceResolver::SetBase(std::string_view baseHref) {
  Begun().SetBase(baseHref);
}

TargetResolver& ReferenceResolver::Begun() {
  if (!isBegun_) resolver_.BeginPage(root_, file_);
  isBegun_ = true;
  return resolver_;
}

}  // namespace zvrsit
