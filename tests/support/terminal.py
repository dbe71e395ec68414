"""Runs programs on a new terminal."""
import os
import pty
import select
import signal
import termios
import time


def run_on_terminal(command, environment, reply, folder=".", seconds=60):
    """Returns the exit code and the text on the terminal.

    `reply` is called repeatedly with the text so far and the terminal; it returns what to type."""
    process, terminal = pty.fork()
    if process == 0:
        os.chdir(folder)
        os.execvpe(command[0], command, environment)
    termios.tcsetwinsize(terminal, (24, 80))
    shown, end = b"", time.monotonic() + seconds
    try:
        while time.monotonic() < end:
            if select.select([terminal], [], [], 0.05)[0]:
                shown += os.read(terminal, 4096)
            os.write(terminal, reply(shown, terminal))
        os.kill(process, signal.SIGKILL)
    except OSError:  # Linux reports a closed other end this way
        pass
    os.close(terminal)
    code = os.waitstatus_to_exitcode(os.waitpid(process, 0)[1])
    return code, shown.decode("utf-8", "replace").replace("\r\n", "\n")
