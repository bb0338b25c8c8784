// How the style-sheet library keeps what it has read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/file.h"

namespace zvrsit {

// One reference, resolved. It is a string because that is what callers of the tree hold: a node's
// address is its string's.
struct CssNode : std::string {
  std::string declared;      // as written; empty for a root
  std::int32_t offset = -1;  // of the reference in its file, in bytes; -1 not known
  int type = 0;              // a Type_ constant of CCSSControl
  bool isExternal = false;   // the string is a URL
  bool isSheet = false;      // a file to be read for references of its own
  bool isLast = false;       // of its siblings
};

// A sheet that has been read, and the state of the file that it was read from.
struct CssSheet {
  platform::FileStat file;
  std::vector<CssNode> references;

  bool isOf(const platform::FileStat& now) const {
    return file.device == now.device && file.file == now.file && file.size == now.size &&
           file.modificationNanoseconds == now.modificationNanoseconds;
  }
};

}  // namespace zvrsit
