// What has changed between two collections of findings.
#pragma once

#include <vector>

#include "findings/finding.h"

namespace zvrsit {

// Takes out of both lists the places that they share; and findings that have no places then. A
// place is shared if rule, severity, target, file and reference are the same: that lines were
// inserted above it is no change. Of several such places in one file those go first that kept their
// line.
void TakeOutShared(std::vector<Finding>& before, std::vector<Finding>& after);

}  // namespace zvrsit
