#include "repair/file_planner.h"

#include <algorithm>
#include <utility>

#include "links/link_type.h"
#include "links/server_code.h"
#include "links/url_text.h"
#include "manager/site_mgr.h"
#include "repair/spelling.h"
#include "util/mb_string.h"

namespace zvrsit {
namespace {

// Whether the meaning of a text does not depend on where its page lies.
bool IsAbsolute(std::string_view target) {
  return target.empty() || IsSlash(target.front()) || target.front() == '#' ||
         target.front() == '?' || !SchemeOf(target).empty();
}

// The paths by which `wanted` may be reached in the way in which the old text reached its file: as
// the document of a folder, without an extension, or by a rule; then `wanted` itself.
std::vector<std::string> FormsOf(const Place& old, const std::string& direct,
                                 const std::string& wanted) {
  std::vector<std::string> forms;
  if (!old.isDirect()) {
    forms.push_back(direct);
    const std::string& stem = old.direct;
    const bool isFolder = FolderOf(stem) == stem;
    if (isFolder || FolderOf(old.path) == stem + "\\") {
      std::string folder(FolderOf(wanted));
      if (!isFolder) folder.pop_back();
      forms.push_back(std::move(folder));
    } else if (old.path.starts_with(stem + ".")) {
      const std::string extension = old.path.substr(stem.size());
      if (wanted.ends_with(extension)) {
        forms.push_back(wanted.substr(0, wanted.size() - extension.size()));
      }
    }
  }
  forms.push_back(wanted);
  return forms;
}

}  // namespace

void FilePlanner::Plan(const std::string& path, RepairPlan& plan) {
  if (!file_.Read(manager_, source_, path)) return;
  isMoved_ = map_.Moves(path);
  changes_.clear();
  newBases_.clear();
  base_ = kPageItself;
  isBaseMoved_ = false;
  before_.BeginFile(path);
  after_.BeginFile(map_.Moves(path) ? map_.Of(path) : path);
  for (std::size_t i = 0; i < file_.count(); ++i) Decide(i);
  file_.Write(std::move(changes_), plan);
}

// From here on both sites resolve references from this base.
void FilePlanner::UseBase(std::int32_t base) {
  if (base == base_) return;
  base_ = base;
  std::vector<std::string> old;
  std::vector<std::string> now;
  for (; base != kPageItself; base = file_.reference(static_cast<std::size_t>(base)).base) {
    old.push_back(file_.reference(static_cast<std::size_t>(base)).target);
    now.push_back(newBases_[static_cast<std::size_t>(base)]);
  }
  isBaseMoved_ = old != now;
  std::ranges::reverse(old);
  std::ranges::reverse(now);
  before_.UseBases(old);
  after_.UseBases(now);
}

Place FilePlanner::PlaceIn(SiteWorld& world, const FoundReference& reference,
                           const std::string& text) const {
  if (reference.type == 0) return world.PlaceOf(text, SiteWorld::From::kBase, false);
  const bool takesName = reference.type != LT_META_REFRESH && reference.type != LT_APPLET;
  const auto from = reference.isOfSheet ? SiteWorld::From::kSheet : SiteWorld::From::kPage;
  Place place = world.PlaceOf(text, from, takesName);
  // A prefix is content with a folder.
  if (reference.isPrefix && place.kind == TargetKind::kLocal &&
      world.KindOf(place.direct) == FileKind::kFolder) {
    place.path = place.direct;
  }
  return place;
}

bool FilePlanner::IsLeftAlone(const FoundReference& reference, const Place& old, const Place& now) {
  if (old.kind != TargetKind::kLocal && old.kind != TargetKind::kExternal) return true;
  const std::string wanted = old.kind == TargetKind::kLocal ? map_.Of(old.path) : old.path;
  // A rule that names the file is not content with another rule that leads there.
  if (reference.type == LT_REDIRECT && old.isDirect() && wanted != old.path) return false;
  if (now.kind == old.kind && now.path == wanted) {
    return !after_.ClimbsTooHigh(reference.target) || before_.ClimbsTooHigh(reference.target);
  }
  if (isMoved_ || isBaseMoved_) return false;
  // In a file that stays, what leads nowhere may lead somewhere afterwards.
  return old.kind == TargetKind::kExternal ||
         (wanted == old.path && before_.KindOf(old.path) == FileKind::kNone);
}

void FilePlanner::Decide(std::size_t number) {
  const FoundReference& reference = file_.reference(number);
  const bool isBase = number < file_.references().bases().size();
  if (isBase) newBases_.push_back(reference.target);
  UseBase(reference.base);
  if (file_.references().holdsServerCode() && HoldsServerCode(reference.target)) {
    if (isMoved_ && !IsAbsolute(reference.target)) file_.Keep(number, "holds server code");
    return;
  }
  const Place old = PlaceIn(before_, reference, reference.target);
  if (old.kind == TargetKind::kExternal && old.isDirect() && map_.Of(old.path) != old.path) {
    return Readdress(number, map_.Of(old.path));
  }
  // The classic rules take URLs of some schemes for names of files.
  const bool isWeb = after_.rules().resolvesAsBrowser;
  const bool isPath = !IsAbsolute(reference.target) || IsSlash(reference.target.front());
  if (reference.target.empty() || (!isWeb && (!isPath || reference.target.starts_with("//")))) {
    return;
  }
  if (IsLeftAlone(reference, old, PlaceIn(after_, reference, reference.target))) return;
  Place wanted = old;
  if (old.kind == TargetKind::kLocal) wanted.path = map_.Of(old.path);
  std::optional<std::string> text = Respell(reference, old, wanted);
  if (!text) {
    file_.Keep(number, lacksCharacter_ ? "the encoding of the file lacks a character of the name"
                                       : "no text of its kind leads there");
    return;
  }
  if (isBase) newBases_.back() = *text;
  if (*text != reference.target) changes_.push_back({number, std::move(*text)});
}

void FilePlanner::Readdress(std::size_t number, std::string url) {
  std::string bytes;
  if (file_.reference(number).tail.empty() && source_.Encode(url, bytes)) {
    changes_.push_back({number, std::move(url)});
  } else {
    file_.Keep(number, "the new URL cannot be written there");
  }
}

bool FilePlanner::LeadsTo(const FoundReference& reference, const std::string& text,
                          const Place& wanted) {
  if (!text.ends_with(reference.tail)) return false;
  const Place place = PlaceIn(after_, reference, text);
  if (place.kind != wanted.kind || place.path != wanted.path) return false;
  std::string bytes;
  const bool isWritable = source_.Encode(text, bytes);
  lacksCharacter_ |= !isWritable;
  return isWritable;
}

std::optional<std::string> FilePlanner::Respell(const FoundReference& reference, const Place& old,
                                                const Place& wanted) {
  const std::string_view path = PartsOf(reference.target, after_.rules()).path;
  const std::string top = map_.Of(TopOf(path, before_.BaseFolder(), old.direct));
  const Spelling spelling(reference, after_, top);
  lacksCharacter_ = false;
  if (wanted.kind == TargetKind::kExternal) {
    // A rule of the server leads there, or the text leaves the site.
    for (const bool encodesAll : {false, true}) {
      for (std::string& text : spelling.ListFor(old.direct, false, encodesAll)) {
        if (LeadsTo(reference, text, wanted)) return std::move(text);
      }
    }
    for (std::string& text : spelling.ListForUrl(wanted.path)) {
      if (LeadsTo(reference, text, wanted)) return std::move(text);
    }
    return std::nullopt;
  }
  const std::vector<std::string> forms = FormsOf(old, map_.Of(old.direct), wanted.path);
  for (const bool ofOtherKind : {false, true}) {
    for (const bool encodesAll : {false, true}) {
      for (const std::string& form : forms) {
        for (std::string& text : spelling.ListFor(form, ofOtherKind, encodesAll)) {
          if (LeadsTo(reference, text, wanted)) return std::move(text);
        }
      }
    }
  }
  return std::nullopt;
}

}  // namespace zvrsit
