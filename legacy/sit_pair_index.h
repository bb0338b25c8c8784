// The records of a pair file by their two ends.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "util/hash.h"
#include "util/url_id.h"

namespace zvrsit {

// A list of nodes in file order; new nodes are added at its end. Each node is also in three other
// lists, in file order too: the nodes with its source, with its target, and with both. So a query
// walks only over nodes that answer it.
//
// A node is named by its position, which grows in file order and is never used twice.
class PairIndex {
 public:
  static constexpr int kNone = -1;

  struct Node {
    std::int32_t id;  // -1 for a deleted record
    UrlID from;
    UrlID to;
  };

  void Clear();
  void Append(std::int32_t id, const UrlID& from, const UrlID& to);
  // Takes out the first node that has this id and these ends; its position, or kNone.
  int Remove(std::int32_t id, const UrlID& from, const UrlID& to);

  int Head() const { return all_.head; }
  // The node after `position`, which may have been removed a moment ago; kNone at the end.
  int Next(int position) const { return nodes_[Slot(position)].next[kAll]; }
  const Node& At(int position) const { return nodes_[Slot(position)].node; }

  // The first match at or after `position`; kNone for none. An end of (-1, -1) matches any.
  int FirstMatch(const UrlID& from, const UrlID& to, int position) const;
  // The next match after a match.
  int NextMatch(const UrlID& from, const UrlID& to, int match) const;

 private:
  enum Chain : std::size_t { kAll, kFrom, kTo, kBoth, kChains };

  struct ListNode {
    Node node;
    std::array<std::int32_t, kChains> next;
    std::array<std::int32_t, kChains> previous;
  };
  struct Ends {
    std::int32_t head = kNone;
    std::int32_t tail = kNone;
  };
  struct Pair {
    UrlID from;
    UrlID to;
    bool operator==(const Pair&) const = default;
  };
  static std::uint64_t Packed(const UrlID& id) {
    return static_cast<std::uint64_t>(static_cast<std::uint32_t>(id.kind)) << 32 |
           static_cast<std::uint32_t>(id.id);
  }
  struct EndHash {
    std::size_t operator()(const UrlID& id) const { return HashWords(Packed(id), 0); }
  };
  struct PairHash {
    std::size_t operator()(const Pair& pair) const {
      return HashWords(Packed(pair.from), Packed(pair.to));
    }
  };

  static std::size_t Slot(int position) { return static_cast<std::size_t>(position); }
  static Chain ChainOf(const UrlID& from, const UrlID& to);
  int HeadOf(Chain chain, const UrlID& from, const UrlID& to) const;
  void LinkAtEnd(Chain chain, Ends& ends, int position);
  void Unlink(Chain chain, Ends& ends, int position);

  std::vector<ListNode> nodes_;
  Ends all_;
  std::unordered_map<UrlID, Ends, EndHash> bySource_;
  std::unordered_map<UrlID, Ends, EndHash> byTarget_;
  std::unordered_map<Pair, Ends, PairHash> byBoth_;
};

}  // namespace zvrsit
