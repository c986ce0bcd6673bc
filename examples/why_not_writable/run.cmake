# A line is written; then a folder, a folder that is not there, and a file on the way are told.

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")

function(run status output file)
  execute_process(COMMAND ${PROGRAM} "${file}" line RESULT_VARIABLE result OUTPUT_VARIABLE found)
  if(NOT result EQUAL status OR NOT found MATCHES "${output}")
    message(FATAL_ERROR "${file}: ended with ${result}, said '${found}' instead of '${output}'")
  endif()
endfunction()

run(0 "^$" "${WORK}/file")
run(1 "it is a folder" "${WORK}")
run(1 "there is no folder '[^']*/none'" "${WORK}/none/file")
run(1 "is not a folder" "${WORK}/file/below")
