"""Shared by the tests of the editors: a scratch folder with the files of an ODBC installer that
knows the built library, the client program that calls it, and a look at its editor process."""
import configparser
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

TIMEOUT = float(os.environ.get("EDITOR_TEST_TIMEOUT", "60"))
SKIPPED = 77


def wait_for(condition, what):
    """Polls until the condition returns something true, and returns that.

    `what` is a text, or a function that describes the condition after a timeout."""
    end = time.monotonic() + TIMEOUT
    while time.monotonic() < end:
        value = condition()
        if value:
            return value
        time.sleep(0.05)
    raise AssertionError(f"waited in vain for {what() if callable(what) else what}")


def main(*needed):
    """Runs the tests, or skips them when a program that they need is not installed."""
    missing = [name for name in needed if shutil.which(name) is None]
    missing += [name for name in (os.environ["TESTED_EDITOR"],) if not os.access(name, os.X_OK)]
    if missing:
        print("skipped: not installed or not built:", ", ".join(missing))
        sys.exit(SKIPPED)
    unittest.main(verbosity=2)


def start_display():
    reader, writer = os.pipe()
    display = subprocess.Popen(
        ["Xvfb", "-displayfd", str(writer), "-screen", "0", "1280x1024x24", "-nolisten", "tcp",
         "-noreset"],
        pass_fds=[writer], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    os.close(writer)
    with os.fdopen(reader) as numbers:
        return display, ":" + numbers.readline().strip()


class EditorTest(unittest.TestCase):
    """One client, one editor, one odbc.ini."""

    def setUp(self):
        self.directory = Path(tempfile.mkdtemp(prefix="veltrane-editor-"))
        self.addCleanup(shutil.rmtree, self.directory, ignore_errors=True)
        self.ini = self.directory / "odbc.ini"
        self.answer = self.directory / "answer"
        self.library = os.environ["SETUP_LIBRARY"]
        self.process = None
        self.write_installer_file()

    def environment(self, **changes):
        base = {name: value for name, value in os.environ.items()
                if name not in ("DISPLAY", "WAYLAND_DISPLAY", "VELTRANE_DSN_EDITOR")}
        base |= {"ODBCSYSINI": str(self.directory), "ODBCINSTINI": "odbcinst.ini",
                 "ODBCINI": str(self.ini), "VELTRANE_DSN_INITIAL_VALUES": "/dev/null",
                 # The editors let no other process look into theirs, not even the leak checker.
                 "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"}
        return base | changes

    def write_installer_file(self, more=""):
        (self.directory / "odbcinst.ini").write_text(
            f"[Veltrane]\nDescription=test\nSetup={self.library}\n{more}")

    def install_driver(self):
        """Installs a driver that connects, but hangs if a value contains "hang"."""
        library = self.directory / "driver.so"
        subprocess.run(["cc", "-x", "c", "-shared", "-fPIC", "-o", library, "-"], check=True, text=True,
                       input="""
            #include <stdio.h>
            #include <string.h>
            #include <unistd.h>
            short SQLAllocHandle(short a, void *b, void **out) { *out = &SQLAllocHandle; return 0; }
            short SQLFreeHandle(short a, void *b) { return 0; }
            short SQLSetEnvAttr(void *a, int b, void *c, int d) { return 0; }
            short SQLDisconnect(void *a) { return 0; }
            short SQLGetInfo(void *a, unsigned short kind, void *out, short size, short *length) {
                *length = snprintf(out, size, kind == 17 ? "Toy" : kind == 77 ? "03.00" : "1.0");
                return 0;
            }
            short SQLDriverConnect(void *a, void *b, char *in, short c, char *d, short e, short *f,
                                   unsigned short g) {
                while (strstr(in, "hang")) pause();
                return strstr(in, "s3cret") ? 0 : -1;
            }""")
        self.write_installer_file(f"Driver={library}\n")

    def find_process(self, is_it):
        """The process for whose folder in /proc that holds, or None."""
        for child in Path("/proc").glob("[0-9]*"):
            try:
                if is_it(child):
                    return int(child.name)
            except OSError:
                continue
        return None

    def connecting_process(self):
        return self.find_process(lambda child: b"--apart" in (child / "cmdline").read_bytes()
                                 and str(self.ini).encode() in (child / "environ").read_bytes())

    def client_command(self, request, *attributes):
        return [os.environ["CLIENT"], str(self.answer), request, *attributes]

    def without_editors(self):
        """Copies the library into a folder without editors."""
        alone = self.directory / "alone" / "lib"
        alone.mkdir(parents=True)
        self.library = shutil.copy(self.library, alone)
        self.write_installer_file()

    def editor_pid(self):
        """The process of the editor that the client shows, or None."""
        return self.find_process(lambda child: os.readlink(child / "exe") == os.environ[
            "TESTED_EDITOR"] and self.is_ours(child))

    def is_ours(self, child):
        try:
            return str(self.ini).encode() in (child / "environ").read_bytes()
        except PermissionError:
            # Only root can look into an editor; its parent is the client.
            parent = (child / "stat").read_text().rsplit(")", 1)[1].split()[1]
            return str(self.ini).encode() in Path("/proc", parent, "environ").read_bytes()

    def fork_client(self):
        """Makes the client fork; the child lives on with all open descriptors of the client."""
        client, editor = self.client_pid(), self.editor_pid()

        def child():
            of_client = Path(f"/proc/{client}/task").glob("*/children")
            children = {int(pid) for tasks in of_client for pid in tasks.read_text().split()}
            return next(iter(children - {editor}), None)

        os.kill(client, signal.SIGUSR1)
        self.addCleanup(os.kill, wait_for(child, "the child"), signal.SIGKILL)

    def assert_idle(self):
        """Checks that an editor without input uses no processor time and writes nothing."""
        editor = Path("/proc", str(wait_for(self.editor_pid, "the editor")))

        def used():
            ticks = (editor / "stat").read_text().rsplit(")", 1)[1].split()[11:13]
            return sum(map(int, ticks)), int((editor / "io").read_text().split()[3])

        def measure():
            ticks, written = used()
            time.sleep(3)
            now = used()
            return now[0] - ticks, now[1] - written

        try:
            used()
        except PermissionError:
            self.skipTest("only root can look into an editor")
        # It may still be drawing at first.
        idle = [measure()]
        if idle[0] != (0, 0):
            idle.append(measure())
        self.assertLessEqual(idle[-1][0], 1, f"ticks and bytes written in 3 s: {idle}")
        self.assertEqual(idle[-1][1], 0, f"ticks and bytes written in 3 s: {idle}")

    def errors(self):
        """The result of the call and the lines of its errors."""
        wait_for(self.answer.exists, "the end of the call")
        result, *errors = self.answer.read_text().splitlines()
        return int(result.split()[1]), errors

    def answer_so_far(self):
        return self.answer.read_text() if self.answer.exists() else "(the call is not back)"

    def existing(self):
        """Puts a data source into odbc.ini and returns the whole file."""
        self.ini.write_text("[sales]\nDriver=Veltrane\nServer=old\nUID=me\nPWD=s3cret\n"
                            "Database=retail\n")
        return self.ini.read_text()

    def assert_failed(self, error):
        result, errors = self.errors()
        self.assertEqual(result, 0)
        self.assertRegex(errors[-1], error)

    def stored(self, name):
        """The section of a data source as a dictionary."""
        parser = configparser.RawConfigParser(delimiters=("=",), strict=False)
        parser.optionxform = str
        parser.read(self.ini, encoding="utf-8")
        return dict(parser[name]) if parser.has_section(name) else None

    def assert_secret_stays(self, secret):
        """Checks that the password is nowhere that other programs can read."""
        for pid in filter(None, (self.editor_pid(), self.client_pid(), self.connecting_process())):
            for name in ("cmdline", "environ"):
                try:
                    seen = Path("/proc", str(pid), name).read_bytes()
                except PermissionError:
                    continue
                self.assertNotIn(secret.encode(), seen, f"{name} of {pid}")


class EditorChecks:
    """Tests for every editor. The other base class has start, see, keys (with X's names), type and
    choose_ldap (in the last field), and describes the editor:

    DATABASE   a name that its keyboard can type
    WAYS_OUT   functions that leave the form without saving
    REFUSALS   (arguments of start, why no editor can be shown)
    STEPS      (keys, what is seen then)
    """

    def assert_whole(self):
        """Checks that the user's own settings are as before the editor."""

    def fill(self, *values):
        """Types values and goes on from field to field in the order of the form."""
        for value in values:
            if value:
                self.type(value)
            self.keys("Tab")

    def configure(self):
        before = self.existing()
        self.start("config", "DSN=sales")
        self.see("Data source sales")
        return before

    def test_add_by_keys(self):
        self.start("add")
        self.see("New data source")
        # After the password comes its switch.
        self.fill("sales", "bi.example", self.DATABASE, "me", "s3cret#;=[", "", "ns")
        self.choose_ldap()
        self.assert_secret_stays("s3cret")
        self.keys("Return")
        self.assertEqual(self.errors(), (1, []))
        self.assertEqual(self.stored("sales"),
                         {"Driver": "Veltrane", "Server": "bi.example", "Namespace": "ns",
                          "LoginMode": "LDAP", "UID": "me", "PWD": "s3cret#;=[",
                          "Database": self.DATABASE})

    def test_idle_until_a_key_comes(self):
        self.start("add")
        for keys, seen in ((), "New data source"), *self.STEPS:
            self.keys(*keys)
            self.see(seen)
            self.assert_idle()

    def test_a_form_that_is_left_changes_nothing(self):
        for number, leave in enumerate(self.WAYS_OUT):
            with self.subTest(number):
                before = self.configure()
                self.keys("Tab")
                self.type("changed")
                leave(self)
                self.assertEqual(self.errors(), (1, []))
                self.assertEqual(self.ini.read_text(), before)
                self.assert_whole()

    def test_a_cancelled_add_without_a_name_saves_nothing(self):
        self.start("add")
        self.see("New data source")
        self.keys("Escape")
        self.assert_failed("^error 7 Invalid driver or translator name.$")

    def test_killed_editor(self):
        before = self.configure()
        os.kill(wait_for(self.editor_pid, "the editor"), signal.SIGKILL)
        self.assert_failed(f"^error 11 The DSN editor {os.environ['TESTED_EDITOR']} was ended by "
                           r"signal 9 \(Killed\) before it answered\.$")
        self.assertEqual(self.ini.read_text(), before)
        self.assert_whole()

    def test_refusals(self):
        for how, reason in self.REFUSALS:
            with self.subTest(reason):
                self.start("add", **how)
                self.assert_failed(r"^error 11 No DSN editor can be shown\. .*" + reason)
                self.assert_whole()
        self.without_editors()
        self.start("add")
        self.assert_failed(f"{Path(os.environ['TESTED_EDITOR']).name} was looked for in /")


class DisplayTest(EditorTest):
    """Programs on a virtual display, driven by real key and button events."""

    @classmethod
    def setUpClass(cls):
        cls.display, cls.display_name = start_display()

    @classmethod
    def tearDownClass(cls):
        # Not killed: its lock would stay, and new servers would fight for that display.
        cls.display.terminate()
        cls.display.wait()

    def start_program(self, command, **environment):
        """Without a terminal, so that only the desktop is left."""
        environment = self.environment(**{"DISPLAY": self.display_name} | environment)
        self.process = subprocess.Popen(command, env=environment, start_new_session=True)
        self.addCleanup(lambda process: (process.kill(), process.wait()), self.process)

    def xdotool(self, *arguments):
        return subprocess.run(["xdotool", *arguments], text=True, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, check=False,
                              env=os.environ | {"DISPLAY": self.display_name}).stdout.strip()

    def find_window(self, title):
        return self.xdotool("search", "--onlyvisible", "--name", f"^{title}$")

    def focus(self, title):
        """Waits for the window and gives it the keyboard, because there is no window manager."""
        window = wait_for(lambda: self.find_window(title),
                          lambda: f"the window {title!r}\n{self.answer_so_far()}")
        wait_for(lambda: self.xdotool("windowfocus", window, "getwindowfocus") == window,
                 "the focus")
        return int(window)

    def keys(self, *names):
        self.xdotool("key", "--delay", "30", *names)

    def type(self, text):
        self.xdotool("type", "--delay", "30", text)
