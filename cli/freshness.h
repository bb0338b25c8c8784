// What an answer may lack: how the disk differs from what the site knows of it.
#pragma once

#include <string>

#include "cli/output.h"
#include "cli/session.h"
#include "findings/finding.h"
#include "manager/site_changes.h"

namespace zvrsit::cli {

// Compares the open site with the disk, as it is now.
SiteChanges CompareSite(Session& session);
// Says in a line of stderr which files have changed since they were read, and in another of which
// files the links are not known; `site` is the name for the command that mends it.
void TellChanges(const Session& session, const SiteChanges& changes, const std::string& site);
// The second of these lines.
void TellUnread(const Session& session, const SiteChanges& changes);
// Puts all of them into a report.
void NoteChanges(const Session& session, const SiteChanges& changes, FindingReport& report);

}  // namespace zvrsit::cli
