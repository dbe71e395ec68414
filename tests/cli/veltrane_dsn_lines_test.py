#!/usr/bin/env python3
"""What veltrane-dsn takes and refuses: command lines, connection strings, descriptions (tool_test.py)."""
import json

from tool_test import PASSWORD, SALES, ToolTest, main


class RefusalTest(ToolTest):
    def assert_refused(self, part, *arguments, code=2, **others):
        """Nothing is done, and the reason has this in it, but no password."""
        with self.subTest(arguments, **others):
            output, errors = self.run_tool(*arguments, code=code, **others)
            self.assertEqual(output, "")
            self.assertIn(part, errors)
            self.assertNotIn("hunter2", errors)


class LineTest(RefusalTest):
    def test_options_stand_anywhere_and_may_be_empty(self):
        output, _ = self.run_tool("add", "--uid=", "sales", "-p", "A=", "--property=B=c d", "-pC=[x,y]",
                                  "--namespace", "", "--server=-x", "-n", "--database", "d")
        self.assertEqual(output, "sales: would be added\n+[sales]\n+Driver=Veltrane\n+Server=-x\n"
                                 "+Database=d\n+A=\n+B=c d\n+C=[x,y]\n")
        for words, name in (("list",), "list"), (("--", "--json"), "--json"), (("a", "--system"), "a"):
            self.assert_refused(f'There is no DSN "{name}" in ', "show", *words, code=3)

    def test_a_wrong_command_line_is_explained_without_what_may_be_a_password(self):
        for words, text in (
                ("", "A command is missing. Try"),
                ("--pwd hunter2", "A command is missing. Try"),
                ("add a hunter2", "There is an argument too many."),
                ("add a --pwd-stdin=hunter2", "--pwd-stdin takes no value."),
                ("add a --passwd=hunter2", "There is no option --passwd."),
                ("add a --server x --server y", "--server is given twice."),
                ("list -- a", "There is an argument too many."),
                ("show a --user --system", "--user and --system exclude each other."),
                ("lst --json", "There is no command lst. Did you mean list?"),
                ("frobnicate", "There is no command frobnicate. Try"),
                ("driver", "A command is missing after driver: register, unregister, list. Try"),
                ("driver remove", "There is no command driver remove. Try"),
                ("set", "The name of the DSN is missing. Usage: veltrane-dsn set NAME [OPTION...]."),
                ("apply", "The file is missing. Usage: veltrane-dsn apply FILE [OPTION...]."),
                ("add a --uid", "--uid needs a value: --uid NAME."),
                ("add a --uid --json", "--uid needs a value"),
                ("list --json=1", "--json takes no value."),
                ("add a -xq", "There is no option -x. Try"),
                ("add a -p", "--property needs a value: -p, --property KEY=VALUE."),
                ("add a --sever=x", "There is no option --sever. Did you mean --server?")):
            self.assert_refused("veltrane-dsn: " + text, *words.split())

    def test_what_contradicts_itself_or_cannot_be_stored_changes_nothing(self):
        self.add_sales()
        add = ["add", "new", "--server", "s", "--database", "d"]
        for part, *arguments in (
                ("--format is json or ini.", "apply", "--format", "xml", "-"),
                ("--format is json or ini.", "export", "--format", "xml"),
                ("--if-missing and --replace exclude each other.", *add, "--if-missing", "--replace"),
                ("-p has to be followed by KEY=VALUE.", "set", "sales", "-p", "Trace"),
                ("a DSN cannot do without Server.", "set", "sales", "--unset", "server"),
                ("the driver is given with --driver.", "set", "sales", "-p", "Driver=x"),
                ("the name of the DSN is the command's argument.", "set", "sales", "-p", "DSN=x"),
                ("UID is both given and removed.", "set", "sales", "--uid", "x", "--unset", "uid"),
                ("UID: ", "set", "sales", "-p", "UID=a\nb"),
                ("Server: ", "set", "sales", "--server", " x"),
                ("Server: ", "set", "sales", "--server", ""),
                ("Database: ", "set", "sales", "--database", 1000 * "x"),
                ("X: No line of odbc.ini can hold", "set", "sales", "-p", "X=" + 1000 * "x"),
                ("DSN: ", "add", "a[b", *add[2:]),
                ("come from two places", *add, "--pwd-stdin", "--pwd-env", "X"),
                ("A new DSN needs --server and --database.", "add", "new", "--uid", "u")):
            self.assert_refused(part, *arguments)
        self.assert_refused("PWD: ", "set", "sales", "--pwd-stdin", stdin="hunter2 ", code=1)
        self.assert_refused("pwd_env: the variable NOT_SET is not set.", "apply", "-", "-q", stdin=json.dumps(
            [{"name": "sales", "pwd_env": "NOT_SET", "values": {}}]), code=1)
        self.assertEqual(self.dsns(), {"sales": SALES})

    def test_both_formats_of_descriptions_say_the_same(self):
        self.stage.write("drivers", dict.fromkeys(("V2", "Veltrane"), self.stage.driver("x")))
        stored = {"driver": "veltrane", "Server": "db", "database": "d", "Namespace": "n", "UID": ""}
        self.write({"old": {"Driver": "Veltrane"}, "unset": {**SALES, "UID": "u"}, "same": stored})
        file = self.write_file("password", "hunter2")
        values = {"Server": "s", "Database": "日本"}
        output = self.run_tool("apply", "-", "-n", SECRET=PASSWORD, stdin=json.dumps(
            {"data_sources": [
                {"name": "new", "driver": "V2", "state": "present", "scope": "user",
                 "values": {"server": "s", "Database": "日本", "UID": "", "Trace": 1}},
                {"name": "old", "state": "absent"},
                {"name": "env", "pwd_env": "SECRET", "values": values},
                {"name": "file", "pwd_file": file, "values": values},
                {"name": "same", "values": {"Database": "d", "UID": "", "LoginMode": ""}}]}))[0]
        new = "+Server=s\n{}+Database=日本\n"
        secret = "+Driver=Veltrane\n" + new.format("+PWD=********\n")
        self.assertEqual(output, "new: would be added\n+[new]\n+Driver=V2\n" + new.format("") +
                         "+Trace=1\nold: would be removed\n-[old]\n-Driver=Veltrane\n"
                         f"env: would be added\n+[env]\n{secret}file: would be added\n"
                         f"+[file]\n{secret}same: unchanged\n3 would be added, 1 would be removed, "
                         "1 unchanged\n")
        self.assertEqual(output, self.run_tool("apply", "-", "-n", SECRET=PASSWORD, stdin=(
            "# c\r\n[ new ]\r\ndriver = V2\r\nserver= s\r\nDatabase=日本\nUID=\nTrace=1\n; c\n[old]\n"
            "State=absent\n[env]\nPWD_ENV=SECRET\nServer=s\nDatabase=日本\n[file]\npwd_file=" + file +
            "\nServer=s\nDatabase=日本\n[same]\nDatabase=d\nUID=\nLoginMode="))[0])
        self.assertEqual(self.run_tool("apply", "-", "-n", stdin=' \n[ {"name": "unset", "values": {"UID":'
                                       ' null}}]')[0], "unset: would be changed\n-UID=u\n1 would be changed\n")

    def test_what_is_no_dsn_is_passed_over_with_a_note(self):
        passed = " is the driver manager's own section and is passed over.\n"
        source = "veltrane-dsn: standard input"
        for text, notes in (
                ("[ODBC Data Sources]\na=V\na\n[odbc]\nTrace=1\n[a]\nSever=s\nPWD=\nState=absent\n",
                 f"{source}: [ODBC Data Sources]{passed}{source}: [odbc]{passed}"
                 f'{source}: "a": The driver has no key Sever; did you mean Server?\n'),
                ("[]", source + " describes no DSN.\n"), ("# nothing", source + " describes no DSN.\n")):
            self.assertEqual(self.run_tool("apply", "-", stdin=text)[1], notes)


class InputTest(RefusalTest):
    """What is the same on every system."""

    def test_a_connection_string_is_taken_apart(self):
        add = ["add", "a", "--server", "s", "--database", "d", "-n", "--connection-string"]
        for point, text, keys in (
                ("nothing", " ; ;", ""),
                ("blanks that do not count", " X = a b ; Y=\tb ;", "+X=a b +Y=b"),
                ("an empty value", "X=;Y=s", "+X= +Y=s"),
                ("a value with =", "X=a=b", "+X=a=b"),
                ("separators in braces", "X={a;b=c};Y=u", "+X=a;b=c +Y=u"),
                ("doubled braces", "X={a}}b}}};Y=u", "+X=a}b} +Y=u"),
                ("an opening brace inside, blanks behind", "X={a{b} ;Y=x{y}", "+X=a{b +Y=x{y}"),
                ("empty braces", "X={}", "+X="),
                ("the first of two", "x=a;X=b", "+x=a")):
            with self.subTest(point):
                lines = self.run_tool(*add, text)[0].splitlines()
                self.assertEqual(" ".join(lines[5:]), keys)
        for text, at in (("Server=a;hunter2", 10), ("Server=a;hunter2;UID=b", 10), ("=hunter2", 1),
                         ("PWD={hunter2;UID=x", 5), ("PWD={hunter2} x;UID=x", 15), ("PWD={hunter2}}", 5)):
            self.assert_refused(f"The connection string has, at byte {at}, ", *add, text)

    def test_a_malformed_description_changes_nothing_and_tells_no_value(self):
        def entry(values):
            return json.dumps([{"name": "a", **values}])
        for text, part in (
                ('{"data_sources": [\n{"name": "hunter2" "x"}]}', "input, line 2, column 22: not JSON in UTF-8."),
                (entry({"values": {"PWD": 1}}).replace("1", "1e999"), ": a number that is out of range."),
                ('[{"name": "a", "values": {"PWD": "x",\n"PWD": "hunter2"}}]',
                 'input, line 2, column 5: the key "PWD" occurs twice.'),
                (" \n", "standard input is empty: it describes no DSN."),
                (entry({"values": {"PWD": ""}}), 'has an empty "PWD"; null removes one.'),
                ('{"dsn": "hunter2"}', 'there is no list "data_sources".'),
                ('[{"values": {}}]', 'entry 1 has no "name".'),
                ('[{"name": "a"}, 1]', "entry 2 is not an object."),
                ('[{"name": 1}]', 'has "name", which is not a text.'),
                (entry({"state": "hunter2"}), '"a": the state is neither present nor absent.'),
                (entry({"valeus": {}}), 'has the unknown member "valeus".'),
                (entry({"values": ["hunter2"]}), 'has "values" that are not an object.'),
                (entry({"values": {"PWD": ["hunter2"]}}), 'has "PWD", which is not a text.'),
                (entry({"values": {"PWD": "hunter2", "pwd": "x"}}), 'has the key "pwd" twice.'),
                (entry({"values": {"Driver": "hunter2"}}), "the key Driver is no value of a DSN."),
                ('[{"name": "a"}, {"name": "A"}]', '"A" is described twice.'),
                (entry({"pwd_env": "E", "values": {"PWD": "hunter2"}}), "the password is given twice."),
                ("[a]\nhunter2\n", "input, line 2: neither a section, a comment nor a key"),
                ("\nPWD=hunter2\n", "input, line 2: a key before the first section."),
                ("[hunter2\n", "input, line 1: a section header without its closing bracket."),
                ("[a]\nPWD=x\npwd=hunter2\n", "input, line 3: a key that occurs twice."),
                ("[a]\n[A]\n", '"A" is described twice.'),
                ("[a]\nState=hunter2\n", "input: \"a\": the state is neither present nor absent."),
                ("; {\nDSN=x", "input, line 2: a key before the first section.")):
            self.assert_refused(part, "apply", "-", stdin=text, code=1)
        self.assert_refused(self.stage.NOWHERE + ": cannot read: ", "apply", self.stage.NOWHERE, code=1)
        with open(self.path("not-utf8"), "wb") as file:
            file.write(b'{"PWD": "hunter2\xff"}')
        self.assert_refused("not JSON in UTF-8", "apply", self.stage.native(self.path("not-utf8")), code=1)
        self.assertEqual(self.dsns(), {})

    def test_what_could_not_be_read_back_is_refused(self):
        self.write({"stored": {**SALES, "Long": 997 * "x"}})
        dsns, reasons = [{"name": "stored", "values": {"UID": "u"}}, {"name": "a[b", "values": {}}], []
        for values, reason in (({"Server": ""}, "Server: "), ({"Database": None}, "Database: "),
                               ({"Database": "a\nb"}, "Database: "), ({"PWD": "hunter2 "}, "PWD: "),
                               ({"PWD": 996 * "x"}, "PWD: "), ({"X": 998 * "x"}, "X: "),
                               ({"X\n": "x"}, "X\n: "), ({"#x": "1"}, "#x: ")):
            dsns.append({"name": str(len(dsns)), "values": {"Server": "s", "Database": "d", **values}})
            reasons.append(reason)
        results = self.run_json("apply", "-", stdin=json.dumps(dsns), code=1)["results"]
        self.assertEqual([result["state"] for result in results], ["changed"] + 9 * ["failed"])
        for result, reason in zip(results[2:], reasons):
            self.assertTrue(result["message"].startswith(reason), result)
        self.assertNotIn("hunter2", str(results))


if __name__ == "__main__":
    main()
