#!/usr/bin/env python3
"""What veltrane-dsn accepts and refuses: command lines, connection strings,
descriptions (tool_test.py)."""
import json

from tool_test import PASSWORD, SALES, ToolTest, main


class LineTest(ToolTest):
    def test_options_can_be_anywhere_and_empty(self):
        output, _ = self.run_tool("add", "--uid=", "sales", "-p", "A=", "--property=B=c d", "-pC=[x,y]",
                                  "--namespace", "", "--server=-x", "-n", "--database", "d")
        self.assertEqual(output, "sales: would be added\n+[sales]\n+Driver=Veltrane\n+Server=-x\n"
                                 "+Database=d\n+A=\n+B=c d\n+C=[x,y]\n")
        for words, name in (("list",), "list"), (("--", "--json"), "--json"), (("a", "--system"), "a"):
            self.assert_refused(f'There is no DSN "{name}" in ', "show", *words, code=3)

    def test_errors_in_a_command_line_show_no_possible_password(self):
        for words, text in (
                ("", "A command is missing. Try"),
                ("--pwd hunter2", "A command is missing. Try"),
                ("add a hunter2", "There are too many arguments."),
                ("add a --pwd-stdin=hunter2", "--pwd-stdin takes no value."),
                ("add a --passwd=hunter2", "There is no option --passwd."),
                ("add a --server x --server y", "--server is given twice."),
                ("show a --user --system", "--user and --system exclude each other."),
                ("lst --json", "There is no command lst. Did you mean list?"),
                ("driver", "A command is missing after driver: register, unregister, list. Try"),
                ("driver remove", "There is no command driver remove. Try"),
                ("set", "The name of the DSN is missing. Usage: veltrane-dsn set NAME [OPTION...]."),
                ("apply", "The file is missing. Usage: veltrane-dsn apply FILE [OPTION...]."),
                ("test a --timeout 0", "--timeout is a number of seconds"),
                ("test a --timeout 2s", "--timeout is a number of seconds"),
                ("test a --timeout 86401", "--timeout is a number of seconds from 1 to 86400."),
                ("test - --pwd-stdin", "Standard input cannot give a connection string and a password."),
                ("test -", "Standard input has no connection string."),
                ("test - --apart", "--apart is for the tool itself."),
                ("add a --uid", "--uid needs a value: --uid NAME."),
                ("add a --uid --json", "--uid needs a value"),
                ("add a -xq", "There is no option -x. Try"),
                ("add a -p", "--property needs a value: -p, --property KEY=VALUE."),
                ("add a --sever=x", "There is no option --sever. Did you mean --server?")):
            self.assert_refused("veltrane-dsn: " + text, *words.split())

    def test_contradictions_and_values_that_cannot_be_stored_change_nothing(self):
        self.add_sales()
        add = ["add", "new", "--server", "s", "--database", "d"]
        for part, *arguments in (
                ("--format is json or ini.", "apply", "--format", "xml", "-"),
                ("--if-missing and --replace exclude each other.", *add, "--if-missing", "--replace"),
                ("-p has to be followed by KEY=VALUE.", "set", "sales", "-p", "Trace"),
                ("a DSN cannot do without Server.", "set", "sales", "--unset", "server"),
                ("the driver is given with --driver.", "set", "sales", "-p", "Driver=x"),
                ("the name of the DSN is the command's argument.", "set", "sales", "-p", "DSN=x"),
                ("UID is both given and removed.", "set", "sales", "--uid", "x", "--unset", "uid"),
                ("UID: ", "set", "sales", "-p", "UID=a\nb"),
                ("X: No line of odbc.ini can hold", "set", "sales", "-p", "X=" + 1000 * "x"),
                ("DSN: ", "add", "a[b", *add[2:]),
                ("given in two places", *add, "--pwd-stdin", "--pwd-env", "X"),
                ("A new DSN needs --server and --database.", "add", "new", "--uid", "u"),
                ("Data Source is Server, Initial Catalog is Database.", "set", "sales",
                 "--connection-string", "data source=db;Initial Catalog=d")):
            self.assert_refused(part, *arguments)
        for words in ("-p pwd=hunter2", "--password=hunter2", "--connection-string UID=u;PWD=hunter2"):
            self.assert_refused("--pwd-stdin", *add, *words.split(" "))
        self.assert_refused("--pwd-env: the variable NOT_SET is not set.", *add, "--pwd-env", "NOT_SET", code=1)
        self.assert_refused(": cannot read: ", *add, "--pwd-file", self.stage.NOWHERE, code=1)
        self.assert_refused("PWD: ", "set", "sales", "--pwd-stdin", stdin="hunter2 ", code=1)
        self.assert_refused("pwd_env: the variable NOT_SET is not set.", "apply", "-", "-q", stdin=json.dumps(
            [{"name": "sales", "pwd_env": "NOT_SET", "values": {}}]), code=1)
        self.assertEqual(self.dsns(), {"sales": SALES})

    def test_both_formats_of_descriptions_mean_the_same(self):
        self.stage.write("drivers", dict.fromkeys(("V2", "Veltrane"), self.stage.driver("x")))
        stored = {"driver": "veltrane", "Server": "db", "database": "d", "Namespace": "n", "UID": ""}
        self.write({"old": {"Driver": "Veltrane"}, "unset": {**SALES, "UID": "u"}, "same": stored})
        file = self.write_file("password", "hunter2")
        values = {"Server": "s", "Database": "日本"}
        json_text = json.dumps({"data_sources": [
            {"name": "new", "driver": "V2", "state": "present", "scope": "user",
             "values": {"server": "s", "Database": "日本", "UID": "", "Trace": 1}},
            {"name": "old", "state": "absent"},
            {"name": "env", "pwd_env": "SECRET", "values": values},
            {"name": "file", "pwd_file": file, "values": values},
            {"name": "same", "values": {"Database": "d", "UID": "", "LoginMode": ""}}]})
        ini_text = ("# c\r\n[ new ]\r\ndriver = V2\r\nserver= s\r\nDatabase=日本\nUID=\nTrace=1\n; c\n[old]\n"
                    "State=absent\n[env]\nPWD_ENV=SECRET\nServer=s\nDatabase=日本\n[file]\npwd_file=" + file +
                    "\nServer=s\nDatabase=日本\n[same]\nDatabase=d\nUID=\nLoginMode=")
        secret = "+Driver=Veltrane\n+Server=s\n+PWD=********\n+Database=日本\n"
        for text in (json_text, ini_text):
            self.assertEqual(self.run_tool("apply", "-", "-n", SECRET=PASSWORD, stdin=text)[0],
                             "new: would be added\n+[new]\n+Driver=V2\n+Server=s\n+Database=日本\n+Trace=1\n"
                             "old: would be removed\n-[old]\n-Driver=Veltrane\n"
                             f"env: would be added\n+[env]\n{secret}file: would be added\n+[file]\n{secret}"
                             "same: unchanged\n3 would be added, 1 would be removed, 1 unchanged\n")
        self.assertEqual(self.run_tool("apply", "-", "-n", stdin=' \n[ {"name": "unset", "values": {"UID":'
                                       ' null}}]')[0], "unset: would be changed\n-UID=u\n1 would be changed\n")

    def test_sections_that_are_no_dsns_are_skipped_with_a_note(self):
        passed = " is the driver manager's own section and is ignored.\n"
        source = "veltrane-dsn: standard input"
        for text, notes in (
                ("[ODBC Data Sources]\na=V\na\n[odbc]\nTrace=1\n[a]\nSever=s\nPWD=\nState=absent\n",
                 f"{source}: [ODBC Data Sources]{passed}{source}: [odbc]{passed}"
                 f'{source}: "a": The driver has no key Sever; did you mean Server?\n'),
                ("[]", source + " describes no DSN.\n"), ("# nothing", source + " describes no DSN.\n")):
            self.assertEqual(self.run_tool("apply", "-", stdin=text)[1], notes)


class InputTest(ToolTest):
    """The same on every system."""

    def test_parses_a_connection_string(self):
        add = ["add", "a", "--server", "s", "--database", "d", "-n", "--connection-string"]
        for text, keys in (
                (" ; ;", ""),
                # Blanks around, nothing, and an equals sign in a value; the first of two counts.
                (" X = a b ; Y=\tb ;Z=;V=a=b;x=c", "+X=a b +Y=b +Z= +V=a=b"),
                # Separators and doubled braces within braces; a brace inside, and blanks after one.
                ("X={a;b=c}}b}}};Y={a{b} ;Z=x{y};V={}", "+X=a;b=c}b} +Y=a{b +Z=x{y} +V="),
                # The driver; options win.
                ("Driver={veltrane};server=t; Database={u};X=a", "+X=a")):
            lines = self.run_tool(*add, text)[0].splitlines()
            self.assertEqual(lines[2:5], ["+Driver=" + ("veltrane" if "Driver" in text else "Veltrane"),
                                          "+Server=s", "+Database=d"])
            self.assertEqual(" ".join(lines[5:]), keys)
        for text, at in (("Server=a;hunter2", 10), ("Server=a;hunter2;UID=b", 10), ("=hunter2", 1),
                         ("PWD={hunter2} x;UID=x", 15), ("PWD={hunter2}}", 5)):
            self.assert_refused(f"The connection string has, at byte {at}, ", *add, text)

    def test_a_malformed_description_changes_nothing_and_shows_no_value(self):
        def entry(values):
            return json.dumps([{"name": "a", **values}])
        for text, part in (
                ('{"data_sources": [\n{"name": "hunter2" "x"}]}', "input, line 2, column 22: not JSON in UTF-8."),
                ('{"PWD": "hunter2\udcff"}', "not JSON in UTF-8"),
                (entry({"values": {"PWD": 1}}).replace("1", "1e999"), ": a number that is out of range."),
                ('[{"name": "a", "values": {"PWD": "x",\n"PWD": "hunter2"}}]', 'column 5: the key "PWD" occurs twice.'),
                (json.dumps([dict.fromkeys(map(str, range(30)))])[:-2] + ', "7": 1}]', 'the key "7" occurs twice.'),
                (" \n", "standard input is empty: it describes no DSN."),
                (entry({"values": {"PWD": ""}}), 'has an empty "PWD"; null removes one.'),
                ('{"dsn": "hunter2"}', 'there is no list "data_sources".'),
                ('[{"name": "a"}, 1]', "entry 2 is not an object."),
                ('[{"name": 1}]', 'has "name", which is not a text.'),
                (entry({"state": "hunter2"}), '"a": the state is neither present nor absent.'),
                (entry({"valeus": {}}), 'has the unknown member "valeus".'),
                (entry({"values": ["hunter2"]}), 'has "values" that are not an object.'),
                (entry({"values": {"PWD": ["hunter2"]}}), 'has "PWD", which is not a text.'),
                (entry({"values": {"PWD": "hunter2", "pwd": "x"}}), 'has the key "pwd" twice.'),
                (entry({"values": {"Driver": "hunter2"}}), "the key Driver is not a value of a DSN."),
                ('[{"name": "a"}, {"name": "A"}]', '"A" is described twice.'),
                (entry({"pwd_env": "E", "values": {"PWD": "hunter2"}}), "the password is given twice."),
                ("[a]\nhunter2\n", "input, line 2: neither a section, a comment nor a key"),
                ("\nPWD=hunter2\n", "input, line 2: a key before the first section."),
                ("[hunter2\n", "input, line 1: a section header without its closing bracket."),
                ("[a]\nPWD=x\n" + "".join(f"K{i}=\n" for i in range(30)) + "pwd=hunter2\n",
                 "input, line 33: a key that occurs twice."),
                ("; {\nDSN=x", "input, line 2: a key before the first section.")):
            self.assert_refused(part, "apply", "-", stdin=text, code=1)
        self.assertEqual(self.dsns(), {})


REGISTRY = "Windows Registry Editor Version 5.00\r\n[HKEY_CURRENT_USER\\Software\\ODBC\\ODBC.INI\\a]\r\n"


class ImportTest(ToolTest):
    """Bytes that are not UTF-8 are written as lone surrogates."""

    def test_accepts_common_files(self):
        source = "standard input"
        for point, text, expected, *options in (
                ("the list names the driver where the section has a path, and one that is gone",
                 "[ODBC]\nTrace=1\n[ODBC Data Sources]\na=Veltrane\nb=Other\ngone=Veltrane\n"
                 "[a]\nDriver=/lib/v.so\nserver = s ; x\nPWD=hunter2\nTrace=\nUID=\n[b]\nDriver=/o.so\n"
                 "[c]\nDriver=veltrane\n[d]\nServer=s\n[A]\nServer=second\n",
                 "[a]\nDriver=Veltrane\nServer=s ; x\nTrace=\n[c]\nDriver=Veltrane\n"
                 "[A] is left out: there is one of this name before it.\n"
                 '"gone" is left out: it is listed, but has no values.\n'
                 '"b" is left out: it is one of the driver "Other".\n'
                 '"d" is left out: it has no driver.\n'
                 "Passwords are left out; --show-secrets takes them, too.\n"),
                ("another name there, in latin1", "[a]\nDriver=V 2\nServer=B\udcfcro\nPWD=p\n",
                 "[a]\nDriver=V3\nServer=Büro\nPWD=p\n", "--driver", "V3", "--from-driver", "v 2",
                 "--show-secrets"),
                ("all drivers, in another encoding",
                 "[a]\nDriver=V\nDatabase=\udc93\udc8c\udc8b\udc9e\n[b]\nDriver=W\n",
                 "[a]\nDriver=V\nDatabase=東京\n[b]\nDriver=W\n", "--encoding", "cp932", "--all"),
                ("a file DSN", "[ODBC]\r\nDRIVER={Veltrane}\r\nUID=anna\r\nDatabase={}}a;}}b}\r\nServer=s\r\n",
                 "[Sales]\nDriver=Veltrane\nUID=anna\nDatabase=}a;}b\nServer=s\n", "--name", "Sales"),
                ("strings, expandable strings, numbers, other kinds and an unknown escape",
                 REGISTRY + '@="own"\r\n"Driver"="Veltrane"\r\n"Database"="C:\\\\a \\"b\\" \\c" ; x\r\n'
                 '"Server"=hex(2):64,00,\\\r\n  fc,00,00,00\r\n"Port"=dword:0000001f\r\n'
                 '"Blob"=hex:01,02\r\n"Many"=hex(7):61,00,00,00\r\n"Line"="x\r\ny"\r\n'
                 "; comment\r\n[-HKEY_CURRENT_USER\\Software\\ODBC\\ODBC.INI\\z]\r\n"
                 '[HKEY_CURRENT_USER\\Software\\Other]\r\n"x"="y"\r\n'
                 '[HKEY_CURRENT_USER\\Software\\ODBC\\ODBC.INI\\a\\Sub]\r\n"x"="y"\r\n',
                 '[a]\nDriver=Veltrane\nDatabase=C:\\a "b" \\c\nServer=dü\nPort=31\n'
                 '"a": Blob is left out: its value is not text.\n'
                 '"a": Many is left out: its value is not text.\n'
                 '"a": the key Sub in it is left out.\n'
                 '"a": Line is left out: no line of odbc.ini can hold it unchanged.\n'),
                ("an old export, with each scope's list; the user's DSN wins",
                 "REGEDIT4\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\ODBC\\ODBC.INI\\ODBC Data Sources]\n"
                 '"a"="Veltrane"\n"b"="Veltrane"\n'
                 '[HKEY_LOCAL_MACHINE\\SOFTWARE\\ODBC\\ODBC.INI\\a]\n"Driver"="C:\\\\v.dll"\n'
                 '[HKEY_LOCAL_MACHINE\\SOFTWARE\\ODBC\\ODBC.INI\\b]\n"Server"=hex(2):80,00\n'
                 '[HKEY_LOCAL_MACHINE\\SOFTWARE\\WOW6432Node\\ODBC\\ODBC.INI\\c]\n"Driver"="Veltrane"\n'
                 '[HKEY_CURRENT_USER\\Software\\ODBC\\ODBC.INI\\A]\n"Driver"="Veltrane"\n',
                 "[A]\nDriver=Veltrane\n[b]\nDriver=Veltrane\nServer=€\n"
                 '"a" is left out: there is one of this name before it.\n'
                 '"c" is left out: it is for 32-bit programs.\n'),
                ("lines that the driver manager reads in its own way",
                 "[a\r\nDriver=Veltrane\r\n; x\r\nServer\r\n",
                 f'[a]\nDriver=Veltrane\n{source}, line 1 has no "]"; it is read as a section.\n'
                 f'{source}, line 4 has no "="; it is read as a key without a value.\n'),
                ("one object of PowerShell",
                 '{"Name": "a", "DsnType": "User", "Platform": "32/64-bit", "DriverName": "Veltrane", '
                 '"Attribute": {"Driver": "C:\\\\v.dll", "Server": "東京", "PWD": "", "Port": 3, '
                 '"Pooled": [1], "X": null}, "CimClass": {}}',
                 '[a]\nDriver=Veltrane\nServer=東京\nPort=3\n"a": Pooled is left out: its value is not text.\n'),
                ("a list of them, in other forms of values",
                 '{"value": [{"Name": "a", "DsnType": "System", "DriverName": "Veltrane", '
                 '"PropertyValue": ["Server=s=t", "UID=u"]}, {"Name": "b", "Platform": "32-bit", '
                 '"DriverName": "Veltrane"}, {"Name": "c", "DriverName": "Veltrane", "Attribute": '
                 '[{"Key": "Server", "Value": "x"}, {"Name": "Trace", "Value": "1"}]}], "Count": 3}',
                 "[c]\nDriver=Veltrane\nServer=x\nTrace=1\n[a]\nDriver=Veltrane\nServer=s=t\nUID=u\n"
                 '"b" is left out: it is for 32-bit programs.\n')):
            with self.subTest(point):
                output, errors = self.run_tool("import", "-", *options, stdin=text)
                lines = ""
                for dsn in json.loads(output)["data_sources"]:
                    lines += "[{name}]\nDriver={driver}\n".format(**dsn)
                    lines += "".join(f"{key}={value}\n" for key, value in dsn["values"].items())
                self.assertEqual(lines + errors.replace("veltrane-dsn: ", ""), expected)

    def test_refuses_with_the_place_and_without_values(self):
        for text, reason, *options in (
                (" \n", " is empty: it has no DSN."),
                ("[a]\0\n", " is not text, or is UTF-16 without a byte order mark."),
                ("hunter2\n[a]\nx=y\n", " is no odbc.ini, file DSN, export of the registry or JSON of Get-OdbcDsn."),
                ("# [a]\n", " has no DSN."),
                ("[ODBC]\nPWD=hunter2\n", " has no DSN: its section [ODBC] names no driver."),
                ("[ODBC]\nDSN=hunter2\n", " only names a DSN of its machine; import that one."),
                ('REGEDIT4\n"PWD"="hunter2"\n', ", line 2: neither a key, a value of one nor a comment."),
                ("REGEDIT4\n[HKEY_hunter2\n", ", line 2: a key without its closing bracket."),
                (REGISTRY + "hunter2\n", ", line 3: neither a key, a value of one nor a comment."),
                (REGISTRY + '"PWD"="hunter2\n\n', ", line 3: a text without its closing quote."),
                (REGISTRY + '"PWD"="x"hunter2\n', ", line 3: text after a value."),
                (REGISTRY + '"PWD" hunter2\n', ', line 3: a name without "=".'),
                (REGISTRY + '"PWD"=hunter2\n', ", line 3: a value of an unknown kind."),
                (REGISTRY + '"PWD"=dword:hunter2\n', ", line 3: a dword that is no number."),
                (REGISTRY + '"PWD"=hex(2):61,hunter2\n', ", line 3: a byte that is no number."),
                (REGISTRY + '"PWD"=hex(2):6161\n', ", line 3: bytes without a comma between them."),
                (REGISTRY + '"PWD"=hex(2', ", line 3: a value of an unknown kind."),
                ('{"hunter2" 1}', ", line 1, column 12: not JSON in UTF-8."),
                ('[{"Name": 1}]', ': entry 1 has "Name", which is not a text.'),
                ('{"x": "hunter2"}', ': entry 1 has no "Name".'),
                ('[{"Name": "a"}, "hunter2"]', ": entry 2 is not an object."),
                ('{"Name": "a", "Attribute": "hunter2"}',
                 ': entry 1 has "Attribute" cut short; write it by ConvertTo-Json -Depth 4.'),
                ('{"Name": "a", "PropertyValue": ["hunter2"]}',
                 ': entry 1 has "PropertyValue" with a key that has no value.'),
                ('[{"name": "a"}]', " is a description already: apply takes it."),
                ("[a]\nx=\udcff\n", " has bytes that are invalid in its encoding.", "--encoding", "utf-8")):
            self.assert_refused("veltrane-dsn: standard input" + reason, "import", "-", *options, stdin=text, code=1)
        for text, reason, *options in (
                ("[ODBC]\nDriver=Veltrane\n", "A file DSN contains no name: give --name."),
                ("[a]\nx=\udcff\n", "--encoding names an encoding that is not known.", "--encoding", "no-such"),
                ("[a]\nx=y\n", "--name is for a file DSN; standard input has the names of its DSNs.",
                 "--name", "b")):
            self.assert_refused(reason, "import", "-", *options, stdin=text)


if __name__ == "__main__":
    main()
