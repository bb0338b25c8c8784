// SiteUrlDB: the external URLs of a site (entries of kind 3), found by their text.
#pragma once

#include "tables/named_table.h"

namespace zvrsit {

class SiteUrlDB : public NamedTable<SiteUrlRec> {};

}  // namespace zvrsit
