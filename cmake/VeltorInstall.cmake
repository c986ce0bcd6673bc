# cmake --install: headers, library, tool, package config.

include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/veltor-utils")

install(DIRECTORY include/veltor "${PROJECT_BINARY_DIR}/include/veltor"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development FILES_MATCHING PATTERN "*.h")
install(TARGETS veltor-utils EXPORT veltor-utils-targets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)
install(EXPORT veltor-utils-targets NAMESPACE veltor::
  DESTINATION "${package_dir}" COMPONENT development)
configure_package_config_file(cmake/veltor-utils-config.cmake.in
  "${PROJECT_BINARY_DIR}/veltor-utils-config.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/veltor-utils-config-version.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/veltor-utils-config.cmake"
  "${PROJECT_BINARY_DIR}/veltor-utils-config-version.cmake"
  DESTINATION "${package_dir}" COMPONENT development)
install(FILES LICENSE DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT runtime)
