# What the toolchain files of Windows share; wants ZVRSIT_MINGW, the triple. The posix variant of
# the compiler is named because the other has no threads and mutexes.
set(CMAKE_SYSTEM_NAME Windows)
string(REGEX REPLACE "-.*" "" CMAKE_SYSTEM_PROCESSOR "${ZVRSIT_MINGW}")
set(CMAKE_C_COMPILER ${ZVRSIT_MINGW}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ZVRSIT_MINGW}-g++-posix)
set(CMAKE_RC_COMPILER ${ZVRSIT_MINGW}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${ZVRSIT_MINGW})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
