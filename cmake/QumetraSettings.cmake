# How everything is compiled: language, warnings, hardening, sanitizers, and where products go.

include(GNUInstallDirs)

option(QUMETRA_TESTS "Build the tests" ON)
option(QUMETRA_BENCH "Build the benchmarks" OFF)
option(QUMETRA_WERROR "Take warnings for errors" OFF)
option(QUMETRA_FUZZ "Build the fuzz targets, by clang" OFF)
option(QUMETRA_SANITIZE "Build with the address and undefined-behaviour sanitizers" OFF)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# The build tree looks like the installed one, so that the tool finds the library in both.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(QUMETRA_WERROR)
  add_compile_options(-Werror)
endif()

include_directories(${CMAKE_CURRENT_SOURCE_DIR})

if(QUMETRA_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    add_compile_options(
      -fsanitize-ignorelist=${CMAKE_CURRENT_SOURCE_DIR}/cmake/sanitizer_ignorelist.txt)
  endif()
else()
  # A shared library must not leave a symbol open by mistake. (Sanitized ones do: the runtime is in
  # the executable.)
  string(APPEND CMAKE_SHARED_LINKER_FLAGS " -Wl,-z,defs")
endif()

# Hardening of what people run.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
add_compile_options("$<$<CONFIG:Release>:-fstack-protector-strong>")
add_compile_definitions("$<$<CONFIG:Release>:_FORTIFY_SOURCE=2;_GLIBCXX_ASSERTIONS>")
add_link_options("$<$<CONFIG:Release>:LINKER:-z,relro,-z,now>")
# All is bound at the start, so calls between libraries need no stubs that would bind them late: a
# value passes five to eight such calls.
add_compile_options("$<$<CONFIG:Release>:-fno-plt>")
