# zvrsit_host_headers(<imported target> <folder of headers> [<definition>...])
#
# A library of the building machine that is headers only. Its folder alone is linked into a folder
# of the build, so that no other header of the machine is seen.
function(zvrsit_host_headers target folder)
  if(TARGET ${target})
    return()
  endif()
  find_path(ZVRSIT_HOST_${folder} ${folder} PATHS /usr/include NO_DEFAULT_PATH
    NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  set(headers "${PROJECT_BINARY_DIR}/host_headers")
  file(MAKE_DIRECTORY "${headers}")
  file(CREATE_LINK "${ZVRSIT_HOST_${folder}}/${folder}" "${headers}/${folder}" SYMBOLIC)
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${target} SYSTEM INTERFACE "${headers}")
  target_compile_definitions(${target} INTERFACE ${ARGN})
endfunction()
