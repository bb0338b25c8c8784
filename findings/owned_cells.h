// Lists of entries that the library returned.
#pragma once

#include <memory>

#include "manager/site_mgr.h"

namespace zvrsit {

struct GiveCellsBack {
  void operator()(vec<SiteRecCell>* cells) const { SiteMgr::DeleteVecRecCell(cells); }
};
// Null when the list could not be made.
using OwnedCells = std::unique_ptr<vec<SiteRecCell>, GiveCellsBack>;

}  // namespace zvrsit
