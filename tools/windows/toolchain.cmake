# CMake toolchain: 32-bit Windows by mingw-w64 with POSIX threads; programs run under Wine (see winerun).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER i686-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)

# The stack is realigned because callers on Win32 promise four bytes only; backtraces follow the frame
# pointers; Wine 8 reads no names from DWARF 5.
set(flags "-msse2 -mfpmath=sse -mstackrealign -fno-omit-frame-pointer -gdwarf-4")
set(CMAKE_C_FLAGS_INIT "${flags}")
set(CMAKE_CXX_FLAGS_INIT "${flags}")

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/winerun")
execute_process(COMMAND "${CMAKE_CROSSCOMPILING_EMULATOR}" --cache
  OUTPUT_VARIABLE cache OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
list(APPEND CMAKE_PREFIX_PATH "${cache}/qt" "${cache}/proj" "${cache}/googletest")
set(CMAKE_FIND_ROOT_PATH ${CMAKE_PREFIX_PATH} /usr/i686-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
