// SiteRelDB: which folder holds which folder or file: pairs of parent and child.
#pragma once

#include "tables/pair_table.h"

namespace zvrsit {

class SiteRelDB : public PairTable<SiteRelRec> {
 public:
  // Adds a relation without looking for an equal one; its number or -1.
  [[nodiscard]] int Add(const UrlID& parent, const UrlID& child);
  // 0 or -1.
  [[nodiscard]] int Delete(int number);
  // Deletes every relation in one pass. The result is the same as when they are deleted one by one
  // in the order of their numbers. 0, or -1 when not open.
  [[nodiscard]] int Clear();
};

}  // namespace zvrsit
