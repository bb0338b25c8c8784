// What is likely meant by a name that is not there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zvrsit {

// Finds, among names that are there, those that resemble a name. Construction takes time in
// proportion to the length of all names together; a question, in proportion to the length of its
// name.
//
// Two names in one folder (equal up to the last "/") are near when they become equal after at most
// one byte is taken out of each. So one letter is missing, extra or different, or two neighbours
// have changed places. What is kept are the hashes of all names with one byte taken out ("symmetric
// deletion", W. Garbe 2012), in one flat table: in a map with a node for each, they took a sixth of
// a check of 10,000 pages.
class NameSuggestions {
 public:
  // `names` are file names or IDs; they must stay where they are.
  explicit NameSuggestions(const std::vector<std::string>& names);

  // The index of the name that differs in letter case only; else of a near name that differs in
  // more than digits; -1 for none. If there are several, the first.
  int Likeliest(std::string_view name) const;
  // The same for letter case alone.
  int SameButForCase(std::string_view name) const;

 private:
  // The name that was put in first under a hash. Open addressing; a power of two of slots, at most
  // half of them in use.
  class Table {
   public:
    // For at most that many hashes.
    explicit Table(std::size_t hashes);
    void Put(std::uint64_t hash, int name);
    int Find(std::uint64_t hash) const;  // -1 for none

   private:
    struct Slot {
      std::uint64_t hash = 0;
      int name = -1;
    };

    std::size_t SlotOf(std::uint64_t hash) const;

    std::vector<Slot> slots_;
  };

  const std::vector<std::string>& names_;
  Table whole_;      // in lower case
  Table shortened_;  // the same and with one byte less
};

// `; did you mean "dot"?`, with the likeliest of the known names; empty for none.
std::string DidYouMean(std::string_view name, const std::vector<std::string>& known);

}  // namespace zvrsit
