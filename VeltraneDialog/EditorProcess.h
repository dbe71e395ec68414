/// Runs an editor program, ours or another one with the same protocol, and waits for its answer.
///
/// The program gets a socket as its standard input and nothing else from the host: no other
/// descriptor, no blocked or ignored signal, none of the host's settings for the loader and for Qt.
/// Works on any thread, and in a host that ignores SIGCHLD, reaps every child or has closed its
/// descriptors 0 to 2.
#ifndef VELTRANEDIALOG_EDITORPROCESS_H
#define VELTRANEDIALOG_EDITORPROCESS_H

#include <string>

#include "VeltraneDialog/EditorProtocol.h"

namespace Veltrane::ODBC {

/// The environment variable that names the driver that the editor can test.
inline constexpr char DRIVER_VARIABLE[] = "VELTRANE_DSN_DRIVER";

/// Shows the values, or asks the question, and waits for the user and the end of the program.
/// @param in_program  an absolute path
/// @param in_request  `SHOW` or `ASK`
/// @return `OK` or `YES`, `CANCEL`, or `UNAVAILABLE` (also if the program cannot be loaded)
/// @throws std::runtime_error when the program cannot be started, ends without an answer or sends a
///         wrong one. The text names the program and contains no value.
EditorMessage RunEditor(const std::string& in_program, const EditorMessage& in_request);

}  // namespace Veltrane::ODBC

#endif
