#!/usr/bin/env python3
"""veltrane-dsn from the outside: what it prints, what it answers and what odbc.ini then holds."""
import unittest

from cli_harness import CliTest


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


if __name__ == "__main__":
    unittest.main()
