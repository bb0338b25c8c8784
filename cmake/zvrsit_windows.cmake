# What a build for Windows needs beside the rooms.

# The system calls as they are since Windows Vista; no min and max, and few of the other headers.
target_compile_definitions(zvrsit_flags INTERFACE
  $<BUILD_INTERFACE:NOMINMAX;WIN32_LEAN_AND_MEAN;_WIN32_WINNT=0x0600>)

# On Linux, the libraries of the program and the tests are looked for in packages of that machine.
if(CMAKE_CROSSCOMPILING)
  list(APPEND CMAKE_MODULE_PATH "${PROJECT_SOURCE_DIR}/cmake/windows")
endif()
