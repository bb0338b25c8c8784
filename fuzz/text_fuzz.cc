// Small texts that come from elsewhere: dates of servers, lists of paths, rules of a server, the
// journal of a change.
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "dom/dom.h"
#include "fuzz/target.h"
#include "links/redirect_rules.h"
#include "manager/site_mgr.h"
#include "repair/journal.h"
#include "support/temp_folder.h"
#include "util/web_date.h"

namespace zvrsit {
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
    std::string after;
    std::string before;
    if (file.Apply(text, after) && (!file.Undo(after, before) || before != text)) std::abort();
    (void)file.Undo(text, before);
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

}  // namespace
}  // namespace zvrsit

// The first byte chooses what the rest is.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zvrsit;
  if (size == 0) return 0;
  const std::string text(data + 1, data + size);
  constexpr void (*kReaders[])(const std::string&) = {
      &ReadDate, [](const std::string& list) { ReadList(list); }, &ReadRules, &ReadChange};
  kReaders[data[0] % std::size(kReaders)](text);
  return 0;
}

std::vector<std::string> FuzzSeeds() {
  using namespace std::string_literals;
  return {"0Sun, 06 Nov 1994 08:49:37 GMT",
          "0Sunday, 06-Nov-94 08:49:37 GMT",
          "0Sun Nov  6 08:49:37 1994",
          "1\\site\\a.htm\0\\site\\b.htm\0\0\\site\\c.htm\0"s,
          "2/a/* x=:y /b/:splat/:y 301!\n/:p/b http://h/:p 302 Language=fr\n/c /d # e\n",
          "2/*/x /:splat 200\n/u/:name id=:id /users/:name/:id 404\n* /\n",
          zvrsit::JournalSeed(false),
          zvrsit::JournalSeed(true)};
}
