#include "fuzz/seeds.h"

#include <fstream>

#include "fuzz/target.h"

int WriteSeeds(const std::string& folder) {
  int number = 0;
  for (const std::string& seed : FuzzSeeds()) {
    std::ofstream out(folder + "/seed" + std::to_string(number++), std::ios::binary);
    if (!out.write(seed.data(), static_cast<std::streamsize>(seed.size()))) return 1;
  }
  return 0;
}
