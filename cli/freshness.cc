#include "cli/freshness.h"

#include "cli/rebuild.h"

namespace zvrsit::cli {
namespace {

constexpr std::size_t kNamed = 5;

void AddShown(const Session& session, const std::vector<std::string>& paths, Strings& names) {
  for (const std::string& path : paths) names.push_back(session.names().Shown(path));
}

Strings Unread(const Session& session, const SiteChanges& changes) {
  Strings names;
  AddShown(session, changes.unread, names);
  AddShown(session, changes.unlisted, names);
  for (const std::string& native : changes.leftOut)
    names.push_back(session.names().ShownNative(native));
  return names;
}

// The first few of them, and how many there are beside.
std::string Named(const Strings& names) {
  std::string text;
  for (std::size_t i = 0; i < names.size() && i < kNamed; ++i) {
    text += (i == 0 ? "" : ", ") + names[i];
  }
  if (names.size() > kNamed) text += fmt::format(" and {} more", names.size() - kNamed);
  return text;
}

void AddCount(std::size_t count, const char* one, const char* many, std::string& text) {
  if (count == 0) return;
  text += (text.empty() ? "" : ", ") + Counted(static_cast<long>(count), one, many);
}

Json AsJson(const Strings& names) {
  Json array = Json::array();
  for (const std::string& name : names) array.push_back(JsonText(name));
  return array;
}

Json AsJson(const Session& session, const std::vector<std::string>& paths) {
  Strings names;
  AddShown(session, paths, names);
  return AsJson(names);
}

}  // namespace

SiteChanges CompareSite(Session& session) {
  const DatabaseLeftOut leftOut(session);
  SiteChanges changes;
  session.manager().CompareWithDisk(changes);
  return changes;
}

void TellChanges(const Session& session, const SiteChanges& changes, const std::string& site) {
  std::string counts;
  AddCount(changes.changed.size(), "file has changed", "files have changed", counts);
  AddCount(changes.gone.size(), "file is gone", "files are gone", counts);
  AddCount(changes.added.size(), "file is new", "files are new", counts);
  if (!counts.empty()) {
    Strings names;
    for (const auto* paths : {&changes.changed, &changes.gone, &changes.added}) {
      AddShown(session, *paths, names);
    }
    Warn(counts + " since \"" + site + "\" was read (" + Named(names) + "): zvrsit rebuild " +
         site);
  }
  TellUnread(session, changes);
}

void TellUnread(const Session& session, const SiteChanges& changes) {
  const Strings names = Unread(session, changes);
  if (names.empty()) return;
  Warn("not read, so that not all links are known: " + Named(names));
}

Json ChangesAsJson(const Session& session, const SiteChanges& changes) {
  return {{"changed", AsJson(session, changes.changed)},
          {"gone", AsJson(session, changes.gone)},
          {"new", AsJson(session, changes.added)},
          {"unread", AsJson(Unread(session, changes))}};
}

}  // namespace zvrsit::cli
