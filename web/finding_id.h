// How a finding is known again in a later report.
#pragma once

#include <string>

#include "findings/finding.h"

namespace zvrsit {

// 16 hex digits that depend on the rule and the target alone; no other finding of a report has
// both.
std::string IdOf(const Finding& finding);

}  // namespace zvrsit
