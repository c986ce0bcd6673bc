# Digests a real file and then one that is not there: the first line must be right, the second an error.

execute_process(COMMAND "${PROGRAM}" "${SCRIPT}" "${DATA}" "${DATA}.missing"
  RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE errors)
file(SHA256 "${DATA}" digest)
if(NOT code EQUAL 1 OR NOT output MATCHES "\nQObject\n2 classes: no class of this number\n"
   OR NOT output MATCHES "\n${digest}  ")
  message(FATAL_ERROR "code ${code}, output:\n${output}${errors}")
endif()
if(NOT errors MATCHES "^Traceback .*digest.py.*veltor.common.RuntimeException: .*missing: ")
  message(FATAL_ERROR "no traceback of the application's exception:\n${errors}")
endif()
