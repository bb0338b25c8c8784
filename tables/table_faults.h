// What is in the files of the tables, as plain values: what is wrong with them, and their records
// word by word.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "util/url_id.h"

namespace zvrsit {

// The five tables of a site, and those of the profiles.
enum class TableKind : std::uint8_t {
  kUrls,
  kFiles,
  kLinks,
  kFolders,
  kRelations,
  kSites,
  kServers,
};

// One thing that is wrong.
struct TableFault {
  std::string file;         // its `\` path
  std::int64_t offset = 0;  // where in it, in bytes
  std::string what;         // in words
  bool isWaste = false;     // every answer is right: only space is lost
};

struct TableFaults {
  static constexpr int kMostOfTable = 100;
  std::vector<TableFault> told;  // of each table the first kMostOfTable, as they were found
  // How many there are, told or not.
  std::int64_t damages = 0;
  std::int64_t wastes = 0;

  bool isSound() const { return damages == 0; }
};

// One word of a record, with what it refers to.
struct DumpedWord {
  enum class Kind : std::uint8_t { kNumber, kText, kSecret, kTexts, kEnd };

  const char* name = "";
  Kind kind = Kind::kNumber;
  std::int64_t number = 0;         // kNumber: it; else the reference as it is stored, -1 for none
  bool isThere = true;             // false: what it refers to is not in the file
  std::vector<std::string> texts;  // kText: one, kTexts: any number; none for kSecret
  UrlID end;                       // kEnd
};

struct DumpedRecord {
  int number = -1;  // -1: a dead slot, which has lost its number
  std::int64_t offset = 0;
  std::vector<DumpedWord> words;
};

}  // namespace zvrsit
