# The DLL, the zip and the program. What has to be run is skipped where nothing runs it.
find_program(ZVRSIT_CXXFILT ${ZVRSIT_MINGW}-c++filt)
add_test(NAME package.TheDllExportsWhatIsListed
  COMMAND Python3::Interpreter "${CMAKE_CURRENT_SOURCE_DIR}/check_dll_exports.py"
          "${CMAKE_OBJDUMP}" "${ZVRSIT_CXXFILT}" $<TARGET_FILE:zvrsit40>
          "${CMAKE_CURRENT_SOURCE_DIR}/dll_exports.txt")
add_test(NAME package.TheDllHasItsVersion
  COMMAND Python3::Interpreter "${CMAKE_CURRENT_SOURCE_DIR}/check_version.py"
          $<TARGET_FILE:zvrsit40> "${PROJECT_VERSION}")

add_test(NAME package.TheZipServesAnApplication
  COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/run_zip.sh" "${CMAKE_COMMAND}" "${CMAKE_CPACK_COMMAND}"
          "${PROJECT_BINARY_DIR}" "${PROJECT_SOURCE_DIR}" "${CMAKE_TOOLCHAIN_FILE}"
          "${CMAKE_CXX_COMPILER}" ${CMAKE_CROSSCOMPILING_EMULATOR})
set_tests_properties(package.TheZipServesAnApplication PROPERTIES
  SKIP_RETURN_CODE 77 TIMEOUT 300)

if(NOT TARGET zvrsit)
  return()
endif()
zvrsit_script_test(package.TheProgramKeepsNamesOfTheCodePage
  "${CMAKE_CURRENT_SOURCE_DIR}/run_program.sh" "${PROJECT_BINARY_DIR}/program_site"
  $<TARGET_FILE:zvrsit>)
