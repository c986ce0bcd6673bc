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

# The command that it is given is itself, which ends with 2 without arguments; Wine starts children itself.
set(command ${PROGRAM})
if(file MATCHES "[.]exe$")
  set(command "${file}")
endif()
expect(2 "" ${name} ${command})
expect(75 "another copy is running" ${name} ${command} ${name} ${command})
expect(2 "" ${name} ${command} ${name}2 ${command})
expect(2 "" --die ${name} ${command})
if(REMEMBERS)
  expect(2 "did not come to its end" ${name} ${command})
endif()
expect(2 "^Usage[^\n]*\n$" ${name} ${command})
