// How passwords are kept in profile files. It hides them from a glance, no more.
#pragma once

#include <string>
#include <string_view>

namespace zvrsit {

// Three bytes become four characters from ";" on; one or two left over become two or three.
std::string Scramble(std::string_view text);

// The inverse. Any bytes are accepted: only the low six bits of a character's distance from ";"
// count, and a single character left over is dropped.
std::string Unscramble(std::string_view scrambled);

}  // namespace zvrsit
