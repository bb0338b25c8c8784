// How much an older site holds.
#pragma once

#include <string>

#include "cli/legacy_session.h"
#include "cli/output.h"

namespace zvrsit::cli {

struct LegacyTotals {
  long files = 0;  // that are not missing
  long links = 0;
  long broken = 0;
  long urls = 0;  // external ones
};

// Counts what the open site holds.
LegacyTotals CountLegacy(LegacySession& session);
Json TotalsRow(const LegacyTotals& totals);
// "2 files, 3 links, 1 broken, 4 external URLs".
std::string TotalsLine(const LegacyTotals& totals);

}  // namespace zvrsit::cli
