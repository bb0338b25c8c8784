include("${CMAKE_CURRENT_LIST_DIR}/host_headers.cmake")
zvrsit_host_headers(tomlplusplus::tomlplusplus toml++ TOML_HEADER_ONLY=1)
set(tomlplusplus_FOUND TRUE)
