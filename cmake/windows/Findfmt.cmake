include("${CMAKE_CURRENT_LIST_DIR}/host_headers.cmake")
zvrsit_host_headers(fmt::fmt fmt FMT_HEADER_ONLY)
set(fmt_FOUND TRUE)
