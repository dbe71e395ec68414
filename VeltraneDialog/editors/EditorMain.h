/// The frame of every editor program: its arguments, the conversation with the host, the answer.
#ifndef VELTRANEDIALOG_EDITORS_EDITORMAIN_H
#define VELTRANEDIALOG_EDITORS_EDITORMAIN_H

#include <stdexcept>

#include "VeltraneDialog/editors/HostConnection.h"

namespace Veltrane::ODBC {

/// Nothing can be shown here; the text says why, without a full stop. The host may try another
/// editor.
class EditorUnavailable : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Shows the form until the user is done or the host has gone.
/// @param io_values  never null; changed only for OK
/// @return true for OK
/// @throws EditorUnavailable
using ShowForm = bool (*)(DialogValues& io_values, HostConnection& io_host);

/// @return the status of the program: 0 when it has answered
int EditorMain(int in_argumentCount, char** in_arguments, ShowForm in_showForm);

}  // namespace Veltrane::ODBC

#endif
