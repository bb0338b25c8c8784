#include "web/site_content.h"

#include <algorithm>
#include <bit>
#include <memory>
#include <span>
#include <string_view>
#include <tuple>
#include <utility>

#include "findings/owned_cells.h"
#include "findings/url_check.h"
#include "links/link_type.h"
#include "links/page_types.h"
#include "manager/family_marks.h"
#include "manager/site_mgr.h"
#include "util/file_type.h"

namespace zvrsit {
namespace {

constexpr std::string_view kImages[] = {"avif", "bmp", "gif", "ico",  "jpeg", "jpg",
                                        "png",  "svg", "tif", "tiff", "webp", "xbm"};
constexpr std::string_view kScripts[] = {"cjs", "js", "mjs"};
constexpr std::string_view kMedia[] = {"aac", "au",  "avi", "flac", "m4a", "m4v", "mid", "mkv",
                                       "mov", "mp3", "mp4", "oga",  "ogg", "ogv", "wav", "webm"};
// Those that browsers of today take.
constexpr std::string_view kFonts[] = {"otf", "ttf", "woff", "woff2"};

bool Holds(std::span<const std::string_view> names, std::string_view name) {
  return std::ranges::find(names, name) != names.end();
}

struct KindOfTypes {
  std::uint32_t types;  // an OR of codes
  LinkKind kind;
};
constexpr KindOfTypes kKindsOfLinks[] = {
    {LT_ANCHOR | LT_AREA | LT_SELF_ANCHOR | LT_META_REFRESH, LinkKind::kLink},
    {LT_IMG | LT_IMG_USEMAP | LT_IMG_ISMAP | LT_SRCSET | LT_INPUT | LT_CSS_IMAGE |
         LT_BODY_BACKGROUND | LT_TABLE_BACKGROUND | LT_TR_BACKGROUND | LT_TD_BACKGROUND |
         LT_TH_BACKGROUND,
     LinkKind::kImage},
    {LT_SCRIPT, LinkKind::kScript},
    {LT_CSS_LINK | LT_CSS_IMPORT, LinkKind::kSheet},
    {LT_FRAME | LT_IFRAME, LinkKind::kFrame},
    {LT_MEDIA | LT_EMBED | LT_OBJECT | LT_APPLET | LT_APPLET_FILE, LinkKind::kMedia},
};

LinkKind KindOfLink(std::uint32_t type) {
  if (type == LT_REDIRECT || type == LT_SITEMAP) return LinkKind::kLink;
  if (!std::has_single_bit(type)) return LinkKind::kOther;
  for (const KindOfTypes& row : kKindsOfLinks) {
    if ((row.types & type) != 0) return row.kind;
  }
  return LinkKind::kOther;
}

bool IsFont(const ContentFile& file) {
  return file.kind == ContentKind::kOther && Holds(kFonts, ExtensionOf(file.path));
}

// Whether who has the link loads the file. What TRACK names is loaded by those who want to read it.
bool IsLoaded(LinkKind kind, std::uint32_t type, const ContentFile& file) {
  if (type == LT_SRCSET) return false;
  if (type == LT_CSS_OTHER) return IsFont(file);
  if (type == LT_MEDIA) return file.kind == ContentKind::kMedia || file.kind == ContentKind::kImage;
  return kind != LinkKind::kLink && kind != LinkKind::kOther;
}

// In which of the three parts of the list a file stands.
int PartOf(ContentKind kind) {
  return kind == ContentKind::kOutside ? 2 : kind == ContentKind::kMissing ? 1 : 0;
}

class ContentReader {
 public:
  ContentReader(SiteMgr& manager, const ContentWanted& wanted, SiteContent& content)
      : manager_(manager), wanted_(wanted), content_(content) {}

  int Read() {
    if (ReadFiles() < 0 || ReadUrls() < 0 || ReadLinks() < 0 || ReadUnused() < 0) return -1;
    SortFiles();
    FillFolders();
    SortLinks();
    for (std::vector<std::uint32_t>& loads : loads_) LeaveOneOfEach(loads);
    Weigh();
    return 0;
  }

 private:
  struct RawLink {
    std::uint32_t from;
    std::uint32_t to;
    std::uint32_t times;
    LinkKind kind;
    bool isUrl;
    bool isLoaded;
  };

  int ReadFiles() {
    const OwnedCells cells(manager_.EnumPath());
    if (cells == nullptr) return -1;
    std::unique_ptr<std::string, void (*)(std::string*)> list(
        manager_.GetSiteProfDir(kSlotPageTypes),
        [](std::string* text) { SiteMgr::DeleteString(text); });
    const bool readsOthers = FlagsOf(manager_.GetLinkRules()).readsOtherPageTypes;
    const PageTypes types(list != nullptr ? *list : std::string());
    for (const SiteRecCell& cell : *cells) {
      const int number = cell.GetID().id;
      Place(fileOf_, number) = static_cast<std::int32_t>(content_.files.size());
      content_.files.push_back(FileOf(cell, readsOthers ? &types : nullptr));
    }
    content_.home = FileOf(manager_.FindPath(wanted_.top));
    return 0;
  }

  ContentFile FileOf(const SiteRecCell& cell, const PageTypes* types) {
    const std::string path = cell.GetName();
    ContentFile file{.path = wanted_.site.nameOf(path),
                     .title = cell.GetTitle(),
                     .folder = -1,
                     .kind = KindOf(cell, path, types)};
    if (cell.GetTime() != 0) {
      file.time = cell.GetTime();
      file.size = cell.GetSize();
    }
    const int member = manager_.GetUrlFtpMember(cell.GetID());
    file.isFamily = member != -1 && (member & kFamilyMember) != 0;
    return file;
  }

  static ContentKind KindOf(const SiteRecCell& cell, const std::string& path,
                            const PageTypes* types) {
    if (cell.GetFlag() == 0) return ContentKind::kMissing;
    const auto type = static_cast<std::uint32_t>(cell.GetFileType());
    if (type == FT_HTML) return ContentKind::kPage;
    if (type == FT_CSS) return ContentKind::kSheet;
    const std::string extension = ExtensionOf(path);
    if (Holds(kImages, extension)) return ContentKind::kImage;
    if (Holds(kScripts, extension)) return ContentKind::kScript;
    if (Holds(kMedia, extension)) return ContentKind::kMedia;
    const bool isPage = types != nullptr && types->Hold(path) && IsShownAsPage(PageSyntaxOf(path));
    return isPage ? ContentKind::kPage : ContentKind::kOther;
  }

  int ReadUrls() {
    const OwnedCells cells(manager_.EnumUrl());
    if (cells == nullptr) return -1;
    std::unordered_map<std::string, std::int32_t> hosts;
    for (const SiteRecCell& cell : *cells) {
      const std::string url = WithoutCredentials(cell.GetName());
      const std::string host = HostOfUrl(url);
      const auto [known, isNew] = hosts.try_emplace(
          host, host.empty() ? -1 : static_cast<std::int32_t>(content_.hosts.size()));
      if (isNew && !host.empty()) content_.hosts.push_back(host);
      urlOf_[cell.GetID().id] = static_cast<std::int32_t>(content_.urls.size());
      const auto answer = wanted_.answers.find(cell.GetID().id);
      content_.urls.push_back(
          {url, known->second, answer == wanted_.answers.end() ? ContentAnswer() : answer->second});
    }
    return 0;
  }

  int ReadLinks() {
    const std::unique_ptr<std::vector<int>> numbers(manager_.EnumLink());
    if (numbers == nullptr) return -1;
    std::vector<bool> isWanted(content_.files.size());
    links_.reserve(numbers->size());
    SiteLink link;
    for (const int number : *numbers) {
      if (manager_.GetLink(number, link) != 0) continue;
      const std::int32_t from = FileOf(link.from.id);
      const bool isUrl = link.to.kind == kKindUrl;
      const std::int32_t to = isUrl ? UrlOf(link.to.id) : FileOf(link.to.id);
      if (from < 0 || to < 0) continue;
      if (!isUrl) {
        isWanted[static_cast<std::size_t>(to)] = true;
        if (!link.exists) NoteOffset(content_.files[static_cast<std::size_t>(from)].path, link);
        if (link.outside) content_.files[static_cast<std::size_t>(to)].kind = ContentKind::kOutside;
        if (link.unservable) TakeMarkOff(content_.files[static_cast<std::size_t>(to)].path);
      }
      isWanted[static_cast<std::size_t>(from)] = true;
      const LinkKind kind = KindOfLink(link.type);
      links_.push_back({static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(to),
                        static_cast<std::uint32_t>(std::max(link.count, 1)), kind, isUrl,
                        !isUrl && IsLoaded(kind, link.type, FileAt(to))});
    }
    isWanted_ = std::move(isWanted);
    return 0;
  }
  void NoteOffset(const std::string& file, const SiteLink& link) {
    const bool isKnown = link.count == 1 && link.offset >= 0;
    const auto [entry, isNew] =
        content_.offsets.try_emplace(file + '\n' + link.text, isKnown ? link.offset : -1);
    if (!isNew) entry->second = -1;
  }
  // The table marks such a name by a separator behind it.
  static void TakeMarkOff(std::string& name) {
    if (name.ends_with('/') || name.ends_with('\\')) name.pop_back();
  }

  int ReadUnused() {
    const OwnedCells cells(manager_.GetUnusedFiles());
    if (cells == nullptr) return -1;
    for (const SiteRecCell& cell : *cells) {
      content_.unused.push_back(FileOf(cell.GetID().id));
    }
    return 0;
  }

  // Puts the files in order, and drops those that are not there and that nothing refers to.
  void SortFiles() {
    std::vector<std::int32_t> order;
    for (std::size_t i = 0; i < content_.files.size(); ++i) {
      const bool isShown = content_.files[i].kind < ContentKind::kMissing || isWanted_[i];
      if (isShown) order.push_back(static_cast<std::int32_t>(i));
    }
    std::ranges::sort(order, [this](std::int32_t a, std::int32_t b) {
      const ContentFile& one = FileAt(a);
      const ContentFile& other = FileAt(b);
      return std::tuple(PartOf(one.kind), std::string_view(one.path)) <
             std::tuple(PartOf(other.kind), std::string_view(other.path));
    });
    newPlace_.assign(content_.files.size(), -1);
    std::vector<ContentFile> files;
    files.reserve(order.size());
    for (const std::int32_t old : order) {
      newPlace_[static_cast<std::size_t>(old)] = static_cast<std::int32_t>(files.size());
      files.push_back(std::move(FileAt(old)));
    }
    content_.files = std::move(files);
    const auto move = [this](std::int32_t& file) {
      if (file >= 0) file = newPlace_[static_cast<std::size_t>(file)];
    };
    move(content_.home);
    for (std::int32_t& file : content_.unused) move(file);
    std::ranges::sort(content_.unused);
  }

  void FillFolders() {
    content_.folders.push_back({"", -1});
    std::unordered_map<std::string, std::int32_t> known{{"", 0}};
    for (ContentFile& file : content_.files) {
      if (file.kind == ContentKind::kOutside) continue;
      file.folder = FolderAt(ParentOf(file.path), known);
    }
  }
  static std::string ParentOf(const std::string& path) {
    const std::size_t separator = path.find_last_of(kSeparators);
    return separator == path.npos ? "" : path.substr(0, separator);
  }
  // Makes it with its parents.
  std::int32_t FolderAt(const std::string& path,
                        std::unordered_map<std::string, std::int32_t>& known) {
    const auto found = known.find(path);
    if (found != known.end()) return found->second;
    const std::string parent = ParentOf(path);
    const std::int32_t above = FolderAt(parent, known);
    const auto number = static_cast<std::int32_t>(content_.folders.size());
    content_.folders.push_back({path.substr(parent.empty() ? 0 : parent.size() + 1), above});
    known.emplace(path, number);
    return number;
  }

  // Puts the links of each file together. They come nearly so, as their pages were read one after
  // the other.
  void SortLinks() {
    const auto first = static_cast<std::uint32_t>(content_.files.size());
    std::vector<std::size_t> next(content_.files.size() + 1);
    for (RawLink& link : links_) {
      link.from = static_cast<std::uint32_t>(newPlace_[link.from]);
      link.to = link.isUrl ? first + link.to : static_cast<std::uint32_t>(newPlace_[link.to]);
      ++next[link.from + 1];
    }
    for (std::size_t i = 1; i < next.size(); ++i) next[i] += next[i - 1];
    std::vector<RawLink> sorted(links_.size());
    for (const RawLink& link : links_) sorted[next[link.from]++] = link;
    links_ = std::move(sorted);
    std::size_t begin = 0;
    loads_.assign(content_.files.size(), {});
    for (std::size_t file = 0; file < content_.files.size(); ++file) {
      content_.firstLink.push_back(content_.links.size());
      JoinLinks(std::span(links_).subspan(begin, next[file] - begin), loads_[file]);
      begin = next[file];
    }
    content_.firstLink.push_back(content_.links.size());
  }

  // Adds the links of one file, those with the same target and kind as one.
  void JoinLinks(std::span<RawLink> links, std::vector<std::uint32_t>& loads) {
    const auto keyOf = [](const RawLink& link) {
      return std::uint64_t{link.to} << 8 | static_cast<std::uint8_t>(link.kind);
    };
    std::ranges::sort(links, {}, keyOf);
    const RawLink* last = nullptr;
    for (const RawLink& link : links) {
      if (link.isLoaded) loads.push_back(link.to);
      if (last != nullptr && keyOf(*last) == keyOf(link)) {
        content_.links.back().times += link.times;
      } else {
        content_.links.push_back({link.to, link.kind, link.times});
      }
      last = &link;
    }
  }

  // Of fonts, sounds and films that differ in their extensions alone, the smallest.
  void LeaveOneOfEach(std::vector<std::uint32_t>& loads) const {
    std::unordered_map<std::string_view, std::uint32_t> best;
    std::vector<std::uint32_t> left;
    for (const std::uint32_t number : loads) {
      const ContentFile& file = content_.files[number];
      if (file.kind != ContentKind::kMedia && !IsFont(file)) {
        left.push_back(number);
        continue;
      }
      const std::string_view path = file.path;
      const auto [known, isNew] = best.try_emplace(path.substr(0, path.rfind('.')), number);
      if (!isNew && file.size < content_.files[known->second].size) known->second = number;
    }
    if (best.empty()) return;
    for (const auto& [stem, number] : best) left.push_back(number);
    loads = std::move(left);
  }

  void Weigh() {
    std::vector<std::uint32_t> seenBy(content_.files.size());
    std::vector<std::uint32_t> open;
    for (std::uint32_t page = 0; page < content_.files.size(); ++page) {
      ContentFile& file = content_.files[page];
      if (file.kind != ContentKind::kPage) continue;
      open.assign(1, page);
      seenBy[page] = page + 1;
      while (!open.empty()) {
        const std::uint32_t one = open.back();
        open.pop_back();
        const std::int64_t size = std::max<std::int64_t>(content_.files[one].size, 0);
        file.weight += size;
        if (content_.files[one].kind == ContentKind::kMedia) file.played += size;
        ++file.requests;
        for (const std::uint32_t next : loads_[one]) {
          if (std::exchange(seenBy[next], page + 1) != page + 1) open.push_back(next);
        }
      }
    }
  }

  ContentFile& FileAt(std::int32_t file) { return content_.files[static_cast<std::size_t>(file)]; }
  static std::int32_t& Place(std::vector<std::int32_t>& places, int number) {
    const auto index = static_cast<std::size_t>(number);
    if (index >= places.size()) places.resize(index + 1, -1);
    return places[index];
  }
  // -1 for none.
  std::int32_t FileOf(int number) const {
    const auto index = static_cast<std::size_t>(number);
    return number >= 0 && index < fileOf_.size() ? fileOf_[index] : -1;
  }
  std::int32_t UrlOf(int number) const {
    const auto found = urlOf_.find(number);
    return found == urlOf_.end() ? -1 : found->second;
  }

#if defined(_WIN32)
  static constexpr const char* kSeparators = "/\\";
#else
  static constexpr const char* kSeparators = "/";
#endif

  SiteMgr& manager_;
  const ContentWanted& wanted_;
  SiteContent& content_;
  std::vector<std::int32_t> fileOf_;  // by record number
  std::unordered_map<int, std::int32_t> urlOf_;
  std::vector<bool> isWanted_;          // has links, or is their target; as files were at first
  std::vector<std::int32_t> newPlace_;  // likewise
  std::vector<RawLink> links_;
  std::vector<std::vector<std::uint32_t>> loads_;  // what a file loads
};

}  // namespace

int ReadContent(SiteMgr& manager, const ContentWanted& wanted, SiteContent& content) {
  return ContentReader(manager, wanted, content).Read();
}

}  // namespace zvrsit
