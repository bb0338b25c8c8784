// The terminal, where there is one.
#pragma once

#include <cstdio>
#include <string>

namespace zvrsit::cli {

bool IsTerminal(std::FILE* stream);
// Whether stdout gets colours: `choice` is "always", "never" or "auto". With "auto" NO_COLOR (set
// and not empty) says no, CLICOLOR_FORCE (set and neither empty nor 0) yes; else a terminal gets
// them unless TERM is "dumb".
bool WantsColors(const std::string& choice);

}  // namespace zvrsit::cli
