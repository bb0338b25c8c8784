// Passwords never stand on the command line, where other users could see them.
#pragma once

#include <string>

namespace zvrsit::cli {

// Asks for a password. On a terminal it shows `prompt` and does not show what is typed; else it
// reads the next line of stdin. Throws Failure(kUsage) when there is none.
std::string AskPassword(const std::string& prompt);

}  // namespace zvrsit::cli
