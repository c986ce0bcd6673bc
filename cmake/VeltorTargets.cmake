# Helpers by which the rooms declare what they hold.

# veltor_sources(FILES...): adds sources of the calling room to the library.
function(veltor_sources)
  list(TRANSFORM ARGN PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/" OUTPUT_VARIABLE sources)
  target_sources(veltor-utils-objects PRIVATE ${sources})
endfunction()

# veltor_moc_headers(FILES...): headers of the contract that hold Q_OBJECT and need moc.
function(veltor_moc_headers)
  list(TRANSFORM ARGN PREPEND "${PROJECT_SOURCE_DIR}/include/veltor/" OUTPUT_VARIABLE headers)
  target_sources(veltor-utils-objects PRIVATE ${headers})
endfunction()

# veltor_precompile(TARGET HEADERS...): where VELTOR_PCH asks for it. Not under a compiler cache, which keeps nothing of
# what is compiled so. A source that lacks an include goes unseen; the preset dev sees it.
function(veltor_precompile target)
  if(NOT VELTOR_PCH OR CMAKE_CXX_COMPILER_LAUNCHER MATCHES "cache")
    return()
  endif()
  if(ARGV1 STREQUAL "REUSE_FROM")
    target_precompile_headers(${target} ${ARGN})
  else()
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()

# veltor_relax_for_qt6(TARGET): tests and examples may count by int what Qt 6 counts by qsizetype, and ask
# for a meta-type by the old name of the function.
function(veltor_relax_for_qt6 target)
  if(VELTOR_QT GREATER 5)
    set_target_properties(${target} PROPERTIES VELTOR_RELAXED ON)
  endif()
endfunction()

# veltor_add_test(NAME SOURCES... [INTERNAL] [MOC] [IN_MEMORY] [LIBRARIES libs...] [LABELS labels...] [TIMEOUT s])
# One GoogleTest program, one CTest test. INTERNAL links the object library, so that hidden
# internals are reached; without it the test runs against the shared library as a caller would. MOC: it has a Q_OBJECT.
# IN_MEMORY: its thousands of small files lie there, five to eight times as fast; the disk's file system is for the others.
function(veltor_add_test name)
  cmake_parse_arguments(arg "INTERNAL;MOC;IN_MEMORY" "TIMEOUT" "SOURCES;LIBRARIES;LABELS" ${ARGN})
  add_executable(${name} ${arg_SOURCES} ${arg_UNPARSED_ARGUMENTS})
  set_target_properties(${name} PROPERTIES AUTOMOC ${arg_MOC})
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
  target_link_libraries(${name} PRIVATE veltor_options ${arg_LIBRARIES}
    GTest::gmock GTest::gtest Qt${VELTOR_QT}::Test Threads::Threads)
  veltor_relax_for_qt6(${name})
  if(arg_INTERNAL)
    target_link_libraries(${name} PRIVATE veltor-utils-internals)
  else()
    target_link_libraries(${name} PRIVATE veltor::utils)
  endif()
  target_link_libraries(${name} PRIVATE veltor-test-main)
  veltor_precompile(${name} REUSE_FROM veltor-test-main)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8")
  if(arg_IN_MEMORY AND NOT CMAKE_CROSSCOMPILING AND IS_DIRECTORY /dev/shm)
    set_property(TEST ${name} APPEND PROPERTY ENVIRONMENT "TMPDIR=/dev/shm")
  endif()
  if(arg_LABELS)
    set_tests_properties(${name} PROPERTIES LABELS "${arg_LABELS}")
  endif()
  if(arg_TIMEOUT)
    set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT})
  endif()
endfunction()
