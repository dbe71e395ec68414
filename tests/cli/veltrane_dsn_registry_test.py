#!/usr/bin/env python3
"""What the built veltrane-dsn does with the registry, on Windows (tool_test.py)."""
from tool_test import ToolTest, main

SALES = {"Driver": "Veltrane", "Server": "db", "Database": "d"}


class RegistryTest(ToolTest):
    def test_a_dsn_that_could_not_be_put_back_is_left_alone(self):
        two_lines = b"hex(1):61,00,0a,00,62,00,00,00"
        for value in (b"dword:00000005", b"hex:01,02", two_lines, " outer blank"):
            self.write({"odd": {**SALES, "Extra": value}, "sales": SALES})
            before = self.dsns()
            for command in (("set", "odd", "--server", "t"), ("remove", "odd"), ("show", "odd")):
                _, errors = self.run_tool(*command, code=1)
                self.assertIn(self.stage.places["user"] + "\\odd: the value Extra is no line of text",
                              errors)
            self.assertEqual(self.run_tool("list")[0], "odd\nsales\n")
            self.assertEqual(self.dsns(), before)

    def test_a_change_of_a_system_dsn_that_was_killed_is_recorded_for_all_users(self):
        self.register_front("forward(window, request, driver, values); KILL();")
        self.write({"sales": {**SALES, "Extra": "1"}}, "system")
        self.run_tool("set", "sales", "--system", "--server", "t", code=self.stage.KILLED)
        record = self.stage.export(r"HKEY_LOCAL_MACHINE\SOFTWARE\Veltrane")["veltrane-dsn"]["Change"]
        self.assertIn("Extra=1", record)
        self.assertFalse(self.stage.has_record())
        self.assertEqual(self.dsns("system"), {"sales": {**SALES, "Server": "t"}})
        repairs = [finding["repair"] for finding in self.run_json("doctor")["findings"]
                   if finding["id"] == "change-interrupted"]
        self.assertIn("veltrane-dsn set NAME --system", repairs[0])
        self.run_tool("remove", "nothing", "--if-exists", "--system")
        self.assertEqual(self.dsns("system"), {"sales": {**SALES, "Server": "t", "Extra": "1"}})

    def test_no_name_reaches_another_key(self):
        self.write({"sales": SALES})
        for name in ("", "\\", "sales\\..", "ODBC Data Sources\\sales"):
            for command in ("remove", "show"):
                self.run_tool(command, name, code=3)
            self.run_tool("add", name, "--server", "s", "--database", "d", code=2)
        self.assertEqual(self.dsns(), {"sales": SALES})


if __name__ == "__main__":
    main()
