# The ellipsoid's line is the one that GeographicLib's documentation measures, New York to London; the
# sphere's area is an eighth of its surface, pi * 6370997^2 / 2; the plane's triangle has sides 3, 4, 5.

function(expect pattern)
  execute_process(COMMAND ${PROGRAM} ${ARGN} OUTPUT_VARIABLE output RESULT_VARIABLE result)
  if(NOT result EQUAL 0 OR NOT output MATCHES "${pattern}")
    message(FATAL_ERROR "${ARGN}: ended with ${result}, no ${pattern} in\n${output}")
  endif()
endfunction()

expect("length 5551759\\.4 m\ncourse 51\\.198883 degrees" ellipsoid -73.8 40.6 -0.5 51.6)
expect("length 5551759\\.4 m" default -73.8 40.6 -0.5 51.6)
expect("area 6375799894347[0-9] m2" sphere 0 0 90 0 0 90)
expect("length 8 m\narea 6 m2" plane 0 0 0 3 4 0)

execute_process(COMMAND ${PROGRAM} elipsoid 0 0 1 1 RESULT_VARIABLE result ERROR_QUIET)
if(NOT result EQUAL 2)
  message(FATAL_ERROR "a misspelt mode was taken")
endif()
