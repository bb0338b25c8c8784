# Builds for 64-bit Windows with Debian's g++-mingw-w64-x86-64-posix.
set(ZVRSIT_MINGW x86_64-w64-mingw32)
include("${CMAKE_CURRENT_LIST_DIR}/mingw.cmake")
