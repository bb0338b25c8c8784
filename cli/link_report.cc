#include "cli/link_report.h"

#include <filesystem>
#include <unordered_map>

#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "findings/url_check.h"
#include "links/link_type.h"

namespace zvrsit::cli {
namespace {

// The entries that links lead to; each is read only once.
class Entries {
 public:
  explicit Entries(Session& session) : session_(session) {}

  const std::string& NameOf(const UrlID& id) {
    auto& known = id.kind == kKindUrl ? urls_ : paths_;
    const auto [entry, isNew] = known.try_emplace(id.id);
    if (isNew) entry->second = session_.ShownEntry(id);
    return entry->second;
  }

  // Whether a file is there about which the tables know nothing, because it lies outside of the
  // site.
  bool IsOnDisk(const UrlID& path) {
    const auto [entry, isNew] = onDisk_.try_emplace(path.id);
    if (isNew) {
      std::error_code error;
      const std::string name = NativePath(Take(session_.manager().UrlPath(path.id)));
      entry->second = std::filesystem::is_regular_file(PathOf(name), error);
    }
    return entry->second;
  }

 private:
  Session& session_;
  std::unordered_map<int, std::string> urls_;
  std::unordered_map<int, std::string> paths_;
  std::unordered_map<int, bool> onDisk_;
};

std::string NoteOf(const SiteLink& link) {
  return link.unservable ? "  no server has such a name"
         : link.outside  ? "  outside of the site"
                         : "";
}

}  // namespace

void ForEachLink(Session& session, const std::vector<int>& numbers,
                 const std::function<void(const ShownLink&)>& each) {
  Entries entries(session);
  ShownLink shown;
  for (const int number : numbers) {
    if (session.manager().GetLink(number, shown.link) != 0) continue;
    shown.link.text = WithoutCredentials(shown.link.text);
    shown.from = entries.NameOf(shown.link.from);
    shown.to = entries.NameOf(shown.link.to);
    // The table marks such a name by a separator behind it.
    if (shown.link.unservable && !shown.to.empty()) shown.to.pop_back();
    if (shown.link.outside) shown.link.exists = entries.IsOnDisk(shown.link.to);
    each(shown);
  }
}

Json LinkAsJson(const ShownLink& shown) {
  return {{"from", JsonText(shown.from)},    {"to", JsonText(shown.to)},
          {"kind", shown.link.to.kind},      {"type", LinkTypeName(shown.link.type)},
          {"code", shown.link.type},         {"text", JsonText(shown.link.text)},
          {"alt", JsonText(shown.link.alt)}, {"count", shown.link.count},
          {"exists", shown.link.exists}};
}

void PrintLink(const ShownLink& shown) {
  Print("{} -> {}  {}", LineText(shown.from), LineText(shown.to), LinkTypeName(shown.link.type));
  if (shown.link.count > 1) Print(" x{}", shown.link.count);
  Print("{}{}\n", NoteOf(shown.link), shown.link.exists ? "" : "  missing");
}

}  // namespace zvrsit::cli
