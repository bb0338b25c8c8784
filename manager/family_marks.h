// The bits of a file's publishing-membership word.
#pragma once

#include <cstdint>

namespace zvrsit {

// Reached by links from the top file.
inline constexpr std::int32_t kFamilyMember = 1;
// What a rebuild clears: the member bit, and the bit 2 that the application may have set.
inline constexpr std::int32_t kDerivedMarks = kFamilyMember | 2;
// The user's marks, which SetFtpFamily sets and clears.
inline constexpr std::int32_t kUserMarks = 4 | 8;

}  // namespace zvrsit
