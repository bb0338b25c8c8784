#include "cli/link_report.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <tuple>
#include <unordered_map>

#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "dom/mapped_file.h"
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

// Bytes are summed in vectors, in blocks too small for a sum to overflow.
int CountLines(const char* bytes, std::size_t size) {
  int lines = 0;
  for (std::size_t i = 0; i < size;) {
    const std::size_t end = std::min(size, i + 255);
    unsigned char inBlock = 0;
    for (; i < end; ++i) inBlock = static_cast<unsigned char>(inBlock + (bytes[i] == '\n' ? 1 : 0));
    lines += inBlock;
  }
  return lines;
}

// Line numbers of places in files, asked for file by file and from front to back.
class Lines {
 public:
  // 0 when the file at the `\` path has no such place, or none is known.
  int Of(const std::string& path, int offset) {
    if (path != path_ || offset < seen_) {
      if (path != path_) page_.open(path, 0);
      path_ = path;
      line_ = 1;
      seen_ = 0;
    }
    if (offset < 0 || static_cast<std::size_t>(offset) > page_.size()) return 0;
    line_ += CountLines(page_.top() + seen_, static_cast<std::size_t>(offset - seen_));
    seen_ = offset;
    return line_;
  }

 private:
  MappedFile page_;
  std::string path_;
  int line_ = 1;
  int seen_ = 0;
};

}  // namespace

void ForEachLink(Session& session, const std::vector<int>& numbers,
                 const std::function<void(const ShownLink&)>& each) {
  Entries entries(session);
  ShownLink shown;
  for (const int number : numbers) {
    if (session.manager().GetLink(number, shown.link) != 0) continue;
    shown.from = entries.NameOf(shown.link.from);
    shown.to = entries.NameOf(shown.link.to);
    if (shown.link.outside) shown.link.exists = entries.IsOnDisk(shown.link.to);
    each(shown);
  }
}

std::vector<BrokenLink> BrokenLinks(Session& session) {
  const std::unique_ptr<std::vector<int>> numbers(session.manager().EnumBrokenLink());
  if (numbers == nullptr) throw Failure(kDatabase, "the link table cannot be read");
  std::vector<BrokenLink> broken;
  ForEachLink(session, *numbers, [&](const ShownLink& shown) {
    if (!shown.link.exists) broken.push_back({shown});
  });
  std::stable_sort(broken.begin(), broken.end(), [](const BrokenLink& a, const BrokenLink& b) {
    return std::tie(a.from, a.link.offset) < std::tie(b.from, b.link.offset);
  });
  Lines lines;
  for (BrokenLink& shown : broken) {
    const std::string path = Take(session.manager().UrlPath(shown.link.from.id));
    shown.line = lines.Of(path, shown.link.offset);
  }
  return broken;
}

Json LinkAsJson(const ShownLink& shown) {
  return {{"from", JsonText(shown.from)},    {"to", JsonText(shown.to)},
          {"kind", shown.link.to.kind},      {"type", LinkTypeName(shown.link.type)},
          {"code", shown.link.type},         {"text", JsonText(shown.link.text)},
          {"alt", JsonText(shown.link.alt)}, {"count", shown.link.count},
          {"exists", shown.link.exists}};
}

Json BrokenAsJson(const BrokenLink& shown) {
  Json row = LinkAsJson(shown);
  row["line"] = shown.line > 0 ? Json(shown.line) : Json();
  row["outside"] = shown.link.outside;
  return row;
}

void PrintLink(const ShownLink& shown) {
  Print("{} -> {}  {}", LineText(shown.from), LineText(shown.to), LinkTypeName(shown.link.type));
  if (shown.link.count > 1) Print(" x{}", shown.link.count);
  if (shown.link.outside) Print("  outside of the site");
  if (!shown.link.exists) Print("  missing");
  Print("\n");
}

void PrintBroken(const std::vector<BrokenLink>& links) {
  const std::string* source = nullptr;
  for (const BrokenLink& shown : links) {
    if (source == nullptr || *source != shown.from) Print("{}\n", LineText(shown.from));
    source = &shown.from;
    const std::string line = shown.line > 0 ? std::to_string(shown.line) : "-";
    Print("{:>6}: {} -> {}  {}{}\n", line, LineText(shown.link.text), LineText(shown.to),
          LinkTypeName(shown.link.type), shown.link.outside ? "  outside of the site" : "");
  }
}

}  // namespace zvrsit::cli
