// What an answer may lack: how the disk differs from what the site knows of it.
#pragma once

#include <string>

#include "cli/output.h"
#include "cli/session.h"
#include "manager/site_changes.h"

namespace zvrsit::cli {

// Compares the open site with the disk, as it is now.
SiteChanges CompareSite(Session& session);
// Says in a line of stderr which files have changed since they were read, and in another of which
// files the links are not known; `site` is the name for the command that mends it.
void TellChanges(const Session& session, const SiteChanges& changes, const std::string& site);
// The second of these lines.
void TellUnread(const Session& session, const SiteChanges& changes);
// An object of arrays of names: changed, gone, new; and unread, those of the second line.
Json ChangesAsJson(const Session& session, const SiteChanges& changes);

}  // namespace zvrsit::cli
