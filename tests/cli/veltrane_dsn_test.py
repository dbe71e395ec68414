#!/usr/bin/env python3
"""veltrane-dsn from the outside: what it prints, what it answers and what odbc.ini then holds."""
import json
import os
import pty
import termios
import time
import unittest

from cli_harness import TOOL, CliTest


class Files(CliTest):
    def test_a_file_in_a_missing_folder_is_named_with_the_reason(self):
        path = str(self.folder / "missing" / "odbc.ini")
        for arguments in (("add", "a", "--server", "s", "--database", "d"), ("show", "a"),
                          ("list",)):
            result = self.check(*arguments, code=1, environment={"ODBCINI": path}, err=path)
            self.assertIn("No such file or directory", result.stderr)
            self.assertNotIn("already", result.stderr)

    def test_text_before_the_first_section_is_the_reason(self):
        self.user_ini.write_text("stray=1\n[a]\nDriver=Veltrane\n")
        self.check("show", "a", code=1, err="text before the first section")


class Life(CliTest):
    def test_add_set_show_list_remove(self):
        self.add("a", "--uid", "me")
        self.assertEqual(self.section("a"), {
            "Driver": "Veltrane", "Server": "s", "Database": "d", "UID": "me"})
        self.check("add", "a", "--server", "s", code=4, err="already")
        self.check("set", "a", "--server", "t")
        self.check("show", "a", out="Server=t\n")
        self.check("list", out="a\n")
        self.check("remove", "a")
        self.assertIsNone(self.section("a"))
        for command in ("remove", "show", "set"):
            self.check(command, "a", code=3, err='no DSN "a"')

    def test_what_the_installer_refuses_comes_with_its_code(self):
        self.check("add", "a", "--server", "", "--database", "d", code=1, err="11: ")
        self.check("add", "a", "--driver", "Nobody", "--server", "s", code=1, err="1: ")

    def test_system_data_sources(self):
        self.add("a", "--system")
        self.assertEqual(self.section("a", self.system_ini)["Server"], "s")
        self.check("show", "a", code=3)


class ValuesAndSecrets(CliTest):
    def test_values_from_every_source(self):
        self.add("a", "-p", "namespace=ns", "-p", "Comment=", "-p", "Note=x=y;z",
                 "--connection-string", "LoginMode={a;}}b} ; UID=me")
        self.assertEqual(self.section("a"), {
            "Driver": "Veltrane", "Server": "s", "Database": "d", "Namespace": "ns",
            "LoginMode": "a;}b", "UID": "me", "Comment": "", "Note": "x=y;z"})
        self.check("set", "a", "--unset", "uid", "--unset", "Note", "-p", "Namespace=")
        self.assertEqual(self.section("a"), {
            "Driver": "Veltrane", "Server": "s", "Database": "d", "LoginMode": "a;}b",
            "Comment": ""})

    def test_what_no_line_can_hold_is_refused(self):
        self.add()
        before = self.user_ini.read_bytes()
        for value in ("Server= s", "Server=a\nb", "Note=" + "x" * 1000):
            self.check("set", "a", "-p", value, code=2, err="cannot be stored")
        for text in ("Server", "A={b", "A={b}c", "=b"):
            self.check("set", "a", "--connection-string", text, code=2, err="connection string")
        self.assertEqual(self.user_ini.read_bytes(), before)

    def test_passwords_are_refused_on_the_command_line(self):
        for arguments in (("-p", "PWD=geheim"), ("--connection-string", "pwd={geheim}"),
                          ("-p", "password=geheim")):
            result = self.check("add", "a", "--server", "s", "--database", "d", *arguments,
                                code=2, err="--pwd-stdin")
            self.assertNotIn("geheim", result.stdout + result.stderr)
        self.assertFalse(self.user_ini.exists())

    def test_passwords_from_every_source(self):
        file = self.folder / "password"
        file.write_text("from file\r\nsecond line\n")
        self.add()
        for arguments, expected in ((("--pwd-file", str(file)), "from file"),
                                    (("--pwd-env", "SECRET"), "from {env}"),
                                    (("--pwd-stdin",), "from input")):
            result = self.check("set", "a", *arguments, text="from input\nmore\n",
                                environment={"SECRET": "from {env}"})
            self.assertEqual(self.section("a")["PWD"], expected)
            self.assertNotIn(expected, result.stdout)
        self.check("set", "a", "--pwd-env", "NO_SUCH", code=2, err="NO_SUCH")
        self.check("set", "a", "--pwd-file", str(self.folder / "no"), code=1, err="No such file")
        self.check("set", "a", "--pwd-stdin", text="", code=2, err="no password")
        self.check("set", "a", "--pwd-stdin", "--pwd-env", "SECRET", code=2)
        self.assertEqual(self.section("a")["PWD"], "from input")

    def test_the_prompt_hides_what_is_typed(self):
        self.add()
        child, terminal = pty.fork()
        if child == 0:
            os.execve(TOOL, [TOOL, "set", "a", "--pwd-prompt"], self.environment)
        shown = b""
        while b"Password:" not in shown:
            shown += os.read(terminal, 100)
        while termios.tcgetattr(terminal)[3] & termios.ECHO:
            time.sleep(0.01)
        os.write(terminal, b"geheim\n")
        try:
            while more := os.read(terminal, 100):
                shown += more
        except OSError:  # the end of a terminal
            pass
        self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), 0, shown)
        self.assertNotIn(b"geheim", shown)
        self.assertEqual(self.section("a")["PWD"], "geheim")

    def test_secrets_are_masked(self):
        self.add()
        self.check("set", "a", "--pwd-stdin", text="geheim")
        for arguments in (("show", "a"), ("show", "a", "--json"),
                          ("set", "a", "--dry-run", "--pwd-env", "NEW"),
                          ("set", "a", "--dry-run", "--json", "--pwd-env", "NEW")):
            new = {"NEW": "geheim2"}
            result = self.check(*arguments, out="********", environment=new)
            self.assertNotIn("geheim", result.stdout)
            self.check(*arguments, "--show-secrets", out="geheim", environment=new)


class Changes(CliTest):
    def test_if_missing_and_replace(self):
        self.add("a", "-p", "Note=n")
        before = self.user_ini.read_bytes()
        self.check("add", "a", "--if-missing", "--server", "t", out="a: unchanged")
        self.assertEqual(self.user_ini.read_bytes(), before)
        self.check("add", "a", "--replace", "--server", "t", "--database", "e", out="a: changed")
        self.assertEqual(self.section("a"),
                         {"Driver": "Veltrane", "Server": "t", "Database": "e"})
        self.check("add", "b", "--if-missing", "--server", "t", "--database", "e", out="b: added")
        self.check("add", "a", "--if-missing", "--replace", code=2)

    def test_a_dry_run_shows_the_exact_difference_and_does_nothing(self):
        self.check("add", "a", "--dry-run", "--server", "s", "--database", "d",
                   out="[a]\n+Driver=Veltrane\n+Server=s\n+Database=d\na: added (dry run")
        self.assertFalse(self.user_ini.exists())
        self.add("a", "--uid", "me")
        before = self.user_ini.read_bytes()
        self.check("set", "a", "--dry-run", "--server", "t", "--database", "d", "--unset", "UID",
                   out="[a]\n-Server=s\n+Server=t\n-UID=me\na: changed")
        self.check("remove", "a", "--dry-run", out="-Server=s\n")
        self.assertEqual(self.user_ini.read_bytes(), before)

    def test_set_keeps_what_the_setup_component_does_not_know(self):
        self.user_ini.write_text("# mine\n[a]\nDriver=Veltrane\nServer=s\nDatabase=d\n"
                                 "Trace=1\nTimeout = 5\n\n[b]\nDriver=Other\n")
        self.check("set", "a", "--server", "t", out="kept, though the setup component does not "
                   "know them: Trace Timeout")
        self.assertEqual(self.section("a"), {"Driver": "Veltrane", "Server": "t",
                                             "Database": "d", "Trace": "1", "Timeout": "5"})
        self.assertIn("# mine\n", self.user_ini.read_text())
        self.assertEqual(self.section("b"), {"Driver": "Other"})
        before = self.user_ini.stat().st_mtime_ns
        self.check("set", "a", "--server", "t", out="a: unchanged")
        self.assertEqual(self.user_ini.stat().st_mtime_ns, before)

    def test_json_and_quiet(self):
        change = json.loads(self.add("a", "--json").stdout)
        self.assertEqual(change["result"], "added")
        self.assertIn({"key": "Server", "before": None, "after": "s"}, change["changes"])
        self.assertEqual(json.loads(self.check("list", "--json").stdout), ["a"])
        self.assertEqual(json.loads(self.check("show", "a", "--json").stdout)["values"]["Server"],
                         "s")
        self.assertEqual(self.check("set", "a", "-q", "--server", "t").stdout, "")

    def test_exit_codes_of_usage(self):
        for arguments in ((), ("frobnicate",), ("add",), ("show", "a", "--user", "--system")):
            self.check(*arguments, code=2)
        self.check("--help", out="add")

    @unittest.skipIf(os.geteuid() == 0, "root writes everywhere")
    def test_a_file_that_cannot_be_written(self):
        self.user_ini.write_text("")
        self.user_ini.chmod(0o400)
        self.check("add", "a", "--server", "s", "--database", "d", code=1,
                   err=f"{self.user_ini}: cannot write: Permission denied")


if __name__ == "__main__":
    unittest.main()
