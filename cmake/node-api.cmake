# Node-API: headers from npm; on Windows its functions come from the host program by delay-loaded imports.
set(CORVANE_NODE_MODULES ${PROJECT_SOURCE_DIR}/node_modules CACHE PATH "where node-api-headers and node-addon-api are")
if(NOT EXISTS ${CORVANE_NODE_MODULES}/node-addon-api/napi.h)
  message(FATAL_ERROR "node_modules is missing: scripts/build installs it")
endif()

add_library(corvane_node_api INTERFACE)
target_include_directories(corvane_node_api SYSTEM INTERFACE
  ${CORVANE_NODE_MODULES}/node-api-headers/include ${CORVANE_NODE_MODULES}/node-addon-api)
# NAPI_EXTERN is plain: the linker drops delay-load stubs that only dllimport reaches. In a worker that is ending,
# Node-API refuses to throw; an error that nobody can receive is then dropped and does not end the process.
target_compile_definitions(corvane_node_api INTERFACE NAPI_VERSION=8 NAPI_CPP_EXCEPTIONS NODE_API_SWALLOW_UNTHROWABLE_EXCEPTIONS
  NAPI_EXTERN=
  BUILDING_NODE_EXTENSION NODE_GYP_MODULE_NAME=corvane_napi)

if(WIN32)
  set(defs ${CORVANE_NODE_MODULES}/node-api-headers/def)
  set(all_def ${PROJECT_BINARY_DIR}/node-api.def)
  file(READ ${defs}/js_native_api.def js_def)
  file(READ ${defs}/node_api.def node_def)
  # One export list: the second file's own heading goes, and the first has no final newline.
  string(REGEX REPLACE "^[^\n]*\n?EXPORTS[^\n]*\n" "" node_def "${node_def}")
  file(CONFIGURE OUTPUT ${all_def} CONTENT "@js_def@\n@node_def@" @ONLY)
  set(import_library ${PROJECT_BINARY_DIR}/libnode-api-delay.a)
  add_custom_command(OUTPUT ${import_library} DEPENDS ${all_def}
    COMMAND ${CMAKE_DLLTOOL} --def ${all_def} --dllname NODE.EXE --output-delaylib ${import_library})
  add_custom_target(corvane_node_api_import DEPENDS ${import_library})
  add_dependencies(corvane_node_api corvane_node_api_import)
  target_link_libraries(corvane_node_api INTERFACE ${import_library} delayimp)
endif()
