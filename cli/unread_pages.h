// Pages that were not read, as their names do not say that they are pages.
#pragma once

#include "cli/session.h"

namespace zvrsit::cli {

// Says on stderr how many files of each extension look like pages of the open site and are not read
// for links; nothing under the classic rules, which read HTML pages only.
void WarnOfUnreadPages(Session& session);

}  // namespace zvrsit::cli
