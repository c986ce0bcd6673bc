# A large file, a small one and a missing one: two counts, and the third task's own error.

file(MAKE_DIRECTORY "${WORK}")
string(REPEAT "one line\n" 50000 large)
file(WRITE "${WORK}/large.txt" "${large}")
file(WRITE "${WORK}/small.txt" "first\nsecond\nthird\n")

execute_process(COMMAND ${PROGRAM} large.txt missing.txt small.txt WORKING_DIRECTORY "${WORK}"
  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE progress)
foreach(expected "large.txt: 50000 lines\n" "small.txt: 3 lines\n" "missing.txt: [^\n]*missing.txt[^\n]+\n")
  if(NOT output MATCHES "${expected}")
    message(FATAL_ERROR "no ${expected} in\n${output}")
  endif()
endforeach()
if(NOT result EQUAL 1 OR NOT progress MATCHES "large.txt: 100 %\n")
  message(FATAL_ERROR "ended with ${result}, progress was\n${progress}")
endif()
