#include "links/site_url.h"

#include <algorithm>
#include <vector>

#include "links/classic_target.h"
#include "platform/code_page_text.h"
#include "util/ascii.h"
#include "util/mb_string.h"

namespace zvrsit {
namespace {

constexpr std::string_view kSiteSchemes[] = {"http",   "ftp",  "mailto", "file",
                                             "telnet", "news", "gopher"};

// The folder of `path` with its "\", or `siteRoot` up to its separator: what a target is put
// after. False when the page has no folder.
bool TargetPrefix(std::string_view siteRoot, std::string_view pagePath, std::string& target,
                  std::string_view& prefix) {
  if (!target.empty() && target.front() == '/') {
    if (!siteRoot.empty() && FolderOf(siteRoot) == siteRoot) target.erase(0, 1);
    prefix = siteRoot;
    return true;
  }
  prefix = FolderOf(pagePath);
  return !prefix.empty();
}

// The segments of a "\" path in one pass. A separator is a "\" that is no trail byte.
class DotCollapser {
 public:
  explicit DotCollapser(std::string& path) : path_(path) {}

  // Removes every "\.\" and then every "\..\" with the segment before it, from the front. A "." or
  // ".." before the first separator or after the last one is an ordinary name. False when there is
  // no separator before the segment that a ".." would remove.
  bool Collapse() {
    if (path_.find("\\.") == std::string::npos) return true;
    std::size_t begin = 0;
    for (std::size_t i = 0; i < path_.size(); ++i) {
      if (platform::IsDbcsLeadByte(static_cast<unsigned char>(path_[i]))) {
        ++i;
      } else if (path_[i] == '\\') {
        if (!TakeSegment(begin, i)) return false;
        begin = i + 1;
      }
    }
    Keep(begin, path_.size());
    path_.resize(size_);
    return true;
  }

 private:
  // The segment from `begin` to the separator at `end`.
  bool TakeSegment(std::size_t begin, std::size_t end) {
    const std::string_view segment(path_.data() + begin, end - begin);
    if (starts_.empty()) {  // what stands before the first separator stays
      starts_.reserve(16);
      Keep(begin, end + 1);
      starts_.push_back(size_);
      return true;
    }
    if (segment == ".") return true;
    if (segment == "..") {
      if (starts_.size() < 2) return false;
      starts_.pop_back();
      size_ = starts_.back();
      return true;
    }
    Keep(begin, end + 1);
    starts_.push_back(size_);
    return true;
  }

  void Keep(std::size_t begin, std::size_t end) {
    std::copy(path_.begin() + static_cast<std::ptrdiff_t>(begin),
              path_.begin() + static_cast<std::ptrdiff_t>(end),
              path_.begin() + static_cast<std::ptrdiff_t>(size_));
    size_ += end - begin;
  }

  std::string& path_;
  std::size_t size_ = 0;             // of the result, which lies at the front of the path
  std::vector<std::size_t> starts_;  // where segments of the result begin, from the second one on
};

}  // namespace

bool ClassicIsExternal(std::string_view target) {
  const auto colon = target.find(':');
  if (colon == std::string_view::npos || target.find('#') < colon) return false;
  const std::string_view scheme = target.substr(0, colon);
  return IsAmongLower(scheme, kSiteSchemes);
}

bool HasFragment(std::string_view target) {
  return target.find('#') != std::string_view::npos;
}

int ClassicLocalPath(std::string_view siteRoot, std::string_view pagePath, std::string_view target,
                     std::string& out) {
  if (ClassicIsExternal(target)) return -1;
  if (!target.empty() && target.front() == '#') {
    out = pagePath;
    return 0;
  }
  std::string path(target);
  ReplaceCharMB(path, '\\', '/');
  std::string_view prefix;
  if (!TargetPrefix(siteRoot, pagePath, path, prefix)) return -1;
  path.insert(0, prefix);
  ReplaceCharMB(path, '/', '\\');
  // This comes before the query is cut off, on purpose: a ".." inside a query counts.
  if (!DotCollapser(path).Collapse()) return -1;
  path.resize(std::min({FindHash(path), FindQuery(path), path.size()}));
  out = std::move(path);
  return 0;
}

SiteUrl::SiteUrl(const std::string& siteRoot, const std::string& pagePath, const std::string& href)
    : siteRoot_(siteRoot), pagePath_(pagePath), href_(href) {}

int SiteUrl::IsExternal() {
  return ClassicIsExternal(href_) ? 1 : 0;
}

int SiteUrl::HasFragment() {
  return zvrsit::HasFragment(href_) ? 1 : 0;
}

int SiteUrl::GetLocalPath(std::string& out) {
  return ClassicLocalPath(siteRoot_, pagePath_, href_, out);
}

}  // namespace zvrsit
