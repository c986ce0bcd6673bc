# Build options and the compiler flags shared by every target of the project.

option(BUILD_SHARED_LIBS "Build a shared library" ON)
option(VELTOR_WERROR "Treat warnings as errors" OFF)
option(VELTOR_PYTHON "Build the Python bridge when Python's headers are found" ON)
option(VELTOR_TOOLS "Build the command-line tool" ${PROJECT_IS_TOP_LEVEL})
option(VELTOR_INSTALL "Define what cmake --install installs" ${PROJECT_IS_TOP_LEVEL})
option(VELTOR_DEBIAN "Install as Debian's packages are laid out, for CPack" OFF)
option(VELTOR_DOCS "Build the documentation with everything else (Doxygen, Graphviz and Python 3 are needed)" OFF)
option(VELTOR_BENCHMARKS "Build the benchmarks (Google Benchmark and the peers are needed)" OFF)
option(VELTOR_FUZZERS "Build the fuzz targets (clang is needed)" OFF)
option(VELTOR_PCH "Precompile the headers that most sources include: a whole build takes half the time" OFF)
option(VELTOR_COVERAGE "Instrument for gcov" OFF)
set(VELTOR_QT "" CACHE STRING "Major version of Qt, 5 or 6; where nothing is said, what is found, 5 first")
set(VELTOR_SANITIZE "" CACHE STRING "Sanitizers, as in -fsanitize= (address,undefined or thread)")

if(NOT CMAKE_CXX_STANDARD MATCHES "^2[0-9]$")
  set(CMAKE_CXX_STANDARD 17)
endif()
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Build type" FORCE)
endif()

# veltor_options: private usage requirements of everything that is compiled here.
add_library(veltor_options INTERFACE)
target_compile_definitions(veltor_options INTERFACE
  QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING
  QT_DEPRECATED_WARNINGS QT_STRICT_ITERATORS
  QT_MESSAGELOGCONTEXT)

if(MSVC)
  # /fp:precise is MSVC's default and does not contract. C4251 and C4275 warn of exported classes with
  # members and bases of the C++ library, which the caller must have from the same compiler anyway.
  target_compile_options(veltor_options INTERFACE
    /utf-8 /W4 /wd4251 /wd4275 /permissive- /Zc:__cplusplus)
  target_compile_definitions(veltor_options INTERFACE _CRT_SECURE_NO_WARNINGS)
  if(VELTOR_WERROR)
    target_compile_options(veltor_options INTERFACE /WX)
  endif()
else()
  target_compile_options(veltor_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
    -ffp-contract=off
    $<IF:$<BOOL:$<TARGET_PROPERTY:VELTOR_RELAXED>>,-Wno-deprecated-declarations,-Wconversion>)
  if(VELTOR_WERROR)
    target_compile_options(veltor_options INTERFACE -Werror)
  endif()
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "i[3-6]86")
    target_compile_options(veltor_options INTERFACE -msse2 -mfpmath=sse)
  endif()
  if(VELTOR_SANITIZE)
    add_compile_options(-fsanitize=${VELTOR_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${VELTOR_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      add_compile_options(-Wno-maybe-uninitialized) # which takes the sanitizers' code for uses
    endif()
  endif()
  if(VELTOR_FUZZERS)
    add_compile_options(-fsanitize=fuzzer-no-link) # all code tells its branches to the fuzzer that runs it
    add_link_options(-fsanitize=fuzzer-no-link)
  endif()
  if(NOT VELTOR_SANITIZE AND NOT APPLE)
    add_link_options(-Wl,--no-undefined) # the Python bridge must not refer to an interpreter by name
  endif()
  if(VELTOR_COVERAGE)
    add_compile_options(--coverage -O0)
    add_link_options(--coverage)
  endif()
endif()
