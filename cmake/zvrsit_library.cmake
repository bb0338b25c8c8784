# The library and its package.
include(CMakePackageConfigHelpers)
include(exported_headers)

# Before 1.0 every minor version may break programs that were linked with another one, after it a
# major version may. The name that programs look for at run time and the version of its symbols say
# which one it is.
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(ZVRSIT_ABI "0.${PROJECT_VERSION_MINOR}")
else()
  set(ZVRSIT_ABI "${PROJECT_VERSION_MAJOR}")
endif()

# zvrsit_library(<target> <room>...)
#
# One library of whole rooms. Of a shared one only what carries ZVRSIT_API is exported: the rooms
# hide the rest, and the linker script hides the template code of the standard library.
function(zvrsit_library target)
  set(objects)
  foreach(room IN LISTS ARGN)
    list(APPEND objects $<TARGET_OBJECTS:${room}>)
  endforeach()
  add_library(${target} ${objects})
  add_library(zvrsit40::${target} ALIAS ${target})
  set_target_properties(${target} PROPERTIES
    LINKER_LANGUAGE CXX
    VERSION ${PROJECT_VERSION}
    SOVERSION ${ZVRSIT_ABI})
  target_compile_features(${target} INTERFACE cxx_std_20)
  zvrsit_add_headers(${target})
  if(NOT BUILD_SHARED_LIBS)
    target_compile_definitions(${target} INTERFACE ZVRSIT_STATIC)
  elseif(WIN32)
    zvrsit_dll_properties(${target})
  elseif(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    zvrsit_version_script(${target})
  endif()
  if(ZVRSIT_SANITIZE)
    target_link_options(${target} PUBLIC $<BUILD_INTERFACE:-fsanitize=address,undefined>)
  endif()
endfunction()

# The exported headers, below include/ of the build folder.
function(zvrsit_add_headers target)
  set(folder "${PROJECT_BINARY_DIR}/include")
  list(TRANSFORM ZVRSIT_EXPORTED_HEADERS PREPEND "${PROJECT_SOURCE_DIR}/" OUTPUT_VARIABLE sources)
  list(TRANSFORM ZVRSIT_EXPORTED_HEADERS PREPEND "${folder}/zvrsit40/" OUTPUT_VARIABLE headers)
  list(APPEND headers "${folder}/zvrsit40.h")
  set(script "${PROJECT_SOURCE_DIR}/cmake/write_headers.cmake")
  set(stamp "${PROJECT_BINARY_DIR}/headers.stamp")
  add_custom_command(OUTPUT "${stamp}" BYPRODUCTS ${headers}
    COMMAND "${CMAKE_COMMAND}" "-Dfrom=${PROJECT_SOURCE_DIR}" "-Dto=${folder}" -P "${script}"
    COMMAND "${CMAKE_COMMAND}" -E touch "${stamp}"
    DEPENDS "${script}" "${PROJECT_SOURCE_DIR}/cmake/exported_headers.cmake" ${sources}
    VERBATIM)
  add_custom_target(${target}_headers ALL DEPENDS "${stamp}")
  add_dependencies(${target} ${target}_headers)
  target_include_directories(${target} INTERFACE
    $<BUILD_INTERFACE:${folder}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endfunction()

function(zvrsit_version_script target)
  set(version_node "ZVRSIT40_${ZVRSIT_ABI}")
  set(script "${PROJECT_BINARY_DIR}/${target}.map")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/zvrsit40.map.in" "${script}" @ONLY)
  target_link_options(${target} PRIVATE
    "LINKER:--version-script=${script}" LINKER:-Bsymbolic-functions)
  if(NOT ZVRSIT_SANITIZE)
    target_link_options(${target} PRIVATE LINKER:--no-undefined)
  endif()
  set_target_properties(${target} PROPERTIES LINK_DEPENDS "${script}")
endfunction()

# zvrsit_install_package(<target>)
#
# Installs the library, its headers, a CMake package and a pkg-config file.
function(zvrsit_install_package target)
  set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/zvrsit40")
  install(TARGETS ${target} EXPORT zvrsit40Targets
    RUNTIME COMPONENT library
    LIBRARY COMPONENT library NAMELINK_COMPONENT development)
  foreach(header IN LISTS ZVRSIT_EXPORTED_HEADERS)
    cmake_path(GET header PARENT_PATH subfolder)
    install(FILES "${PROJECT_BINARY_DIR}/include/zvrsit40/${header}"
      DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/zvrsit40/${subfolder}")
  endforeach()
  install(FILES "${PROJECT_BINARY_DIR}/include/zvrsit40.h"
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
  install(EXPORT zvrsit40Targets NAMESPACE zvrsit40:: DESTINATION "${package_dir}")

  configure_package_config_file(
    "${PROJECT_SOURCE_DIR}/cmake/zvrsit40Config.cmake.in"
    "${PROJECT_BINARY_DIR}/package/zvrsit40Config.cmake"
    INSTALL_DESTINATION "${package_dir}")
  write_basic_package_version_file(
    "${PROJECT_BINARY_DIR}/package/zvrsit40ConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
  install(FILES
    "${PROJECT_BINARY_DIR}/package/zvrsit40Config.cmake"
    "${PROJECT_BINARY_DIR}/package/zvrsit40ConfigVersion.cmake"
    DESTINATION "${package_dir}")
  zvrsit_install_pc()
endfunction()

# The pkg-config file. The folders in it follow it when the whole installation is moved; those that
# were given as absolute ones stay.
function(zvrsit_install_pc)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    set(pc_prefix "${CMAKE_INSTALL_PREFIX}")
  else()
    file(RELATIVE_PATH up "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
    set(pc_prefix "\${pcfiledir}/${up}")
  endif()
  cmake_path(APPEND pc_libdir "\${prefix}" "${CMAKE_INSTALL_LIBDIR}")
  cmake_path(APPEND pc_includedir "\${prefix}" "${CMAKE_INSTALL_INCLUDEDIR}")
  # What a linker that is not told of the language lacks, for a static library.
  set(libraries ${CMAKE_CXX_IMPLICIT_LINK_LIBRARIES})
  list(FILTER libraries EXCLUDE REGEX "gcc|mingw|msvcrt|^c$")
  list(REMOVE_DUPLICATES libraries)
  list(TRANSFORM libraries PREPEND " -l")
  list(JOIN libraries "" pc_private)
  set(pc_cflags "")
  if(NOT BUILD_SHARED_LIBS)
    set(pc_cflags " -DZVRSIT_STATIC")
  endif()
  configure_file("${PROJECT_SOURCE_DIR}/cmake/zvrsit40.pc.in"
    "${PROJECT_BINARY_DIR}/package/zvrsit40.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/package/zvrsit40.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endfunction()

# zvrsit_find_library_beside(<program>)
#
# An installed program finds the library where it was installed with it, unless that is a folder
# where the system looks anyway, or CMAKE_INSTALL_RPATH says something else.
function(zvrsit_find_library_beside program)
  if(WIN32 OR NOT BUILD_SHARED_LIBS OR DEFINED CMAKE_INSTALL_RPATH
     OR CMAKE_INSTALL_FULL_LIBDIR IN_LIST CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES)
    return()
  endif()
  set(path "${CMAKE_INSTALL_FULL_LIBDIR}")
  if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" AND NOT IS_ABSOLUTE "${CMAKE_INSTALL_BINDIR}")
    file(RELATIVE_PATH path "/prefix/${CMAKE_INSTALL_BINDIR}" "/prefix/${CMAKE_INSTALL_LIBDIR}")
    set(path "$ORIGIN/${path}")
  endif()
  set_target_properties(${program} PROPERTIES INSTALL_RPATH "${path}")
endfunction()
