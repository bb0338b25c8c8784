// Pages that were not read, because their names do not show that they are pages.
#pragma once

#include "cli/session.h"

namespace zvrsit::cli {

// Says on stderr, for each extension, how many files look like pages of the open site and are not
// read for links. Nothing without RuleFlags::readsOtherPageTypes.
void WarnOfUnreadPages(Session& session);

}  // namespace zvrsit::cli
