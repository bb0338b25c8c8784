#include "css/reference_resolver.h"

#include "util/mb_string.h"

namespace zvrsit {
void ReferenceResolver::BeginFile(const std::string& root, const std::string& path) {
  const std::string_view folder = FolderOf(path);
  if (hasBase_ || folder != folder_ || root != root_) {
    recent_.clear();
    folder_ = folder;
    root_ = root;
  }
  file_ = path;
  isBegun_ = false;
  hasBase_ = false;
}

void ReferenceResolver::SetLiveUrl(std::string_view url, std::string_view siteFolder) {
  resolver_.SetLiveUrl(url, siteFolder);
  recent_.clear();
}

void ReferenceResolver::SetBase(std::string_view baseHref) {
  Begun().SetBase(baseHref);
  recent_.clear();
  hasBase_ = true;
}

// For most files this is never called: all their references are known already.
TargetResolver& ReferenceResolver::Begun() {
  if (!isBegun_) resolver_.BeginPage(root_, file_);
  isBegun_ = true;
  return resolver_;
}

TargetKind ReferenceResolver::Resolve(std::string_view reference, std::string& out) {
  if (!IsTargetOfFolder(reference)) return Begun().Resolve(reference, out);
  const Place* known = recent_.Find(reference);
  if (known == nullptr) {
    const TargetKind kind = Begun().Resolve(reference, out);
    recent_.Put(reference, {kind, out});
    return kind;
  }
  if (known->kind != TargetKind::kNone && known->kind != TargetKind::kUnresolvable) {
    out = known->text;
  }
  return known->kind;
}

}  // namespace zvrsit
