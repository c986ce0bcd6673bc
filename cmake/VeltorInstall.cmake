# cmake --install: headers, library, tool, package descriptions for CMake and pkg-config. Three components:
# runtime (the library), development, tools. VELTOR_DEBIAN lays them out as Debian does.

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

# The paths are relative to the file itself, so that an installed tree can be moved.
file(RELATIVE_PATH prefix_from_pkgconfig
  "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" prefix_from_pkgconfig "${prefix_from_pkgconfig}")
configure_file(packaging/veltor-utils.pc.in "${PROJECT_BINARY_DIR}/veltor-utils.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/veltor-utils.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)

if(VELTOR_TOOLS)
  install(FILES packaging/veltor.bash RENAME veltor
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT tools)
  install(FILES packaging/_veltor
    DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions" COMPONENT tools)
  install(FILES packaging/veltor.fish
    DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d" COMPONENT tools)
endif()

if(VELTOR_DEBIAN)
  include(VeltorDebian)
else()
  install(FILES LICENSE DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT runtime)
  if(VELTOR_TOOLS)
    install(FILES packaging/veltor.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tools)
  endif()
endif()
