# Debian packages by CPack, one a component, and the files that each must bring. .ci/packages builds them.

if(NOT VELTOR_QT EQUAL 5)
  message(FATAL_ERROR "Debian packages are made of the library on Qt 5 alone; VELTOR_QT is ${VELTOR_QT}")
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "veltor-utils developers <veltor-utils@example.org>")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development tools documentation)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Dependencies on shared libraries are read from the binaries; our own is found in the build tree.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src")
# A program built with this version may need what it added: ">=", until a new major version.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(about "This library changes several files as one unit that survives a crash,
runs watched tasks in the background, measures on plane, sphere and
ellipsoid, writes numbers and JSON, and tells why a program crashed.")

set(package_runtime "libveltor-utils${PROJECT_VERSION_MAJOR}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/packaging/debian/triggers")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "general utility library for geographic applications
${about}")

set(package_development libveltor-utils-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${package_runtime} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}), qtbase5-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "general utility library for geographic applications (development)
${about}
.
This package holds the headers, and the descriptions for CMake and
pkg-config.")

set(package_tools veltor-utils-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${package_runtime} (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "command-line tool of the veltor-utils library
The command veltor settles rollback journals that a killed program left
behind, measures GeoJSON files, and compares distance formulas.")

set(package_documentation veltor-utils-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOCUMENTATION_DESCRIPTION "general utility library for geographic applications (documentation)
${about}
.
This package holds the reference, the guides and the examples.")

find_program(GZIP gzip REQUIRED)
function(veltor_gzip from to)
  execute_process(COMMAND "${GZIP}" -9nc "${from}" OUTPUT_FILE "${to}" COMMAND_ERROR_IS_FATAL ANY)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${from}")
endfunction()

set(debian_dir "${PROJECT_SOURCE_DIR}/packaging/debian")
set(made_dir "${PROJECT_BINARY_DIR}/debian")
file(MAKE_DIRECTORY "${made_dir}")
veltor_gzip("${debian_dir}/changelog" "${made_dir}/changelog.Debian.gz")
veltor_gzip("${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${made_dir}/changelog.gz")
veltor_gzip("${PROJECT_SOURCE_DIR}/packaging/veltor.1" "${made_dir}/veltor.1.gz")

file(STRINGS "${debian_dir}/changelog" newest LIMIT_COUNT 1)
if(NOT newest MATCHES "^veltor-utils \\(${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}\\) ")
  message(FATAL_ERROR "packaging/debian/changelog begins with '${newest}', include/veltor/Version.h says "
    "${PROJECT_VERSION}: add an entry for this version")
endif()

foreach(component ${CPACK_COMPONENTS_ALL})
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package_${component}})
  install(FILES "${debian_dir}/copyright" "${made_dir}/changelog.gz" "${made_dir}/changelog.Debian.gz"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${package_${component}}" COMPONENT ${component})
endforeach()
set(doc_dir "${CMAKE_INSTALL_DATADIR}/doc/${package_documentation}")
install(DIRECTORY "${PROJECT_BINARY_DIR}/docs/site/" DESTINATION "${doc_dir}/html" COMPONENT documentation) # target docs
install(DIRECTORY examples DESTINATION "${doc_dir}" COMPONENT documentation)
install(FILES "${made_dir}/veltor.1.gz" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tools)

set(CPACK_POST_BUILD_SCRIPTS "${debian_dir}/drop-ldconfig-scripts.cmake")

include(CPack)
