# What a build with fuzz targets adds to every room.
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  target_compile_options(zvrsit_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
