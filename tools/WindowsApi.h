/// The Windows API. Included in place of <windows.h>, by _Windows.cpp files alone, so that none of
/// its macros renames a method of ours.
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
