// The last separator of a `\` path.
#pragma once

#include <string_view>

#include "platform/code_page.h"

namespace zvrsit::platform {

// The position of the last single-byte `\`, or npos. A trail byte is no separator.
inline std::size_t FindLastSeparator(std::string_view path) {
  if (!HasLeadBytes()) return path.rfind('\\');
  std::size_t last = std::string_view::npos;
  for (std::size_t i = 0; i < path.size(); ++i) {
    if (IsDbcsLeadByte(static_cast<unsigned char>(path[i]))) {
      ++i;
    } else if (path[i] == '\\') {
      last = i;
    }
  }
  return last;
}

}  // namespace zvrsit::platform
