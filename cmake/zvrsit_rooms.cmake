# How the rooms of this house are built.

add_library(zvrsit_flags INTERFACE)
target_compile_features(zvrsit_flags INTERFACE cxx_std_20)
target_include_directories(zvrsit_flags INTERFACE "${PROJECT_SOURCE_DIR}")
# Errors where CMAKE_COMPILE_WARNING_AS_ERROR is ON, as it is in the presets.
target_compile_options(zvrsit_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 sees overlaps in std::string's operator+ that are not there.
  target_compile_options(zvrsit_flags INTERFACE -Wno-restrict)
endif()
if(ZVRSIT_SANITIZE)
  target_compile_options(zvrsit_flags INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(zvrsit_flags INTERFACE -fsanitize=address,undefined)
endif()

# What makes faults harder to use. The sanitizers have checks of their own, Debug builds are to be
# compiled quickly, and the compilers for Windows do what they can unasked.
if(NOT WIN32 AND NOT ZVRSIT_SANITIZE AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  include(CheckPIESupported)
  check_pie_supported()
  target_compile_options(zvrsit_flags INTERFACE
    -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong -fstack-clash-protection)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|i.86")
    target_compile_options(zvrsit_flags INTERFACE -fcf-protection)
  endif()
  add_link_options(LINKER:-z,relro,-z,now,-z,noexecstack)
endif()

# zvrsit_room(<target> SOURCES <file>... [POSIX <file>...] [WIN32 <file>...] [USES <target>...])
#
# One room: a static library of position-independent code with hidden visibility. The library takes
# it in whole; tests of its inside link it directly.
function(zvrsit_room target)
  cmake_parse_arguments(ROOM "" "" "SOURCES;POSIX;WIN32;USES" ${ARGN})
  set(sources ${ROOM_SOURCES})
  if(WIN32)
    list(APPEND sources ${ROOM_WIN32})
  else()
    list(APPEND sources ${ROOM_POSIX})
  endif()
  add_library(${target} STATIC ${sources})
  set_target_properties(${target} PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT WIN32)
    # Of sources that are compiled together less is inlined: a rebuild takes 1.05 times as long.
    set_target_properties(${target} PROPERTIES UNITY_BUILD OFF)
  endif()
  target_compile_definitions(${target}
    PRIVATE $<IF:$<BOOL:${BUILD_SHARED_LIBS}>,ZVRSIT_BUILDING,ZVRSIT_STATIC>
    INTERFACE ZVRSIT_STATIC)
  target_link_libraries(${target} PUBLIC zvrsit_flags ${ROOM_USES})
endfunction()

# zvrsit_skipped_test(<name>)
#
# A test that ctest calls skipped, of programs that cannot be run here.
function(zvrsit_skipped_test name)
  add_test(NAME ${name}
    COMMAND "${CMAKE_COMMAND}" -E echo "SKIPPED: nothing here runs programs of Windows")
  set_tests_properties(${name} PROPERTIES SKIP_REGULAR_EXPRESSION "SKIPPED")
endfunction()

# zvrsit_script_test(<name> <script> <argument>...)
#
# A test by a script. After its arguments the script gets the words that run a program of the build,
# none where the system does.
function(zvrsit_script_test name)
  if(CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
    zvrsit_skipped_test(${name})
  else()
    add_test(NAME ${name} COMMAND ${ARGN} ${CMAKE_CROSSCOMPILING_EMULATOR})
  endif()
endfunction()

# zvrsit_test(<folder> SOURCES <file>... USES <target>...)
#
# The tests of one folder: one program, each of its cases a test of its own in ctest.
function(zvrsit_test folder)
  cmake_parse_arguments(TEST "" "" "SOURCES;USES" ${ARGN})
  string(REPLACE "/" "_" name "${folder}")
  add_executable(test_${name} ${TEST_SOURCES})
  if(WIN32)
    # The tests begin in UTF-8, as on other systems; those of the system's page ask for it.
    target_sources(test_${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/begin_in_utf8.cc)
    # Only what is tested is optimised: that a test compiles quickly is worth more.
    target_compile_options(test_${name} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-O0>)
  endif()
  target_include_directories(test_${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_definitions(test_${name} PRIVATE
    ZVRSIT_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  target_link_libraries(test_${name} PRIVATE ${TEST_USES} GTest::gtest_main)
  if(CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
    zvrsit_skipped_test(${name})
    return()
  endif()
  gtest_discover_tests(test_${name} TEST_PREFIX "${name}." DISCOVERY_MODE PRE_TEST
    PROPERTIES TIMEOUT 120)
endfunction()
