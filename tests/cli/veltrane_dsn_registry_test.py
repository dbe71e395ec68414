#!/usr/bin/env python3
"""What the built veltrane-dsn does with the registry, on Windows (tool_test.py)."""
import itertools
import json

from tool_test import SALES, ToolTest, main


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

    def entries(self):
        """The user's DSNs as they are; the driver by the name that it has in the list."""
        sections = dict(self.stage.export(self.stage.places["user"]))
        drivers = sections.pop("ODBC Data Sources", {})
        return {name: {**entries, **({"Driver": drivers[name]} if name in drivers else {})}
                for name, entries in sections.items()}

    def test_a_kill_at_any_write_loses_no_key_and_names_a_dsn_that_is_cut_off(self):
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
                process = self.stage.start(command, {"VELTRANE_TEST_INSTALLER_ENDS": str(number)})
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


if __name__ == "__main__":
    main()
