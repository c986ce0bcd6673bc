# The reference of the public headers: cmake --build BUILD --target reference writes BUILD/reference/html.
# A warning fails the target, with all of them told first.

if(NOT PROJECT_IS_TOP_LEVEL)
  return() # the target's name is the parent's to give
endif()
find_package(Doxygen 1.9 QUIET COMPONENTS dot)
if(NOT Doxygen_FOUND)
  return()
endif()
configure_file("${PROJECT_SOURCE_DIR}/docs/Doxyfile.in" "${PROJECT_BINARY_DIR}/Doxyfile" @ONLY)
file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/reference")
add_custom_target(reference
  COMMAND Doxygen::doxygen "${PROJECT_BINARY_DIR}/Doxyfile"
  WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
  COMMENT "Reference: ${PROJECT_BINARY_DIR}/reference/html/index.html"
  VERBATIM)
