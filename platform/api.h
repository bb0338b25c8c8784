// Functions and classes that are marked ZVRSIT_API are exported by the shared library. Members of
// such a class that are marked ZVRSIT_LOCAL are not: only the library calls them. On Windows a
// class is exported whole, so there they are exported too. The library's own sources are compiled
// with ZVRSIT_BUILDING. Programs that link the rooms of the library directly, such as the tests of
// its inside, are compiled with ZVRSIT_STATIC.
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
