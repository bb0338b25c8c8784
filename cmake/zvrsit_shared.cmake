# The shared library and its package.
include(CMakePackageConfigHelpers)

# zvrsit_shared_library(<target> <room>...)
#
# One shared library of whole rooms. Only what carries ZVRSIT_API is exported: the rooms hide the
# rest, and the linker script hides the template code of the standard library.
function(zvrsit_shared_library target)
  set(objects)
  foreach(room IN LISTS ARGN)
    list(APPEND objects $<TARGET_OBJECTS:${room}>)
  endforeach()
  add_library(${target} SHARED ${objects})
  add_library(zvrsit40::${target} ALIAS ${target})
  set_target_properties(${target} PROPERTIES
    LINKER_LANGUAGE CXX
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR})
  target_compile_features(${target} INTERFACE cxx_std_20)
  target_include_directories(${target} INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/zvrsit40>)
  if(WIN32)
    zvrsit_dll_properties(${target})
  endif()
  if(ZVRSIT_SANITIZE)
    target_link_options(${target} PUBLIC $<BUILD_INTERFACE:-fsanitize=address,undefined>)
  endif()
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    set(script "${PROJECT_SOURCE_DIR}/cmake/zvrsit40.map")
    target_link_options(${target} PRIVATE
      "LINKER:--version-script=${script}" LINKER:-Bsymbolic-functions)
    if(NOT ZVRSIT_SANITIZE)
      target_link_options(${target} PRIVATE LINKER:--no-undefined)
    endif()
    set_target_properties(${target} PROPERTIES LINK_DEPENDS "${script}")
  endif()
endfunction()

# zvrsit_install_package(<target>)
#
# Installs the shared library, its headers, a CMake package and a pkg-config file.
function(zvrsit_install_package target)
  set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/zvrsit40")
  install(TARGETS ${target} EXPORT zvrsit40Targets)
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

  file(RELATIVE_PATH prefix_from_pc "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/zvrsit40.pc.in"
    "${PROJECT_BINARY_DIR}/package/zvrsit40.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/package/zvrsit40.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

  # The headers are found when they are installed: zvrsit40.h and what it includes of ours.
  install(CODE "
    set(source_dir \"${PROJECT_SOURCE_DIR}\")
    set(header_dir \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_INCLUDEDIR}/zvrsit40\")")
  install(SCRIPT "${PROJECT_SOURCE_DIR}/cmake/install_headers.cmake")
endfunction()
