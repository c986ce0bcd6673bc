# Names and dates come out in the partner's way; what may be two dates, and what is none, is told.

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
file(WRITE "${WORK}/names" "Щукин Юрий;3.4.1979\nЕЛЬЦОВА Анна;13/4/79\nЁжиков Олег;13/4/1979\nАя;3/4/1979\nЦой;3 апреля 1979 г.\n")
execute_process(COMMAND ${PROGRAM} "${WORK}/names" RESULT_VARIABLE result OUTPUT_VARIABLE text)
string(REPLACE "\r" "" text "${text}")
foreach(line "Shchukin Iurii;Ŝukin Ûrij;1979-04-03" "ELTSOVA Anna: '13/4/79'" "Ezhikov Oleg;Ëžikov Oleg;1979-04-13"
    "Aia: '3/4/1979' [^\n]* 3 апреля [^\n]* 4 марта " "Tsoi;Coj;1979-04-03")
  if(NOT result EQUAL 1 OR NOT text MATCHES "(^|\n)${line}" OR text MATCHES "cannot be")
    message(FATAL_ERROR "Ended with ${result}, said '${text}' without '${line}'")
  endif()
endforeach()
