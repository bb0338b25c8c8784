#include "findings/suggestions.h"

#include <functional>

namespace zvrsit {
namespace {

// Longer names are compared for equality except for letter case, and for nothing else.
constexpr std::size_t kLongest = 64;
// Among shorter names too many are near each other by chance.
constexpr std::size_t kShortest = 4;

// In lower case, as far as letters are ASCII.
std::string Folded(std::string_view name) {
  std::string folded(name);
  for (char& c : folded) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
  }
  return folded;
}

std::string WithoutDigits(std::string_view name) {
  std::string rest = Folded(name);
  std::erase_if(rest, [](char c) { return c >= '0' && c <= '9'; });
  return rest;
}

std::uint64_t HashBytes(std::string_view text) {
  return std::hash<std::string_view>()(text);
}

// Calls `take` with the hash of the name, and with the hash of each name that results when one byte
// after its last "/" is taken out.
template <class Take>
void ForEachShortened(const std::string& name, Take take) {
  take(HashBytes(name));
  const std::size_t begin = name.rfind('/') + 1;  // 0 without one
  const std::size_t length = name.size() - begin;
  if (length < kShortest || length > kLongest) return;
  std::string shorter = name;
  shorter.erase(begin, 1);
  take(HashBytes(shorter));
  for (std::size_t i = begin; i < shorter.size(); ++i) {
    shorter[i] = name[i];
    take(HashBytes(shorter));
  }
}

}  // namespace

NameSuggestions::NameSuggestions(const std::vector<std::string>& names) : names_(names) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string name = Folded(names[i]);
    whole_.try_emplace(HashBytes(name), static_cast<int>(i));
    ForEachShortened(
        name, [&](std::uint64_t hash) { shortened_.try_emplace(hash, static_cast<int>(i)); });
  }
}

int NameSuggestions::SameButForCase(std::string_view name) const {
  const std::string folded = Folded(name);
  const auto found = whole_.find(HashBytes(folded));
  if (found == whole_.end()) return -1;
  return Folded(names_[static_cast<std::size_t>(found->second)]) == folded ? found->second : -1;
}

int NameSuggestions::Likeliest(std::string_view name) const {
  const int same = SameButForCase(name);
  if (same >= 0) return same;
  int likeliest = -1;
  const std::string unnumbered = WithoutDigits(name);
  ForEachShortened(Folded(name), [&](std::uint64_t hash) {
    const auto found = shortened_.find(hash);
    if (found == shortened_.end() || (likeliest >= 0 && found->second >= likeliest)) return;
    // "index-19" is probably not a mistyped "index-1".
    if (WithoutDigits(names_[static_cast<std::size_t>(found->second)]) != unnumbered) {
      likeliest = found->second;
    }
  });
  return likeliest;
}

}  // namespace zvrsit
