#include "util/site_rec_cell.h"

namespace zvrsit {

SiteRecCell::SiteRecCell() = default;
SiteRecCell::SiteRecCell(const SiteRecCell&) = default;
SiteRecCell& SiteRecCell::operator=(const SiteRecCell&) = default;
SiteRecCell::SiteRecCell(SiteRecCell&&) noexcept = default;
SiteRecCell& SiteRecCell::operator=(SiteRecCell&&) noexcept = default;
SiteRecCell::~SiteRecCell() = default;

}  // namespace zvrsit
