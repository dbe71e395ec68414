# The built library through the test installer, and through the system's (Wine's).
set(setup_library "SETUP_LIBRARY=L\"Z:$<TARGET_FILE:VeltraneSetup>\"")

installer_test(NAME end_to_end_test DESKTOP
  SOURCES SetupLibrary_Windows_test.cpp ../support/InstallerStage_Windows.cpp
  LIBRARIES orska_support
  LABELS end_to_end)
orska_test(NAME system_installer_test
  SOURCES SystemInstaller_Windows_test.cpp
  LIBRARIES orska_support odbccp32
  LABELS end_to_end
  ENVIRONMENT WINEDLLOVERRIDES=odbccp32=b)
set_tests_properties(system_installer_test PROPERTIES RESOURCE_LOCK odbc_keys)
foreach(test end_to_end_test system_installer_test)
  target_compile_definitions(${test} PRIVATE
    ${setup_library} "SETUP_VERSION=L\"${PROJECT_VERSION}\"")
  add_dependencies(${test} VeltraneSetup VeltraneDialog)
endforeach()
add_test(NAME end_to_end_test_20000_loads
  COMMAND end_to_end_test --gtest_also_run_disabled_tests
          --gtest_filter=SetupLibraryLoads.DISABLED_OfTwentyThousandRequestsLeaveNothing)
set_tests_properties(end_to_end_test_20000_loads PROPERTIES
  LABELS "end_to_end;long" TIMEOUT 1800 ENVIRONMENT WINEDLLOVERRIDES=odbccp32=n)

# expect_exports(target "[needed.dll...]" [name...])
function(expect_exports in_target in_needed)
  add_test(NAME exports_of_${in_target}
    COMMAND ${CMAKE_CURRENT_LIST_DIR}/check-exports-windows ${CMAKE_OBJDUMP}
            $<TARGET_FILE:${in_target}> "${in_needed}" ${ARGN})
endfunction()
expect_exports(VeltraneSetup "" ConfigDSN ConfigDSNW)
expect_exports(VeltraneDialog gdi32.dll VeltraneShowDSNDialog)
expect_exports(veltrane-dsn "odbccp32.dll version.dll")
