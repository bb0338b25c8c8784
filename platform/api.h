// What the shared library exports. Its own sources are compiled with ZVRSIT_BUILDING; programs that
// link the rooms of the library directly, such as tests of its inside, with ZVRSIT_STATIC.
#pragma once

#if defined(_WIN32)
#if defined(ZVRSIT_BUILDING)
#define ZVRSIT_API __declspec(dllexport)
#elif defined(ZVRSIT_STATIC)
#define ZVRSIT_API
#else
#define ZVRSIT_API __declspec(dllimport)
#endif
#else
#define ZVRSIT_API __attribute__((visibility("default")))
#endif
