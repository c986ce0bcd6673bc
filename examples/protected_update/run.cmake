# Runs the example on a copy of real data, twice: the second run turns everything over once more.

file(REMOVE_RECURSE "${WORK}")
file(COPY_FILE "${DATA}" "${WORK}.data")
file(MAKE_DIRECTORY "${WORK}")
file(RENAME "${WORK}.data" "${WORK}/map.geojson")
file(SIZE "${WORK}/map.geojson" before)

foreach(round RANGE 1 2)
  execute_process(COMMAND ${PROGRAM} "${WORK}/journal" "${WORK}/map.geojson" COMMAND_ERROR_IS_FATAL ANY)
  math(EXPR expected "${before} + ${round} * 12")
  file(SIZE "${WORK}/map.geojson" after)
  if(NOT after EQUAL expected OR EXISTS "${WORK}/journal")
    message(FATAL_ERROR "round ${round}: ${after} bytes instead of ${expected}, or the journal is left")
  endif()
endforeach()

file(READ "${DATA}" original HEX)
file(READ "${WORK}/map.geojson" twice LIMIT ${before} HEX)
if(NOT original STREQUAL twice)
  message(FATAL_ERROR "turned over twice, the data is not what it was")
endif()
