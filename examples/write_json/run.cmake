# What was written is read by another parser, and laid out as asked.

file(REMOVE "${OUTPUT}")
execute_process(COMMAND ${PROGRAM} "${OUTPUT}" "North \"Cape\"" 25.78391234567 71.169 Null 0 -0.5
  COMMAND_ERROR_IS_FATAL ANY)
file(READ "${OUTPUT}" text)

function(expect value)
  string(JSON found GET "${text}" ${ARGN})
  if(NOT found STREQUAL value)
    message(FATAL_ERROR "${ARGN}: ${found} instead of ${value}")
  endif()
endfunction()

expect("North \"Cape\"" features 0 properties name)
expect("-0.5" features 1 geometry coordinates 1)
if(NOT text MATCHES "\n      \"geometry\": {\n        \"coordinates\": \\[\n          25.7839123,\n")
  message(FATAL_ERROR "not indented by two:\n${text}")
endif()
