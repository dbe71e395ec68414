#!/usr/bin/env python3
"""Adds and changes data sources through SQLConfigDataSource with the terminal editor, in a terminal
of tmux with real keys, and checks odbc.ini afterwards."""
import os
import shlex
import signal
import subprocess
from pathlib import Path

import editor_harness
from editor_harness import wait_for


class TerminalEditorTest(editor_harness.EditorChecks, editor_harness.EditorTest):
    DATABASE = "数据库 ü"
    WAYS_OUT = (
        lambda self: self.keys("Escape"),
        lambda self: self.keys(*["Tab"] * 9, "Space"),  # the button
        lambda self: self.keys("C-c"),  # which spares the host
    )
    REFUSALS = (
        ({"size": (80, 22)}, "The terminal is too small for the form"),
        ({"prefix": "TERM="}, "TERM is not set to its type"),
        # It cannot move its cursor.
        ({"prefix": "TERM=dumb"}, "its type dumb is unknown or too simple"),
        ({"prefix": "TERM=no-such-terminal"}, "its type no-such-terminal is unknown or too simple"),
        # It would be stopped at its first access to the terminal, and its host would hang.
        ({"prefix": "set -m;", "suffix": "& wait"}, "runs in the background of its terminal"),
    )
    STEPS = ((("Tab", "a", "F2", "Tab"), "The database on that server."), (("F4",), "Windows"))

    def tmux(self, *arguments):
        return subprocess.run(["tmux", "-S", str(self.directory / "tmux"), "-f", "/dev/null",
                               *arguments], text=True, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, check=False,
                              env=self.environment(LC_ALL="C.UTF-8")).stdout

    def start(self, request, *attributes, size=(80, 24), prefix="", suffix=""):
        """Without a display, so that only the terminal is left. A shell stays after the client."""
        self.start_command(shlex.join(self.client_command(request, *attributes)), size, prefix, suffix)

    def start_command(self, command, size=(80, 24), prefix="", suffix=""):
        self.addCleanup(self.tmux, "kill-server")
        for path in (self.answer, self.directory / "stty"):
            path.unlink(missing_ok=True)
        size = ["-x", str(size[0]), "-y", str(size[1])]
        begin = ["new-session", "-d", *size]
        if self.tmux("list-sessions"):
            self.tmux("resize-window", *size)
            begin = ["respawn-pane", "-k"]
        self.tmux(*begin, f"{prefix} {command} {suffix}; stty -a > {self.directory}/stty; "
                          "exec sleep 1000")

    def test_started_by_hand_it_only_prints_its_version(self):
        editor = os.environ["TESTED_EDITOR"]
        for arguments, code, text in [(["--version"], 0, Path(editor).name + " "),
                                      ([], 2, "is started by the setup library"),
                                      (["--version", "x"], 2, "is started by the setup library")]:
            run = subprocess.run([editor, *arguments], text=True, stdin=subprocess.DEVNULL,
                                 capture_output=True, check=False)
            self.assertEqual(run.returncode, code)
            self.assertIn(text, run.stdout + run.stderr)

    def test_language_of_the_user(self):
        translations = Path(os.environ["TESTED_EDITOR"]).parents[1] / "share/locale/de"
        if not translations.exists():
            self.skipTest("built without gettext")
        self.start("add", prefix="LANGUAGE=de")
        self.see("Neue Datenquelle")
        self.type("a[")
        self.see("Ein Name darf nicht enthalten: [ ] { }")

    def client_pid(self):
        parent = f"/proc/{self.editor_pid()}/stat"
        with open(parent, encoding="utf-8") as file:
            return int(file.read().rsplit(")", 1)[1].split()[1])

    def screen(self):
        return self.tmux("capture-pane", "-p")

    def see(self, text):
        wait_for(lambda: text in self.screen(), lambda: f"{text!r} on\n{self.screen()}\n{self.answer_so_far()}")

    def keys(self, *names):
        own = {"Return": "Enter"}
        self.tmux("send-keys", *(own.get(name, name) for name in names))

    def type(self, text):
        self.tmux("send-keys", "-l", text)

    def choose_ldap(self):
        self.see("**********")
        self.assertNotIn("s3cret", self.screen())
        self.keys("F2")
        self.see("s3cret#;=[")
        self.keys("F4")
        self.see("Windows")
        self.keys("Down", "Enter")
        self.see("LDAP__")

    def test_cancelled_thread_ends_after_the_request(self):
        """A cancellation would unwind through the library and end the host."""
        self.configure()
        os.kill(self.client_pid(), signal.SIGUSR2)
        self.keys("Tab", "End")
        self.type("2")
        self.see("old2")
        self.keys("Enter")
        self.assertEqual(self.errors(), (1, ["cancelled"]))
        self.assertEqual(self.stored("sales")["Server"], "old2")
        self.assert_whole()

    def test_fork_of_the_host(self):
        self.configure()
        self.fork_client()
        self.keys("Tab", "BSpace", "Enter")
        self.assertEqual(self.errors(), (1, []))
        self.assertEqual(self.stored("sales")["Server"], "ol")

    def test_ok_needs_the_required_fields(self):
        self.start("add")
        self.see("New data source")
        self.type("sal[es")
        self.see("A name cannot contain [ ] { } ( ) , ; ? * = ! @ \\")
        self.keys("BSpace", "BSpace", "BSpace", "Enter")
        self.see("Has to be filled.")
        # The focus is in the first refused field, the server.
        self.type("bi.example")
        self.keys("Enter")
        self.type("retail")
        self.keys("Enter")
        self.assertEqual(self.errors(), (1, []))
        self.assertEqual(self.stored("sal"),
                         {"Driver": "Veltrane", "Server": "bi.example", "Database": "retail"})

    def test_unchanged_values_stay_byte_for_byte(self):
        """Values that cannot be entered in an editor; another program stored them."""
        before = (b"[sales]\nDriver=Veltrane\nServer=" + b"s" * 258 + b" " + b"t" * 41 +
                  b"\nNamespace=" + b"\xfc" * 300 + b"\nLoginMode=CH\xc2TEAU\x0bx\x1b[1m"
                  b"\nUID=me\nPWD=p\tw\x01\x7f\r.\nDatabase=d\xc2\x85e\n")
        self.ini.write_bytes(before)
        self.start("config", "DSN=sales")
        self.see("Data source sales")
        self.keys("Tab", "Tab", "Tab", "End")
        self.type("2")
        self.keys("Enter")
        self.assertEqual(self.errors(), (1, []))
        self.assertEqual(self.ini.read_bytes(), before.replace(b"UID=me", b"UID=me2"))

    def test_edit_of_the_tool(self):
        """Each row: arguments, then texts on the screen and the keys after them ("'" before a typed
        text), then the exit code, the tool's output, and the stored values if they change."""
        form, again = "Data source sales", "Discard the values?"
        moved = "gets a new name. Remove the old one, sales?"
        sales = {"Driver": "Veltrane", "Server": "old", "UID": "me", "PWD": "s3cret",
                 "Database": "retail", "Hint": "1"}
        new = {"Driver": "Veltrane", "Server": "s", "Database": "d"}
        for arguments, steps, code, said, changes in [
                (["sales"], [(form, "Tab", "'2", "Enter")], 0, "sales: changed",
                 {"sales": {**sales, "Server": "old2"}}),
                (["sales"], [(form, "Tab", "'2", "Escape")], 0, "Cancelled; nothing is changed.", {}),
                ([], [("New data source", "'new", "Tab", "'s", "Tab", "'d", "Enter")], 0,
                 "new: added", {"new": new}),
                ([], [("New data source", "'new", "Escape")], 0, "Cancelled; nothing is changed.", {}),
                (["sales"], [(form, "'2", "Enter"), (moved, "Tab", "Enter")], 0,
                 "sales2: added\nsales: removed", {"sales": None, "sales2": sales}),
                (["sales"], [(form, "'2", "Enter"), (moved, "Enter")], 0, "sales2: added",
                 {"sales2": sales}),
                (["sales", "-y"], [(form, "'2", "Enter")], 0, "sales: removed",
                 {"sales": None, "sales2": sales}),
                (["sales"], [(form, "C-u", "'other", "Enter"), ("There is a DSN", "Escape"),
                             ("other_", "'2", "Enter"), (moved, "C-c")], 0, "other2: added",
                 {"other2": sales}),
                (["sales"], [(form, "C-u", "'SALES", "Enter"), ("are the", "Tab", "Space")],
                 0, "Cancelled; nothing is changed.", {}),
                (["sales", "--yes"], [(form, "C-u", "'other", "Enter")], 4, "There is a DSN", {}),
                (["--copy", "sales"], [("New data source", "'other", "Enter"), (again, "Enter"),
                                       ("other_", "'2", "Enter")], 0, "other2: added",
                 {"other2": sales}),
                (["--copy"], [], 2, "--copy needs the name", {}),
                (["other"], [], 1, 'is one of the driver "Other"', {}),
                (["none"], [], 3, "There is no DSN", {}),
        ]:
            with self.subTest(f"{arguments} {steps}"):
                self.existing()
                with self.ini.open("a") as file:
                    file.write("Hint=1\n# theirs\n[other]\nDriver=Other\n")
                before = self.ini.read_text()
                command = shlex.join([os.environ["VELTRANE_DSN"], "edit", *arguments])
                self.start_command(f"{command} > {self.directory}/said 2>&1; echo $? > {self.answer}")
                for seen, *keys in steps:
                    self.see(seen)
                    for key in keys:
                        self.type(key[1:]) if key.startswith("'") else self.keys(key)
                ended = wait_for(lambda: self.answer.exists() and self.answer.read_text(), self.screen)
                self.assert_whole()
                said_all = (self.directory / "said").read_text()
                self.assertEqual(int(ended), code, said_all)
                self.assertIn(said, said_all)
                if not changes:
                    self.assertEqual(self.ini.read_text(), before)
                for name, values in changes.items():
                    self.assertEqual(self.stored(name), values)
                self.assertIn("# theirs\n[other]\nDriver=Other\n", self.ini.read_text())

    def test_connects_with_the_values_of_the_form_and_can_be_stopped(self):
        self.install_driver()
        self.existing()
        self.start("config", "DSN=sales")
        self.see("F5: test")
        self.keys("F5")
        self.see("ms to Toy 1.0.")
        self.keys("Enter", "Tab")
        self.type("hang")
        self.see("oldhang")
        self.keys(*["Tab"] * 10, "Space")  # the button
        self.see("Connecting to oldhang ...")
        process = wait_for(self.connecting_process, "the test")
        self.assert_secret_stays("s3cret")
        self.keys("Escape")
        wait_for(lambda: not os.path.exists(f"/proc/{process}"), "the end of the driver")
        # The form is whole and accepts keys; the tested values are not stored.
        self.keys("F2")
        self.see("s3cret__")
        self.assertEqual(self.stored("sales")["Server"], "old")
        self.keys("BTab", "BTab", "Space")  # OK
        self.assertEqual(self.errors(), (1, []))
        self.assertEqual(self.stored("sales")["Server"], "oldhang")

    def assert_whole(self):
        stty = self.directory / "stty"
        settings = wait_for(lambda: stty.exists() and stty.read_text(), "the settings").split()
        self.assertIn("icanon", settings)
        self.assertIn("echo", settings)

    def test_a_closed_terminal_ends_the_editor(self):
        self.start("add")
        self.see("New data source")
        editor = wait_for(self.editor_pid, "the editor")
        self.tmux("kill-server")
        wait_for(lambda: not os.path.exists(f"/proc/{editor}"), "the end of the editor")


if __name__ == "__main__":
    editor_harness.main("tmux")
