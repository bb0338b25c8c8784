// Exact look-up of keys by their ELF hash.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zvrsit {

// Finds numbered entries by their keys, in a table of buckets. The table starts with the given
// number of buckets and the ELF hash. With more than four keys for each bucket it grows. When a
// long chain shows that names were chosen to collide, it changes to a hash that nobody outside of
// the process can know.
class ElfKeyIndex {
 public:
  static constexpr int kNone = -1;

  // Empties the index.
  void Reset(int bucketCount);
  // Enters the key of an entry that has none.
  void Insert(int number, std::string key);
  void Erase(int number);
  // The lowest number that has this key, byte for byte; kNone for none.
  int Find(std::string_view key) const;
  // Empty for an entry that has no key.
  const std::string& KeyOf(int number) const;

 private:
  struct Entry {
    std::string key;
    int next = kNone;
  };

  std::size_t BucketOf(std::string_view key) const;
  // Puts an entry into its chain, which is ascending. Gives how long the chain is before it.
  int Link(int number);
  void Rebuild(std::size_t bucketCount);

  std::vector<int> buckets_;
  std::vector<Entry> entries_;
  std::vector<char> linked_;  // which entries have a key
  std::size_t keys_ = 0;
  bool keyed_ = false;  // the process's own hash has taken over
};

}  // namespace zvrsit
