# The log tells who called the function before the crash, and after it what ended the process and where; the next
# start finds the crash file.

file(GLOB former "${LOG}*")
file(REMOVE "${LOG}" ${former})
execute_process(COMMAND ${PROGRAM} "${LOG}" RESULT_VARIABLE result OUTPUT_QUIET ERROR_QUIET)
execute_process(COMMAND ${PROGRAM} "${LOG}" OUTPUT_VARIABLE second ERROR_QUIET)
if(NOT second MATCHES "It crashed at [^\n]* with SIGABRT:\n")
  message(FATAL_ERROR "the second start does not know of the first one's crash: ${second}")
endif()
if(NOT result EQUAL 1)
  message(FATAL_ERROR "ended with ${result}; the crash handler ends a process with 1")
endif()
file(READ "${LOG}" log)
if(PROGRAM MATCHES "[.]exe$") # Wine leaves out the innermost frames
  set(frames "[^\n]*main[^\n]*\n")
else()
  set(frames "[^\n]*readLayerCount[^\n]*\n[^\n]*openProject[^\n]*\n[^\n]*main[^\n]*\n")
endif()
foreach(expected "2 Backtrace:\n(.*\n)?${frames}" "4 Program crashed with signal [0-9]+\n4 Backtrace:\n(.*\n)?${frames}")
  if(NOT log MATCHES "${expected}")
    message(FATAL_ERROR "no ${expected} in\n${log}")
  endif()
endforeach()
