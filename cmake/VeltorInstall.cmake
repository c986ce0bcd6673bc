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
set(pkgconfig_libs "")
set(pkgconfig_cflags "")
if(NOT BUILD_SHARED_LIBS) # whoever links a static library links what it is made of
  list(APPEND pkgconfig_requires proj)
  if(WIN32)
    set(pkgconfig_libs " -l${VELTOR_SYMBOL_LIBRARY}")
  else()
    list(APPEND pkgconfig_requires libdw)
    set(pkgconfig_libs " -lpthread -ldl")
  endif()
  set(pkgconfig_cflags " -DVELTOR_UTILS_STATIC_DEFINE")
endif()
list(JOIN pkgconfig_requires ", " pkgconfig_requires)
configure_file(packaging/veltor-utils.pc.in "${PROJECT_BINARY_DIR}/${VELTOR_PACKAGE}.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/${VELTOR_PACKAGE}.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)

# veltor_install_naming_tool(FILE PATTERN DESTINATION NAME): a file for the tool's users, in which it is called VELTOR_TOOL
# wherever the pattern, which ends at its name, is found.
function(veltor_install_naming_tool file pattern destination name)
  set(source "${PROJECT_SOURCE_DIR}/packaging/${file}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${source}")
  file(READ "${source}" text)
  string(REGEX REPLACE "(${pattern})veltor([ \n])" "\\1${VELTOR_TOOL}\\2" text "${text}")
  file(WRITE "${PROJECT_BINARY_DIR}/packaging/${name}" "${text}")
  install(FILES "${PROJECT_BINARY_DIR}/packaging/${name}" DESTINATION "${destination}" COMPONENT tools)
endfunction()

if(VELTOR_TOOLS)
  veltor_install_naming_tool(veltor.bash "complete -F _veltor "
    "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" ${VELTOR_TOOL})
  veltor_install_naming_tool(_veltor "compdef [_a-z ]*"
    "${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions" _${VELTOR_TOOL})
  veltor_install_naming_tool(veltor.fish "complete -c "
    "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d" ${VELTOR_TOOL}.fish)
endif()

if(VELTOR_DEBIAN)
  include(VeltorDebian)
else()
  string(REGEX REPLACE "/${PROJECT_NAME}$" "/${VELTOR_PACKAGE}" doc_dir "${CMAKE_INSTALL_DOCDIR}")
  install(FILES LICENSE DESTINATION "${doc_dir}" COMPONENT runtime)
  if(VELTOR_TOOLS)
    veltor_install_naming_tool(veltor.1 "" "${CMAKE_INSTALL_MANDIR}/man1" ${VELTOR_TOOL}.1)
  endif()
endif()
