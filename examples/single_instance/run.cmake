# A copy that a copy starts is refused while the first one lives, and welcome afterwards; a death is told where the
# system remembers it.

list(GET PROGRAM -1 file)
string(SHA1 name "${file}")
function(expect code text)
  execute_process(COMMAND ${PROGRAM} ${ARGN} RESULT_VARIABLE result ERROR_VARIABLE errors)
  if(NOT result EQUAL code OR NOT errors MATCHES "${text}")
    message(FATAL_ERROR "${ARGN}: code ${result} instead of ${code}, said:\n${errors}")
  endif()
endfunction()

expect(0 "" ${name} "${CMAKE_COMMAND}" -E true)
expect(75 "another copy is running" ${name} "${file}" ${name} "${CMAKE_COMMAND}" -E true)
expect(0 "" ${name} "${file}" ${name}2 "${CMAKE_COMMAND}" -E true)
expect(0 "" --die ${name} "${CMAKE_COMMAND}" -E true)
if(REMEMBERS)
  expect(0 "did not come to its end" ${name} "${CMAKE_COMMAND}" -E true)
endif()
expect(0 "^$" ${name} "${CMAKE_COMMAND}" -E true)
