# The built library through the test installer, and through the system's (Wine's).
installer_test(end_to_end_test DESKTOP LABELS end_to_end LIBRARIES orska_support password_copies
  SOURCES SetupLibrary_Windows_test.cpp ../support/InstallerStage_Windows.cpp)
orska_test(system_installer_test LABELS end_to_end LIBRARIES orska_support odbccp32
  SOURCES SystemInstaller_Windows_test.cpp ENVIRONMENT WINEDLLOVERRIDES=odbccp32=b)
set_tests_properties(system_installer_test PROPERTIES RESOURCE_LOCK odbc_keys)
foreach(test end_to_end_test system_installer_test)
  target_compile_definitions(${test} PRIVATE
    SETUP_LIBRARY=L"Z:$<TARGET_FILE:VeltraneSetup>" SETUP_VERSION=L"${PROJECT_VERSION}")
  add_dependencies(${test} VeltraneSetup VeltraneDialog)
endforeach()
orska_command_test(end_to_end_test_20000_loads
  COMMAND end_to_end_test --gtest_also_run_disabled_tests
          --gtest_filter=SetupLibraryLoads.DISABLED_OfTwentyThousandRequestsLeaveNothing
  LABELS end_to_end long TIMEOUT 1800 ENVIRONMENT WINEDLLOVERRIDES=odbccp32=n)

# expect_exports(target "[needed.dll...]" [name...])
function(expect_exports target needed)
  add_test(NAME exports_of_${target}
    COMMAND ${CMAKE_CURRENT_LIST_DIR}/check-exports-windows ${CMAKE_OBJDUMP}
            $<TARGET_FILE:${target}> "${needed}" ${ARGN})
endfunction()
expect_exports(VeltraneSetup "" ConfigDSN ConfigDSNW)
expect_exports(VeltraneDialog gdi32.dll VeltraneShowDSNDialog)
expect_exports(veltrane-dsn "odbccp32.dll version.dll")
