# Builds for 32-bit Windows with Debian's g++-mingw-w64-i686-posix.
set(ZVRSIT_MINGW i686-w64-mingw32)
include("${CMAKE_CURRENT_LIST_DIR}/mingw.cmake")
