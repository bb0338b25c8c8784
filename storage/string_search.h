// StringSearch: from a text to the number of the string in a variable-record file that has it.
//
// An index over all strings of a large file costs more than a few searches do. So in whole-file
// mode opening takes a short tag of each string only, and the first searches are passes over the
// tags; the index is made when passes have cost as much. In direct mode opening makes the index,
// with a copy of each text, so that no search reads the file.
//
// What holds between two calls:
//   1. A text is known when the index is made, or when it was asked for before. Of a known text
//      `names_` tells all: the string that has it, or none.
//   2. Of equal strings, as only a damaged file has them, the one that lies last in the file is
//      found. Releasing any of them takes the text out, whoever else has it.
//   3. A string is added only under a text that is known. So every string of a text that is not
//      known was there at opening and has its tag, as long as there are passes left.
//   4. `released_` says which strings were released under texts that were not known. When such a
//      text becomes known, rule 2 is made up for.
//   5. In direct mode there are no tags, and `copies_` has the text of each entry in `names_`.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "storage/id_table.h"
#include "storage/probe_table.h"
#include "storage/text_map.h"
#include "util/prefetch.h"

namespace zvrsit {

class SiteVarRecDB;

// What a search found out, for adding the same string without a second one. Good until the next
// change of the file.
struct FoundString {
  std::uint32_t hash = 0;
  int id = -1;     // of the string; -1 for none
  int offset = 0;  // of its entry; -1 where it could not be looked for
  bool hasFailed() const { return offset < 0; }
};

// Where no error is told, a call may throw when there is no memory.
class StringSearch {
 public:
  explicit StringSearch(SiteVarRecDB& file) : file_(file) {}

  // When the file is opened: Start, then Note for each of its strings, as they lie in the file.
  void Start();
  bool wantsStrings() const { return indexMade_ || passesLeft_ > 0; }
  void Note(int id, int offset, std::string_view text);
  // The file is damaged: tags may not lead to all that the index finds.
  void GiveTagsUp() { passesLeft_ = 0; }
  // Forgets everything; the index is then made when it is next needed.
  void Forget();
  // Whether there is anything to keep in step when a string is released.
  bool knowsAny() const { return indexMade_ || !asked_.empty(); }

  // `guess` is what the caller expects to be found, or only the hash of the text. Does not throw.
  FoundString Find(std::string_view text, const FoundString& guess);
  // A string with that hash, most likely the one that is meant. Its entry is fetched from memory.
  FoundString GuessOf(std::uint32_t hash) const;
  // Fetches what GuessOf will read.
  void FetchFor(std::uint32_t hash) const { PrefetchMemory(names_.Home(hash)); }
  // AskFor makes texts known in one pass; MakeIndex makes the index. 0, or -1 without memory or for
  // a damaged entry.
  [[nodiscard]] int AskFor(std::span<const std::string_view> texts);
  [[nodiscard]] int MakeIndex();
  bool isIndexMade() const { return indexMade_; }
  bool IsKnown(std::string_view text, std::uint32_t hash) const {
    return indexMade_ || (!asked_.empty() && asked_.Find(text, hash) != nullptr);
  }

  // Reserves the memory that Enter will need for a string whose entry lies at `offset`.
  void MakeRoom(std::string_view text, int offset);
  // A string was added under a known text: one that was found, or one that was not.
  void Enter(std::string_view text, std::uint32_t hash, int id, int offset);
  void EnterNew(std::string_view text, std::uint32_t hash, int id, int offset);
  // A string was released; 0 or -1 (it cannot be read).
  [[nodiscard]] int Release(std::string_view text, int offset);

 private:
  struct Name {
    std::uint32_t hash;
    std::int32_t id;
    std::int32_t offset;
  };
  struct Nothing {};
  struct Wanted {
    std::uint32_t hash;
    std::string_view text;
  };
  struct NewName {
    std::uint32_t hash;
    std::int32_t id;
    std::int32_t offset;
    std::string_view text;
  };
  using TagSet = std::bitset<1 << 16>;

  void ForgetAsked();
  [[nodiscard]] int EnterAll();
  void EnterTagged(std::span<const std::string_view> texts);
  std::vector<std::int32_t> OffsetsOf(const TagSet& tags) const;
  [[nodiscard]] int MakeKnown(std::string_view text, std::uint32_t hash);
  template <class IsWanted>
  void TakeReleasedOut(IsWanted isWanted);
  void TakeOut(std::string_view text, std::uint32_t hash);
  Name* FindName(std::string_view text, std::uint32_t hash);
  bool HasText(int offset, std::string_view text);

  SiteVarRecDB& file_;
  ProbeTable<Name> names_;
  bool indexMade_ = false;
  std::unordered_map<std::int32_t, std::string> copies_;  // by offset
  TextMap<Nothing> asked_;              // texts that were asked for before the index was made
  std::vector<std::int32_t> released_;  // offsets of entries
  IdTable<std::uint16_t> tags_;         // by number; 0 for none
  int passesLeft_ = 0;
};

}  // namespace zvrsit
