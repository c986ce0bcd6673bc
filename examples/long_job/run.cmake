# Of six lines two are stations; the rest is told with its lines and causes, equal errors once, in text and as a page.

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
file(WRITE "${WORK}/stations.csv" "Lena;127.4;72.4\n<Tiksi>;128.9;north\n;1;2\nPole;0;90\nNowhere;0;91\nVoid;0;91\n")
execute_process(COMMAND ${PROGRAM} "${WORK}/stations.csv" "${WORK}/page.html" RESULT_VARIABLE result OUTPUT_VARIABLE text)
file(READ "${WORK}/page.html" page)
string(REPLACE "\r" "" text "${text}")
foreach(part "2 stations\n" "- The station has no position \\(×2\\)\n  cause: .*91" "stations.csv:5, Nowhere\n.*stations.csv:6, Void"
    "Warnings: 1\n- Left out: no name\n.*stations.csv:3")
  if(NOT result EQUAL 1 OR NOT text MATCHES "${part}")
    message(FATAL_ERROR "Ended with ${result}, said '${text}' without '${part}'")
  endif()
endforeach()
if(NOT page MATCHES "&lt;Tiksi&gt;</bdi></li>" OR NOT page MATCHES "</html>\n$")
  message(FATAL_ERROR "The page is '${page}'")
endif()

execute_process(COMMAND ${PROGRAM} "${WORK}/none.csv" RESULT_VARIABLE result OUTPUT_VARIABLE text)
if(NOT result EQUAL 1 OR NOT text MATCHES "Ended the work: 1")
  message(FATAL_ERROR "Ended with ${result}, said '${text}'")
endif()
