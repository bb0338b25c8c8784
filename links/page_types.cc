#include "links/page_types.h"

#include <algorithm>
#include <iterator>

#include "util/ascii.h"
#include "util/file_type.h"
#include "util/mb_string.h"

namespace zvrsit {
namespace {

bool IsOfExtension(char c) {
  return IsAsciiLetter(c) || IsAsciiDigit(c) || c == '-' || c == '_';
}

// The extensions of a list, in lower case; none where the text is no list.
std::vector<std::string> Split(std::string_view list) {
  std::vector<std::string> extensions(1);
  for (const char c : list) {
    if (c == ' ' || c == ',') {
      extensions.emplace_back();
    } else if (IsOfExtension(c)) {
      extensions.back().push_back(LowerAscii(c));
    } else {
      return {};
    }
  }
  std::erase(extensions, "");
  std::sort(extensions.begin(), extensions.end());
  extensions.erase(std::unique(extensions.begin(), extensions.end()), extensions.end());
  return extensions;
}

// kHtml for a name that is none of them.
PageSyntax SiteDataOf(std::string_view name, std::string_view extension) {
  if (name == "_redirects") return PageSyntax::kRedirects;
  if (name == "robots.txt") return PageSyntax::kRobots;
  if (extension == "webmanifest") return PageSyntax::kManifest;
  if (extension == "json") {
    const bool isManifest = name.starts_with("manifest") || name.ends_with("manifest.json");
    return isManifest ? PageSyntax::kManifest : PageSyntax::kHtml;
  }
  const bool isSitemap = extension == "xml" && name.find("sitemap") != std::string_view::npos;
  return isSitemap ? PageSyntax::kSitemap : PageSyntax::kHtml;
}

}  // namespace

PageTypes::PageTypes(std::string_view list) : extensions_(Split(list)) {
  if (extensions_.empty()) extensions_ = Split(kUsual);
}

bool PageTypes::IsList(std::string_view list) {
  return !Split(list).empty();
}

bool PageTypes::Hold(std::string_view path) const {
  return std::binary_search(extensions_.begin(), extensions_.end(), ExtensionOf(path));
}

std::string PageTypes::list() const {
  std::string list;
  for (const std::string& extension : extensions_) {
    list.append(list.empty() ? "" : " ").append(extension);
  }
  return list;
}

std::string ExtensionOf(std::string_view path) {
  const std::size_t dot = FindLastCharMB(path, '.');
  if (dot == std::string_view::npos) return {};
  std::string extension(path.substr(dot + 1));
  if (!std::all_of(extension.begin(), extension.end(), IsOfExtension)) return {};
  LowerAsciiLetters(extension);
  return extension;
}

PageSyntax PageSyntaxOf(std::string_view path) {
  if (ClassifyFileType(path) == FT_HTML) return PageSyntax::kHtml;
  const std::string extension = ExtensionOf(path);
  if (extension == "svg") return PageSyntax::kDrawing;
  if (extension == "xhtml" || extension == "xht") return PageSyntax::kXml;
  const PageSyntax data = SiteDataOf(path.substr(FolderOf(path).size()), extension);
  return IsSiteData(data) ? data : PageSyntax::kServer;
}

}  // namespace zvrsit
