// What the shared library exports.
#pragma once

#if defined(_WIN32)
#if defined(ZVRSIT_BUILDING)
#define ZVRSIT_API __declspec(dllexport)
#else
#define ZVRSIT_API __declspec(dllimport)
#endif
#else
#define ZVRSIT_API __attribute__((visibility("default")))
#endif
