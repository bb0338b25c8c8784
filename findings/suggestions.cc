#include "findings/suggestions.h"

#include <array>
#include <bit>

#include "util/ascii.h"

namespace zvrsit {
namespace {

// Longer names are compared for equality except for letter case, and for nothing else.
constexpr std::size_t kLongest = 64;
// Among shorter names too many are near each other by chance.
constexpr std::size_t kShortest = 4;

// In lower case, as far as letters are ASCII.
std::string Folded(std::string_view name) {
  std::string folded(name);
  LowerAsciiLetters(folded);
  return folded;
}

std::string WithoutDigits(std::string_view name) {
  std::string rest = Folded(name);
  std::erase_if(rest, [](char c) { return c >= '0' && c <= '9'; });
  return rest;
}

// The hash of a text is a polynomial of its bytes, modulo 2^64. So the hash of the text without one
// byte follows from those of its two halves.
constexpr std::uint64_t kBase = 0x9E3779B97F4A7C15;

// The place of its last name in a path.
std::size_t LastNameOf(std::string_view path) {
  return path.rfind('/') + 1;  // 0 without one
}

bool IsShortened(std::size_t length) {
  return length >= kShortest && length <= kLongest;
}

std::uint64_t HashOnto(std::uint64_t hash, std::string_view bytes) {
  for (const char c : bytes) hash = (hash + static_cast<unsigned char>(c) + 1) * kBase;
  return hash;
}

std::uint64_t HashOf(std::string_view text) {
  return HashOnto(0, text);
}

// Calls `take` with the hash of the name, and with the hash of each name that results when one byte
// after its last "/" is taken out.
template <class Take>
void ForEachShortened(std::string_view path, Take take) {
  take(HashOf(path));
  const std::string_view name = path.substr(LastNameOf(path));
  if (!IsShortened(name.size())) return;
  std::uint64_t before = HashOf(path.substr(0, path.size() - name.size()));
  // A byte adds as much to the hash as the power of the base by which the bytes behind it raise it.
  std::array<std::uint64_t, kLongest> after{};  // what the bytes behind each one add
  std::array<std::uint64_t, kLongest> power{};
  std::uint64_t sum = 0;
  std::uint64_t raised = 1;
  for (std::size_t i = name.size(); i-- > 0;) {
    after[i] = sum;
    power[i] = raised;
    raised *= kBase;
    sum += (static_cast<unsigned char>(name[i]) + 1) * raised;
  }
  for (std::size_t i = 0; i < name.size(); ++i) {
    take(before * power[i] + after[i]);
    before = HashOnto(before, name.substr(i, 1));
  }
}

std::size_t CountShortened(const std::vector<std::string>& names) {
  std::size_t count = 0;
  for (const std::string& name : names) {
    const std::size_t length = name.size() - LastNameOf(name);
    count += IsShortened(length) ? length + 1 : 1;
  }
  return count;
}

}  // namespace

NameSuggestions::Table::Table(std::size_t hashes) : slots_(std::bit_ceil(2 * hashes + 1)) {}

// The slot that holds the hash, or the free one that it would take.
std::size_t NameSuggestions::Table::SlotOf(std::uint64_t hash) const {
  const std::size_t last = slots_.size() - 1;
  std::size_t slot = static_cast<std::size_t>(hash ^ (hash >> 32)) & last;
  while (slots_[slot].name >= 0 && slots_[slot].hash != hash) slot = (slot + 1) & last;
  return slot;
}

void NameSuggestions::Table::Put(std::uint64_t hash, int name) {
  Slot& slot = slots_[SlotOf(hash)];
  if (slot.name < 0) slot = {hash, name};
}

int NameSuggestions::Table::Find(std::uint64_t hash) const {
  return slots_[SlotOf(hash)].name;
}

NameSuggestions::NameSuggestions(const std::vector<std::string>& names)
    : names_(names), whole_(names.size()), shortened_(CountShortened(names)) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string name = Folded(names[i]);
    const int number = static_cast<int>(i);
    whole_.Put(HashOf(name), number);
    ForEachShortened(name, [&](std::uint64_t hash) { shortened_.Put(hash, number); });
  }
}

int NameSuggestions::SameButForCase(std::string_view name) const {
  const std::string folded = Folded(name);
  const int found = whole_.Find(HashOf(folded));
  if (found < 0) return -1;
  return Folded(names_[static_cast<std::size_t>(found)]) == folded ? found : -1;
}

int NameSuggestions::Likeliest(std::string_view name) const {
  const int same = SameButForCase(name);
  if (same >= 0) return same;
  int likeliest = -1;
  const std::string unnumbered = WithoutDigits(name);
  ForEachShortened(Folded(name), [&](std::uint64_t hash) {
    const int found = shortened_.Find(hash);
    if (found < 0 || (likeliest >= 0 && found >= likeliest)) return;
    // "index-19" is probably not a mistyped "index-1".
    if (WithoutDigits(names_[static_cast<std::size_t>(found)]) != unnumbered) likeliest = found;
  });
  return likeliest;
}

std::string DidYouMean(std::string_view name, const std::vector<std::string>& known) {
  const int likeliest = NameSuggestions(known).Likeliest(name);
  if (likeliest < 0) return "";
  return "; did you mean \"" + known[static_cast<std::size_t>(likeliest)] + "\"?";
}

}  // namespace zvrsit
