# Everything the project takes from outside. Optional parts are found quietly and reported in the
# summary at the end of the configuration.

set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)
if(NOT VELTOR_QT)
  find_package(Qt5 5.15 QUIET COMPONENTS Core)
  set(VELTOR_QT 6)
  if(Qt5_FOUND)
    set(VELTOR_QT 5)
  endif()
  set_property(CACHE VELTOR_QT PROPERTY VALUE ${VELTOR_QT})
endif()
# As CMake and pkg-config know the package, and the tool's name; both can be installed side by side.
if(VELTOR_QT EQUAL 5)
  set(VELTOR_PACKAGE veltor-utils)
  set(VELTOR_TOOL veltor)
  set(VELTOR_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}")
  set(VELTOR_QT_VERSION 5.15)
  set(VELTOR_QT_MODULES Core)
else()
  set(VELTOR_PACKAGE veltor-utils-qt6)
  set(VELTOR_TOOL veltor-qt6)
  set(VELTOR_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}/veltor-utils-qt6")
  set(VELTOR_QT_VERSION 6.4)
  set(VELTOR_QT_MODULES Core Core5Compat) # which holds the text codecs
endif()
list(TRANSFORM VELTOR_QT_MODULES PREPEND Qt${VELTOR_QT}:: OUTPUT_VARIABLE VELTOR_QT_TARGETS)
find_package(Qt${VELTOR_QT} ${VELTOR_QT_VERSION} REQUIRED COMPONENTS ${VELTOR_QT_MODULES})
if(VELTOR_BENCHMARKS)
  find_package(Qt${VELTOR_QT} ${VELTOR_QT_VERSION} REQUIRED COMPONENTS Concurrent)
endif()
find_package(PkgConfig QUIET)
# Only the geodesic routines of its C interface are used. The version file of PROJ's own description refuses whoever
# cross-compiles ("cross-compiling = FALSE") what it was not itself cross-compiled for, as no package of Debian was.
find_package(PROJ CONFIG QUIET)
if(NOT PROJ_FOUND AND CMAKE_CROSSCOMPILING AND PkgConfig_FOUND)
  pkg_check_modules(PROJ REQUIRED IMPORTED_TARGET GLOBAL proj)
  add_library(PROJ::proj ALIAS PkgConfig::PROJ)
elseif(NOT PROJ_FOUND)
  find_package(PROJ CONFIG REQUIRED)
endif()
find_package(Qt${VELTOR_QT} ${VELTOR_QT_VERSION} QUIET OPTIONAL_COMPONENTS Widgets)

if(BUILD_TESTING)
  find_package(GTest REQUIRED)
  find_package(Qt${VELTOR_QT} ${VELTOR_QT_VERSION} REQUIRED COMPONENTS Test)
endif()

# An interpreter that merely comes first on PATH (a version manager's, a virtual environment's) is not
# the one whose headers and library are installed: look below the system prefix first, and let a
# caller who wants another one say so with -DPython3_ROOT_DIR=...
if(VELTOR_PYTHON)
  if(NOT DEFINED Python3_ROOT_DIR AND NOT WIN32)
    set(Python3_ROOT_DIR /usr)
  endif()
  set(Python3_FIND_STRATEGY LOCATION)
  # The library takes the headers alone; tests and examples that are hosts of an interpreter link one.
  find_package(Python3 3.8 QUIET COMPONENTS Development.Module OPTIONAL_COMPONENTS Development.Embed)
  if(Python3_Development.Module_FOUND)
    set(VELTOR_PYTHON_HEADERS Python3::Module)
  endif()
  if(Python3_Development.Embed_FOUND)
    set(VELTOR_PYTHON_LIBRARY Python3::Python)
  endif()
endif()

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
