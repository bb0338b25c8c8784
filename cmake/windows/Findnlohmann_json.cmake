include("${CMAKE_CURRENT_LIST_DIR}/host_headers.cmake")
zvrsit_host_headers(nlohmann_json::nlohmann_json nlohmann)
set(nlohmann_json_FOUND TRUE)
