#include "cli/link_report.h"

#include <fmt/core.h>

#include <algorithm>
#include <memory>
#include <unordered_map>

#include "links/link_type.h"

namespace zvrsit::cli {
namespace {

// Names of entries, each asked for once.
class Names {
 public:
  explicit Names(Session& session) : session_(session) {}

  const std::string& Of(const UrlID& id) {
    auto& known = id.kind == kKindUrl ? urls_ : paths_;
    const auto [entry, isNew] = known.try_emplace(id.id);
    if (isNew) entry->second = session_.ShownEntry(id);
    return entry->second;
  }

 private:
  Session& session_;
  std::unordered_map<int, std::string> urls_;
  std::unordered_map<int, std::string> paths_;
};

bool IsBroken(const SiteLink& link) {
  return link.to.kind == kKindPath && !link.exists;
}

template <class Keep>
std::vector<ShownLink> Show(Session& session, const std::vector<int>& numbers, Keep keep) {
  Names names(session);
  std::vector<ShownLink> shown;
  SiteLink link;
  for (const int number : numbers) {
    if (session.manager().GetLink(number, link) != 0 || !keep(link)) continue;
    shown.push_back({names.Of(link.from), names.Of(link.to), link});
  }
  return shown;
}

std::vector<int> AllNumbers(Session& session) {
  const std::unique_ptr<std::vector<int>> numbers(session.manager().EnumLink());
  return numbers == nullptr ? std::vector<int>() : std::move(*numbers);
}

}  // namespace

std::vector<ShownLink> ShowLinks(Session& session, const std::vector<int>& numbers) {
  return Show(session, numbers, [](const SiteLink&) { return true; });
}

std::vector<ShownLink> AllLinks(Session& session) {
  return ShowLinks(session, AllNumbers(session));
}

std::vector<ShownLink> BrokenLinks(Session& session) {
  std::vector<ShownLink> broken = Show(session, AllNumbers(session), &IsBroken);
  std::stable_sort(broken.begin(), broken.end(),
                   [](const ShownLink& a, const ShownLink& b) { return a.from < b.from; });
  return broken;
}

Json LinksAsJson(const std::vector<ShownLink>& links) {
  Json rows = Json::array();
  for (const ShownLink& shown : links) {
    rows.push_back({{"from", JsonText(shown.from)},
                    {"to", JsonText(shown.to)},
                    {"kind", shown.link.to.kind},
                    {"type", LinkTypeName(shown.link.type)},
                    {"code", shown.link.type},
                    {"text", JsonText(shown.link.text)},
                    {"alt", JsonText(shown.link.alt)},
                    {"count", shown.link.count},
                    {"exists", shown.link.exists}});
  }
  return rows;
}

void PrintLinks(const std::vector<ShownLink>& links) {
  for (const ShownLink& shown : links) {
    fmt::print("{} -> {}  {}", LineText(shown.from), LineText(shown.to),
               LinkTypeName(shown.link.type));
    if (shown.link.count > 1) fmt::print(" x{}", shown.link.count);
    if (IsBroken(shown.link)) fmt::print("  broken");
    fmt::print("\n");
  }
}

void PrintBroken(const std::vector<ShownLink>& links) {
  const std::string* source = nullptr;
  for (const ShownLink& shown : links) {
    if (source == nullptr || *source != shown.from) fmt::print("{}\n", LineText(shown.from));
    source = &shown.from;
    fmt::print("  {} -> {}  {}{}\n", LineText(shown.link.text), LineText(shown.to),
               LinkTypeName(shown.link.type), shown.link.outside ? "  outside of the site" : "");
  }
}

}  // namespace zvrsit::cli
