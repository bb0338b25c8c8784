#include "cli/link_report.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "links/link_type.h"

namespace zvrsit::cli {
namespace {

// What is asked of entries, each once.
class Entries {
 public:
  explicit Entries(Session& session) : session_(session) {}

  const std::string& NameOf(const UrlID& id) {
    auto& known = id.kind == kKindUrl ? urls_ : paths_;
    const auto [entry, isNew] = known.try_emplace(id.id);
    if (isNew) entry->second = session_.ShownEntry(id);
    return entry->second;
  }

  // Whether a file is there that the tables know nothing of, as it lies outside of the site.
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

bool IsBefore(const LinkPlace& a, const LinkPlace& b) {
  return std::tie(a.line, a.column) < std::tie(b.line, b.column);
}

// By source and first place; what has no known place comes last.
bool ComesBefore(const BrokenLink& a, const BrokenLink& b) {
  if (a.from != b.from) return a.from < b.from;
  if (a.places.empty() || b.places.empty()) return a.places.size() > b.places.size();
  return IsBefore(a.places.front(), b.places.front());
}

long CountPlaces(const std::vector<BrokenLink>& links) {
  long places = 0;
  for (const BrokenLink& shown : links) places += shown.link.count;
  return places;
}

Json BrokenAsJson(const BrokenLink& shown) {
  Json row = LinkAsJson(shown);
  row["outside"] = shown.link.outside;
  row["unservable"] = shown.link.unservable;
  const bool isKnown = !shown.places.empty();
  row["line"] = isKnown ? Json(shown.places.front().line) : Json();
  row["column"] = isKnown ? Json(shown.places.front().column) : Json();
  Json& places = row["places"] = Json::array();
  for (const LinkPlace& place : shown.places) {
    places.push_back({{"line", place.line}, {"column", place.column}});
  }
  return row;
}

// One line of the report of a source.
struct BrokenLine {
  const BrokenLink* link;
  const LinkPlace* place;  // null: not known
  int count;               // of the places that the line stands for
};

void PrintLine(const BrokenLine& line) {
  const BrokenLink& shown = *line.link;
  const std::string place =
      line.place != nullptr ? fmt::format("{}:{}", line.place->line, line.place->column) : "-";
  Print("{:>9}: {} -> {}  {}", place, LineText(shown.link.text), LineText(shown.to),
        LinkTypeName(shown.link.type));
  if (line.count > 1) Print(" x{}", line.count);
  Print("{}\n", NoteOf(shown.link));
}

}  // namespace

void ForEachLink(Session& session, const std::vector<int>& numbers,
                 const std::function<void(int, const ShownLink&)>& each) {
  Entries entries(session);
  ShownLink shown;
  for (const int number : numbers) {
    if (session.manager().GetLink(number, shown.link) != 0) continue;
    shown.from = entries.NameOf(shown.link.from);
    shown.to = entries.NameOf(shown.link.to);
    if (shown.link.outside) shown.link.exists = entries.IsOnDisk(shown.link.to);
    each(number, shown);
  }
}

std::vector<BrokenLink> BrokenLinks(Session& session) {
  const std::unique_ptr<std::vector<int>> numbers(session.manager().EnumBrokenLink());
  if (numbers == nullptr) throw Failure(kDatabase, "the link table cannot be read");
  std::vector<BrokenLink> broken;
  std::vector<int> shownNumbers;
  ForEachLink(session, *numbers, [&](int number, const ShownLink& shown) {
    if (shown.link.exists) return;
    broken.push_back({shown, {}});
    shownNumbers.push_back(number);
  });
  std::vector<std::vector<LinkPlace>> places;
  if (session.manager().FindLinkPlaces(shownNumbers, places) == 0) {
    for (std::size_t i = 0; i < broken.size(); ++i) broken[i].places = std::move(places[i]);
  }
  std::stable_sort(broken.begin(), broken.end(), &ComesBefore);
  return broken;
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

void PrintBroken(const std::vector<BrokenLink>& links, bool all) {
  std::vector<BrokenLine> lines;
  for (auto next = links.begin(); next != links.end();) {
    const std::string& source = next->from;
    Print("{}\n", LineText(source));
    lines.clear();
    for (; next != links.end() && next->from == source; ++next) {
      if (next->places.empty() || !all) {
        const LinkPlace* const first = next->places.empty() ? nullptr : &next->places.front();
        lines.push_back({&*next, first, next->link.count});
        continue;
      }
      for (const LinkPlace& place : next->places) lines.push_back({&*next, &place, 1});
    }
    std::stable_sort(lines.begin(), lines.end(), [](const BrokenLine& a, const BrokenLine& b) {
      return a.place != nullptr && (b.place == nullptr || IsBefore(*a.place, *b.place));
    });
    for (const BrokenLine& line : lines) PrintLine(line);
  }
}

// The rows are printed one by one, as there may be many.
void PrintBrokenAsJson(const Json& head, const std::vector<BrokenLink>& links) {
  Json begin = head;
  begin["broken_links"] = links.size();
  begin["broken_places"] = CountPlaces(links);
  std::string text = begin.dump(-1, ' ', false, Json::error_handler_t::replace);
  text.pop_back();
  Print("{},\n\"broken\": ", text);
  JsonRows rows;
  for (const BrokenLink& link : links) rows.Add(BrokenAsJson(link));
  rows.End();
  Print("}}\n");
}

std::string CountedBroken(const std::vector<BrokenLink>& links) {
  if (links.empty()) return "no broken links";
  const auto count = static_cast<long>(links.size());
  const long places = CountPlaces(links);
  const std::string counted = Counted(count, "broken link", "broken links");
  return places == count ? counted : fmt::format("{} in {} places", counted, places);
}

}  // namespace zvrsit::cli
