// EndIndex: an index over one end of the records of a table (where a link comes from, or where it
// goes). It gives the records that have a given UrlID at that end, in the order in which they were
// added.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "storage/id_table.h"
#include "storage/probe_table.h"
#include "util/url_id.h"

namespace zvrsit {

// The records of one UrlID form a chain: a table has the neighbours of each record. So adding or
// removing a record costs the same for a page with one link as for a page that everybody links to.
// The chain is found by the kind and the id of the UrlID, without a search. Only a damaged file has
// ids that are large for its number of records. Their chains are found by a hash, so that they do
// not cost memory.
class EndIndex {
 public:
  bool isMade() const { return made_; }
  // Starts an empty index for about this number of records. From then on Append and Remove keep it
  // in step.
  void Start(int records);
  // Drops it, to be made again when it is next needed.
  void Forget();

  void Append(const UrlID& end, int record) {
    Chain* chain = Find(end);
    if (chain == nullptr) return Begin(end, record);
    Neighbours& own = MakeNeighbours(record);
    neighbours_.slot(static_cast<std::size_t>(chain->last)).next = record + 1;
    own = {chain->last + 1, 0};
    chain->last = record;
    ++chain->size;
  }
  void Remove(const UrlID& end, int record);

  // The first record of an end, and the one after a record; -1 for none.
  int First(const UrlID& end) const;
  int Next(int record) const { return neighbours_.at(static_cast<std::size_t>(record)).next - 1; }
  // How many records have this end.
  int Size(const UrlID& end) const;

 private:
  struct Chain {
    std::int32_t first;
    std::int32_t last;
    std::int32_t size;  // 0: no chain
  };
  struct StrayChain {
    std::uint32_t hash;
    UrlID end;
    Chain chain;
  };
  struct Neighbours {  // record numbers plus 1, 0 for none
    std::int32_t previous;
    std::int32_t next;
  };

  // Ids of kinds 0 to 3 have a place of their own when they are below this bound, which grows with
  // the number of records.
  static constexpr std::size_t kKinds = 4;
  static constexpr std::size_t kPlacedIds = 1 << 17;
  static constexpr std::size_t kPlacedIdsPerRecord = 4;

  // The chain of an end that has records, or null.
  const Chain* Find(const UrlID& end) const {
    const auto kind = static_cast<std::size_t>(end.kind);
    const auto id = static_cast<std::size_t>(end.id);
    if (kind < kKinds && id < chains_[kind].size()) {
      const Chain& chain = chains_[kind].at(id);
      if (chain.size > 0) return &chain;
    }
    return strays_.empty() ? nullptr : FindStray(end);
  }
  const Chain* FindStray(const UrlID& end) const;
  Chain* Find(const UrlID& end) { return const_cast<Chain*>(std::as_const(*this).Find(end)); }
  void Begin(const UrlID& end, int record);
  Neighbours& MakeNeighbours(int record) {
    ++records_;
    neighbours_.Grow(static_cast<std::size_t>(record) + 1);
    return neighbours_.slot(static_cast<std::size_t>(record));
  }
  void Drop(const UrlID& end, Chain* chain);

  bool made_ = false;
  std::size_t records_ = 0;                    // that were expected, or came
  std::array<IdTable<Chain>, kKinds> chains_;  // by kind, then id
  ProbeTable<StrayChain> strays_;
  IdTable<Neighbours> neighbours_;  // by record
};

}  // namespace zvrsit
