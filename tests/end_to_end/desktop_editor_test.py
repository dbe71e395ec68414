#!/usr/bin/env python3
"""Adds and changes data sources through SQLConfigDataSource with the desktop editor, on a virtual
display with real key events, and checks odbc.ini afterwards."""
import ctypes
import os
import subprocess
import sys
import unittest

import editor_harness
from editor_harness import wait_for


def close_window(display_name, window):
    """Asks a window to close, as its frame's close button does."""
    class ClientMessage(ctypes.Structure):
        _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send", ctypes.c_int),
                    ("display", ctypes.c_void_p), ("window", ctypes.c_ulong),
                    ("message", ctypes.c_ulong), ("format", ctypes.c_int),
                    ("data", ctypes.c_long * 5), ("rest", ctypes.c_long * 24)]

    x = ctypes.CDLL("libX11.so.6")
    x.XOpenDisplay.restype = ctypes.c_void_p
    x.XInternAtom.restype = ctypes.c_ulong
    display = ctypes.c_void_p(x.XOpenDisplay(display_name.encode()))
    event = ClientMessage(type=33, window=window, format=32,
                          message=x.XInternAtom(display, b"WM_PROTOCOLS", 0))
    event.data[0] = x.XInternAtom(display, b"WM_DELETE_WINDOW", 0)
    x.XSendEvent(display, ctypes.c_ulong(window), 0, ctypes.c_long(0), ctypes.byref(event))
    x.XCloseDisplay(display)


class DesktopEditorStart(editor_harness.DisplayTest):
    def start(self, request, *attributes, **environment):
        wait_for(lambda: not self.editor_pid(), "the end of the editor before")
        self.answer.unlink(missing_ok=True)
        self.start_program(self.client_command(request, *attributes), **environment)

    def client_pid(self):
        return self.process.pid


class DesktopEditorTest(editor_harness.EditorChecks, DesktopEditorStart):
    DATABASE = "retail"
    WAYS_OUT = (
        lambda self: self.keys("Escape"),
        lambda self: self.keys("alt+c"),
        lambda self: close_window(self.display_name, self.focus("Data source sales")),
    )
    REFUSALS = (
        ({"DISPLAY": ":4711"}, "cannot open a window: could not connect to display :4711"),
        ({"DISPLAY": "", "VELTRANE_DSN_EDITOR": "desktop"},
         "cannot open a window: neither DISPLAY nor WAYLAND_DISPLAY is set."),
        ({"DISPLAY": ""}, "There is no display: neither DISPLAY nor WAYLAND_DISPLAY is set. There is "
                          "no terminal: .*VELTRANE_DSN_INITIAL_VALUES"),
    )
    STEPS = ((("a", "Tab"), "Data source a"),)

    def see(self, title):
        self.focus(title)

    def choose_ldap(self):
        self.type("LDAP")

    def use_keyboard(self, layout):
        subprocess.run(["setxkbmap", layout], check=True,
                       env=os.environ | {"DISPLAY": self.display_name})

    def test_other_scripts(self):
        values = self.directory / "values.ini"
        values.write_text("[DSN]\nDatabase=数据库 \U0001F600\n", encoding="utf-8")
        self.start("add", VELTRANE_DSN_INITIAL_VALUES=str(values))
        self.focus("New data source")
        self.addCleanup(self.use_keyboard, "us")
        self.use_keyboard("de")
        self.fill("Größe")
        self.focus("Data source Größe")
        self.use_keyboard("ru")
        self.fill("сервер")
        self.keys("Return")
        self.assertEqual(self.errors(), (1, []))
        self.assertEqual(self.stored("Größe"), {"Driver": "Veltrane", "Server": "сервер",
                                                "Database": "数据库 \U0001F600"})

    def test_ok_needs_the_required_fields(self):
        self.start("add")
        window = self.focus("New data source")
        self.fill("sal[es", "bi.example")
        self.keys("Return")
        self.type("retail")
        self.keys("Return", "alt+o")
        self.assertEqual(int(self.focus(r"Data source sal\[es")), window)
        self.keys("alt+n", "ctrl+a")
        self.type("sales")
        self.keys("Return")
        self.assertEqual(self.errors(), (1, []))
        # Neither key had an effect or became text.
        self.assertEqual(self.stored("sales"),
                         {"Driver": "Veltrane", "Server": "bi.example", "Database": "retail"})

    def test_edit_of_the_tool_asks_before_it_removes_the_old_name(self):
        before = self.existing()
        self.start_program([os.environ["VELTRANE_DSN"], "edit", "-q", "sales"], LANGUAGE="de",
                           LC_ALL="C.UTF-8")
        self.focus("Datenquelle sales")
        self.keys("alt+n", "End")
        self.type("2")
        self.keys("Return")
        self.focus("Veltrane")
        self.keys("alt+j")
        self.assertEqual(self.process.wait(editor_harness.TIMEOUT), 0)
        self.assertEqual(self.ini.read_text().lstrip(), before.replace("[sales]", "[sales2]"))

    def test_a_killed_host_ends_its_editor(self):
        self.start("add")
        self.focus("New data source")
        editor = wait_for(self.editor_pid, "the editor")
        self.fork_client()
        self.process.kill()
        wait_for(lambda: not os.path.exists(f"/proc/{editor}"), "the end of the editor")


class ListWindowTest(DesktopEditorStart):
    """The window of all data sources, by keys and by what a screen reader gets."""
    TITLE = r"ODBC data sources \(Veltrane\)"

    @classmethod
    def setUpClass(cls):
        if "THREADS_ARE_WATCHED" in os.environ:
            raise unittest.SkipTest("screen readers get nothing from a program under ThreadSanitizer")
        super().setUpClass()
        cls.bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"],
                                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                                   env=os.environ | {"DISPLAY": cls.display_name})
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = cls.bus.stdout.readline().strip()
        # Debian's modules, also for another Python of the same version.
        sys.path.append("/usr/lib/python3/dist-packages")
        try:
            from pyatspi import Registry
            cls.programs = Registry.getDesktop(0)
        except Exception as reason:  # no module or no bus: it can raise anything
            cls.tearDownClass()
            raise unittest.SkipTest(f"no accessibility bus: {reason}") from reason

    @classmethod
    def tearDownClass(cls):
        cls.bus.terminate()
        cls.bus.wait()
        super().tearDownClass()

    def heard(self):
        """(role, name) of everything visible in the window, as a screen reader gets it."""
        found = set()

        def visit(node):
            for child in node:
                if child:
                    found.add((child.getRoleName(), child.name))
                    visit(child)

        try:
            for program in self.programs:
                if program and program.get_process_id() in (self.process.pid, self.editor_pid()):
                    visit(program)
        except (LookupError, RuntimeError):  # something is gone meanwhile
            pass
        return found

    def wait_for_cells(self, *names):
        wait_for(lambda: {("table cell", name) for name in names} <= self.heard(), self.heard)

    def find(self, name):
        """Uses the filter, which searches all columns."""
        self.keys("alt+f", "ctrl+a")
        self.type(name)

    def edit(self, title, *keys):
        self.focus(title)
        for key in keys:
            self.type(key[1:]) if key.startswith("'") else self.keys(key)
        wait_for(lambda: not self.editor_pid(), "the end of the editor")
        self.focus(self.TITLE)

    def wait_for_label(self, text):
        wait_for(lambda: any(text in name for _, name in self.heard()), self.heard)

    def test_connects_with_the_values_of_the_form_and_can_be_stopped(self):
        self.install_driver()
        before = self.existing()
        self.start("config", "DSN=sales", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", LC_ALL="C.UTF-8")
        window = self.focus("Data source sales")
        self.keys("alt+t")
        self.wait_for_label("ms to Toy 1.0.")
        self.keys("Return")
        wait_for(lambda: ("push button", "Test") in self.heard(), self.heard)
        wait_for(lambda: int(self.xdotool("windowfocus", str(window), "getwindowfocus")) == window,
                 "the focus")
        self.keys("alt+s")
        self.type("hang")
        self.keys("alt+t")
        self.wait_for_label("Connecting to hang ...")
        self.assertIn(("push button", "Stop"), self.heard())
        process = wait_for(self.connecting_process, "the test")
        self.assert_secret_stays("s3cret")
        self.keys("alt+t")
        wait_for(lambda: not os.path.exists(f"/proc/{process}"), "the end of the driver")
        wait_for(lambda: ("push button", "Test") in self.heard(), self.heard)
        # Leaving the form ends the test.
        self.keys("alt+t")
        process = wait_for(self.connecting_process, "the test")
        self.keys("Escape")
        self.assertEqual(self.errors(), (1, []))
        wait_for(lambda: not os.path.exists(f"/proc/{process}"), "the end of the driver")
        self.assertEqual(self.ini.read_text(), before)

    def test_by_keys_and_by_ear(self):
        user = self.directory / "user.ini"
        user.write_text(self.existing() + "Hint=1\n")
        self.ini.write_text("[Sales]\nDriver=Veltrane\nServer=all\nDatabase=d\n")
        self.start_program([os.environ["VELTRANE_DSN"] + "-window"], ODBCINI=str(user),
                           LC_ALL="C.UTF-8", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
        self.focus(self.TITLE)
        self.wait_for_cells("sales", "this user", "old", "retail", "Sales", "all other users")
        heard = self.heard()
        self.assertEqual({name for role, name in heard if role in ("push button", "text", "tree")},
                         {"Add", "Edit", "Copy", "Remove", "Test", "Close", "Filter",
                          "Data sources"})
        # Adds one for this user.
        self.keys("alt+a", "t")
        self.edit("New data source", "'new", "Tab", "'s", "Tab", "'d", "Return")
        self.wait_for_cells("new")
        self.find("new")
        self.keys("alt+e")
        self.edit("Data source new", "Tab", "'2", "Return")
        self.wait_for_cells("2")
        self.ini = user
        self.assertEqual(self.stored("new"), {"Driver": "Veltrane", "Server": "2", "Database": "d"})
        self.find("old")
        self.keys("alt+o")
        self.edit("New data source", "'copy", "Return")
        self.wait_for_cells("copy")
        self.assertEqual(self.stored("copy")["Hint"], "1")
        self.find("copy")
        self.keys("alt+r")
        wait_for(lambda: ("label", "Remove the data source copy?") in self.heard(), self.heard)
        self.keys("alt+y")
        wait_for(lambda: ("table cell", "copy") not in self.heard(), self.heard)
        self.assertIsNone(self.stored("copy"))
        self.focus(self.TITLE)
        # The test's driver is only a setup library.
        self.find("new")
        self.keys("alt+t")
        self.wait_for_label("has no Driver entry")
        self.keys("Return")
        self.focus(self.TITLE)
        self.keys("alt+c")
        self.assertEqual(self.process.wait(editor_harness.TIMEOUT), 0)


if __name__ == "__main__":
    editor_harness.main("Xvfb", "xdotool", "setxkbmap", "dbus-daemon")
