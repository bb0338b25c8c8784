# What a build for Windows needs beside the rooms.

# The system calls as they are since Windows Vista; no min and max, and few of the other headers.
target_compile_definitions(zvrsit_flags INTERFACE
  NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0600)
# With 32-bit sizes, GCC 12 sees overflows of memcpy behind checks that rule them out.
target_compile_options(zvrsit_flags INTERFACE -Wno-array-bounds)

# On Linux, the libraries of the program and the tests are looked for in packages of that machine.
if(CMAKE_CROSSCOMPILING)
  list(APPEND CMAKE_MODULE_PATH "${PROJECT_SOURCE_DIR}/cmake/windows")
endif()

# The programs stand beside the library that they load.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")

# zvrsit_dll_properties(<target>)
#
# The file name of the library without a prefix, and its version as a resource.
enable_language(RC)
function(zvrsit_dll_properties target)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/windows/version.rc.in"
    "${PROJECT_BINARY_DIR}/${target}.rc" @ONLY)
  target_sources(${target} PRIVATE "${PROJECT_BINARY_DIR}/${target}.rc")
  set_target_properties(${target} PROPERTIES PREFIX "" VERSION "" SOVERSION "")
endfunction()

# Programs of the build are run through Wine where ZVRSIT_WINE32_HOME names a folder that
# scripts/setup_wine32.sh filled.
set(ZVRSIT_WINE32_HOME "$ENV{ZVRSIT_WINE32_HOME}" CACHE PATH "A private 32-bit Wine")
if(CMAKE_CROSSCOMPILING AND ZVRSIT_WINE32_HOME AND CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(CMAKE_CROSSCOMPILING_EMULATOR
    "${PROJECT_SOURCE_DIR}/scripts/wine32_run.sh;${ZVRSIT_WINE32_HOME}")
endif()

# The zip: the library and the runtime libraries of the compiler that stand beside it, the import
# library, the headers, the program and the licence.
if(MINGW)
  foreach(runtime libstdc++-6 libgcc_s_dw2-1 libgcc_s_seh-1 libwinpthread-1)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${runtime}.dll
      OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(IS_ABSOLUTE "${file}")
      install(FILES "${file}" DESTINATION ${CMAKE_INSTALL_BINDIR})
    endif()
  endforeach()
endif()
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION .)
set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME "zvrsit40-${PROJECT_VERSION}-${CMAKE_SYSTEM_PROCESSOR}-windows")
include(CPack)
