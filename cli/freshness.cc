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

// The first few names, and how many more there are.
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

}  // namespace

SiteChanges CompareSite(Session& session) {
  const NotOfTheSite leftOut(session);
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
    Warn(counts + " since \"" + site + "\" was read (" + Named(names) + "): zvrsit update " + site);
  }
  TellUnread(session, changes);
}

void TellUnread(const Session& session, const SiteChanges& changes) {
  const Strings names = Unread(session, changes);
  if (names.empty()) return;
  Warn("not read, so that not all links are known: " + Named(names));
}

void NoteChanges(const Session& session, const SiteChanges& changes, FindingReport& report) {
  AddShown(session, changes.changed, report.changed);
  AddShown(session, changes.gone, report.gone);
  AddShown(session, changes.added, report.added);
  report.unread = Unread(session, changes);
}

}  // namespace zvrsit::cli
