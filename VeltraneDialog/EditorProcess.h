/// Runs an editor program of ours, or one that speaks its protocol, and waits for its answer.
///
/// The program gets a socket as its standard input and nothing else of the host: no other
/// descriptor, no blocked or ignored signal, none of the host's settings for the loader and for Qt.
/// It works from any thread, in a host that ignores SIGCHLD, reaps children of others or has closed
/// its descriptors 0 to 2.
#ifndef VELTRANEDIALOG_EDITORPROCESS_H
#define VELTRANEDIALOG_EDITORPROCESS_H

#include <string>

#include "VeltraneDialog/EditorProtocol.h"

namespace Veltrane::ODBC {

/// The variable of the editor's environment that names the driver whose test it may offer.
inline constexpr char DRIVER_VARIABLE[] = "VELTRANE_DSN_DRIVER";

/// Shows the values, or asks the question, in the program and waits until the user is done; the
/// program has ended then.
/// @param in_program  an absolute path
/// @param in_request  `SHOW` or `ASK`
/// @return `OK` or `YES`, `CANCEL`, or `UNAVAILABLE`; the last also for a program that could not be
///         loaded
/// @throws std::runtime_error with the program and what happened: it cannot be started, ended
///         without an answer, or answered something else. The text holds no value.
EditorMessage RunEditor(const std::string& in_program, const EditorMessage& in_request);

}  // namespace Veltrane::ODBC

#endif
