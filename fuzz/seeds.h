// The seeds of a target as files.
#pragma once

#include <string>

// Writes each seed of the target into a folder that is there, as a corpus to begin with. 0 or 1.
int WriteSeeds(const std::string& folder);
