// What is wrong with the files of the tables, and the records in them.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "support/damage.h"
#include "support/file_fault.h"
#include "support/test_site.h"
#include "tables/table_files.h"
#include "util/mb_string.h"

namespace zvrsit::test {
namespace {

std::string Text(const TableFaults& faults) {
  std::string text;
  for (const TableFault& fault : faults.told) {
    text += NameInFolder(fault.file);
    text += " " + std::to_string(fault.offset) + ": " + fault.what +
            (fault.isWaste ? " (waste)\n" : "\n");
  }
  return text;
}

// A small site, rebuilt and closed, so that its files can be changed.
class Verifying : public testing::Test {
 protected:
  Verifying() {
    site.write(
        "index.html",
        "<title>T</title><a name=n></a><a href=http://x/>x</a><img src=g alt=A><a href=a/b.htm>");
    site.write("a/b.htm", "<title>T</title><a href=../index.html>x</a><a href=gone>x</a>");
    EXPECT_EQ(site.Open(), 0);
    EXPECT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
    EXPECT_EQ(site.mgr->PackSite(), 0);
    site.mgr->SiteClose();
  }

  std::string Verify() {
    TableFaults faults;
    EXPECT_EQ(site.mgr->VerifySite("demo", faults), 0);
    return Text(faults);
  }
  std::string Read(const std::string& file) const { return site.folder().read("db/demo/" + file); }
  void Write(const std::string& file, std::string_view bytes) const {
    site.folder().write("db/demo/" + file, bytes);
  }
  static std::string With(std::string bytes, std::size_t at, std::int32_t value) {
    StoreLE32(bytes.data() + at, value);
    return bytes;
  }

  TestSite site;
};

// A word of a file, changed, and what is told of it.
TEST_F(Verifying, TellsWhatIsWrongAndWhere) {
  ASSERT_EQ(Verify(), "");
  const struct {
    const char* file;
    std::size_t at;  // of the word
    std::int32_t value;
    const char* told;
  } rows[] = {
      {"PR", 0, 0, "PR 0: the file does not begin as a file of a table does\n"},
      {"PR", 16, -5, "PR 16: its count of numbers, -5, cannot be\n"},
      {"PR", 20, 99, "PR 20: the header tells of 99 records, but there is room for 4\n"},
      {"PR", 24, 77, "PR 24: no record can have the number 77\n"},
      {"PR", 24, 1, "PR 108: there is another record 1 before this one\n"},
      {"PR", 28, 1000, "record 0 has text 1000 for its name, which is not there\n"},
      {"PR", 36, 0, "PS 28: text 0 is counted 1 times, but is used 2 times\n"},
      {"PR", 64, 7, "block"},
      {"PR", 104, 5, "PR 24: the last bytes of record 0 are not zero\n"},
      {"PS", 20, 2, "there is more after the last text that the header tells of\n"},
      {"PS", 24, 1 << 30, "PS 24: its end offset, 1073741824, cannot be\n"},
      {"PS", 28, 99, "PS 28: no text can have the number 99\n"},
      {"PS", 32, 1 << 30, "PS 28: no text can be read from here on\n"},
      {"PS", 36, 5, "PS 28: text 0 is counted 5 times, but is used 1 times (waste)\n"},
      {"PS", 36, 0, "PS 28: text 0 is there, but is used 0 times\n"},
      {"PS", 40, 3, "PS 28: text 0 is of the unknown kind 3\n"},
      {"LR", 32, 99, "LR 24: record 0 leads to or from entry 99 of kind 2, which is not there\n"},
      {"LR", 52, 0, "LR 24: record 0 occurs 0 times\n"},
      {"RR", 32, 1, "RR 24: record 0 joins a folder with what does not lie in it\n"},
  };
  for (const auto& row : rows) {
    const std::string bytes = Read(row.file);
    Write(row.file, With(bytes, row.at, row.value));
    EXPECT_NE(Verify().find(row.told), std::string::npos) << row.file << row.at << "\n" << Verify();
    Write(row.file, bytes);
  }
  // A record that is there twice under two numbers.
  const std::string links = Read("LR");
  std::string copied = links;
  copied.replace(24 + 44 + 4, 40, links.substr(24 + 4, 40));
  Write("LR", copied);
  EXPECT_NE(Verify().find("LR 68: record 1 is equal to another one\n"), std::string::npos)
      << Verify();
  std::filesystem::remove(site.folder().native("db/demo/LR"));
  EXPECT_NE(Verify().find("LR 0: the file is not there, or cannot be read\n"), std::string::npos);
}

// The number of faults that are told has a bound, that of those that are counted has none.
TEST_F(Verifying, TellsOnlyTheFirstFaultsOfATable) {
  std::string many = With(With(std::string(24, '\0'), 16, 1000), 20, 1000);
  many.replace(0, 16, Read("RR").substr(0, 16));
  for (int i = 0; i < 1000; ++i)
    many += Word(static_cast<std::uint32_t>(i)) + std::string(20, '\0');
  Write("RR", many);
  TableFaults faults;
  ASSERT_EQ(site.mgr->VerifySite("demo", faults), 0);
  EXPECT_EQ(faults.told.size(), static_cast<std::size_t>(TableFaults::kMostOfTable));
  EXPECT_GT(faults.damages, 1000);
  EXPECT_EQ(site.mgr->VerifySite("other", faults), -1);
}

// Deletes everything from the tables in memory; what then is still there, empty for nothing.
std::string WhatEmptyingLeaves(SiteMgr& mgr) {
  std::string left;
  const auto empty = [&left](const char* name, auto* table, auto erase) {
    for (int n = table->NextNumber(0); n >= 0; n = table->NextNumber(n + 1)) {
      if (erase(*table, n) < 0) left += name + std::string(" ") + std::to_string(n) + "; ";
    }
    const bool isEmpty = table->strings()->deadBytes() + 28 == table->strings()->endOffset();
    if (!isEmpty) left += std::string(name) + " has texts; ";
  };
  const auto erase = [](auto& table, int n) { return table.Delete(n); };
  empty("links", mgr.GetLinkDB(), [](SiteLinkDB& links, int n) { return links.DeleteAll(n); });
  empty("relations", mgr.GetRelDB(), erase);
  empty("urls", mgr.GetUrlDB(), erase);
  empty("folders", mgr.GetFolderDB(), erase);
  empty("files", mgr.GetPathDB(), [](SitePathDB& paths, int n) {
    SitePathRec record;
    const bool isDone =
        paths.Get(n, record) == 0 && paths.ReleaseTexts(record) == 0 && paths.Update(record) == 0;
    return isDone ? paths.Delete(n) : -1;
  });
  return left;
}

// Files that are called sound, after any damage, can be opened, and everything can be deleted from
// them.
TEST_F(Verifying, DamageAnywhereIsToldOrDoesNoHarm) {
  // In step with none of the values that a byte or a word gets.
  const int kOneIn = kOneCallIn == 1 ? 1 : 11;
  int looks = 0, told = 0, sound = 0;
  std::vector<std::string> files;
  for (const SiteTableFile& table : kSiteTableFiles) {
    files.emplace_back(table.suffix.substr(1));
    files.push_back(TextFileOf(files.back()));
  }
  for (const std::string& file : files) {
    const std::string bytes = Read(file);
    const auto look = [&](std::string_view damaged, std::size_t at = 0) {
      if (looks++ % kOneIn != 0) return;
      Write(file, damaged);
      if (!Verify().empty()) return void(++told);
      ++sound;
      ASSERT_EQ(site.Open(), 0);
      EXPECT_EQ(WhatEmptyingLeaves(*site.mgr), "") << file << " at " << at;
      site.mgr = std::make_unique<OpenMgr>();  // nothing is written
      site.Start();
    };
    CutAtEveryByte(bytes, look);
    FlipEveryByte(bytes, look);
    SpoilEveryWord(bytes, look);
    Write(file, bytes);
  }
  EXPECT_GT(told, (kOneIn == 1 ? 4 : 3) * sound);
  EXPECT_GT(sound, 100 / kOneIn);
}

std::string DumpText(const DumpedRecord& record) {
  std::string text = std::to_string(record.number);
  for (const DumpedWord& word : record.words) {
    text += std::string(" ") + word.name + "=" + std::to_string(word.number);
    for (const std::string& part : word.texts) text += "," + part;
    if (word.kind == DumpedWord::Kind::kEnd) text += ":" + std::to_string(word.end.id);
    if (!word.isThere) text += "?";
  }
  return text + "\n";
}

TEST_F(Verifying, DumpsRecordsAsFarAsTheyCanBeRead) {
  const auto dump = [&](TableKind kind, bool dead) {
    std::string text;
    std::vector<TableFault> stopped;
    const auto add = [](const DumpedRecord& record, void* to) {
      *static_cast<std::string*>(to) += DumpText(record);
    };
    EXPECT_EQ(site.mgr->DumpTable(kind, "demo", dead, add, &text, stopped), 0);
    for (const TableFault& fault : stopped) {
      text += std::string(NameInFolder(fault.file)) + " " + std::to_string(fault.offset) + "\n";
    }
    return text;
  };
  EXPECT_EQ(dump(TableKind::kUrls, false), "0 name=0,http://x/ state=0 lastChecked=0\n");
  const std::string files = dump(TableKind::kFiles, false);
  EXPECT_NE(files.find(" anchors=4,n "), std::string::npos) << files;
  EXPECT_NE(dump(TableKind::kSites, false).find(",demo rebuildState="), std::string::npos);

  const std::string urls = Read("UR");
  Write("UR", With(urls, 24, -1));
  EXPECT_EQ(dump(TableKind::kUrls, false), "");
  EXPECT_EQ(dump(TableKind::kUrls, true), "-1 name=0,http://x/ state=0 lastChecked=0\n");
  Write("UR", With(urls, 20, 7));
  EXPECT_EQ(dump(TableKind::kUrls, false), "0 name=0,http://x/ state=0 lastChecked=0\nUR 44\n");
  Write("US", Read("US").substr(0, 50));
  EXPECT_EQ(dump(TableKind::kUrls, false), "0 name=0? state=0 lastChecked=0\nUR 44\nUS 28\n");

  ASSERT_EQ(site.mgr->AddServProf("host"), 0);
  ASSERT_EQ(site.mgr->SetServProfPassword("host", "pass"), 0);
  EXPECT_NE(dump(TableKind::kServers, false).find(" password=1 dir"), std::string::npos);
  TableFaults faults;
  ASSERT_EQ(site.mgr->VerifyProfiles(faults), 0);
  EXPECT_EQ(Text(faults), "");
}

}  // namespace
}  // namespace zvrsit::test
