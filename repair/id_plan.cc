// An ID gets another name.
#include <algorithm>
#include <set>
#include <string_view>

#include "links/fragment.h"
#include "links/html_values.h"
#include "links/link_type.h"
#include "links/url_text.h"
#include "manager/site_mgr.h"
#include "platform/code_page.h"
#include "repair/file_planner.h"
#include "repair/repair_plan.h"
#include "tables/site_link_db.h"
#include "tables/site_path_db.h"
#include "util/ascii.h"

namespace zvrsit {
namespace {

// Attributes that hold IDs of their page, one or several.
constexpr std::string_view kIdAttributes[] = {"for",           "form",
                                              "headers",       "list",
                                              "itemref",       "contextmenu",
                                              "popovertarget", "commandfor",
                                              "anchor",        "aria-activedescendant",
                                              "aria-controls", "aria-describedby",
                                              "aria-details",  "aria-errormessage",
                                              "aria-flowto",   "aria-labelledby",
                                              "aria-owns"};

// Attributes in which "#id" or "url(#id)" names an element of the page.
constexpr std::string_view kDrawingAttributes[] = {
    "style",  "fill",       "stroke",     "filter",       "mask", "clip-path",
    "cursor", "marker-end", "marker-mid", "marker-start", "href", "xlink:href"};

bool IsOfName(char c) {
  return IsAsciiLetter(c) || IsAsciiDigit(c) || c == '-' || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

bool IsPlainName(std::string_view id) {
  return std::ranges::all_of(id, IsOfName);
}

// Where "#" and the ID stand in a text as a whole word, from `at` on.
std::size_t FindHashName(std::string_view text, const std::string& id, std::size_t at) {
  const std::string wanted = "#" + id;
  for (; (at = text.find(wanted, at)) != std::string_view::npos; ++at) {
    const std::size_t end = at + wanted.size();
    if (end == text.size() || !IsOfName(text[end])) return at;
  }
  return std::string_view::npos;
}

// A new name for an ID, in one file after another.
class IdPlanner {
 public:
  IdPlanner(SiteMgr& manager, const std::string& page, const std::string& from,
            const std::string& to)
      : manager_(manager),
        world_(manager, {}, ReadRedirects(manager)),
        page_(page),
        from_(from),
        to_(to) {}

  // False when the page cannot be read, lacks the ID, or has the new one.
  bool MayBegin() {
    std::vector<PageId> ids;
    if (manager_.ListPageIds(page_, ids) < 0) return false;
    const auto has = [&](const std::string& text) {
      return std::ranges::any_of(ids, [&](const PageId& id) { return id.text == text; });
    };
    return has(from_) && !has(to_);
  }

  void Plan(const std::string& path, RepairPlan& plan) {
    if (!file_.Read(manager_, source_, path)) return;
    if (path == page_) EditPage();
    std::vector<Change> changes;
    world_.BeginFile(path);
    base_ = kPageItself;
    for (std::size_t i = file_.references().bases().size(); i < file_.count(); ++i) {
      const FoundReference& reference = file_.reference(i);
      if (reference.type == LT_LINKED_DATA || !LeadsToId(reference)) continue;
      changes.push_back({i, WithNewId(reference.target)});
    }
    file_.Write(std::move(changes), plan);
  }

 private:
  void UseBase(std::int32_t base) {
    if (base == base_) return;
    base_ = base;
    world_.UseBases(file_.HrefsOf(base));
  }

  bool LeadsToId(const FoundReference& reference) {
    std::string buffer;
    const std::string_view fragment = FragmentOf(reference.target, buffer);
    std::string decoded;
    static_cast<void>(AppendPercentDecoded(fragment, decoded));
    if (fragment != from_ && decoded != from_) return false;
    UseBase(reference.base);
    const auto from = reference.isOfSheet ? SiteWorld::From::kSheet : SiteWorld::From::kPage;
    const Place place = world_.PlaceOf(reference.target, from, true);
    return place.kind == TargetKind::kLocal && place.path == page_ &&
           !(world_.redirects() && world_.replacesFragment());
  }

  // Beyond ASCII the new ID is encoded where the old one was, and where the file lacks a character.
  std::string WithNewId(const std::string& target) {
    const std::size_t begin = target.find('#') + 1;
    const std::size_t end = std::min(target.find(":~:", begin), target.size());
    const std::string_view old = std::string_view(target).substr(begin, end - begin);
    const bool isRaw =
        std::ranges::any_of(old, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
    const bool lower = old.find_first_of("abcdef", old.find('%')) != std::string_view::npos &&
                       old.find('%') != std::string_view::npos;
    std::string bytes;
    const bool staysRaw = isRaw && source_.Encode(to_, bytes);
    const std::string_view digits = lower ? "0123456789abcdef" : "0123456789ABCDEF";
    std::string text = target.substr(0, begin);
    ForEachCharacter(to_, [&](std::string_view character) {
      const bool isAscii = static_cast<unsigned char>(character.front()) < 0x80;
      if (isAscii ? character != "%" && character != "\"" && character != "<" : staysRaw) {
        text += character;
        return;
      }
      for (const char c : platform::ToUtf8(character)) {
        const auto byte = static_cast<unsigned char>(c);
        text.append({'%', digits[byte >> 4], digits[byte & 15]});
      }
    });
    return text + target.substr(end);
  }

  void EditPage() {
    const Document& document = file_.references().document();
    for (std::uint32_t index = 0; index < document.elementCount(); ++index) {
      const Element element = document.element(index);
      if (element.inTemplate() || element.inShadow()) continue;
      const AttributeList attributes = element.attributes();
      for (std::size_t i = 0; i < attributes.size(); ++i)
        EditAttribute(element, attributes.item(i));
      const bool isStyle = element.tag() == Tag::kStyle || element.tag() == Tag::kSvgStyle;
      const bool isScript = element.tag() == Tag::kScript || element.tag() == Tag::kSvgScript;
      if (isStyle || isScript) TellOf(element, isScript);
    }
  }

  void EditAttribute(const Element& element, const Attribute& attribute) {
    const std::string_view name = attribute.name();
    const bool isName = attribute.attr() == Attr::kName && element.tag() == Tag::kA;
    if (attribute.attr() == Attr::kId || isName) {
      if (attribute.value() == from_) EditPart(attribute, 0);
    } else if (IsAmongLower(name, kIdAttributes)) {
      EditWords(attribute);
    } else if (IsAmongLower(name, kDrawingAttributes)) {
      EditDrawing(element, attribute);
    }
  }

  void EditPart(const Attribute& attribute, std::size_t begin) {
    file_.AddEdit(file_.references().SourceOf(attribute), begin, begin + from_.size(), to_,
                  attribute.valueOffset());
  }

  void EditWords(const Attribute& attribute) {
    if (attribute.rawValue().empty()) return;
    const std::string value = attribute.value();
    std::vector<std::string_view> words;
    AppendWords(value, words);
    for (const std::string_view word : words) {
      if (word == from_) EditPart(attribute, static_cast<std::size_t>(word.data() - value.data()));
    }
  }

  // References to other elements of the page that are no links: of SVG, and in its properties.
  void EditDrawing(const Element& element, const Attribute& attribute) {
    const bool isHref = attribute.attr() == Attr::kHref || attribute.attr() == Attr::kXlinkHref;
    if (isHref && (element.isHtml() || element.tag() == Tag::kSvgA)) return;
    const std::string value = attribute.value();
    for (std::size_t at = 0; (at = FindHashName(value, from_, at)) != std::string_view::npos;
         ++at) {
      const bool isWhole = isHref && at == 0 && value.size() == from_.size() + 1;
      const bool isUrl = !isHref && at > 0 &&
                         std::string_view("(\"'").find(value[at - 1]) != std::string_view::npos;
      if (isWhole || (isUrl && IsPlainName(to_))) {
        EditPart(attribute, at + 1);
      } else if (isUrl) {
        file_.Keep(attribute.valueOffset(), "#" + from_, "a style names the ID");
      }
    }
  }

  // What a script or a sheet of the page says of the ID is not known for sure.
  void TellOf(const Element& element, bool isScript) {
    const Text text = element.firstChild().asText();
    if (!text) return;
    const std::string_view raw = text.rawData();
    std::size_t at = FindHashName(raw, from_, 0);
    for (const char quote : {'"', '\'', '`'}) {
      if (isScript && at == std::string_view::npos) at = raw.find(quote + from_ + quote);
    }
    if (at == std::string_view::npos) return;
    const std::string_view all = file_.references().text();
    const char* const top = file_.references().document().text().data();
    const std::size_t place = static_cast<std::size_t>(raw.data() - top) + at;
    file_.Keep(static_cast<std::uint32_t>(std::min(place, all.size())), from_,
               isScript ? "a script may name the ID" : "a style names the ID");
  }

  SiteMgr& manager_;
  SiteWorld world_;
  const std::string page_;
  const std::string from_;
  const std::string to_;
  FileText source_;
  PlannedFile file_;
  std::int32_t base_ = kPageItself;
};

}  // namespace

int PlanRenamedId(SiteMgr& manager, const std::string& file, const std::string& from,
                  const std::string& to, RepairPlan& plan) {
  if (manager.GetPathDB() == nullptr || manager.GetLinkDB() == nullptr || to.empty() ||
      std::ranges::any_of(to, IsHtmlSpace)) {
    return -1;
  }
  IdPlanner planner(manager, file, from, to);
  if (!planner.MayBegin()) return -1;
  std::set<std::string> concerned{file};
  const int number = manager.GetPathDB()->Find(file);
  std::vector<int> links;
  if (number < 0 || manager.GetLinkDB()->Query(kAnyUrlID, UrlID(kKindPath, number), links) < 0) {
    return -1;
  }
  for (const int link : links) {
    SiteLinkRec rec;
    std::string path;
    if (manager.GetLinkDB()->Get(link, rec) == 0 &&
        manager.GetPathDB()->Name(rec.from.id, path) == 0) {
      concerned.insert(path);
    }
  }
  plan = {};
  for (const std::string& path : concerned) planner.Plan(path, plan);
  return 0;
}

}  // namespace zvrsit
