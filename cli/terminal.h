// The terminal, where there is one.
#pragma once

#include <cstdio>
#include <string>

namespace zvrsit::cli {

bool IsTerminal(std::FILE* stream);
// Whether a line on stderr can be drawn again: it is a terminal, and TERM is not "dumb".
bool CanRedraw();
// Whether stdout gets colours. `choice` is "always", "never" or "auto". With "auto", no colours if
// NO_COLOR is set and not empty. Else colours if CLICOLOR_FORCE is set and neither empty nor 0.
// Else colours on a terminal, unless TERM is "dumb".
bool WantsColors(const std::string& choice);

}  // namespace zvrsit::cli
