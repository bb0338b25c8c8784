// What is likely meant by a name that is not there.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace zvrsit {

// Finds, among names that are there, those that resemble a name. Construction takes time in
// proportion to the length of all names together; a question, in proportion to the length of its
// name.
//
// Two names in one folder (equal up to the last "/") are near when they become equal after at most
// one byte is taken out of each. So one letter is missing, extra or different, or two neighbours
// have changed places. What is kept are the hashes of all names with one byte taken out ("symmetric
// deletion", W. Garbe 2012).
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
  const std::vector<std::string>& names_;
  std::unordered_map<std::uint64_t, int> whole_;      // in lower case
  std::unordered_map<std::uint64_t, int> shortened_;  // the same and with one character less
};

}  // namespace zvrsit
