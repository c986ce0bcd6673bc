# Two names, then a run that dies between the files, then a third name: the dead run has left nothing.

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")

function(run status)
  execute_process(COMMAND ${PROGRAM} ${ARGN} RESULT_VARIABLE result)
  if(NOT result EQUAL status)
    message(FATAL_ERROR "${ARGN}: ended with ${result} instead of ${status}")
  endif()
endfunction()

function(expect name content)
  file(READ "${WORK}/${name}" found)
  if(NOT found STREQUAL content)
    message(FATAL_ERROR "${name} holds\n${found}instead of\n${content}")
  endif()
endfunction()

run(0 "${WORK}" Alder Birch)
run(3 --die "${WORK}" Cedar)
expect(names.txt "Alder\nBirch\nCedar\n")
expect(names.idx "0\n6\n")
if(NOT EXISTS "${WORK}/names.rollback")
  message(FATAL_ERROR "the run that died left no journal")
endif()

run(0 "${WORK}" Elm)
expect(names.txt "Alder\nBirch\nElm\n")
expect(names.idx "0\n6\n12\n")
if(EXISTS "${WORK}/names.rollback")
  message(FATAL_ERROR "the journal is left")
endif()
