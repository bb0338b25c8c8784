// Dates as web servers and META elements write them.
#pragma once

#include <cstdint>

namespace zvrsit {

// Reads one of
//   Sun, 06 Nov 1994 08:49:37 GMT
//   Sunday, 06-Nov-94 08:49:37 GMT
//   Sun Nov  6 08:49:37 1994
// and gives the seconds since the epoch. The time is taken as local time: time zones, GMT among
// them, are ignored on purpose. -1 for null, for a text that ends where a field must begin, and
// where the system's calendar gives -1; times above 0x7FFFFFFF are clamped. Month names are
// compared in this letter case; an unknown one counts as the month before January.
std::int32_t ParseWebDate(const char* text);

}  // namespace zvrsit
