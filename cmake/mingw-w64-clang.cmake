# The same headers and libraries as cmake/mingw-w64.cmake, read by clang.
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=include
                OUTPUT_VARIABLE INCLUDE OUTPUT_STRIP_TRAILING_WHITESPACE)
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-mingw32)
# By itself clang takes the one of several libstdc++ that knows no threads.
set(CMAKE_CXX_FLAGS_INIT
    "-nostdinc++ -isystem ${INCLUDE}/c++ -isystem ${INCLUDE}/c++/x86_64-w64-mingw32")
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
