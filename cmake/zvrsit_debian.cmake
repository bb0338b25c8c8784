# The Debian packages that `cpack -G DEB` makes: the library, what a program needs to be built with
# it, and the program. scripts/package.sh makes, checks and tries them.
set(ZVRSIT_MAINTAINER "zvrsit40 developers <developers@zvrsit40.example>" CACHE STRING
  "Who makes the Debian packages: a name and an address")
set(CPACK_PACKAGE_CONTACT "${ZVRSIT_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL library development program)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}")

# The date of what is packed: of the last commit where git knows it, so that it can be made again.
execute_process(COMMAND git -C "${PROJECT_SOURCE_DIR}" log -1 --format=%aD
  OUTPUT_VARIABLE changelog_date OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
if(NOT changelog_date)
  string(TIMESTAMP changelog_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
endif()

# zvrsit_deb(<component> <package> <section> <summary> <description>)
#
# A package, and the texts that Debian wants in each.
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/debian/finish.cmake")
macro(zvrsit_deb component package section summary description)
  string(TOUPPER "${component}" upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME "${package}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION "${section}")
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}\n${description}")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/debian/changelog.in"
    "${PROJECT_BINARY_DIR}/debian/${package}/changelog.Debian" @ONLY)
  install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" RENAME copyright
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${package}" COMPONENT ${component})
  install(FILES "${PROJECT_BINARY_DIR}/debian/${package}/changelog.Debian"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${package}" COMPONENT ${component})
endmacro()

set(about "It knows a web site: its files, the links between them, what is broken,\nwhat nobody links to and what has to be published.")
zvrsit_deb(library "libzvrsit40-${ZVRSIT_ABI}" libs
  "site management for web authoring - library" "${about}")
zvrsit_deb(development "libzvrsit40-dev" libdevel
  "site management for web authoring - headers"
  "${about}\n.\nThese are the files that a program is built with.")
zvrsit_deb(program "zvrsit" web "links of a web site, and what is broken" "${about}")
# The cache of the dynamic linker is made anew when the library comes or goes, and packages of other
# programs learn on which one they depend.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA)
foreach(control triggers shlibs)
  set(file "${PROJECT_BINARY_DIR}/debian/${control}")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/debian/${control}.in" "${file}" @ONLY)
  list(APPEND CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${file}")
endforeach()
# The program loads libcurl when it needs it, so that nothing is seen of it in the program.
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS
  "libzvrsit40-${ZVRSIT_ABI} (= ${PROJECT_VERSION}-1), libcurl4 (>= 7.85)")
# Whom servers are trusted to be.
set(CPACK_DEBIAN_PROGRAM_PACKAGE_RECOMMENDS ca-certificates)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libzvrsit40-${ZVRSIT_ABI} (= ${PROJECT_VERSION}-1)")
include(CPack)
