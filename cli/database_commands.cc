// The commands about the database itself: verify, dump.
#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>

#include "cli/beside_rebuild.h"
#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "cli/output.h"
#include "findings/dump_json.h"

namespace zvrsit::cli {
namespace {

// The database as it lies there. A Session would mend profiles from their backup, and put a
// finished rebuild in its place.
class DatabaseAsItIs {
 public:
  explicit DatabaseAsItIs(const Options& options) : folder_(DatabaseFolder(options)) {
    std::error_code error;
    const std::string profiles = NameOf(PathOf(folder_) / kSiteProfiles);
    if (!std::filesystem::exists(PathOf(profiles), error)) {
      throw Failure(kDatabase, profiles + ": there is no database here");
    }
    manager_.setDom(&dom_);
    manager_.SetLocking(SiteMgr::Locking::kAsk);
    manager_.setDB(FolderPath(folder_).c_str(), kSiteProfiles, kServerProfiles, 0);
    if (manager_.LockProfiles() != 0) Fail("the database");
  }
  ~DatabaseAsItIs() { manager_.UnlockProfiles(); }
  DatabaseAsItIs(const DatabaseAsItIs&) = delete;
  DatabaseAsItIs& operator=(const DatabaseAsItIs&) = delete;

  SiteMgr& manager() { return manager_; }
  const std::string& folder() const { return folder_; }
  // Throws the failure of a site, or of the whole database, that could not be looked at.
  [[noreturn]] void Fail(const std::string& what) {
    if (!manager_.FoundInUse()) throw Failure(kUsage, "there is no site named " + what);
    FailToLock(manager_, folder_, what);
  }

 private:
  const std::string folder_;
  DOM dom_;
  SiteMgr manager_;
};

std::string InQuotes(const std::string& name) {
  return '"' + name + '"';
}

// What keeps a site from being asked, though its files may be sound; empty for nothing.
std::string WhyNotWhole(DatabaseAsItIs& database, const std::string& site) {
  const std::string mend = ": zvrsit rebuild " + site;
  if (HasFinishedRebuild(NameOf(PathOf(database.folder()) / PathOf(site)))) {
    return "a rebuild of " + InQuotes(site) + " is still to be put in its place" + mend;
  }
  const int state = database.manager().NeedToRebuild(site);
  return state == kNotWhole
             ? "the last rebuild or change of " + InQuotes(site) + " did not end" + mend
             : "";
}

// Whether there is nothing to look at yet: the site waits for its first rebuild.
bool IsNew(DatabaseAsItIs& database, const std::string& site) {
  return database.manager().NeedToRebuild(site) == kNeverRebuilt;
}

struct Verified {
  TableFaults faults;
  std::vector<std::string> notWhole;
  std::vector<std::string> damaged;  // sites

  bool isSound() const { return faults.isSound() && notWhole.empty(); }
};

Verified Verify(DatabaseAsItIs& database, const std::string& wanted) {
  Verified verified;
  SiteMgr& manager = database.manager();
  if (manager.VerifyProfiles(verified.faults) != 0) database.Fail("the database");
  const std::vector<std::string> sites =
      wanted.empty() ? TakeList(manager.EnumSiteProf()) : std::vector<std::string>{wanted};
  for (const std::string& site : sites) {
    if (manager.FindSiteProf(site) < 0) database.Fail(InQuotes(site));
    const std::string why = WhyNotWhole(database, site);
    if (!why.empty()) verified.notWhole.push_back(why);
    if (!why.empty() || IsNew(database, site)) continue;
    const std::int64_t before = verified.faults.damages;
    if (manager.VerifySite(site, verified.faults) != 0) database.Fail(InQuotes(site));
    if (verified.faults.damages > before) verified.damaged.push_back(site);
  }
  return verified;
}

void PrintVerified(const Verified& verified) {
  const TableFaults& faults = verified.faults;
  for (const TableFault& fault : faults.told) {
    Print("{}, byte {}: {}{}\n", LineText(NativePath(fault.file)), fault.offset,
          fault.isWaste ? "waste: " : "", fault.what);
  }
  for (const std::string& why : verified.notWhole) Print("{}\n", LineText(why));
  const auto told = static_cast<std::int64_t>(faults.told.size());
  const std::int64_t untold = faults.damages + faults.wastes - told;
  if (untold > 0) Print("and {} more\n", untold);
  for (const std::string& site : verified.damaged) {
    Print("the tables of {} are damaged: zvrsit rebuild {} --anew\n", LineText(InQuotes(site)),
          LineText(site));
  }
  if (verified.isSound()) Print("the database is sound\n");
}

Json AsJson(const Verified& verified) {
  Json faults = Json::array();
  for (const TableFault& fault : verified.faults.told) {
    faults.push_back({{"file", JsonText(NativePath(fault.file))},
                      {"offset", fault.offset},
                      {"what", fault.what},
                      {"waste", fault.isWaste}});
  }
  const auto texts = [](const std::vector<std::string>& from) {
    Json array = Json::array();
    for (const std::string& text : from) array.push_back(JsonText(text));
    return array;
  };
  return {{"sound", verified.isSound()},        {"damages", verified.faults.damages},
          {"wastes", verified.faults.wastes},   {"not_whole", texts(verified.notWhole)},
          {"damaged", texts(verified.damaged)}, {"faults", faults}};
}

int RunVerify(const Options& options, const std::string& site) {
  Verified verified;
  {
    DatabaseAsItIs database(options);
    verified = Verify(database, site);
  }
  if (options.json) {
    PrintJson(AsJson(verified));
  } else {
    PrintVerified(verified);
  }
  return verified.isSound() ? kClean : kDatabase;
}

struct NamedTable {
  const char* name;
  TableKind kind;
};
constexpr NamedTable kTables[] = {
    {"files", TableKind::kFiles},         {"folders", TableKind::kFolders},
    {"urls", TableKind::kUrls},           {"links", TableKind::kLinks},
    {"relations", TableKind::kRelations}, {"sites", TableKind::kSites},
    {"servers", TableKind::kServers},
};
constexpr std::size_t kTablesOfSite = 5;  // the first ones

struct DumpWanted {
  std::string site;
  std::vector<std::string> tables;  // names; empty: all of the site
  bool dead = false;
};

Json WordAsJson(const DumpedWord& word) {
  switch (word.kind) {
    case DumpedWord::Kind::kNumber:
      return word.number;
    case DumpedWord::Kind::kEnd:
      return {{"kind", word.end.kind}, {"number", word.end.id}};
    case DumpedWord::Kind::kSecret:
      return word.number != -1 ? Json("(not shown)") : Json();
    case DumpedWord::Kind::kTexts: {
      Json texts = Json::array();
      for (const std::string& text : word.texts) texts.push_back(JsonText(text));
      if (!word.isThere) texts.push_back({{"missing", word.number}});
      return texts;
    }
    case DumpedWord::Kind::kText:
      break;
  }
  if (!word.isThere) return {{"missing", word.number}};
  return word.texts.empty() ? Json() : Json(JsonText(word.texts.front()));
}

Json RecordAsJson(const char* table, const DumpedRecord& record) {
  Json row{{"table", table},
           {"number", record.number == -1 ? Json() : Json(record.number)},
           {"offset", record.offset}};
  for (const DumpedWord& word : record.words) row[word.name] = WordAsJson(word);
  return row;
}

// A line of people's words: only what is set.
void PrintRecord(const char* table, const DumpedRecord& record) {
  Print("{} {}", table, record.number == -1 ? "dead" : std::to_string(record.number));
  for (const DumpedWord& word : record.words) {
    const Json value = WordAsJson(word);
    if (value.is_null() || (value.is_array() && value.empty())) continue;
    Print("  {}={}", word.name, DumpJson(value));
  }
  Print("\n");
}

// What a hook of DumpTable needs.
struct DumpOutput {
  const Options& options;
  JsonRows rows;
  const char* table = "";

  static void Add(const DumpedRecord& record, void* context) {
    DumpOutput& output = *static_cast<DumpOutput*>(context);
    if (output.options.json) {
      output.rows.Add(RecordAsJson(output.table, record));
    } else if (output.options.format == FindingFormat::kJsonl) {
      Print("{}\n", DumpJson(RecordAsJson(output.table, record)));
    } else {
      PrintRecord(output.table, record);
    }
  }
};

int RunDump(const Options& options, const DumpWanted& wanted) {
  DatabaseAsItIs database(options);
  DumpOutput output{options, {}, ""};
  std::vector<TableFault> stopped;
  std::size_t place = 0;
  for (const NamedTable& table : kTables) {
    const bool isWanted = wanted.tables.empty()
                              ? place < kTablesOfSite
                              : std::ranges::find(wanted.tables, table.name) != wanted.tables.end();
    ++place;
    if (!isWanted) continue;
    output.table = table.name;
    if (database.manager().DumpTable(table.kind, wanted.site, wanted.dead, &DumpOutput::Add,
                                     &output, stopped) != 0) {
      database.Fail(InQuotes(wanted.site));
    }
  }
  if (options.json) output.rows.End();
  for (const TableFault& fault : stopped) {
    Warn(fmt::format("{}, byte {}: {}", NativePath(fault.file), fault.offset, fault.what));
  }
  return stopped.empty() ? kClean : kDatabase;
}

void AddVerify(CLI::App& app, const Options& options, Run& run) {
  const auto site = std::make_shared<std::string>();
  CLI::App* verify = app.add_subcommand(
      "verify", "Look for damage in the database, and exit with 3 if there is; change nothing");
  verify->add_option("NAME", *site, "the name of a site; without it all are looked at")
      ->option_text(" ");
  verify->callback(
      [&options, &run, site] { run = [&options, site] { return RunVerify(options, *site); }; });
}

void AddDump(CLI::App& app, const Options& options, Run& run) {
  const auto wanted = std::make_shared<DumpWanted>();
  CLI::App* dump = app.add_subcommand(
      "dump", "Print the records of the tables as stored; --format jsonl: an object a line");
  AddSiteName(*dump, wanted->site);
  dump->add_option(
          "TABLE", wanted->tables,
          "files, folders, urls, links, relations, sites or servers; by default all of the site")
      ->option_text("TABLE ...")
      ->check([](const std::string& name) {
        const bool isTable = std::ranges::any_of(
            kTables, [&](const NamedTable& table) { return table.name == name; });
        return isTable ? std::string() : "\"" + name + "\" is no table";
      });
  dump->add_flag("--all", wanted->dead, "also deleted records that are still in the files");
  dump->callback(
      [&options, &run, wanted] { run = [&options, wanted] { return RunDump(options, *wanted); }; });
}

}  // namespace

void AddDatabaseCommands(CLI::App& app, const Options& options, Run& run) {
  AddVerify(app, options, run);
  AddDump(app, options, run);
}

}  // namespace zvrsit::cli
