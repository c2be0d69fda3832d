# Compiler and linker options. `corvane_options` is linked by every target of our own; the sanitizers go to everything,
# GoogleTest included, since containers must be instrumented on both sides.
add_library(corvane_options INTERFACE)
target_include_directories(corvane_options INTERFACE ${PROJECT_SOURCE_DIR}/lib)
target_compile_options(corvane_options INTERFACE
  -Wall -Wextra -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Wold-style-cast)
if(CORVANE_WERROR)
  target_compile_options(corvane_options INTERFACE -Werror)
endif()
if(CORVANE_PORTABLE)
  target_compile_definitions(corvane_options INTERFACE CORVANE_PORTABLE)
endif()

# No path of the building machine in what ships.
add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)

if(CORVANE_SANITIZE)
  add_compile_options(-fsanitize=${CORVANE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${CORVANE_SANITIZE})
else()
  # Hardening of what ships. Position independence, no executable stack and read-only relocations are the linkers' part.
  add_compile_options(-fstack-protector-strong)
  add_link_options(-fstack-protector-strong)
  add_compile_definitions($<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>)
  if(NOT WIN32)
    add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack)
  endif()
endif()

if(WIN32)
  # One file that runs anywhere: the C++ runtime and the threads library are linked in.
  add_link_options(-static -Wl,--dynamicbase,--nxcompat)
  add_compile_definitions(UNICODE _UNICODE WINVER=0x0A00 _WIN32_WINNT=0x0A00)
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    # Node.js itself needs SSE2. Its callers align the stack to 4 bytes only, so entry points realign it.
    add_compile_options(-msse2 -mfpmath=sse -mstackrealign)
  endif()
endif()
