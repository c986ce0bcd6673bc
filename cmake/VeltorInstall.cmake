# cmake --install: headers, library, tool, package descriptions for CMake and pkg-config. Three components:
# runtime (the library), development, tools. VELTOR_DEBIAN lays them out as Debian does.

include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/${VELTOR_PACKAGE}")

install(DIRECTORY include/veltor "${PROJECT_BINARY_DIR}/include/veltor"
  DESTINATION "${VELTOR_INCLUDEDIR}" COMPONENT development FILES_MATCHING PATTERN "*.h")
install(TARGETS veltor-utils EXPORT ${VELTOR_PACKAGE}-targets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)
install(EXPORT ${VELTOR_PACKAGE}-targets NAMESPACE veltor::
  DESTINATION "${package_dir}" COMPONENT development)
configure_package_config_file(cmake/config.cmake.in
  "${PROJECT_BINARY_DIR}/${VELTOR_PACKAGE}-config.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/${VELTOR_PACKAGE}-config-version.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/${VELTOR_PACKAGE}-config.cmake"
  "${PROJECT_BINARY_DIR}/${VELTOR_PACKAGE}-config-version.cmake"
  DESTINATION "${package_dir}" COMPONENT development)

# Relative to the file itself, so that an installed tree can be moved; a package of the system stays where it is.
if(VELTOR_DEBIAN)
  set(pkgconfig_prefix "${CMAKE_INSTALL_PREFIX}")
else()
  file(RELATIVE_PATH pkgconfig_prefix "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
  string(REGEX REPLACE "/$" "" pkgconfig_prefix "\${pcfiledir}/${pkgconfig_prefix}")
endif()
list(TRANSFORM VELTOR_QT_MODULES REPLACE "(.+)" "Qt${VELTOR_QT}\\1 >= ${VELTOR_QT_VERSION}" OUTPUT_VARIABLE pkgconfig_requires)
set(pkgconfig_private "")
set(pkgconfig_cflags "")
if(NOT BUILD_SHARED_LIBS) # whoever links a static library links what it is made of
  list(APPEND pkgconfig_requires proj)
  if(NOT WIN32)
    list(APPEND pkgconfig_requires libdw)
  endif()
  set(pkgconfig_private "-lpthread -ldl")
  set(pkgconfig_cflags " -DVELTOR_UTILS_STATIC_DEFINE")
endif()
list(JOIN pkgconfig_requires ", " pkgconfig_requires)
configure_file(packaging/veltor-utils.pc.in "${PROJECT_BINARY_DIR}/${VELTOR_PACKAGE}.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/${VELTOR_PACKAGE}.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)

if(VELTOR_TOOLS AND VELTOR_QT EQUAL 5)
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
  if(VELTOR_TOOLS AND VELTOR_QT EQUAL 5)
    install(FILES packaging/veltor.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tools)
  endif()
endif()
