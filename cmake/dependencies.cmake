# Where the libraries come from: Debian packages, natively through their own files, for Windows from
# the sources or headers the same packages install. The system's include folder is never on the
# cross compiler's path; header-only libraries are reached through a folder of links.
set(HEADER_LINKS ${CMAKE_BINARY_DIR}/header_links)
file(MAKE_DIRECTORY ${HEADER_LINKS})
foreach(header CLI nlohmann rapidjson)
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

# An interface library for one that is installed natively: quellix_find(NAME LIBRARY HEADER) makes
# quellix_NAME, and sets NAME_FOUND when it is there.
function(quellix_find name library header)
  find_library(${name}_LIBRARY ${library})
  find_path(${name}_INCLUDE ${header})
  if(NOT TARGET quellix_${name})
    add_library(quellix_${name} INTERFACE)
  endif()
  if(${name}_LIBRARY AND ${name}_INCLUDE)
    target_link_libraries(quellix_${name} INTERFACE ${${name}_LIBRARY})
    target_include_directories(quellix_${name} SYSTEM INTERFACE ${${name}_INCLUDE})
    set(${name}_FOUND ON PARENT_SCOPE)
  endif()
endfunction()

# Without hivex there is no registry of a volume, without nettle no checksum, and so no volume
# machine: what is left natively is the engine library and its tests that need no machine. The
# console program needs CLI11 and nlohmann/json as well.
set(QUELLIX_MACHINE ON)
if(NOT WIN32)
  quellix_find(hivex hivex hivex.h)
  quellix_find(nettle nettle nettle/sha2.h)
  # Signatures; both come with it.
  target_link_libraries(quellix_nettle INTERFACE hogweed gmp)
  if(NOT hivex_FOUND OR NOT nettle_FOUND)
    set(QUELLIX_MACHINE OFF)
    message(STATUS "No hivex or nettle: only the engine and its portable tests are built")
  endif()
endif()

# Archives need zlib. Natively there is no engine without it, only its portable parts.
# Statically on Windows, where no zlib stands ready.
set(ZLIB_USE_STATIC_LIBS ${WIN32})
find_package(ZLIB)
if(NOT ZLIB_FOUND)
  set(QUELLIX_MACHINE OFF)
  message(STATUS "No zlib: only the engine's portable parts and their tests are built")
  if(WIN32)
    message(FATAL_ERROR "zlib for Windows is missing: the package libz-mingw-w64-dev")
  endif()
endif()

# Archives are written and read by minizip. For Windows it is built from its packaged sources, which
# scripts/setup unpacks.
if(WIN32)
  add_library(quellix_minizip INTERFACE)
  set(MINIZIP_SOURCES ${CMAKE_SOURCE_DIR}/build/minizip-source)
  if(NOT EXISTS ${MINIZIP_SOURCES}/minizip/zip.c)
    message(FATAL_ERROR "The sources of minizip are missing: scripts/setup windows fetches them")
  endif()
  foreach(file ioapi unzip zip)
    list(APPEND MINIZIP_FILES ${MINIZIP_SOURCES}/minizip/${file}.c)
  endforeach()
  add_library(minizip STATIC ${MINIZIP_FILES})
  # Its own functions for files, which are not used here, have no large files on Windows.
  target_compile_definitions(minizip PRIVATE USE_FILE32API NOCRYPT NOUNCRYPT)
  target_compile_options(minizip PRIVATE -w)
  target_include_directories(minizip SYSTEM INTERFACE ${MINIZIP_SOURCES})
  target_link_libraries(minizip PUBLIC ZLIB::ZLIB)
  target_link_libraries(quellix_minizip INTERFACE minizip)
else()
  quellix_find(minizip minizip minizip/zip.h)
  if(minizip_FOUND AND ZLIB_FOUND)
    target_link_libraries(quellix_minizip INTERFACE ZLIB::ZLIB)
  else()
    set(QUELLIX_MACHINE OFF)
    message(STATUS "No minizip: only the engine's portable parts and their tests are built")
  endif()
endif()

# Browsers keep what they know in SQLite databases. For Windows it is built from its packaged sources,
# which scripts/setup puts together, without an operating system below it: its files are the
# engine's.
if(WIN32)
  add_library(quellix_sqlite INTERFACE)
  set(SQLITE_SOURCES ${CMAKE_SOURCE_DIR}/build/sqlite3-source)
  if(NOT EXISTS ${SQLITE_SOURCES}/sqlite3.h)
    message(FATAL_ERROR "The sources of SQLite are missing: scripts/setup windows fetches them")
  endif()
  set(SQLITE_NO_SYSTEM ${CMAKE_BINARY_DIR}/sqlite/no_system.c)
  file(CONFIGURE OUTPUT ${SQLITE_NO_SYSTEM}
       CONTENT "int sqlite3_os_init(void) { return 0; }\nint sqlite3_os_end(void) { return 0; }\n")
  add_library(sqlite STATIC ${SQLITE_SOURCES}/sqlite3.c ${SQLITE_NO_SYSTEM})
  target_compile_definitions(sqlite PRIVATE SQLITE_OS_OTHER=1 SQLITE_THREADSAFE=0
    SQLITE_TEMP_STORE=3 SQLITE_SECURE_DELETE SQLITE_DQS=0 SQLITE_DEFAULT_MEMSTATUS=0
    SQLITE_OMIT_LOAD_EXTENSION SQLITE_OMIT_SHARED_CACHE SQLITE_OMIT_DEPRECATED SQLITE_OMIT_JSON
    SQLITE_OMIT_AUTHORIZATION SQLITE_OMIT_TRACE SQLITE_OMIT_DECLTYPE SQLITE_OMIT_DESERIALIZE
    SQLITE_OMIT_COMPLETE SQLITE_UNTESTABLE)
  target_compile_options(sqlite PRIVATE -w -Os)
  target_include_directories(sqlite SYSTEM INTERFACE ${SQLITE_SOURCES})
  target_link_libraries(quellix_sqlite INTERFACE sqlite)
else()
  quellix_find(sqlite sqlite3 sqlite3.h)
  if(NOT sqlite_FOUND)
    set(QUELLIX_MACHINE OFF)
    message(STATUS "No SQLite: only the engine's portable parts and their tests are built")
  endif()
endif()

# Without liblnk a volume's shortcuts cannot be read; one of two files stands for both cases.
if(NOT WIN32)
  quellix_find(liblnk lnk liblnk.h)
  if(liblnk_FOUND)
    set(QUELLIX_LIBLNK ON)
    # Its header asks for libbfio's, of which it names one type in functions we do not call.
    set(LIBBFIO_STAND_IN ${CMAKE_BINARY_DIR}/libbfio)
    file(CONFIGURE OUTPUT ${LIBBFIO_STAND_IN}/libbfio.h
         CONTENT "#include <stdint.h>\ntypedef intptr_t libbfio_handle_t;\n")
    target_include_directories(quellix_liblnk SYSTEM INTERFACE ${LIBBFIO_STAND_IN})
  else()
    set(QUELLIX_LIBLNK OFF)
    message(STATUS "No liblnk: shortcuts of a volume cannot be searched")
  endif()
endif()

# Without libcurl no web server is asked; one of two files stands for both cases.
if(NOT WIN32)
  quellix_find(curl curl-gnutls curl/curl.h)
  if(NOT curl_FOUND)
    unset(curl_LIBRARY CACHE)
    quellix_find(curl curl curl/curl.h)
  endif()
  set(QUELLIX_CURL ${curl_FOUND})
  if(NOT curl_FOUND)
    message(STATUS "No libcurl: neither new versions nor addresses of favorites can be asked for")
  endif()
endif()

if(QUELLIX_MACHINE AND EXISTS /usr/include/CLI/CLI.hpp AND EXISTS /usr/include/nlohmann/json.hpp)
  set(QUELLIX_CONSOLE ON)
else()
  set(QUELLIX_CONSOLE OFF)
endif()
