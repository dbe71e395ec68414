#!/usr/bin/env python3
"""Runs the role's module as Ansible does on a host, in a scratch folder with the built tool.

Arguments: the tool, the setup library and the module.
"""
import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TOOL, SETUP, MODULE = sys.argv[1:4]
PYTHON = "/usr/bin/python3"  # the one that Debian's ansible-core is installed for
SKIPPED = 77
SALES = {"name": "sales", "values": {"Server": "s", "Database": "d"}}
PASSWORD = "p='\"\\% geheim ü"


class ModuleTest(unittest.TestCase):
    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="role-module-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.ini = self.folder / "odbc.ini"
        self.ini.touch()
        (self.folder / "odbcinst.ini").write_text(f"[Veltrane]\nSetup={SETUP}\n")

    def run_module(self, *sources, check=False, **options):
        """Returns the module's answer to Ansible."""
        arguments = {"data_sources": sources, "executable": TOOL, **options}
        # Without a log, which here would be the machine's.
        arguments |= {"_ansible_check_mode": check, "_ansible_no_log": True}
        result = subprocess.run(
            [PYTHON, MODULE], input=json.dumps({"ANSIBLE_MODULE_ARGS": arguments}), text=True,
            capture_output=True, timeout=120, check=False,
            env={**os.environ, "HOME": str(self.folder), "ODBCSYSINI": str(self.folder),
                 "ODBCINI": str(self.folder / "user.ini"), "PYTHONDONTWRITEBYTECODE": "1"})
        try:
            answer = json.loads(result.stdout)
        except ValueError:
            self.fail(result.stdout + result.stderr)
        self.assertEqual(result.returncode, 1 if answer.get("failed") else 0, answer)
        return answer

    def test_changes_once_and_removes(self):
        for expected in (True, False):
            self.assertIs(self.run_module(SALES)["changed"], expected)
        absent = {"name": "sales", "state": "absent"}
        foreseen = self.run_module(absent, check=True)
        self.assertTrue(foreseen["changed"])
        self.assertEqual(foreseen["diff"]["prepared"], "@@ sales @@\n-[sales]\n-Driver=Veltrane\n"
                                                       "-Server=s\n-Database=d\n")
        self.assertNotEqual(self.ini.read_text(), "")
        for expected in (True, False):
            self.assertIs(self.run_module(absent)["changed"], expected)
        self.assertEqual(self.ini.read_text(), "")

    def test_passes_on_scope_removed_keys_and_replace(self):
        user = self.folder / "user.ini"
        self.run_module({"name": "sales", "values": {**SALES["values"], "UID": "u", "Port": 1}}, scope="user")
        self.run_module({"name": "sales", "values": {"UID": None}}, scope="user")
        self.assertEqual(user.read_text(), "[sales]\nDriver=Veltrane\nServer=s\nDatabase=d\nPort=1\n\n")
        self.run_module(SALES, replace=True, scope="user")
        self.assertNotIn("Port", user.read_text())
        self.assertEqual(self.ini.read_text(), "")

    def test_a_failure_is_reported_with_its_reason_and_the_others_continue(self):
        answer = self.run_module({"name": "bad"}, SALES, {"name": "a[b", "values": {}})
        self.assertTrue(answer["failed"] and answer["changed"])
        self.assertEqual(answer["msg"], "2 of 3 data sources failed. bad: Server: Has to be filled.; "
                                        "a[b: DSN: A name cannot contain [ ] { } ( ) , ; ? * = ! @ \\")
        self.assertIn("[sales]\n", self.ini.read_text())

    def test_passwords_reach_the_file_and_nothing_else(self):
        secret = {"name": "sales", "pwd": PASSWORD,
                  "values": {**SALES["values"], "ProxyToken": "geheim2"}}
        for check in (True, False):
            answer = json.dumps(self.run_module(secret, check=check), ensure_ascii=False)
            self.assertIn("+PWD=", answer)
            self.assertNotIn("geheim", answer)
        text = self.ini.read_text("utf-8")
        self.assertIn(f"PWD={PASSWORD}\n", text)
        self.assertIn("ProxyToken=geheim2\n", text)
        self.assertIn("every user of this machine can read", str(self.run_module(
            {**secret, "pwd": "geheim3"})["warnings"]))
        (self.folder / "pwd").write_text("other\n")
        self.run_module({"name": "sales", "pwd_file": str(self.folder / "pwd")})
        self.assertIn("PWD=other\n", self.ini.read_text("utf-8"))

    def test_registers_the_library_and_prunes_and_connects(self):
        lite = {"name": "lite", "driver": "SQLite3", "values": {"Server": "s", "Database": ":memory:"}}
        drivers = self.folder / "odbcinst.ini"
        before = drivers.read_text() + "[SQLite3]\nDriver=libsqlite3odbc.so\n"
        drivers.write_text(before)
        self.run_module(SALES, {**SALES, "name": "old"})
        options = {"driver_library": "/opt/v/libdriver.so", "prune": True, "test": True,
                   "test_timeout": 60}
        foreseen = self.run_module(SALES, lite, check=True, **options)
        self.assertEqual(drivers.read_text(), before)
        answer = self.run_module(SALES, lite, **options)
        for it in (foreseen, answer):
            self.assertEqual((it["changed"], it["driver"]["changed"]), (True, True))
            self.assertTrue(it["diff"]["prepared"].startswith(
                "@@ Veltrane @@\n+Driver=/opt/v/libdriver.so\n"))
            self.assertIn("@@ old @@\n-[old]\n", it["diff"]["prepared"])
        self.assertNotIn("tests", foreseen)
        self.assertEqual([it["outcome"] for it in answer["tests"]], ["refused", "connected"])
        self.assertRegex(answer["msg"], r"^1 of 2 data sources do not connect\. sales: Not connected; it "
                         r"took .*01000 .*Driver=/opt/v/libdriver\.so cannot be opened: No such file")
        self.assertIn("Driver=/opt/v/libdriver.so\n", drivers.read_text())
        self.assertNotIn("[old]", self.ini.read_text())
        self.assertIs(self.run_module(lite, **{**options, "prune": False})["changed"], False)
        self.assertIn("would remove all", self.run_module(prune=True)["msg"])

    def test_a_reason_for_all_of_them_is_reported_once(self):
        cases = (
            ("a name that occurs twice", (SALES, SALES), {},
             'code 1: veltrane-dsn: standard input: "sales" is described twice.'),
            ("no tool", (SALES,), {"executable": "no-such-tool"},
             "no-such-tool is not installed on this host."),
            ("two passwords", ({"name": "n", "pwd": "geheim", "pwd_file": "/b"},), {},
             "mutually exclusive: pwd|pwd_file"),
        )
        for point, sources, options, text in cases:
            with self.subTest(point):
                answer = self.run_module(*sources, **options)
                self.assertTrue(answer["failed"])
                self.assertIn(text, answer["msg"])
        self.assertEqual(self.ini.read_text(), "")

    def test_check_mode_without_the_tool_warns(self):
        answer = self.run_module(SALES, check=True, executable="no-such-tool")
        self.assertTrue(answer["changed"])
        self.assertIn("no-such-tool is not installed yet", answer["warnings"][0])


if __name__ == "__main__":
    if subprocess.run([PYTHON, "-c", "import ansible.module_utils.basic"], check=False,
                      stderr=subprocess.DEVNULL).returncode != 0:
        print("skipped: ansible-core is not installed for", PYTHON)
        sys.exit(SKIPPED)
    unittest.main(argv=sys.argv[:1], verbosity=2)
