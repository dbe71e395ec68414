"""Runs the built tool with the driver manager's files in a scratch folder."""
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

TOOL = os.environ["TOOL"]
SETUP_LIBRARY = os.environ["SETUP_LIBRARY"]


class CliTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="veltrane-cli-")
        self.addCleanup(scratch.cleanup)
        self.folder = Path(scratch.name)
        self.system = self.folder / "system"
        self.system.mkdir()
        self.user_ini = self.folder / "user.ini"
        self.system_ini = self.system / "odbc.ini"
        self.system_ini.write_text("")
        self.drivers = self.system / "odbcinst.ini"
        self.drivers.write_text(f"[Veltrane]\nDescription=test\nSetup={SETUP_LIBRARY}\n")
        self.environment = dict(
            os.environ, ODBCSYSINI=str(self.system), ODBCINSTINI="odbcinst.ini",
            ODBCINI=str(self.user_ini), HOME=str(self.folder))

    def run_tool(self, *arguments, text="", environment=None):
        return subprocess.run(
            [TOOL, *arguments], input=text, capture_output=True, text=True, timeout=120,
            env={**self.environment, **(environment or {})})

    def check(self, *arguments, code=0, out=None, err=None, **more):
        """Runs the tool; `out` and `err` are texts that must be found in what it prints."""
        result = self.run_tool(*arguments, **more)
        what = f"{arguments}\n{result.stdout}\n{result.stderr}"
        self.assertEqual(result.returncode, code, what)
        if out is not None:
            self.assertIn(out, result.stdout, what)
        if err is not None:
            self.assertIn(err, result.stderr, what)
        return result

    def section(self, name, path=None):
        """The keys of a section of the user's odbc.ini; None when there is no such section."""
        values = None
        for line in (path or self.user_ini).read_text().splitlines():
            if line.startswith("["):
                if values is not None:
                    break
                values = {} if line == f"[{name}]" else None
            elif values is not None and "=" in line:
                key, _, value = line.partition("=")
                values[key.strip()] = value.strip()
        return values

    def add(self, name="a", *more):
        return self.check("add", name, "--server", "s", "--database", "d", *more)
