# Everything the project takes from outside. Optional parts are found quietly and reported in the
# summary at the end of the configuration.

set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)
find_package(Qt5 5.15 REQUIRED COMPONENTS Core Concurrent)
# Only the geodesic routines of its C interface are used.
find_package(PROJ CONFIG REQUIRED)
find_package(Qt5 5.15 QUIET OPTIONAL_COMPONENTS Widgets)

if(BUILD_TESTING)
  find_package(GTest REQUIRED)
  find_package(Qt5 5.15 REQUIRED COMPONENTS Test)
endif()

# An interpreter that merely comes first on PATH (a version manager's, a virtual environment's) is not
# the one whose headers and library are installed: look below the system prefix first, and let a
# caller who wants another one say so with -DPython3_ROOT_DIR=...
if(VELTOR_PYTHON)
  if(NOT DEFINED Python3_ROOT_DIR AND NOT WIN32)
    set(Python3_ROOT_DIR /usr)
  endif()
  set(Python3_FIND_STRATEGY LOCATION)
  find_package(Python3 3.8 QUIET COMPONENTS Development.Embed)
  if(Python3_Development.Embed_FOUND)
    set(VELTOR_PYTHON_LIBRARY Python3::Python)
  endif()
endif()

find_package(PkgConfig QUIET)
# Names of functions for backtraces.
if(WIN32)
  set(VELTOR_SYMBOL_LIBRARY dbghelp)
else()
  if(NOT PkgConfig_FOUND)
    message(FATAL_ERROR "pkg-config is needed to find libdw")
  endif()
  pkg_check_modules(LIBDW REQUIRED IMPORTED_TARGET libdw)
  set(VELTOR_SYMBOL_LIBRARY PkgConfig::LIBDW)
endif()

# The parser of maps, headers only. When cross-compiling, the building machine's are as good, in a folder of
# their own: beside them lie the headers of that machine's system.
if(VELTOR_TOOLS)
  find_path(VELTOR_RAPIDJSON rapidjson/reader.h NO_CMAKE_FIND_ROOT_PATH DOC "The folder that holds rapidjson/")
  if(NOT VELTOR_RAPIDJSON)
    message(FATAL_ERROR "RapidJSON is needed for the tool (Debian: rapidjson-dev); -DVELTOR_TOOLS=OFF leaves it out")
  endif()
  set(VELTOR_RAPIDJSON_INCLUDE "${VELTOR_RAPIDJSON}")
  if(CMAKE_CROSSCOMPILING)
    set(VELTOR_RAPIDJSON_INCLUDE "${PROJECT_BINARY_DIR}/rapidjson")
    file(COPY "${VELTOR_RAPIDJSON}/rapidjson" DESTINATION "${VELTOR_RAPIDJSON_INCLUDE}")
  endif()
endif()
