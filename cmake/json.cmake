# nlohmann::json, header-only, from the host's packages. A cross build must not see the host's whole include folder, so
# the headers are reached through a folder of the build that holds nothing else.
find_path(NLOHMANN_JSON_HOME nlohmann/json.hpp PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/include)
file(CREATE_LINK ${NLOHMANN_JSON_HOME}/nlohmann ${PROJECT_BINARY_DIR}/include/nlohmann SYMBOLIC)
add_library(corvane_json INTERFACE)
target_include_directories(corvane_json SYSTEM INTERFACE ${PROJECT_BINARY_DIR}/include)
