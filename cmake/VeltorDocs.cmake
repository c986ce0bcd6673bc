# The documentation, guides and reference as one site: cmake --build BUILD --target docs writes
# BUILD/docs/site/index.html. A warning fails the target, with all of them told first.
# -DVELTOR_DOCS=ON makes it a part of every build, and of what is installed (component documentation).

if(NOT PROJECT_IS_TOP_LEVEL)
  return() # the target's name is the parent's to give
endif()
find_package(Doxygen 1.9.4 QUIET)
find_program(VELTOR_DOCS_PYTHON python3)
find_program(VELTOR_DOCS_DOT dot)
mark_as_advanced(VELTOR_DOCS_PYTHON VELTOR_DOCS_DOT)
if(NOT Doxygen_FOUND OR NOT VELTOR_DOCS_PYTHON OR NOT VELTOR_DOCS_DOT)
  set(missing "the documentation needs Doxygen 1.9.4 or later, Graphviz and Python 3: tools/setup.sh ci")
  if(VELTOR_DOCS)
    message(FATAL_ERROR "VELTOR_DOCS is ON, but ${missing}")
  endif()
  add_custom_target(docs COMMAND "${CMAKE_COMMAND}" -E echo "${missing}" COMMAND "${CMAKE_COMMAND}" -E false VERBATIM)
  return()
endif()

# Each source of an example is a page of the site.
file(GLOB examples CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}/examples" "${PROJECT_SOURCE_DIR}/examples/*/*.cpp")
list(TRANSFORM examples PREPEND "/// @example ")
list(JOIN examples "\n\n" examples)
file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/docs/examples.dox" CONTENT "${examples}\n" @ONLY)
configure_file("${PROJECT_SOURCE_DIR}/docs/site/Doxyfile.in" "${PROJECT_BINARY_DIR}/docs/Doxyfile" @ONLY)

set(all "")
if(VELTOR_DOCS)
  set(all ALL)
endif()
add_custom_target(docs ${all}
  COMMAND "${CMAKE_COMMAND}" -E rm -rf "${PROJECT_BINARY_DIR}/docs/site"
  COMMAND Doxygen::doxygen "${PROJECT_BINARY_DIR}/docs/Doxyfile"
  COMMAND "${VELTOR_DOCS_PYTHON}" docs/site/search_words.py "${PROJECT_BINARY_DIR}/docs/site"
  COMMAND "${VELTOR_DOCS_PYTHON}" docs/site/labels.py "${PROJECT_BINARY_DIR}/docs/site"
  WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
  COMMENT "Documentation: ${PROJECT_BINARY_DIR}/docs/site/index.html"
  VERBATIM)
