include("${CMAKE_CURRENT_LIST_DIR}/host_headers.cmake")
zvrsit_host_headers(CLI11::CLI11 CLI)
set(CLI11_FOUND TRUE)
