# A copy that a copy starts is refused while the first one lives, and welcome afterwards; a death is told where the
# system remembers it.

list(GET PROGRAM -1 file) # also the command that is run: without arguments it ends with 2
string(SHA1 name "${file}")
function(expect code text)
  execute_process(COMMAND ${PROGRAM} ${ARGN} RESULT_VARIABLE result ERROR_VARIABLE errors)
  if(NOT result EQUAL code OR NOT errors MATCHES "${text}")
    message(FATAL_ERROR "${ARGN}: code ${result} instead of ${code}, said:\n${errors}")
  endif()
endfunction()

expect(2 "" ${name} "${file}")
expect(75 "another copy is running" ${name} "${file}" ${name} "${file}")
expect(2 "" ${name} "${file}" ${name}2 "${file}")
expect(2 "" --die ${name} "${file}")
if(REMEMBERS)
  expect(2 "did not come to its end" ${name} "${file}")
endif()
expect(2 "^Usage[^\n]*\n$" ${name} "${file}")
