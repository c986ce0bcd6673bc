# A stranger's project built against the library in three ways, and run; the first step that fails ends it.
#
#   cmake -DWORK_DIR=... -DCXX=... -DSOURCE_DIR=... (-DPREFIX=/usr | -DBUILD_DIR=...) [...] -P run.cmake
#
# PACKAGE, QT, TOOL  the library's name, the major version of its Qt, the tool's file
# PREFIX     where the library is installed; without it BUILD_DIR is installed below WORK_DIR
# PKG_CONFIG the program; without it that way is left out
# WHOLE      the way by add_subdirectory builds the library and runs; otherwise it is configured only
# SANITIZE, COVERAGE, GENERATOR, LAUNCHER, TOOLCHAIN  as BUILD_DIR was made
# SUFFIX, EMULATOR  of the programs, and what runs them here
if(NOT PACKAGE)
  set(PACKAGE veltor-utils)
  set(QT 5)
  set(TOOL veltor)
endif()
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
set(project "${CMAKE_CURRENT_LIST_DIR}/project")
set(flags "")
if(SANITIZE)
  set(flags "-fsanitize=${SANITIZE}")
elseif(COVERAGE)
  set(flags "--coverage")
endif()

function(step)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(configure way)
  message(STATUS "Consumer: ${way}")
  step("${CMAKE_COMMAND}" -G "${GENERATOR}" -S "${project}" -B "${WORK_DIR}/${way}" --log-level=WARNING
    "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}" "-DCMAKE_CXX_COMPILER=${CXX}" "-DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}"
    "-DPACKAGE=${PACKAGE}" "-DVELTOR_QT=${QT}" ${ARGN})
endfunction()

if(NOT PREFIX)
  # Moved after its installation: nothing in it may name the place.
  execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${WORK_DIR}/staged"
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  set(PREFIX "${WORK_DIR}/prefix")
  file(RENAME "${WORK_DIR}/staged" "${PREFIX}")
  if(PKG_CONFIG)
    file(GLOB description "${PREFIX}/lib*/pkgconfig/${PACKAGE}.pc" "${PREFIX}/lib/*/pkgconfig/${PACKAGE}.pc")
    cmake_path(GET description PARENT_PATH directory)
    set(ENV{PKG_CONFIG_PATH} "${directory}")
    cmake_path(GET directory PARENT_PATH directory)
    set(loader_path "LD_LIBRARY_PATH=${directory}")
  endif()
  # Under Wine the programs find the libraries of both here; elsewhere nobody reads it.
  set(ENV{WINEPATH} "Z:${PREFIX}/bin;Z:${BUILD_DIR}/bin")
endif()

configure(find_package "-DCMAKE_PREFIX_PATH=${PREFIX}" "-DCMAKE_CXX_FLAGS=${flags}")
step("${CMAKE_COMMAND}" --build "${WORK_DIR}/find_package")
step(${EMULATOR} "${WORK_DIR}/find_package/consumer${SUFFIX}")
step(${EMULATOR} "${PREFIX}/bin/${TOOL}" --version)

if(PKG_CONFIG)
  message(STATUS "Consumer: pkg-config and the compiler")
  execute_process(COMMAND "${PKG_CONFIG}" --cflags --libs ${PACKAGE}
    OUTPUT_VARIABLE words COMMAND_ERROR_IS_FATAL ANY)
  # Qt's headers want -fPIC, and Qt's own description leaves it to the caller too.
  separate_arguments(words UNIX_COMMAND "${words}")
  separate_arguments(flags UNIX_COMMAND "${flags}")
  step("${CXX}" -std=c++17 -fPIC ${flags} "${project}/main.cpp" -o "${WORK_DIR}/plain" ${words})
  step("${CMAKE_COMMAND}" -E env ${loader_path} "${WORK_DIR}/plain")

  # By their own build descriptions; each where its program is on the machine.
  foreach(way qmake meson)
    file(COPY "${CMAKE_CURRENT_LIST_DIR}/${way}" DESTINATION "${WORK_DIR}")
    file(COPY "${project}/main.cpp" DESTINATION "${WORK_DIR}/${way}")
  endforeach()
  find_program(MESON meson)
  if(QMAKE AND NOT SANITIZE AND NOT COVERAGE)
    message(STATUS "Consumer: qmake")
    set(shadow "${WORK_DIR}/qmake/build")
    file(MAKE_DIRECTORY "${shadow}")
    step("${CMAKE_COMMAND}" -E chdir "${shadow}" "${QMAKE}" "QMAKE_CXX=${CXX}" "PKGCONFIG=${PACKAGE}" ../consumer.pro)
    step("${CMAKE_COMMAND}" -E chdir "${shadow}" make --quiet)
    step("${CMAKE_COMMAND}" -E env ${loader_path} "${shadow}/consumer")
  endif()
  if(MESON AND NOT SANITIZE AND NOT COVERAGE)
    message(STATUS "Consumer: Meson")
    step("${CMAKE_COMMAND}" -E env "CXX=${CXX}" "${MESON}" setup "-Dpackage=${PACKAGE}" "${WORK_DIR}/meson/build"
      "${WORK_DIR}/meson")
    step("${MESON}" compile -C "${WORK_DIR}/meson/build")
    step("${CMAKE_COMMAND}" -E env ${loader_path} "${WORK_DIR}/meson/build/consumer")
  endif()
endif()

configure(add_subdirectory "-DVELTOR_SOURCE=${SOURCE_DIR}")
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${WORK_DIR}/add_subdirectory" --prefix "${WORK_DIR}/parent"
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
if(EXISTS "${WORK_DIR}/parent")
  message(FATAL_ERROR "A part of another project installs itself: an install() is not within if(VELTOR_INSTALL)")
endif()
if(WHOLE)
  step("${CMAKE_COMMAND}" --build "${WORK_DIR}/add_subdirectory" -- --quiet)
  step("${WORK_DIR}/add_subdirectory/consumer")
endif()
