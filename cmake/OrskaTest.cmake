include(GoogleTest)

# GoogleTest's headers take half of a test's compile time. Compiler caches refuse precompiled
# headers, so there are none with a cache. The builds for Windows have none either, to show whether
# each test includes what it needs.
set(precompile_default ON)
if(WIN32 OR CMAKE_CXX_COMPILER_LAUNCHER)
  set(precompile_default OFF)
endif()
option(ORSKA_PRECOMPILE_TEST_HEADERS "Precompile the headers that all tests use"
       ${precompile_default})

# Optimising a test takes longer than running it; the code under test keeps its own flags. With a
# sanitizer, code that is not optimised is slow. On Windows the optimiser's warnings check the
# tests too.
function(orska_optimise_little target)
  set(is_optimised $<OR:$<BOOL:${WIN32}>,$<BOOL:${ORSKA_SANITIZED}>>)
  target_compile_options(${target} PRIVATE $<IF:${is_optimised},-O1,-O0>)
endfunction()

# Sets the options of every test. They are the same for all, so that tests can share a
# precompiled header.
function(orska_test_options target)
  orska_optimise_little(${target})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # gcc 12 warns of a mismatch in tests that replace both operators, to count or to clear.
    target_compile_options(${target} PRIVATE -Wno-mismatched-new-delete)
  endif()
  target_link_libraries(${target} PRIVATE orska_test_support GTest::gmock GTest::gtest_main)
endfunction()

if(ORSKA_PRECOMPILE_TEST_HEADERS)
  file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/precompiled.cpp CONTENT "")
  add_executable(orska_test_headers EXCLUDE_FROM_ALL ${CMAKE_CURRENT_BINARY_DIR}/precompiled.cpp)
  orska_test_options(orska_test_headers)
  target_include_directories(orska_test_headers PRIVATE ${PROJECT_SOURCE_DIR})
  target_precompile_headers(orska_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
endif()

# orska_test(name SOURCES ... [LIBRARIES ...] [LABELS ...] [TIMEOUT seconds] [ENVIRONMENT name=value]
#            [APART] [DESKTOP] [EACH_UNIXODBC] [OWN_OPERATORS])
# Adds a test program. Each of its tests runs in its own process, so that process-wide state starts
# fresh; in Wine, where processes start slowly, only with APART. The default library is
# orska_support. With DESKTOP it opens windows on Wine's desktop. These programs would take the focus
# from each other, so they run one at a time.
#
# With EACH_UNIXODBC the tests run once more with each unixODBC in ORSKA_UNIXODBC_PREFIXES. The time
# limit finds a driver manager that waits for ever.
#
# OWN_OPERATORS: the program replaces the operators new and delete. ThreadSanitizer's run-time
# defines them too, before the program's, so its build leaves out such a test, which has one thread.
set(ORSKA_UNIXODBC_PREFIXES "" CACHE STRING "Where further versions of unixODBC are installed")
function(orska_test name)
  cmake_parse_arguments(ARG "APART;DESKTOP;EACH_UNIXODBC;OWN_OPERATORS" "TIMEOUT;ENVIRONMENT"
                        "SOURCES;LIBRARIES;LABELS" ${ARGN})
  if(ARG_OWN_OPERATORS AND CMAKE_CXX_FLAGS MATCHES "sanitize=thread")
    return()
  endif()
  if(NOT ARG_LIBRARIES)
    set(ARG_LIBRARIES orska_support)
  endif()
  set(properties PROPERTIES)
  foreach(property LABELS TIMEOUT ENVIRONMENT)
    if(ARG_${property})
      list(APPEND properties ${property} "${ARG_${property}}")
    endif()
  endforeach()
  if(ARG_DESKTOP)
    list(APPEND properties RESOURCE_LOCK desktop)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  orska_test_options(${name})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES})
  if(ORSKA_PRECOMPILE_TEST_HEADERS)
    target_precompile_headers(${name} REUSE_FROM orska_test_headers)
  endif()
  if(NOT WIN32)
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 ${properties})
  elseif(ARG_APART)
    add_test(NAME ${name} COMMAND ${PROJECT_SOURCE_DIR}/cmake/run-tests-apart
             ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:${name}>)
  else()
    add_test(NAME ${name} COMMAND ${name})
  endif()
  if(WIN32)
    set_tests_properties(${name} ${properties} FIXTURES_REQUIRED wine)
  endif()
  if(ARG_EACH_UNIXODBC)
    foreach(prefix ${ORSKA_UNIXODBC_PREFIXES})
      cmake_path(GET prefix FILENAME version)
      gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 TEST_PREFIX ${version}.
        PROPERTIES LABELS unixodbc TIMEOUT 120 ENVIRONMENT LD_LIBRARY_PATH=${prefix}/lib)
    endforeach()
  endif()
endfunction()

# orska_command_test(name COMMAND program [argument...] [PROPERTY value...]...)
# Adds a test that runs a script, or a program with arguments. The list below has its properties.
function(orska_command_test name)
  set(properties ENVIRONMENT FIXTURES_CLEANUP FIXTURES_REQUIRED FIXTURES_SETUP LABELS
    FAIL_REGULAR_EXPRESSION PASS_REGULAR_EXPRESSION RESOURCE_LOCK SKIP_REGULAR_EXPRESSION
    SKIP_RETURN_CODE TIMEOUT WILL_FAIL)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "COMMAND;${properties}")
  add_test(NAME ${name} COMMAND ${ARG_COMMAND})
  foreach(property ${properties})
    if(DEFINED ARG_${property})
      set_property(TEST ${name} PROPERTY ${property} "${ARG_${property}}")
    endif()
  endforeach()
endfunction()
