// What has to change in the files of a site so that its links still lead where they led: after a
// file or a folder has moved, or an ID has got another name. Nothing is changed here, neither a
// file nor a table.
//
// A plan is made from the tables of the open site and from the files as they are now. The tables
// must know all links to what moves: bring the site up to date first. The files that are concerned
// are read again, so places are those of now.
//
// A reference is written anew only if the new text leads where it must, by the rules of the site.
// It stays of its kind: relative, from the root ("/x"), or with scheme and host; to a folder, or
// without an extension; query and fragment are those of before. All bytes around it stay as they
// are. A reference that cannot be written so is kept, and the plan says why.
#pragma once

#include <string>
#include <vector>

#include "platform/api.h"
#include "repair/file_edits.h"

namespace zvrsit {

class SiteMgr;

// References to the file `from` are to lead to the file `to`: `\` paths. Or those to one external
// URL, as EnumUrl names it, to another one.
struct Retarget {
  std::string from;  // a file may be missing
  std::string to;
};

// Plans the move of a file, or of a folder with all that is in it; both paths then end in `\`. No
// file or folder may be at `to` yet. References to what moves and those in it will lead to the same
// files as before. 0; or -1 when no site is open, nothing is at `from`, something is at `to`, or
// `to` lies in `from`; and for the folder of the site itself.
ZVRSIT_API int PlanMove(SiteMgr& manager, const std::string& from, const std::string& to,
                        RepairPlan& plan);

// Plans that all references to these files and URLs lead to others. The new URL is written as it is
// in place of the whole reference. 0 or -1.
ZVRSIT_API int PlanRetarget(SiteMgr& manager, const std::vector<Retarget>& targets,
                            RepairPlan& plan);

// Plans that the ID or anchor name `from` of the page `file` becomes `to`: in the page itself, also
// where its attributes name the ID (FOR, ARIA-LABELLEDBY and their like), and in the fragments of
// all links to it. What scripts and sheets say of the ID is kept; if they are the page's own, the
// plan names it. 0; or -1 when no site is open, the page cannot be read, it has no such ID, or it
// has the new one already, or when `to` is empty or holds white space.
ZVRSIT_API int PlanRenamedId(SiteMgr& manager, const std::string& file, const std::string& from,
                             const std::string& to, RepairPlan& plan);

}  // namespace zvrsit
