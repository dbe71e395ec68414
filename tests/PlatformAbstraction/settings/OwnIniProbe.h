/// Reads the INI file beside a module.
#ifndef TESTS_PLATFORMABSTRACTION_SETTINGS_OWNINIPROBE_H
#define TESTS_PLATFORMABSTRACTION_SETTINGS_OWNINIPROBE_H

/// The value of "from" in section "Driver" of "own.ini"; "none" without such a file.
extern "C" const char* ReadOwnIni();

#endif
