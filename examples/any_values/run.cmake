# Each value reaches the handler for its type, its base or any other; the plug-in's goes with it.

execute_process(COMMAND ${PROGRAM} RESULT_VARIABLE result OUTPUT_VARIABLE text)
string(REPLACE "\r" "" text "${text}")
if(NOT result EQUAL 0 OR NOT text STREQUAL "number 42\ndate 2024, the 1. so far\ngeometry of 5 points\nsomething of type double\nsomething of type none\nsomething of type QDate\n")
  message(FATAL_ERROR "Ended with ${result}, said '${text}'")
endif()
