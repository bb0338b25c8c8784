// SiteFolderDB: the folders of a site (entries of kind 0), found by their name, which ends in '\'.
#pragma once

#include "tables/named_table.h"

namespace zvrsit {

class SiteFolderDB : public NamedTable<SiteNodeRec> {};

}  // namespace zvrsit
