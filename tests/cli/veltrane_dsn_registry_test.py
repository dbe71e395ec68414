#!/usr/bin/env python3
"""What the built veltrane-dsn does with the registry, on Windows (tool_test.py)."""
from tool_test import ToolTest, main

SALES = {"Driver": "Veltrane", "Server": "db", "Database": "d"}


class RegistryTest(ToolTest):
    def test_values_that_are_no_lines_of_text_stay_as_they_are(self):
        two_lines = b"hex(1):61,00,0a,00,62,00,00,00"
        for value in (b"dword:00000005", b"hex:01,02", two_lines, " outer blank"):
            self.write({"odd": {**SALES, "Extra": value}, "sales": SALES})
            before = self.dsns()
            self.run_tool("set", "odd", "--server", "t", "--unset", "Nothing")
            before["odd"]["Server"] = "t"
            self.assertEqual(self.dsns(), before)
            self.assertEqual(self.run_tool("list")[0], "odd\nsales\n")

    def test_no_name_reaches_another_key(self):
        self.write({"sales": SALES})
        for name in ("", "\\", "sales\\..", "ODBC Data Sources\\sales"):
            for command in ("remove", "show"):
                self.run_tool(command, name, code=3)
            self.run_tool("add", name, "--server", "s", "--database", "d", code=2)
        self.assertEqual(self.dsns(), {"sales": SALES})


if __name__ == "__main__":
    main()
