// Small texts that come from elsewhere: dates of servers, lists of paths, rules of a server, the
// journal of a change, the note of an update, the fields of profiles.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "dom/dom.h"
#include "fuzz/target.h"
#include "legacy/sit_mgr.h"
#include "links/redirect_rules.h"
#include "manager/site_mgr.h"
#include "manager/update_note.h"
#include "repair/journal.h"
#include "support/temp_folder.h"
#include "util/server_fields.h"
#include "util/web_date.h"

namespace zvrsit::fuzz {
namespace {

// Any number may come of it, also that of a time before 1970.
void ReadDate(const std::string& text) {
  (void)ParseWebDate(text.c_str());
}

// `text` ends in two zeros, as a list of an application does.
void ReadList(std::string text) {
  text.append(2, '\0');
  static SiteMgr manager;
  for (int operation = 0; operation < 5; ++operation) {
    manager.GeneralOperation(text.c_str(), text.c_str() + text.size() / 2, operation);
  }
}

void ReadRules(const std::string& text) {
  TargetResolver resolver(LinkRules::Web);
  resolver.BeginPage("\\site\\", "\\site\\_redirects");
  const RedirectRules rules(text, resolver);
  for (const RedirectRule& rule : ReadRedirectRules(text)) {
    if (rule.toOffset + rule.to.size() > text.size()) std::abort();
    std::string path = "\\site";
    for (const char c : rule.from) path += c == '/' ? '\\' : c == '*' ? 'x' : c;
    std::string to;
    const RedirectRule* const found = rules.Match(path, "a=b&id=7", false, to);
    if (found != nullptr && to.empty() && !found->to.empty()) std::abort();
    rules.Match(path, "", true, to);
  }
}

bool IsSame(const Journal& a, const Journal& b) {
  const auto same = [](const JournalFile& one, const JournalFile& other) {
    return one.path == other.path && one.temporary == other.temporary &&
           one.before == other.before && one.after == other.after &&
           one.edits.size() == other.edits.size();
  };
  return a.folders == b.folders && std::ranges::equal(a.files, b.files, same) &&
         a.renames.size() == b.renames.size();
}

// A file that has what the edits replace.
std::string ContentFor(const JournalFile& file) {
  std::string content(100, '.');
  for (const JournalEdit& edit : file.edits) {
    if (edit.offset > 1 << 16) continue;
    const auto offset = static_cast<std::size_t>(edit.offset);
    if (content.size() < offset + edit.before.size()) {
      content.resize(offset + edit.before.size(), '.');
    }
    content.replace(offset, edit.before.size(), edit.before);
  }
  return content;
}

// What is read is written and read again; and its edits are made and undone.
void ReadChange(const std::string& text) {
  static const test::TempFolder folder;
  const std::string path = folder.path("journal");
  test::WriteWhole(folder.native("journal"), text);
  Journal journal;
  if (ReadJournal(path, journal) != JournalState::kWhole) return;
  Journal again;
  if (WriteJournal(path, journal) != 0 || ReadJournal(path, again) != JournalState::kWhole ||
      !IsSame(journal, again)) {
    std::abort();
  }
  for (const JournalFile& file : journal.files) {
    const std::string content = ContentFor(file);
    std::string after;
    std::string before;
    if (file.Apply(content, after) && (!file.Undo(after, before) || before != content))
      std::abort();
    (void)file.Undo(content, before);
    (void)file.Apply(text, after);
  }
}

std::string JournalSeed(bool isLong) {
  const test::TempFolder folder;
  Journal journal;
  journal.folders = {"\\site\\new\\"};
  JournalFile file;
  file.path = "\\site\\a.html";
  file.temporary = "\\site\\a.html~";
  file.edits = {{3, "old", "newer"}, {90, "", "x"}};
  journal.files.assign(isLong ? 3 : 1, file);
  journal.renames = {{"\\site\\b\\", "\\site\\new\\b\\", false}, {"\\site\\c", "\\site\\c~", true}};
  if (WriteJournal(folder.path("journal"), journal) != 0) std::abort();
  return "3" + test::ReadWhole(folder.native("journal"));
}

const std::vector<std::string> kNoteConditions = {"0.2", "\\site\\ 24 1700000000"};

void ReadNote(const std::string& text) {
  static const test::TempFolder folder;
  test::WriteWhole(folder.native("NOTE"), text);
  UpdateNote note;
  note.conditions = kNoteConditions;
  if (!note.Read(folder.path("NOTE"))) return;
  UpdateNote again;
  again.conditions = kNoteConditions;
  if (!note.Write(folder.path("NOTE")) || !again.Read(folder.path("NOTE"))) std::abort();
  if (note.traits != again.traits || note.isExact != again.isExact ||
      note.linkedFolders != again.linkedFolders || note.passedBy != again.passedBy ||
      note.young != again.young || note.saved != again.saved || note.moved != again.moved) {
    std::abort();
  }
}

std::string NoteSeed() {
  const test::TempFolder folder;
  UpdateNote note;
  note.conditions = kNoteConditions;
  note.traits = 5;
  note.isExact = true;
  note.linkedFolders = {"\\site\\linked\\"};
  note.young = {"\\site\\a.html", "\\site\\b.html"};
  if (!note.Write(folder.path("NOTE"))) std::abort();
  return "4" + test::ReadWhole(folder.native("NOTE"));
}

// Lines: the name of a site and of a server, then fields. What a profile is given, it has, in both
// generations; and what the older one has, the newer one takes.
class ProfileLines {
 public:
  explicit ProfileLines(std::string_view text) : rest_(text) {}
  std::string Next() {
    const std::size_t end = std::min(rest_.find('\n'), rest_.size());
    std::string line(rest_.substr(0, end));
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    std::erase(line, '\0');
    return line;
  }

 private:
  std::string_view rest_;
};

template <class Profile>
Profile ServerOf(ProfileLines lines) {
  Profile server;
  ForEachServerField<Profile>([&](ServerField, auto field) {
    if constexpr (std::is_same_v<decltype(server.*field), std::string&>) {
      server.*field = lines.Next();
    } else {
      server.*field = static_cast<int>(lines.Next().size());
    }
  });
  return server;
}

void KeepInNewer(const test::TempFolder& folder, const std::string& site, const std::string& name,
                 const ServProfile& server, const SiteProfile& profile) {
  for (const bool isFirst : {true, false}) {
    SiteMgr manager;
    manager.setDB((folder.path("db") + "\\").c_str(), "sites.R", "servers.R", 0);
    if (isFirst && manager.SetServProf(name, server) < 0 && !name.empty()) std::abort();
    ServProfile have;
    if (!name.empty() && (manager.GetServProf(name, have) != 0 || have != server)) std::abort();
    const bool isSet = isFirst ? manager.SetSiteProf(site, profile) >= 0 : true;
    SiteProfile kept;
    const bool isThere = manager.GetSiteProf(site, kept) == 0;
    if ((isFirst && isSet != isThere) || (isThere && kept != profile)) std::abort();
    TableFaults faults;
    if (!isFirst && (manager.VerifyProfiles(faults) != 0 || !faults.isSound())) std::abort();
  }
  for (const auto& entry : std::filesystem::directory_iterator(folder.native())) {
    if (entry.path().filename() != "db") std::abort();  // a name that has left its folder
  }
}

void ReadProfiles(const std::string& text) {
  const test::TempFolder folder;
  folder.makeFolder("db/old");
  ProfileLines lines(text);
  const std::string site = lines.Next();
  const std::string name = lines.Next();
  const auto older = ServerOf<SitServProperty>(lines);
  SitServProperty have;
  {
    SitMgr manager;
    manager.setDB(folder.path("db/old") + "\\", "sites", "servers");
    const bool isSet = manager.SetServProf(name, older) == 0;
    if (isSet == name.empty()) std::abort();
    if (isSet && (manager.GetServProf(name, have) != 0 || have != older)) std::abort();
    if (manager.SiteProfAdd(site) == 0 && manager.SiteProfGetID(site) != 0) std::abort();
  }
  SiteProfile profile;
  for (std::string& slot : profile.folders) slot = lines.Next();
  profile.topFile = lines.Next();
  profile.defaultUrl = lines.Next();
  profile.server = name;
  KeepInNewer(folder, site, name, ServerOf<ServProfile>(ProfileLines(text)), profile);
}

// The first byte chooses what the rest is.
void ReadText(std::string_view input) {
  if (input.empty()) return;
  constexpr void (*kReaders[])(const std::string&) = {
      &ReadDate,  [](const std::string& list) { ReadList(list); },
      &ReadRules, &ReadChange,
      &ReadNote,  &ReadProfiles};
  kReaders[static_cast<unsigned char>(input[0] - '0') % std::size(kReaders)](
      std::string(input.substr(1)));
}

std::vector<std::string> TextSeeds() {
  using namespace std::string_literals;
  return {"0Sun, 06 Nov 1994 08:49:37 GMT",
          "0Sunday, 06-Nov-94 08:49:37 GMT",
          "0Sun Nov  6 08:49:37 1994",
          "1\\site\\a.htm\0\\site\\b.htm\0\0\\site\\c.htm\0"s,
          "2/a/* x=:y /b/:splat/:y 301!\n/:p/b http://h/:p 302 Language=fr\n/c /d # e\n",
          "2/*/x /:splat 200\n/u/:name id=:id /users/:name/:id 404\n* /\n",
          JournalSeed(false),
          JournalSeed(true),
          NoteSeed(),
          "5demo\nhost\nftp.example.org\nann\nsecret\n/www/\n1\nproxy\nann\n\xE9\x83\\\n22\n\n",
          "5../x\na/b\n;\n;;\n;;;\n:~\n\x7F\n"};
}

}  // namespace

const Target kTextTarget = {"text", &ReadText, &TextSeeds};

}  // namespace zvrsit::fuzz
