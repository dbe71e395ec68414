/// The calls from a test to the test installer (TestInstaller.cpp), besides the installer's
/// own functions.
#ifndef TESTS_INSTALLER_TESTINSTALLER_H
#define TESTS_INSTALLER_TESTINSTALLER_H

/// Makes an operation fail, with error 1 "General installer error", from now on: "RemoveDSN",
/// "WriteDSN" or "Write <key>"; empty for none. At first VELTRANE_TEST_INSTALLER_FAILS names it.
extern "C" void TestInstallerFailAt(const wchar_t* in_operation);

#endif
