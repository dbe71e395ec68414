#!/usr/bin/env python3
"""What the built veltrane-dsn does with the registry, on Windows (tool_test.py)."""
import itertools
import json
import os
import subprocess

from tool_test import SALES, SALES_VALUES, ToolTest, main


class RegistryTest(ToolTest):
    def test_values_that_are_no_lines_of_text_stay_unchanged(self):
        two_lines = b"hex(1):61,00,0a,00,62,00,00,00"
        self.write({"odd": {**SALES, "Number": b"dword:00000005", "Bytes": b"hex:01,02", "Lines": two_lines,
                            "Blank": " outer blank"}, "sales": SALES})
        before = self.dsns()
        self.run_tool("set", "odd", "--server", "t", "--unset", "Nothing")
        before["odd"]["Server"] = "t"
        self.assertEqual(self.dsns(), before)

    def test_no_name_reaches_another_key(self):
        self.write({"sales": SALES})
        for name in ("", "\\", "ODBC Data Sources\\sales"):
            self.run_tool("remove", name, code=3)
            self.run_tool("add", name, "--server", "s", "--database", "d", code=2)
        self.assertEqual(self.dsns(), {"sales": SALES})

    def entries(self):
        """The user's DSNs as stored, with the driver's name from the list."""
        sections = dict(self.stage.export(self.user))
        drivers = sections.pop("ODBC Data Sources", {})
        return {name: {**entries, **({"Driver": drivers[name]} if name in drivers else {})}
                for name, entries in sections.items()}

    def test_a_kill_at_any_write_loses_no_key_and_reports_a_partial_dsn(self):
        before = {"sales": {**SALES, "Hint": "1"}, "gone": SALES}
        added = {**SALES, "Namespace": "n", "UID": "u"}
        add = ["add", "new", "--connection-string", "Server=db;Database=d;Namespace=n;UID=u"]
        file = self.write_file("dsns.json", json.dumps(
            [{"name": "new", "values": {key: added[key] for key in added if key != "Driver"}},
             {"name": "sales", "values": {"Server": "t", "Hint": None}},
             {"name": "gone", "state": "absent"}]))
        change = ["set", "sales", "--server", "t", "--unset", "Hint"]
        changed = {"sales": {**SALES, "Server": "t"}}
        points = 0
        for command, after in ((add, {**before, "new": added}), (change, {**before, **changed}),
                               (["apply", file], {**changed, "new": added})):
            for number in itertools.count(1):  # of a write to the registry
                self.write(before)
                process = self.start(command, {"VELTRANE_TEST_INSTALLER_ENDS": str(number)})
                if process.wait(120) == 0:
                    break
                self.assertEqual(process.returncode, 99)
                left = self.entries()
                for name, entries in before.items():
                    for key, value in entries.items():
                        allowed = (value, after.get(name, {}).get(key))
                        self.assertIn(left.get(name, {}).get(key), allowed, (command, number, key))
                if left.get("new", added) != added:
                    result = self.run_json("check", "new", code=1)
                    self.assertEqual(result["dsns"][0]["findings"][0]["id"], "value-missing")
                self.run_tool("apply", file)
                self.assertEqual(self.entries(), {**changed, "new": added})
                points += 1
            self.assertEqual(self.dsns(), after)
        self.assertGreater(points, 20)

    def test_a_write_that_the_installer_refuses_is_reported(self):
        for refused, command in (("WriteDSN", ["add", "new", "--server", "s", "--database", "d"]),
                                 ("Write Server", ["set", "sales", "--server", "t"]),
                                 ("RemoveDSN", ["remove", "sales"])):
            self.write({"sales": SALES})
            process = self.start(command, {"VELTRANE_TEST_INSTALLER_FAILS": refused},
                                 stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
            output = process.communicate(timeout=120)[0]
            self.assertEqual(process.returncode, 1, output)
            self.assertIn("1: General installer error", output)
            self.assertEqual(self.dsns(), {"sales": SALES})

    def test_names_compare_as_in_the_registry(self):
        self.write({"Ärger": {**SALES, "Ünits": "1"}, "sales": SALES})
        self.assertEqual(self.run_json("export", "ÄRGER")["data_sources"][0]["values"]["Ünits"], "1")
        self.assertEqual(self.run_tool("list", "--prefix", "är")[0], "Ärger\n")
        described = [{"name": "ärger", "values": {"Server": "db", "Database": "d", "üNITS": "2"}}]
        text = json.dumps({"data_sources": described})
        self.run_tool("apply", "-", "--prune", "--replace", stdin=text)
        self.assertEqual(self.dsns(), {"Ärger": {**SALES, "Ünits": "2"}})
        text = json.dumps({"data_sources": [*described, {**described[0], "name": "ÄRGER"}]})
        self.assertIn("described twice", self.run_tool("apply", "-", stdin=text, code=1)[1])
        self.run_tool("remove", "ärger", "ÄRGER")
        self.assertEqual(self.dsns(), {})

    def test_restores_the_code_page_of_the_console(self):
        command = self.stage.native(self.stage.tool).replace("\\", "\\\\") + " list"
        self.stage.tool = self.compile("console", """
            int main(void) {
                SetConsoleOutputCP(437);
                system("%s");
                printf("page=%%u", GetConsoleOutputCP());
            }""" % command, options=())
        self.assertIn("page=437", self.run_on_a_terminal(answers=[])[1])

    def test_an_export_reports_what_it_leaves_out(self):
        self.write({"odd": {**SALES, "Blob": b"hex:01,02", "PWD": "hunter2"}, "sales": SALES})
        self.assertEqual(self.run_tool("export")[1].replace("\r", ""),
                         "veltrane-dsn: Passwords are left out; --show-secrets writes them: PWD of odd.\n"
                         "veltrane-dsn: Values that are not text are left out: Blob of odd.\n")

    def test_a_driver_without_its_library_gets_no_dsn(self):
        self.stage.write("drivers", {"Veltrane": {"Setup": self.stage.setup}})
        finding = next(it for it in self.run_json("doctor", code=1)["findings"]
                       if it["id"] == "driver-without-library")
        self.assertEqual(finding["severity"], "error")
        self.assertIn("the installer adds no DSN", finding["text"])
        self.assertIn("has no Driver entry in " + self.stage.places["drivers"],
                      self.run_tool("add", "s", "--server", "s", "--database", "d", code=1)[1])

    def test_a_password_file_can_be_on_a_server(self):
        self.write_file("password", "hunter2")
        path = "\\\\?\\unix" + self.path("password").replace("/", "\\")
        self.run_tool("apply", self.write_file("dsns.json", json.dumps(
            [{"name": "sales", "pwd_file": path, "values": SALES_VALUES}])))
        self.assertEqual(self.dsns(), {"sales": {**SALES, "PWD": "hunter2"}})

    def test_every_user_can_read_a_system_password(self):
        for scope in ("user", "system"):
            self.write({"sales": {**SALES, "PWD": "hunter2"}}, scope)
            found = [it for it in self.run_json("doctor")["findings"]
                     if it["id"] == "password-readable-by-others"]
            self.assertEqual(len(found), scope == "system")
        self.assertIn(self.stage.places["system"] + " can be read by everybody and holds the "
                      "passwords of: sales.", found[0]["text"])

    def test_doctor_names_what_a_killed_run_of_an_older_version_left(self):
        record = "HKEY_CURRENT_USER\\Software\\Veltrane\\veltrane-dsn"
        self.stage.unwritten += [f"[{record}]", '"Change"="[change]"']
        self.assertIn(record + "\\Change", self.findings(0)["change-interrupted"])

    def test_a_library_of_the_system_needs_no_file(self):
        needed = self.compile("API-MS-Win-none-l1-1-0", "EXPORTED int needed(void) { return 1; }")
        library = self.compile("driver", "int needed(void); "
                                     "EXPORTED int SQLAllocHandle(void) { return needed(); }", needed)
        os.remove(self.stage.unix(needed))
        self.stage.write("drivers", {"Veltrane": {"Setup": self.stage.setup, "Driver": library}})
        self.run_tool("doctor")


if __name__ == "__main__":
    main()
