// How the disk differs from what the site knows, so that an answer may be incomplete.
#pragma once

#include <string>

#include "cli/output.h"
#include "cli/session.h"
#include "findings/finding.h"
#include "manager/site_changes.h"

namespace zvrsit::cli {

// Compares the open site with the disk, as it is now.
SiteChanges CompareSite(Session& session);
// Says on stderr, in one line, which files have changed since they were read; and in another line,
// of which files the links are not known. `site` is the name in the command that mends this.
void TellChanges(const Session& session, const SiteChanges& changes, const std::string& site);
// The second of these lines.
void TellUnread(const Session& session, const SiteChanges& changes);
// Puts all of them into a report.
void NoteChanges(const Session& session, const SiteChanges& changes, FindingReport& report);

}  // namespace zvrsit::cli
