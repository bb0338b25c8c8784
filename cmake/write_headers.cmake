# Writes the exported headers as an application includes them: <zvrsit40/util/vec.h> where the tree
# has "util/vec.h", so that a file of the application with that name is not taken for ours. One that
# did not change is left alone. Wants: from, the root of the sources; to, where the headers go.
cmake_policy(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/exported_headers.cmake")

function(write_header header text)
  set(old "")
  if(EXISTS "${to}/${header}")
    file(READ "${to}/${header}" old)
  endif()
  if(NOT text STREQUAL old)
    file(WRITE "${to}/${header}" "${text}")
  endif()
endfunction()

set(include_line "#include \"([^\"\n]+)\"")
foreach(header IN LISTS ZVRSIT_EXPORTED_HEADERS)
  file(READ "${from}/${header}" text)
  string(REGEX MATCHALL "${include_line}" lines "${text}")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "${include_line}" "\\1" included "${line}")
    if(NOT included IN_LIST ZVRSIT_EXPORTED_HEADERS)
      message(FATAL_ERROR "${header} is exported and includes ${included}, which is not: forward "
                          "declare what it takes from there, or name it in exported_headers.cmake")
    endif()
  endforeach()
  string(REGEX REPLACE "${include_line}" "#include <zvrsit40/\\1>" text "${text}")
  write_header("zvrsit40/${header}" "${text}")
endforeach()
write_header(zvrsit40.h "// The same as <zvrsit40/zvrsit40.h>.\n#pragma once\n\n#include <zvrsit40/zvrsit40.h>\n")
