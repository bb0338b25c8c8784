// The targets without libFuzzer:  fuzz --target=NAME [--rounds N] [--seeds FOLDER] [FILE]...
// With files it reads each of them once, as to look into a finding. Else it reads the target's
// seeds and N changed ones (2000), always the same.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/target.h"

namespace {

constexpr std::size_t kLargest = std::size_t{1} << 16;

// Changes inputs in ways that break readers: bytes, words that are counts or offsets, cuts,
// repetitions, and pieces of one input in another.
class Mutator {
 public:
  explicit Mutator(const std::vector<std::string>& seeds) : seeds_(seeds) {}

  std::string Next() {
    std::string input = seeds_[Below(seeds_.size())];
    for (std::size_t changes = 1 + Below(6); changes > 0; --changes) Change(input);
    if (input.size() > kLargest) input.resize(kLargest);
    return input;
  }

 private:
  std::size_t Below(std::size_t limit) { return limit == 0 ? 0 : random_() % limit; }

  void Change(std::string& input) {
    const std::size_t at = Below(input.size());
    const std::string& other = seeds_[Below(seeds_.size())];
    const std::size_t from = Below(other.size());
    switch (Below(6)) {
      case 0:
        if (!input.empty()) input[at] = static_cast<char>(random_());
        break;
      case 1:
        SetWord(input, at & ~std::size_t{3});
        break;
      case 2:
        input.erase(at, Below(16));
        break;
      case 3:
        input.insert(at, std::string(1 + Below(64), static_cast<char>(random_())));
        break;
      case 4:
        input.insert(at, other, from, Below(256));
        break;
      case 5:
        input.resize(at);
        break;
    }
  }

  void SetWord(std::string& input, std::size_t at) {
    constexpr std::uint32_t kWords[] = {0xFFFFFFFF, 0x7FFFFFFF, 0x80000000, 0x04000001, 0, 1};
    const std::uint32_t word = kWords[Below(std::size(kWords))];
    for (std::size_t i = 0; i < 4 && at + i < input.size(); ++i) {
      input[at + i] = static_cast<char>(word >> (8 * i));
    }
  }

  const std::vector<std::string>& seeds_;
  std::mt19937 random_;  // its default seed
};

int ReadFile(const zvrsit::fuzz::Target& target, const char* name) {
  std::ifstream in(name, std::ios::binary);
  if (!in) {
    std::fprintf(stderr, "%s: cannot be read\n", name);
    return 1;
  }
  target.read(std::string{std::istreambuf_iterator<char>(in), {}});
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const zvrsit::fuzz::Target& target = zvrsit::fuzz::TargetOf(argc, argv);
  zvrsit::fuzz::WriteSeedsIfWanted(target, argc, argv);
  long rounds = 2000;
  bool readFiles = false;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument == "--rounds" && i + 1 < argc) {
      rounds = std::atol(argv[++i]);
    } else if (!argument.starts_with("--")) {
      readFiles = true;
      if (ReadFile(target, argv[i]) != 0) return 1;
    }
  }
  if (readFiles) return 0;
  const std::vector<std::string> seeds = target.seeds();
  for (const std::string& seed : seeds) target.read(seed);
  Mutator mutator(seeds);
  for (; rounds > 0; --rounds) target.read(mutator.Next());
  return 0;
}
