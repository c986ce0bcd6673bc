# CMake toolchain: 64-bit ARM by Debian's cross compiler against the system of setup.sh; programs run under QEMU.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

execute_process(COMMAND "${CMAKE_CURRENT_LIST_DIR}/setup.sh" --cache
  OUTPUT_VARIABLE cache OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(CMAKE_SYSROOT "${cache}/system")
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L "${CMAKE_SYSROOT}" -E "LD_PRELOAD=${cache}/forks/plainforks.so"
  -E "QT_PLUGIN_PATH=${CMAKE_SYSROOT}/usr/lib/aarch64-linux-gnu/qt5/plugins")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(folder "${CMAKE_SYSROOT}/usr/lib/aarch64-linux-gnu")
set(flags "-L${folder} -Wl,-rpath-link,${folder}:${CMAKE_SYSROOT}/lib/aarch64-linux-gnu")
set(CMAKE_CXX_FLAGS_INIT "-Wno-psabi") # a change of GCC 10's is no finding
set(CMAKE_EXE_LINKER_FLAGS_INIT "${flags}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${flags}")

# pkg-config too looks there alone.
set(ENV{PKG_CONFIG_LIBDIR} "${CMAKE_SYSROOT}/usr/lib/aarch64-linux-gnu/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig")
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${CMAKE_SYSROOT}")
