# Windows finds a program's libraries beside it: all programs and libraries of the build go to one folder,
# and where the build happens on another system (which has no PATH of theirs) the libraries from outside
# join them, so that the folder can be carried to a Windows machine as it is.

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")

function(veltor_gather_libraries)
  set(libraries "")
  foreach(target ${ARGN})
    if(TARGET ${target})
      get_target_property(library ${target} IMPORTED_LOCATION_RELEASE)
      list(APPEND libraries "${library}")
    endif()
  endforeach()
  foreach(name libgcc_s_dw2-1.dll libstdc++-6.dll libwinpthread-1.dll)
    execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${name}
      OUTPUT_VARIABLE library OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    list(APPEND libraries "${library}")
  endforeach()
  file(COPY ${libraries} DESTINATION "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
endfunction()

if(CMAKE_CROSSCOMPILING AND MINGW)
  veltor_gather_libraries(Qt${VELTOR_QT}::Core Qt${VELTOR_QT}::Test)
endif()
