/// What a module finds in the INI file beside it.
#ifndef TESTS_PLATFORMABSTRACTION_SETTINGS_OWNINIPROBE_H
#define TESTS_PLATFORMABSTRACTION_SETTINGS_OWNINIPROBE_H

/// The value of "from" in section "Driver" of "own.ini"; "none" without such a file.
extern "C" const char* ReadOwnIni();

#endif
