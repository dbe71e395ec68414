/// The Windows API. Only _Windows.cpp files include it, instead of <windows.h>, so that no macro of
/// it renames our methods.
#ifndef TOOLS_WINDOWSAPI_H
#define TOOLS_WINDOWSAPI_H

#include <windows.h>

#undef CreateFile
#undef GetMessage
#undef GetObject
#undef GetPrivateProfileString
#undef RegisterClass
#undef WritePrivateProfileString
#undef Yield

#endif
