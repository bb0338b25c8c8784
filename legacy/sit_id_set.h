// The ids in use of a string file.
#pragma once

#include <bitset>
#include <map>
#include <set>

namespace zvrsit {

// A set of non-negative ids in blocks of 100 consecutive ids (block n covers 100n to 100n+99). A
// block exists from the first id asked of it until Clear. Every operation takes the logarithm of
// the number of blocks.
class SitIdSet {
 public:
  bool IsUsed(int id) const;
  // Marks an id as used; false for a negative one.
  bool SetUsed(int id);
  void SetFree(int id);
  // Takes an id and gives it. The choice, in this order: `wanted`, if it is free; the first free id
  // of its block; the first free id of the other blocks, ascending; the first id of a new block
  // after the highest. -1 for a negative `wanted`, and when there are no more ids.
  int Allocate(int wanted);
  void Clear();

 private:
  static constexpr int kBlockSize = 100;
  using Block = std::bitset<kBlockSize>;

  Block& BlockOf(int number);
  int TakeFirstFree(int number, Block& block);
  void Take(int number, Block& block, int bit);

  std::map<int, Block> blocks_;  // by block number
  std::set<int> open_;           // numbers of blocks that have a free id
};

}  // namespace zvrsit
