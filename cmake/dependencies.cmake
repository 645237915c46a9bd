# Where the libraries come from: Debian packages, natively through their own files, for Windows from
# the sources or headers the same packages install. The system's include folder is never on the
# cross compiler's path; header-only libraries are reached through a folder of links.
set(HEADER_LINKS ${CMAKE_BINARY_DIR}/header_links)
file(MAKE_DIRECTORY ${HEADER_LINKS})
foreach(header CLI nlohmann)
  if(EXISTS /usr/include/${header})
    file(CREATE_LINK /usr/include/${header} ${HEADER_LINKS}/${header} SYMBOLIC)
  endif()
endforeach()
add_library(quellix_header_only INTERFACE)
target_include_directories(quellix_header_only SYSTEM INTERFACE ${HEADER_LINKS})

# GoogleTest is built from its packaged sources, with our compiler and sanitizers; where only a
# built one is installed, that one is taken.
if(EXISTS /usr/src/googletest/CMakeLists.txt)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  if(NOT TARGET GTest::gtest_main)
    add_library(GTest::gtest_main ALIAS gtest_main)
  endif()
else()
  find_package(GTest REQUIRED)
endif()

# Without hivex there is no registry of a volume, and so no volume machine: what is left natively is
# the engine library and its tests that need no machine. The console program needs CLI11 as well.
set(QUELLIX_MACHINE ON)
if(NOT WIN32)
  find_library(HIVEX_LIBRARY hivex)
  find_path(HIVEX_INCLUDE hivex.h)
  add_library(quellix_hivex INTERFACE)
  if(HIVEX_LIBRARY AND HIVEX_INCLUDE)
    target_link_libraries(quellix_hivex INTERFACE ${HIVEX_LIBRARY})
    target_include_directories(quellix_hivex SYSTEM INTERFACE ${HIVEX_INCLUDE})
  else()
    set(QUELLIX_MACHINE OFF)
    message(STATUS "No hivex: only the engine and its portable tests are built")
  endif()
endif()

# Archives need zlib. Natively there is no engine without it, only its portable parts.
find_package(ZLIB)
if(NOT ZLIB_FOUND)
  set(QUELLIX_MACHINE OFF)
  message(STATUS "No zlib: only the engine's portable parts and their tests are built")
  if(WIN32)
    message(FATAL_ERROR "zlib for Windows is missing: the package libz-mingw-w64-dev")
  endif()
endif()

if(QUELLIX_MACHINE AND EXISTS /usr/include/CLI/CLI.hpp)
  set(QUELLIX_CONSOLE ON)
else()
  set(QUELLIX_CONSOLE OFF)
endif()
