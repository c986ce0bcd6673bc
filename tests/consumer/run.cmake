# Install, configure, build, run; the first step that fails ends the test.
file(REMOVE_RECURSE "${WORK_DIR}")
set(flags "")
if(SANITIZE)
  set(flags "-fsanitize=${SANITIZE}")
elseif(COVERAGE)
  set(flags "--coverage")
endif()

function(step)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

step("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${WORK_DIR}/prefix")
step("${CMAKE_COMMAND}" -G "${GENERATOR}" -S "${CONSUMER_DIR}" -B "${WORK_DIR}/build"
  "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}" "-DCMAKE_CXX_COMPILER=${CXX}" "-DCMAKE_CXX_FLAGS=${flags}" "-DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix")
step("${CMAKE_COMMAND}" --build "${WORK_DIR}/build")
# Under Wine the programs find the libraries of both here; elsewhere nobody reads it.
set(ENV{WINEPATH} "Z:${WORK_DIR}/prefix/bin;Z:${BUILD_DIR}/bin")
step(${EMULATOR} "${WORK_DIR}/build/consumer${SUFFIX}")
step(${EMULATOR} "${WORK_DIR}/prefix/bin/veltor${SUFFIX}" --version)
