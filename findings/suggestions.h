// What is likely meant by a name that is not there.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace zvrsit {

// Names that are there, looked up by what resembles them. Making it takes time in proportion to the
// length of all names together; a question takes time in proportion to the length of its name.
//
// Two names in one folder (the same up to the last "/") are near when taking at most one byte out
// of each makes them equal: one letter is missing, too many or another, or two neighbours have
// changed places. The names that result from taking one out are what is kept, by hash ("symmetric
// deletion", W. Garbe 2012).
class NameSuggestions {
 public:
  // `names` are file names or IDs; they must stay where they are.
  explicit NameSuggestions(const std::vector<std::string>& names);

  // The index of the name that is `name` but for letter case, else of one that is near and differs
  // in more than digits; -1 for
  // none. Of several the first.
  int Likeliest(std::string_view name) const;
  // The same for letter case alone.
  int SameButForCase(std::string_view name) const;

 private:
  const std::vector<std::string>& names_;
  std::unordered_map<std::uint64_t, int> whole_;      // in lower case
  std::unordered_map<std::uint64_t, int> shortened_;  // the same and with one character less
};

}  // namespace zvrsit
