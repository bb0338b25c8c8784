// What the shared library exports: functions and classes marked ZVRSIT_API, but not those members
// of such a class that are marked ZVRSIT_LOCAL. Those can be called by the library only; on
// Windows, where a class is exported whole, they are exported all the same. The library's own
// sources are compiled with ZVRSIT_BUILDING; programs that link the rooms of the library directly,
// such as tests of its inside, with ZVRSIT_STATIC.
#pragma once

#if defined(_WIN32)
#define ZVRSIT_LOCAL
#if defined(ZVRSIT_BUILDING)
#define ZVRSIT_API __declspec(dllexport)
#elif defined(ZVRSIT_STATIC)
#define ZVRSIT_API
#else
#define ZVRSIT_API __declspec(dllimport)
#endif
#else
#define ZVRSIT_API __attribute__((visibility("default")))
#define ZVRSIT_LOCAL __attribute__((visibility("hidden")))
#endif
