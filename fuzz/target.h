// What a fuzz target is.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zvrsit::fuzz {

struct Target {
  const char* name;
  // Reads one input. Aborts, or is aborted by a sanitizer, where the program is at fault.
  void (*read)(std::string_view input);
  // Inputs worth changing: the target's own, good ones.
  std::vector<std::string> (*seeds)();
};

// By what they read: see the head of each source.
extern const Target kAnswersTarget;
extern const Target kConfigTarget;
extern const Target kCssTarget;
extern const Target kDatabaseTarget;
extern const Target kHtmlTarget;
extern const Target kLegacyTarget;
extern const Target kReportTarget;
extern const Target kSiteTarget;
extern const Target kTableTarget;
extern const Target kTextTarget;
extern const Target kUrlTarget;

// The target that the argument `--target=NAME` chooses; where there is none, or no such target, the
// process ends.
const Target& TargetOf(int count, const char* const* arguments);

// What follows `--seeds` among the arguments is a folder: the target's seeds are written into it,
// as a corpus to begin with, and the process ends.
void WriteSeedsIfWanted(const Target& target, int count, const char* const* arguments);

}  // namespace zvrsit::fuzz
