/// The settings of the controlling terminal (Linux), to give them back when an editor that was
/// killed left them changed.
#ifndef VELTRANEDIALOG_TERMINALSTATE_H
#define VELTRANEDIALOG_TERMINALSTATE_H

#include <termios.h>

#include "VeltraneDialog/FileDescriptor.h"

namespace Veltrane::ODBC {

class TerminalState {
public:
    /// Notes the settings; without a terminal there are none.
    TerminalState();

    /// Sets them again and clears the screen, if they have changed.
    void Restore() const;

private:
    FileDescriptor m_terminal;
    termios m_settings{};
};

}  // namespace Veltrane::ODBC

#endif
