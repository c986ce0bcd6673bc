# Each end is told as what it is, and only once.

execute_process(COMMAND ${PROGRAM} RESULT_VARIABLE code OUTPUT_VARIABLE output)
foreach(line "done: signal successful" "done: the value 42" "failed: signal error" "failed: signal canceled"
             "failed: failed: no such map" "canceled: signal canceled" "canceled: given up")
  string(REGEX MATCHALL "(^|\n)${line}" found "${output}")
  list(LENGTH found count)
  if(NOT count EQUAL 1)
    message(FATAL_ERROR "code ${code}, ${count} times '${line}' in:\n${output}")
  endif()
endforeach()
