/// What a test tells the test installer (TestInstaller.cpp), beside the installer's own functions.
#ifndef TESTS_INSTALLER_TESTINSTALLER_H
#define TESTS_INSTALLER_TESTINSTALLER_H

/// Makes an operation fail, with error 1 "General installer error", from now on:
/// "SQLRemoveDSNFromIni", "SQLWriteDSNToIni" or "SQLWritePrivateProfileString <key>". Null ends it.
extern "C" void TestInstallerFailAt(const wchar_t* in_operation);

#endif
