// Looks into all sites of the older generation without opening one: which files a site holds, and
// which sites hold a path. Of a site only its URL file is opened.
#pragma once

#include <string>
#include <vector>

#include "legacy/sit_mgr_base.h"

namespace zvrsit {

// Results are new vectors of new strings, and belong to the caller. The caller gives each string
// back through DeleteString, then empties the vector with DeleteStrings and deletes it. Null means
// failure.
class ZVRSIT_API SitPeeper : public SitMgrBase {
 public:
  // No profile files and no database folder; setDB gives them.
  SitPeeper();
  // Shares the stores of the original.
  SitPeeper(const SitPeeper&) = default;
  ~SitPeeper() override;

  // The paths of a site's files. Null without a profile store, for a name that no site has, and
  // when the URL file is missing or cannot be opened (last error 4, 5, 15 or 17). Deleted entries
  // are left out. Any other entry that cannot be read is a null pointer.
  std::vector<std::string*>* EnumPath(const std::string& siteName);
  // Whether the answers about a site are complete: its last rebuild came to its end, and its whole
  // URL file can be read. False also when EnumPath gives null, with the same last errors.
  bool IsWhole(const std::string& siteName);
  // The names of the sites that hold a path, byte for byte, in the order of their profiles; empty
  // for none. Null without an open profile store.
  std::vector<std::string*>* GetSiteByPath(const std::string& path);
  // Empties the vector and frees neither the strings nor the vector. 0, or -1 for null.
  int DeleteStrings(std::vector<std::string*>* strings);

 private:
  // The site of that name.
  ZVRSIT_LOCAL int BeginPeep(const std::string& siteName);
  ZVRSIT_LOCAL int BeginPeep(int siteId);
  ZVRSIT_LOCAL int EndPeep();
};

}  // namespace zvrsit
