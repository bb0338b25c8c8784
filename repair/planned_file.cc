// Turns changed references into changed bytes, and sees that nothing else changes with them.
#include <algorithm>
#include <map>

#include "dom/byte_search.h"
#include "links/text_places.h"
#include "links/url_text.h"
#include "manager/site_mgr.h"
#include "registration/site_css_util.h"
#include "repair/file_planner.h"
#include "repair/spelling.h"
#include "tables/site_path_db.h"
#include "util/file_type.h"
#include "util/hash.h"

namespace zvrsit {
namespace {

constexpr std::size_t kNoReference = 0xFFFFFFFF;

// How much of the front of two texts is equal up to a slash.
std::size_t EqualFront(std::string_view a, std::string_view b) {
  std::size_t equal = 0;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()) && a[i] == b[i]; ++i) {
    if (a[i] == '/') equal = i + 1;
  }
  return equal;
}

// The same at the ends, from a slash on; `a` and `b` themselves count as names.
std::size_t EqualEnd(std::string_view a, std::string_view b) {
  std::size_t equal = 0;
  std::size_t i = 0;
  while (i < std::min(a.size(), b.size()) && a[a.size() - 1 - i] == b[b.size() - 1 - i]) {
    ++i;
    const bool endsA = i == a.size() || a[a.size() - 1 - i] == '/';
    const bool endsB = i == b.size() || b[b.size() - 1 - i] == '/';
    if (endsA && endsB) equal = i;
  }
  return equal;
}

std::string Applied(std::string_view text, const std::vector<SourceEdit>& edits) {
  std::string out;
  std::size_t done = 0;
  for (const SourceEdit& edit : edits) {
    out.append(text.substr(done, edit.begin - done)).append(edit.text);
    done = edit.end;
  }
  return out.append(text.substr(done));
}

// The places of offsets in a text, each once.
std::map<std::uint32_t, LinkPlace> PlacesIn(std::string_view text,
                                            const std::vector<std::uint32_t>& offsets) {
  std::map<std::uint32_t, LinkPlace> places;
  for (const std::uint32_t offset : offsets) places[offset] = {};
  TextPlaces counted(text);
  for (auto& [offset, place] : places) place = counted.Of(offset);
  return places;
}

}  // namespace

bool PlannedFile::Read(SiteMgr& manager, FileText& source, const std::string& path) {
  path_ = path;
  source_ = &source;
  rules_ = manager.GetLinkRules();
  isSheet_ = ClassifyFileType(path) == FT_CSS;
  references_.reset();
  kept_.clear();
  others_.clear();
  if (isSheet_) {
    const int number = manager.GetPathDB()->Find(path);
    const std::string charset =
        number < 0 ? std::string() : SiteCSSUtil(&manager, {}).CharsetOf(number, path);
    if (!source.ReadSheet(path, charset)) return false;
  } else if (!source.ReadPage(path)) {
    return false;
  }
  references_.emplace(path, source.text(), isSheet_, rules_);
  return true;
}

std::size_t PlannedFile::count() const {
  return references_->bases().size() + references_->references().size();
}

const FoundReference& PlannedFile::reference(std::size_t number) const {
  const std::size_t bases = references_->bases().size();
  return number < bases ? references_->bases()[number] : references_->references()[number - bases];
}

std::vector<std::string> PlannedFile::HrefsOf(std::int32_t base) const {
  std::vector<std::string> hrefs;
  for (; base != kPageItself; base = reference(static_cast<std::size_t>(base)).base) {
    hrefs.push_back(reference(static_cast<std::size_t>(base)).target);
  }
  std::ranges::reverse(hrefs);
  return hrefs;
}

void PlannedFile::Keep(std::size_t number, const std::string& why) {
  const FoundReference& found = reference(number);
  Keep(found.place, found.target, why);
}

void PlannedFile::Keep(std::uint32_t place, const std::string& text, const std::string& why) {
  kept_.push_back({place, {path_, 0, 0, text, why}});
}

void PlannedFile::AddEdit(SourceText& source, std::size_t begin, std::size_t end,
                          const std::string& text, std::uint32_t place) {
  std::string before(source.text().substr(begin, end - begin));
  others_.push_back({&source, begin, end, text, place, std::move(before)});
}

// If not all changes can be made together, those are made that can be made alone; but none without
// that of a BASE, because the others are made for it.
void PlannedFile::Write(std::vector<Change> changes, RepairPlan& plan) {
  FileEdits edits;
  if (!TryWrite(changes, edits)) {
    const std::size_t bases = references_->bases().size();
    const bool hasBase = std::ranges::any_of(
        changes, [bases](const Change& change) { return change.reference < bases; });
    std::erase_if(changes, [&](const Change& change) {
      FileEdits alone;
      const bool isGood = !hasBase && TryWrite({change}, alone);
      if (!isGood) Keep(change.reference, "cannot be written in this file");
      return !isGood;
    });
    if (!TryWrite(changes, edits)) {
      for (const Change& change : changes) {
        Keep(change.reference, "cannot be written in this file");
      }
      edits.edits.clear();
    }
  }
  if (!edits.edits.empty()) plan.files.push_back(std::move(edits));
  AddKept(plan);
}

void PlannedFile::AddKept(RepairPlan& plan) const {
  std::vector<std::uint32_t> offsets;
  offsets.reserve(kept_.size());
  for (const auto& [offset, kept] : kept_) offsets.push_back(offset);
  const auto places = PlacesIn(source_->text(), offsets);
  for (const auto& [offset, kept] : kept_) {
    plan.kept.push_back(kept);
    plan.kept.back().line = places.at(offset).line;
    plan.kept.back().column = places.at(offset).column;
  }
}

// Only the names of the path that differ are written anew, so that all others stay as they are
// written.
void PlannedFile::EditReference(const Change& change) {
  const FoundReference& old = reference(change.reference);
  std::string_view before = old.target;
  std::string_view after = change.text;
  before.remove_suffix(old.tail.size());
  after.remove_suffix(old.tail.size());
  const std::size_t most = std::min(before.size(), after.size());
  const TargetParts ends = PartsOf(before, FlagsOf(rules_));
  std::size_t end = ends.after.size();
  if (end > most || !after.ends_with(ends.after)) end = 0;
  before.remove_suffix(end);
  after.remove_suffix(end);
  const std::size_t front = EqualFront(before, after);
  before.remove_prefix(front);
  after.remove_prefix(front);
  const std::size_t back = EqualEnd(before, after);
  const std::size_t begin = old.begin + front;
  after.remove_suffix(back);
  old.source->Edit({begin, begin + before.size() - back, std::string(after), {change.reference}});
}

bool PlannedFile::TryWrite(const std::vector<Change>& changes, FileEdits& edits) {
  for (const Change& change : changes) EditReference(change);
  for (std::size_t i = 0; i < others_.size(); ++i) {
    const OtherEdit& other = others_[i];
    other.source->Edit({other.begin, other.end, other.text, {kNoReference + i}});
  }
  const std::vector<SourceEdit> found = references_->TakeEdits();
  edits = {
      path_, {}, static_cast<std::int64_t>(source_->bytes().size()), HashBytes(source_->bytes())};
  if (found.empty()) return true;
  for (std::size_t i = 1; i < found.size(); ++i) {
    if (found[i].begin < found[i - 1].end) return false;
  }
  const std::string text = Applied(source_->text(), found);
  if (!IsAsWanted(changes, text) || !ToBytes(found, text, edits)) return false;
  NamePlaces(changes, found, edits);
  return true;
}

// Whether the file with this text has the references of before, but for those that are changed.
bool PlannedFile::IsAsWanted(const std::vector<Change>& changes, const std::string& text) const {
  std::string padded = text + std::string(kTextPadding, '\0');
  const std::string_view view(padded.data(), text.size());
  const FileReferences again(path_, view, isSheet_, rules_);
  const std::size_t bases = again.bases().size();
  if (bases != references_->bases().size() || bases + again.references().size() != count()) {
    return false;
  }
  std::vector<std::string_view> wanted;
  for (std::size_t i = 0; i < count(); ++i) wanted.push_back(reference(i).target);
  for (const Change& change : changes) wanted[change.reference] = change.text;
  for (std::size_t i = 0; i < count(); ++i) {
    const FoundReference& now = i < bases ? again.bases()[i] : again.references()[i - bases];
    if (now.target != wanted[i]) return false;
  }
  return true;
}

bool PlannedFile::ToBytes(const std::vector<SourceEdit>& found, const std::string& text,
                          FileEdits& edits) {
  for (const SourceEdit& edit : found) {
    std::size_t first = 0;
    std::size_t last = 0;
    TextEdit made;
    if (!source_->FindBytes(edit.begin, edit.end, first, last)) return false;
    if (!source_->Encode(edit.text, made.text)) return false;
    made.offset = static_cast<std::int64_t>(first);
    made.length = static_cast<std::int64_t>(last) - made.offset;
    edits.edits.push_back(std::move(made));
  }
  std::string bytes;
  if (!ApplyEdits(source_->bytes(), edits, bytes)) return false;
  const std::size_t size = bytes.size();
  bytes.append(kTextPadding, '\0');
  return source_->WouldRead(std::string_view(bytes).substr(0, size), text);
}

void PlannedFile::NamePlaces(const std::vector<Change>& changes,
                             const std::vector<SourceEdit>& found, FileEdits& edits) const {
  struct Named {
    std::uint32_t place;
    std::string_view before;
    std::string_view after;
  };
  std::map<std::size_t, Named> named;
  std::vector<std::uint32_t> offsets;
  for (const Change& change : changes) {
    const FoundReference& old = reference(change.reference);
    named[change.reference] = {old.place, old.target, change.text};
    offsets.push_back(old.place);
  }
  for (std::size_t i = 0; i < others_.size(); ++i) {
    named[kNoReference + i] = {others_[i].place, others_[i].before, others_[i].text};
    offsets.push_back(others_[i].place);
  }
  const auto places = PlacesIn(source_->text(), offsets);
  for (std::size_t i = 0; i < found.size(); ++i) {
    const Named& first = named.at(found[i].references.front());
    TextEdit& edit = edits.edits[i];
    edit.line = places.at(first.place).line;
    edit.column = places.at(first.place).column;
    edit.before = first.before;
    edit.after = first.after;
  }
}

}  // namespace zvrsit
