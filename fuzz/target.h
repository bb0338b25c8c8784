// What every fuzz target defines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Reads one input; always 0. Aborts, or is aborted by a sanitizer, where the library is at fault.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// Inputs worth changing: the target's own, good ones.
std::vector<std::string> FuzzSeeds();
