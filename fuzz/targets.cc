#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "fuzz/target.h"

namespace zvrsit::fuzz {

const Target& TargetOf(int count, const char* const* arguments) {
  constexpr std::string_view kOption = "--target=";
  for (int i = 1; i < count; ++i) {
    const std::string_view argument = arguments[i];
    if (!argument.starts_with(kOption)) continue;
    for (const Target* const target :
         {&kAnswersTarget, &kConfigTarget, &kCssTarget, &kDatabaseTarget, &kHtmlTarget,
          &kLegacyTarget, &kReportTarget, &kSiteTarget, &kTableTarget, &kTextTarget, &kUrlTarget}) {
      if (argument.substr(kOption.size()) == target->name) return *target;
    }
  }
  std::fputs("--target=NAME chooses what is fuzzed\n", stderr);
  std::exit(2);
}

void WriteSeedsIfWanted(const Target& target, int count, const char* const* arguments) {
  for (int i = 1; i + 1 < count; ++i) {
    if (std::string_view(arguments[i]) != "--seeds") continue;
    int number = 0;
    for (const std::string& seed : target.seeds()) {
      std::ofstream out(std::string(arguments[i + 1]) + "/seed" + std::to_string(number++),
                        std::ios::binary);
      if (!out.write(seed.data(), static_cast<std::streamsize>(seed.size()))) std::exit(1);
    }
    std::exit(0);
  }
}

}  // namespace zvrsit::fuzz
