# The catalogues of the library's messages: compiled here, embedded in the library, installed besides.

# Catalogues are data: when cross-compiling, the building machine's lrelease is as good.
get_target_property(qmake Qt${VELTOR_QT}::qmake IMPORTED_LOCATION)
cmake_path(GET qmake PARENT_PATH qt_tools)
find_program(VELTOR_LRELEASE NAMES lrelease-qt${VELTOR_QT} lrelease HINTS "${qt_tools}" /usr/lib/qt6/bin DOC "Qt's compiler of message catalogues")
if(NOT VELTOR_LRELEASE)
  message(FATAL_ERROR "Qt's lrelease is needed to compile translations/ (Debian: qttools5-dev-tools); "
    "-DVELTOR_LRELEASE=... names one")
endif()

# veltor_translations(TARGET LANGUAGES...): compiles translations/veltor-utils_LANGUAGE.ts and embeds the
# results in TARGET, a target of the calling directory, as :/veltor-utils/translations/*.qm.
function(veltor_translations target)
  set(directory "${CMAKE_CURRENT_BINARY_DIR}/translations")
  set(entries "")
  foreach(language IN LISTS ARGN)
    set(source "${PROJECT_SOURCE_DIR}/translations/veltor-utils_${language}.ts")
    set(name "veltor-utils_${language}.qm")
    add_custom_command(OUTPUT "${directory}/${name}"
      COMMAND "${VELTOR_LRELEASE}" -silent -nounfinished "${source}" -qm "${directory}/${name}"
      DEPENDS "${source}" VERBATIM)
    list(APPEND catalogues "${directory}/${name}")
    string(APPEND entries "    <file>${name}</file>\n")
  endforeach()
  file(CONFIGURE OUTPUT "${directory}/veltor_translations.qrc" @ONLY CONTENT
    "<RCC>\n  <qresource prefix=\"/veltor-utils/translations\">\n@entries@  </qresource>\n</RCC>\n")
  cmake_language(CALL qt${VELTOR_QT}_add_resources resource "${directory}/veltor_translations.qrc")
  target_sources(${target} PRIVATE ${resource})
  # For applications that collect the catalogues of all they use.
  if(VELTOR_INSTALL)
    install(FILES ${catalogues}
      DESTINATION "${CMAKE_INSTALL_DATADIR}/${VELTOR_PACKAGE}/translations" COMPONENT development)
  endif()
endfunction()
