"""Shared by the tests of the built veltrane-dsn. The tool runs in a scratch folder, through the
ODBC installer: on Linux the real one, in Wine the test installer.

Environment: VELTRANE_DSN is the tool, SETUP_LIBRARY the setup library; the systems' own parts,
stage_linux.py and stage_windows.py, name what else they need.
"""
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import termios
import unittest

sys.dont_write_bytecode = True
sys.path.append(os.path.join(os.path.dirname(os.path.abspath(__file__)), "../support"))
from terminal import run_on_terminal  # noqa: E402
if os.environ["VELTRANE_DSN"].endswith(".exe"):
    from stage_windows import Stage
else:
    from stage_linux import Stage

PASSWORD = "p=;#'\"{}[]\\%$ ü€日本😀"
SALES_VALUES = {"Server": "db", "Database": "d"}
SALES = {"Driver": "Veltrane", **SALES_VALUES}


class ToolTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="veltrane-dsn-")
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.stage = Stage(self.folder)
        self.user = self.stage.places["user"]
        self.stage.write("drivers", {"Veltrane": self.stage.driver(self.stage.setup)})

    def path(self, name):
        return os.path.join(self.folder, name)

    def write_file(self, name, text):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)
        return self.stage.native(self.path(name))

    def read_file(self, path):
        with open(path, encoding="utf-8") as file:
            return file.read()

    def write(self, sections, scope="user"):
        """Makes these the DSNs of the scope, {name: {key: value}}."""
        self.stage.write(scope, sections)

    def dsns(self, scope="user"):
        return self.stage.read(scope)

    def run_tool(self, *arguments, code=0, stdin="", **environment):
        """Runs the tool, checks its exit code, and returns its output and its errors."""
        process = self.start(arguments, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True, encoding="utf-8",
                                   errors="surrogateescape", start_new_session=True,
                                   environment=environment)
        output, errors = process.communicate(stdin, timeout=120)
        self.assertEqual(process.returncode, code, f"{arguments}: {output}{errors}")
        return output, errors

    def run_json(self, *arguments, **others):
        return json.loads(self.run_tool(*arguments, "--json", **others)[0])

    def assert_refused(self, part, *arguments, code=2, **others):
        """Checks that nothing is done, and that the reason contains the part and no password."""
        with self.subTest(arguments, **others):
            output, errors = self.run_tool(*arguments, code=code, **others)
            self.assertEqual(output, "")
            self.assertIn(part, errors)
            self.assertNotIn("hunter2", errors)

    def findings(self, code=1, **environment):
        """The findings of doctor: texts by id."""
        report = self.run_json("doctor", code=code, **environment)
        for finding in report["findings"]:
            self.assertRegex(finding["repair"], r"\.$")
        return {finding["id"]: finding["text"] for finding in report["findings"]}

    def run_on_a_terminal(self, *arguments, answers):
        """Returns the exit code and the text on the terminal; types an answer to each question."""
        answers, asked = list(answers), 0

        def reply(shown, terminal):
            nonlocal asked
            # Wine's console turns the echo off after the question.
            is_silent = not termios.tcgetattr(terminal)[3] & termios.ECHO
            questions = shown.count(b"Password") + shown.count(b"Again")
            if not answers or questions <= asked or not is_silent:
                return b""
            asked = questions
            return answers.pop(0)
        code, shown = run_on_terminal(*self.stage.prepare(arguments), reply)
        # In Wine blanks and line ends are cursor movements, among other sequences.
        return code, re.sub(r"\x1b\[[?0-9;]*[A-Za-z]", "", shown)

    def start(self, arguments, environment=None, **others):
        command, own = self.stage.prepare(arguments)
        return subprocess.Popen(command, env={**own, **(environment or {})}, **others)

    def compile(self, name, source, *libraries, options=("-shared", "-fPIC")):
        """Returns the path of a shared library that needs these libraries in its folder; without
        options, of a program."""
        file = name + (self.stage.LIBRARY if options else self.stage.PROGRAM)
        needed = (os.path.basename(self.stage.unix(library)) for library in libraries)
        subprocess.run([self.stage.COMPILER, *options, "-o", file, "-x", "c", "-", "-x", "none", *needed],
                       cwd=self.folder, input=self.stage.PRELUDE + source, text=True, check=True)
        return self.stage.native(self.path(file)) if options else self.path(file)

    def register(self, library):
        self.stage.write("drivers", {"Veltrane": self.stage.driver(library)})

    def add_sales(self, *arguments, **others):
        return self.run_tool("add", "sales", "--server", "db", "--database", "d", *arguments, **others)


def main():
    """Runs the classes or tests that the command line names."""
    unittest.main(module="__main__")
