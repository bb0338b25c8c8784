// What the nodes of a file tree are.
#pragma once

#include <cstdint>
#include <string>

namespace zvrsit {

// One reference, resolved. It derives from string because callers of the tree hold strings: the
// address of a node is that of its string.
struct CssNode : std::string {
  std::string declared;      // as written; empty for a root
  std::int32_t offset = -1;  // of the reference in its file, in bytes; -1 not known
  int type = 0;              // a Type_ constant of CCSSControl
  std::string charset;       // of a sheet that does not say its own; empty: that of the page
  bool isExternal = false;   // the string is a URL
  bool isSheet = false;      // a file to be read for references of its own
  bool isLast = false;       // of its siblings
};

}  // namespace zvrsit
