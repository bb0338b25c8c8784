// EndIndex: for one end of the records of a table (where a link comes from, or where it goes), the
// records that have a given UrlID there, in the order in which they were added.
#pragma once

#include <cstdint>

#include "storage/id_table.h"
#include "storage/probe_table.h"
#include "util/url_id.h"

namespace zvrsit {

// The records of one UrlID are a doubly linked chain through one table of neighbours, so that
// adding and removing cost the same for a hub as for a page with one link.
class EndIndex {
 public:
  bool isMade() const { return made_; }
  // Starts it, empty; it is then kept in step by Append and Remove.
  void Start();
  // Drops it, to be made anew when it is next needed.
  void Forget();

  void Append(const UrlID& end, int record);
  void Remove(const UrlID& end, int record);

  // The first record of an end, and the one after a record; -1 for none.
  int First(const UrlID& end) const;
  int Next(int record) const { return neighbours_.at(static_cast<std::size_t>(record)).next - 1; }
  // How many records have this end.
  int Size(const UrlID& end) const;

 private:
  struct Chain {
    std::uint32_t hash;
    UrlID end;
    std::int32_t first;
    std::int32_t last;
    std::int32_t size;
  };
  struct Neighbours {  // record numbers plus 1, 0 for none
    std::int32_t previous;
    std::int32_t next;
  };

  bool made_ = false;
  ProbeTable<Chain> chains_;
  IdTable<Neighbours> neighbours_;
};

}  // namespace zvrsit
