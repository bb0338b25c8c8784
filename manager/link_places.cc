// Where pages and sheets have their links. The files are read again, and their references are
// matched with the links that are registered.
#include <algorithm>
#include <functional>
#include <span>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "css/css_decode.h"
#include "css/css_reader.h"
#include "dom/charset_prescan.h"
#include "links/extractor.h"
#include "links/ignored_tag.h"
#include "links/link_type.h"
#include "links/page_file.h"
#include "links/server_code.h"
#include "links/site_data.h"
#include "links/text_places.h"
#include "manager/owned_document.h"
#include "manager/record_access.h"
#include "manager/recorded_files.h"
#include "manager/site_mgr.h"
#include "manager_base/inside.h"
#include "platform/file.h"
#include "registration/site_css_util.h"

namespace zvrsit {

namespace {

// A link whose places are asked for.
struct AskedLink {
  SiteLinkRec rec;
  std::string_view text;
  std::string_view alternative;
  std::vector<LinkPlace>* answer;

  // Of the places in its file.
  bool ComesBefore(const AskedLink& other) const {
    return std::tie(rec.from.id, rec.offset) < std::tie(other.rec.from.id, other.rec.offset);
  }
};

// A registered link of the file that is looked through, and where its text has been found.
struct WantedLink {
  std::uint32_t type;
  std::string_view alternative;
  int count;
  int offset;  // of its first occurrence in the file; -1 not known
  std::vector<std::size_t> found;
  std::vector<LinkPlace>* answer;
};

// The links of one file that are looked for.
class WantedLinks {
 public:
  explicit WantedLinks(bool isPage) : isPage_(isPage) {}

  void Add(std::string_view text, WantedLink link) {
    if (link.type == LT_SELF_ANCHOR) link.type = LT_ANCHOR;
    links_[text].push_back(std::move(link));
  }

  // A reference of the file, at `offset` of the text that is being looked through.
  void Meet(std::uint32_t type, std::string_view text, std::string_view alternative,
            std::size_t offset) {
    if (type == LT_APPLET) applets_.push_back(offset);
    const auto same = links_.find(text);
    if (same == links_.end()) return;
    for (WantedLink& link : same->second) {
      if (link.type == type && link.alternative == alternative) link.found.push_back(offset);
    }
  }

  // Gives the places in `text`, which begins at byte `start` of its file; -1 when it had to be
  // converted.
  void Answer(std::string_view text, std::int64_t start) {
    std::vector<std::pair<std::size_t, WantedLink*>> all;
    for (auto& [ignored, links] : links_) {
      for (WantedLink& link : links) {
        // The files in the folder of an applet are referred to at the place of the applet.
        if (link.type == LT_APPLET_FILE && applets_.size() == 1) link.found = applets_;
        if (!IsAsRegistered(link, start)) continue;
        for (const std::size_t offset : link.found) all.emplace_back(offset, &link);
      }
    }
    std::sort(all.begin(), all.end());
    TextPlaces places(text);
    for (const auto& [offset, link] : all) {
      link->answer->push_back(isPage_ ? places.OfReference(offset) : places.Of(offset));
    }
    for (auto& [ignored, links] : links_) {
      for (WantedLink& link : links) link.found.clear();
    }
    applets_.clear();
  }

 private:
  // Whether what was found is what was registered, as far as this can be seen.
  static bool IsAsRegistered(WantedLink& link, std::int64_t start) {
    if (link.found.size() < static_cast<std::size_t>(std::max(link.count, 1))) return false;
    const auto isFirst = [&](std::size_t offset) {
      return static_cast<std::int64_t>(offset) + start == link.offset;
    };
    const bool isKnown = start >= 0 && link.offset >= 0;
    if (isKnown && std::none_of(link.found.begin(), link.found.end(), isFirst)) return false;
    // There may be more of them than registered: when the rest of a page was lost (without
    // RuleFlags::goesOnAfterFailure), and when an inner document means another file by the same
    // text.
    if (isKnown && link.count == 1) {
      link.found.assign(1, static_cast<std::size_t>(link.offset - start));
    }
    std::sort(link.found.begin(), link.found.end());
    link.found.resize(static_cast<std::size_t>(std::max(link.count, 1)));
    return true;
  }

  const bool isPage_;
  std::unordered_map<std::string_view, std::vector<WantedLink>> links_;  // by text
  std::vector<std::size_t> applets_;
};

// Answers with the registered places of all links of a page, when they were registered, and the
// page still holds these texts there. It is read little further than to the last of them, and not
// as HTML: a site whose pages all link to one missing script has a place in each of them.
class RegisteredPlaces {
 public:
  // `links` by their offsets. False with nothing answered.
  bool Answer(const std::string& path, std::span<const AskedLink> links) {
    std::size_t length = 0;
    for (const AskedLink& link : links) {
      if (link.rec.offset < 0 || link.rec.count > 1 || link.text.empty()) return false;
      length = std::max(length, static_cast<std::size_t>(link.rec.offset) + link.text.size());
    }
    const std::string_view bytes = ReadBeginning(path, length + kLongestTag);
    if (bytes.size() < length) return false;
    const std::size_t start = FindByteOrderMark(bytes).length;
    for (const AskedLink& link : links) {
      const auto offset = static_cast<std::size_t>(link.rec.offset);
      if (offset < start || bytes.compare(offset, link.text.size(), link.text) != 0) {
        return false;
      }
    }
    TextPlaces places(bytes.substr(start));
    for (const AskedLink& link : links) {
      const auto offset = static_cast<std::size_t>(link.rec.offset);
      link.answer->push_back(places.OfReference(offset - start));
    }
    return true;
  }

 private:
  // At most `length` bytes, good until the next call; empty when the file cannot be read.
  std::string_view ReadBeginning(const std::string& path, std::size_t length) {
    const int file = platform::Open(path, platform::kOpenReadOnly);
    if (file < 0) return {};
    if (buffer_.size() < length) buffer_.resize(length);
    const std::int64_t count = platform::Read(file, buffer_.data(), length);
    platform::Close(file);
    return std::string_view(buffer_).substr(
        0, static_cast<std::size_t>(std::max<std::int64_t>(count, 0)));
  }

  std::string buffer_;  // as long as the longest beginning so far
};

// Looks through one file after another, under the rules of a site.
class PlaceFinder {
 public:
  // Of the open site of `manager`.
  PlaceFinder(SiteMgr& manager, DOM& dom, CCSSControl& css)
      : css_(css),
        rules_(manager.GetLinkRules()),
        styles_(&manager, {}),
        document_(dom.createDocument("HTML"), GiveBack{&dom}) {}

  // The file has `number` in the path table; `links` are some of its own, by their offsets.
  void Answer(int number, const std::string& path, std::span<const AskedLink> links) {
    const bool isSheet = ClassifyFileType(path) == FT_CSS;
    if (!isSheet && registered_.Answer(path, links)) return;
    WantedLinks wanted(!isSheet);
    for (const AskedLink& link : links) {
      wanted.Add(link.text, {static_cast<std::uint32_t>(link.rec.type),
                             link.alternative,
                             link.rec.count,
                             link.rec.offset,
                             {},
                             link.answer});
    }
    if (isSheet) LookThroughSheet(number, path, wanted);
    if (!isSheet || FlagsOf(rules_).readsSheetsAsPages) LookThroughPage(path, isSheet, wanted);
  }

 private:
  void LookThroughPage(const std::string& path, bool isSheet, WantedLinks& wanted) {
    if (document_ == nullptr) return;
    document_->clear();
    if (!page_.Read(path, FlagsOf(rules_), *document_)) return;
    ExtractFile(path, *document_, rules_, rows_);
    for (const LinkRow& row : rows_.links) {
      const bool isHidden = page_.holdsServerCode() && HoldsServerCode(row.alternative);
      wanted.Meet(row.type, row.target, isHidden ? "" : row.alternative, row.offset);
    }
    for (const MetaRow& meta : rows_.metas) {
      if (meta.key == MetaKey::kRefresh)
        wanted.Meet(LT_META_REFRESH, meta.content, "", meta.offset);
    }
    if (!isSheet) MeetStyles(path, wanted);
    wanted.Answer(document_->text(), page_.textStart());
  }

  void MeetStyles(const std::string& path, WantedLinks& wanted) {
    CCSSFileTree tree = css_.GetFileTree(path, document_.get());
    for (const std::string* node = tree.getFirstChild(tree.getRoot()); node != nullptr;
         node = tree.getNextSibling(node)) {
      const std::string* const declared = tree.getDeclaredText(node);
      wanted.Meet(StyleLinkType(tree.getType(node)), declared != nullptr ? *declared : *node, "",
                  static_cast<std::size_t>(tree.getOffset(node)));
    }
  }

  void LookThroughSheet(int number, const std::string& path, WantedLinks& wanted) {
    if (!sheet_.open(path, 0)) return;
    const std::string_view bytes(sheet_.top(), sheet_.size());
    const std::string_view text = DecodeSheet(bytes, styles_.CharsetOf(number, path), sheetText_);
    const bool isInFile = text.data() != sheetText_.data();
    references_.clear();
    CollectCssReferences(text, CssSource::kSheet, references_);
    for (const CssReference& reference : references_) {
      wanted.Meet(StyleLinkType(NodeTypeOf(reference.kind)), reference.text, "",
                  static_cast<std::size_t>(reference.offset));
    }
    wanted.Answer(text, isInFile ? text.data() - bytes.data() : -1);
  }

  CCSSControl& css_;
  const LinkRules rules_;
  const SiteCSSUtil styles_;
  RegisteredPlaces registered_;
  PageFile page_;
  MappedFile sheet_;
  OwnedDocument document_;
  PageRows rows_;
  std::string sheetText_;
  std::vector<CssReference> references_;
};

}  // namespace

int SiteMgr::FindLinkPlaces(const std::vector<int>& links,
                            std::vector<std::vector<LinkPlace>>& places) {
  places.assign(links.size(), {});
  if (!HasFiles(linkDB) || !HasFiles(pathDB) || dom == nullptr || cssCtrl == nullptr) return -1;
  std::vector<AskedLink> asked;
  asked.reserve(links.size());
  for (std::size_t i = 0; i < links.size(); ++i) {
    SiteLinkRec rec;
    if (linkDB->Get(links[i], rec) != 0) continue;
    if (inside->kept != nullptr &&
        inside->kept->places.Find(links[i], rec.count, rec.from, rec.offset, places[i])) {
      continue;
    }
    asked.push_back(
        {rec, linkDB->TextView(rec.text), linkDB->TextView(rec.alternative), &places[i]});
  }
  std::stable_sort(asked.begin(), asked.end(), std::mem_fn(&AskedLink::ComesBefore));
  const RecordedFiles recorded(*pathDB, inside->onlyAsks());
  PlaceFinder finder(*this, *dom, *cssCtrl);
  const std::span<const AskedLink> all = asked;
  for (std::size_t next = 0; next < all.size();) {
    const std::size_t first = next;
    const int source = all[first].rec.from.id;
    while (next < all.size() && all[next].rec.from.id == source) ++next;
    SitePathRec page;
    std::string path;
    if (pathDB->Get(source, page) < 0 || pathDB->Text(page.name, path) < 0) continue;
    const auto ofFile = all.subspan(first, next - first);
    finder.Answer(source, path, ofFile);
    // Asked last: a file that was changed while it was read is another one too.
    platform::FileStat now;
    if (platform::Stat(path, now) == 0 && recorded.Has(page, now)) continue;
    for (const AskedLink& link : ofFile) link.answer->clear();
  }
  return 0;
}

}  // namespace zvrsit
