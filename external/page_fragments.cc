#include "external/page_fragments.h"

#include "external/curl_library.h"

#include <unordered_set>

#include "dom/code_conv.h"
#include "dom/document.h"

namespace zvrsit {
namespace {

using Names = std::unordered_set<std::string>;

Names NamesIn(std::string_view body) {
  Names names;
  CodeConv text;
  Document page;
  if (!text.Import(body.data(), body.size(), 0) ||
      page.createNodes(text.text(), static_cast<int>(text.length()), nullptr, true) != 0) {
    return names;
  }
  for (const ElementAttribute& id : page.attributesNamed(Attr::kId)) {
    names.insert(id.attribute.value());
  }
  for (const std::uint32_t index : page.elementsOf(Tag::kA)) {
    const Attribute name = page.element(index).attributes().find(Attr::kName);
    if (name) names.insert(name.value());
  }
  return names;
}

std::string PercentDecoded(const std::string& text) {
  int length = 0;
  char* const decoded =
      Curl().easy_unescape(nullptr, text.c_str(), static_cast<int>(text.size()), &length);
  if (decoded == nullptr) return text;
  std::string copy(decoded, static_cast<std::size_t>(length));
  Curl().free(decoded);
  return copy;
}

bool Has(const Names& names, const std::string& fragment) {
  for (const std::string& form : {fragment, PercentDecoded(fragment)}) {
    if (names.contains(form) || names.contains("user-content-" + form)) return true;
  }
  return false;
}

}  // namespace

std::vector<std::pair<std::string, FragmentState>> LookForFragments(
    const ReceivedPage& page, const std::vector<std::string>& fragments) {
  const bool isPage = page.contentType.empty() || page.contentType.starts_with("text/html") ||
                      page.contentType.starts_with("application/xhtml+xml");
  const Names names = isPage ? NamesIn(page.body) : Names();
  std::vector<std::pair<std::string, FragmentState>> states;
  for (const std::string& fragment : fragments) {
    const FragmentState state = !isPage || Has(names, fragment) ? FragmentState::kFound
                                : page.isWhole                  ? FragmentState::kMissing
                                                                : FragmentState::kUnknown;
    states.emplace_back(fragment, state);
  }
  return states;
}

}  // namespace zvrsit
