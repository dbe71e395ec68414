#include <fcntl.h>
#include <unistd.h>

#include <string_view>

#include "VeltraneDialog/TerminalState.h"

namespace Veltrane::ODBC {

TerminalState::TerminalState() : m_terminal(open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    if (m_terminal.Get() >= 0 && tcgetattr(m_terminal.Get(), &m_settings) != 0) {
        m_terminal.Close();
    }
}

void TerminalState::Restore() const {
    termios now{};
    if (m_terminal.Get() < 0 || tcgetattr(m_terminal.Get(), &now) != 0 ||
        now.c_lflag == m_settings.c_lflag) {
        return;
    }
    tcsetattr(m_terminal.Get(), TCSANOW, &m_settings);
    // Plain colours, a visible cursor, keys as usual, an empty screen.
    constexpr std::string_view RESET("\x1b[0m\x1b[?25h\x1b[?1l\x1b>\x1b[H\x1b[2J");
    [[maybe_unused]] const ssize_t count = write(m_terminal.Get(), RESET.data(), RESET.size());
}

}  // namespace Veltrane::ODBC
