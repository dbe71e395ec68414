#!/usr/bin/env python3
"""What the built veltrane-dsn does on every system, by the commands' topics (tool_test.py)."""
import json
import os

from tool_test import PASSWORD, SALES, SALES_VALUES, ToolTest, main


class ChangeTest(ToolTest):
    def test_adds_shows_lists_changes_and_removes(self):
        self.assertEqual(self.add_sales("--uid", "anna", "-p", "LoginMode=1")[0], "sales: added\n")
        self.assertEqual(self.dsns(), {"sales": {**SALES, "UID": "anna", "LoginMode": "1"}})
        self.assertEqual(self.run_tool("list")[0], "sales\n")
        self.run_tool("set", "sales", "--database", "東京", "--unset", "uid", "-q")
        shown, _ = self.run_tool("show", "sales")
        self.assertEqual(shown.splitlines()[0], "DSN=sales")
        self.assertEqual(set(shown.splitlines()[1:]),
                         {"Driver=Veltrane", "Server=db", "LoginMode=1", "Database=東京"})
        self.assertEqual(self.run_tool("remove", "sales", "SALES")[0], "sales: removed\n")
        self.assertEqual(self.dsns(), {})
        self.assertEqual(self.run_tool("list")[0], "")

    def test_works_on_system_dsns(self):
        self.add_sales("--system")
        self.assertEqual((self.dsns("system"), self.dsns()), ({"sales": SALES}, {}))
        self.assertEqual(self.run_json("list", "--system")["dsns"], [{"name": "sales", "driver": "Veltrane"}])
        self.assert_refused(f"There is one in {self.stage.places['system']}: try --system.", "remove",
                            "sales", code=3)
        self.run_tool("remove", "sales", "--system")
        self.assertEqual(self.dsns("system"), {})

    def test_lists_both_scopes_and_which_hides_which(self):
        self.write({"sales": {**SALES, "Database": "東京"}, "zone": SALES})
        self.write({"Sales": SALES, "theirs": {"Driver": "Other"}}, "system")
        self.assertEqual(self.run_tool("list", "--both")[0],
                         "NAME   SCOPE   SERVER  DATABASE\n"
                         "sales  user    db      東京        hides\n"
                         "zone   user    db      d\n"
                         "Sales  system  db      d         hidden\n")
        listed = self.run_json("list", "--both", "--all", "--prefix", "S")
        self.assertEqual((listed["scope"], listed["dsns"][1]),
                         ("both", {"name": "Sales", "driver": "Veltrane", "scope": "system",
                                   "server": "db", "database": "d", "relation": "hidden"}))
        self.assertEqual(self.run_tool("list", "--long")[0].splitlines()[1:],
                         ["sales  user   db      東京", "zone   user   db      d"])

    def test_stores_every_character_of_an_argument(self):
        value = 'say "no" \\ a\\\\"b c\\\\ 100 %PATH% ^& | < > \' ü€日本😀=;#{}\\'
        self.add_sales("--uid", value, "-p", "Trace=" + value)
        self.assertEqual(self.dsns()["sales"], {**SALES, "UID": value, "Trace": value})

    def test_keeps_what_a_change_does_not_name(self):
        kept = {"Extra": "a ; b", "Trace": "", "UID": 300 * "u"}  # as a new one it would be refused
        self.write({"sales": {**SALES, **kept}, "other": {"x": "1"}})
        output, errors = self.run_tool("set", "sales", "--server", "t", "--unset", "Nothing", "-p", "Sever=x")
        self.assertEqual(output, "sales: changed\n")
        self.assertIn("The driver has no key Sever; did you mean Server?", errors)
        self.assertEqual(self.dsns(), {"sales": {**SALES, **kept, "Server": "t", "Sever": "x"},
                                       "other": {"x": "1"}})

    def test_existing_and_missing_dsns_have_their_own_exit_codes(self):
        self.add_sales("--uid", "anna", "-p", "Trace=1")
        before = self.dsns()
        values = ["--server", "x", "--database", "y"]
        self.assert_refused(f'There is a DSN "sales" already in {self.user}.',
                            "add", "sales", *values, code=4)
        self.assertFalse(self.run_json("add", "SALES", *values, "--if-missing")["changed"])
        self.assertEqual(self.dsns(), before)
        self.run_tool("add", "sales", *values, "--replace")
        self.assertEqual(self.dsns(), {"sales": {**SALES, "Server": "x", "Database": "y"}})
        for command in (["set", "no", "--uid", "u"], ["remove", "no"], ["show", "no"],
                        ["export", "no"], ["check", "no"], ["remove", "sales", "no"]):
            self.assert_refused(f'There is no DSN "no" in {self.user}.\n', *command, code=3)
        self.run_tool("remove", "no", "--if-exists")

    def test_a_new_dsn_needs_a_registered_driver(self):
        _, errors = self.add_sales("--driver", "Nobody", code=1)
        self.assertIn(f'"Nobody" is not registered in {self.stage.places["drivers"]}.', errors)
        self.assertNotIn("driver register", errors)
        # An existing DSN can be changed even if its driver is gone.
        self.write({"sales": {**SALES, "Driver": "Nobody"}})
        self.run_tool("set", "sales", "--driver", "Nobody", "--uid", "u")
        self.assertEqual(self.dsns()["sales"]["UID"], "u")

    def test_the_sections_of_the_driver_manager_are_no_dsns(self):
        self.write({"odbc": {"Trace": "1"}, "sales": SALES})
        self.assertEqual(self.run_tool("list", "--all")[0], "sales\n")
        for command in ("show", "remove"):
            self.run_tool(command, "ODBC Data Sources", code=3)
        self.assert_refused("DSN: This name is reserved.", "add", "ODBC", "--server", "s", "--database", "d")
        self.assertEqual(self.dsns(), {"odbc": {"Trace": "1"}, "sales": SALES})

    def test_dsns_of_other_drivers_are_left_alone(self):
        dsns = {"theirs": {**SALES, "Driver": "Other"}}
        self.write(dsns)
        self.assertEqual(self.run_tool("list")[0], "")
        for command in (["set", "theirs", "--uid", "u"], ["remove", "theirs"],
                        ["add", "theirs", "--server", "s", "--database", "d", "--replace"]):
            self.assertIn('"Other"', self.run_tool(*command, code=1)[1])
        self.assertEqual(self.dsns(), dsns)
        self.run_tool("remove", "theirs", "--driver", "OTHER")
        self.assertEqual(self.dsns(), {})


class SecretsTest(ToolTest):
    def test_a_password_comes_from_input_file_or_environment(self):
        file = self.write_file("password", PASSWORD + "\nmore\n")
        self.add_sales()
        for arguments, others in ((["--pwd-stdin"], {"stdin": PASSWORD + "\r\nmore"}),
                                  (["--pwd-file", file], {}),
                                  (["--pwd-env", "SECRET"], {"SECRET": PASSWORD})):
            self.run_tool("set", "sales", "--unset", "PWD")
            output, _ = self.run_tool("set", "sales", *arguments, **others)
            self.assertNotIn("日本", output)
            self.assertEqual(self.dsns()["sales"]["PWD"], PASSWORD)
        self.assertEqual(self.run_json("show", "sales", "--show-secrets")["values"]["PWD"], PASSWORD)
        self.assertEqual(self.run_tool("set", "sales", "--pwd-stdin", "-n", stdin="日本")[0],
                         "sales: would be changed\n-PWD=********\n+PWD=********\n")
        secrets = dict.fromkeys(("PWD", "Password", "ClientSecret", "AccessToken"), "********")
        self.write({"sales": {**SALES, **dict.fromkeys(secrets, "hunter2")}})
        shown = self.run_json("show", "sales")
        self.assertEqual((set(shown["masked"]), shown["values"]),
                         (set(secrets), {**SALES_VALUES, **secrets}))
        self.assertNotIn("hunter2", self.run_tool("show", "sales")[0])

    def test_an_empty_password_is_refused_and_removes_nothing(self):
        self.add_sales("--pwd-stdin", stdin="hunter2")
        before = self.dsns()
        empty = self.write_file("empty", "\r\nnext")
        for arguments, source, others in (
                (["--pwd-stdin"], "standard input: ", {}), (["--pwd-file", empty], empty + ": ", {}),
                (["--pwd-env", "SECRET"], "the variable SECRET: ", {"SECRET": ""})):
            self.assert_refused(source + "there is no password in it. To remove a stored one: veltrane-dsn set "
                                "NAME --unset PWD.", "set", "sales", *arguments, code=1, **others)
        self.assert_refused("--unset PWD", "set", "sales", "--connection-string", "UID=u;PWD=")
        for entry in ({"pwd_file": empty}, {"pwd_env": "SECRET"}, {"values": {"PWD": ""}}):
            self.run_tool("apply", "-", stdin=json.dumps([{"name": "sales", **entry}]), code=1, SECRET="")
        self.run_tool("apply", "-", stdin="[sales]\nPWD=\n")
        self.assertEqual(self.dsns(), before)
        self.run_tool("set", "sales", "--unset", "PWD")
        self.assertEqual(self.dsns(), {"sales": SALES})

    def test_a_byte_order_mark_is_skipped(self):
        # The password file is searched beside the description.
        dsns = json.dumps([{"name": "sales", "pwd_file": "password",
                            "values": {**SALES_VALUES, "UID": "日本"}}])
        for encoding in ("utf-8-sig", "utf-16-le", "utf-16-be"):
            mark = b"" if encoding == "utf-8-sig" else "\ufeff".encode(encoding)
            for name, text in (("password", PASSWORD + "\r\nmore"), ("dsns", dsns)):
                with open(self.path(name), "wb") as file:
                    file.write(mark + text.encode(encoding))
            self.run_tool("apply", self.stage.native(self.path("dsns")))
            self.assertEqual(self.dsns(), {"sales": {**SALES, "UID": "日本", "PWD": PASSWORD}})
            self.run_tool("remove", "sales")
        with open(self.path("password"), "wb") as file:
            file.write(b"\xff\xfe\x00\xd8\n\0")
        self.assertIn("not valid UTF-16", self.add_sales(
            "--pwd-file", self.stage.native(self.path("password")), code=1)[1])

    def test_asks_on_a_terminal_without_showing_the_answer(self):
        self.add_sales()
        code, shown = self.run_on_a_terminal("set", "sales", "--pwd-prompt",
                                             answers=[b"hunter2\r", b"hunter2\r"])
        self.assertEqual(code, 0, shown)
        self.assertIn('Password of the DSN "sales":', shown)
        self.assertNotIn("hunter2", shown)
        self.assertEqual(self.dsns(), {"sales": {**SALES, "PWD": "hunter2"}})
        for answers, expected in (([b"x\r", b"y\r"], 1), ([b"\r"], 1), ([b"x\r", b"\x03"], 130)):
            code, shown = self.run_on_a_terminal("set", "sales", "--pwd-prompt", answers=answers)
            self.assertEqual(code, expected, shown)
        self.assert_refused("There is no terminal to ask for the password; use --pwd-stdin", "set", "sales",
                            "--pwd-prompt")
        self.assertEqual(self.dsns()["sales"]["PWD"], "hunter2")

    def test_no_password_is_left_in_other_files_or_the_trace(self):
        trace = self.stage.native(self.path("trace"))
        self.add_sales("--pwd-stdin", stdin="hunter2\n", TR4CE="9:" + trace)
        self.assertGreater(os.path.getsize(self.path("trace")), 0)
        for name in os.listdir(self.folder):
            path = self.path(name)
            if path != self.user and os.path.isfile(path):
                with open(path, "rb") as file:
                    self.assertNotIn(b"hunter2", file.read(), name)


class ApplyTest(ToolTest):
    def describe(self, dsns):
        return self.write_file("dsns.json", json.dumps({"data_sources": dsns}))

    def test_is_idempotent_and_reports_each_dsn(self):
        self.write({"gone": SALES, "same": {**SALES, "X": "1"}})
        dsns = self.describe([
            {"name": "new", "values": {"Server": "s", "Database": "日本", "PWD": PASSWORD, "Y": "2"}},
            {"name": "same", "values": {"Server": "db"}},
            {"name": "gone", "state": "absent"},
            {"name": "bad", "values": {"Server": "s"}},
            {"name": "env", "pwd_env": "SECRET", "values": SALES_VALUES},
        ])
        before, results = self.dsns(), []
        for expected, *option in (("changed unchanged changed failed changed", "--dry-run"),
                                  ("changed unchanged changed failed changed",),
                                  ("unchanged unchanged unchanged failed unchanged",)):
            if not option and len(results) == 1:
                self.assertEqual(self.dsns(), before)
            report = self.run_json("apply", dsns, *option, code=1, SECRET="hunter2")
            results.append(report.pop("results"))
            self.assertEqual(" ".join(entry["state"] for entry in results[-1]), expected)
            self.assertEqual((report["changed"], report["failed"]), (" changed" in expected, 1))
        self.assertEqual(results[0], results[1])
        for secret in ("hunter2", PASSWORD):
            self.assertNotIn(secret, str(results))
        self.assertEqual(self.dsns(), {
            "new": {"Driver": "Veltrane", "Server": "s", "Database": "日本", "PWD": PASSWORD, "Y": "2"},
            "same": {**SALES, "X": "1"}, "env": {**SALES, "PWD": "hunter2"}})

    def test_an_export_is_a_description_of_the_stored_dsns(self):
        self.add_sales("-p", "Trace=", "--uid", "ü", "--pwd-stdin", stdin=PASSWORD)
        before = self.dsns()
        for form in ("json", "ini"):
            text, errors = self.run_tool("export", "--format", form)
            self.assertNotIn("日本", text)
            self.assertIn("left out", errors)
            self.assertEqual(self.run_tool("apply", "-", stdin=text)[0], "sales: unchanged\n1 unchanged\n")
            text, errors = self.run_tool("export", "--format", form, "--show-secrets")
            self.assertEqual(errors, "")
            self.write({})
            self.run_tool("apply", "-", stdin=text)
            self.assertEqual(self.dsns(), before)

    def test_an_import_is_applied_only_on_request(self):
        with open(self.path("file.dsn"), "wb") as file:
            file.write("[ODBC]\nDRIVER=Old\nSERVER=db\nDATABASE=東京\nPWD=hunter2\n".encode("utf-16"))
        file = self.stage.native(self.path("file.dsn"))
        wished = {**SALES, "Database": "東京"}
        self.assertIn("--from-driver", self.run_tool("import", file, code=1)[1])
        described, errors = self.run_tool("import", file, "--from-driver", "old")
        self.assertIn("Passwords are left out", errors)
        self.run_tool("apply", "-", "-n", stdin=described)
        self.assertEqual(self.dsns(), {})
        self.assertEqual(self.run_tool("import", file, "--from-driver", "Old", "--apply", "--system",
                                       "--show-secrets", "-q"), ("", ""))
        self.assertEqual(self.dsns("system"), {"file": {**wished, "PWD": "hunter2"}})
        self.assert_refused("--system needs --apply.", "import", file, "--system")

    def test_two_processes_at_once_lose_nothing(self):
        # Each writes its own DSNs and the common ones.
        common = {f"x{i}": {**SALES, "Keep": "1"} for i in range(50)}
        self.write(common)
        processes = []
        for part in "ab":
            names = [*common, *(f"{part}{i}" for i in range(50))]
            processes.append(self.start(["apply", "-q", self.write_file(part, json.dumps(
                [{"name": name, "values": {**SALES_VALUES, "Server": part, "UID": part}}
                 for name in names]))]))
        self.assertEqual([process.wait(300) for process in processes], [0, 0])
        dsns = self.dsns()
        self.assertEqual(len(dsns), 150)
        for name, entries in dsns.items():
            last = entries["Server"]
            self.assertIn(last, ("a", "b") if name in common else name[0])
            self.assertEqual(entries, {**common.get(name, SALES), "Server": last, "UID": last})

    def test_prune_removes_dsns_that_are_not_described(self):
        dsns = {"a": SALES, "b": SALES, "theirs": {**SALES, "Driver": "Other"}}
        self.write({**dsns, "a": {**SALES, "X": "1"}})
        file = self.describe([{"name": "A", "values": {**SALES_VALUES, "UID": "u"}}, {"name": "c", "values": {}}])
        output, _ = self.run_tool("apply", file, "--prune", "--dry-run", code=1)
        self.assertTrue(output.endswith("1 would be changed, 1 would be removed, 1 failed\n"), output)
        self.assertIn("-[b]\n", output)
        self.assert_refused("c: Server: ", "apply", file, "--prune", "--fail-fast", code=1)
        self.assertEqual(set(self.dsns()), set(dsns))
        # A refused DSN is not removed. Keys that are not described are, by --replace.
        result = self.run_json("apply", file, "--prune", "--replace", code=1)
        self.assertEqual(result["summary"],
                         {"added": 0, "changed": 1, "removed": 1, "unchanged": 0, "failed": 1})
        self.assertEqual(self.dsns(), {"a": {**SALES, "UID": "u"}, "theirs": dsns["theirs"]})


class DriverTest(ToolTest):
    def test_registers_and_unregisters(self):
        before = self.stage.read("drivers")
        setup = self.stage.setup
        other, library = (self.stage.NOWHERE + end for end in ("1", "2"))
        arguments = ["driver", "register", "--driver", "V 2"]
        for without in ((), ("--setup", "relative.so")):
            self.run_tool(*arguments, *without, code=2)
        self.run_tool(*arguments, "--setup", setup, "-n")
        self.assertEqual(self.stage.read("drivers"), before)
        self.assertEqual(self.run_tool(*arguments, "--setup", setup)[0], "Driver V 2: added\n")
        self.assertFalse(self.run_json(*arguments, "--setup", setup)["changed"])
        self.run_tool(*arguments, "--setup", other, code=4)
        self.run_tool(*arguments, "--library", library.upper(), "--replace")  # differs by case only
        self.assertIn(f"There is no file {library}, which is registered as Driver.",
                      self.run_tool(*arguments, "--library", library, "--replace")[1])
        after = {"name": "V 2", "description": "", "setup": setup, "library": library}
        self.assertIn(after, self.run_json("driver", "list")["drivers"])
        unregister = ["driver", "unregister", "--driver", "V 2", "--setup"]
        self.run_tool(*unregister, other, code=3)
        self.assertIn(after, self.run_json("driver", "list")["drivers"])
        self.run_tool(*unregister, setup)
        self.assertEqual(self.stage.read("drivers"), before)
        self.stage.write("drivers", {"V 2": {"Setup": other, "Setup64": other}})
        self.run_tool(*arguments, "--setup", setup, "--replace")
        self.assertEqual(self.stage.read("drivers")["V 2"], {"Setup": other, "Setup64": setup})

    def test_no_name_reaches_a_section_that_is_no_driver(self):
        self.stage.write("drivers", {"Veltrane": {"Setup": self.stage.setup}, "ODBC": {"Trace": "1"}})
        before = self.stage.read("drivers")
        self.assertEqual([it["name"] for it in self.run_json("driver", "list")["drivers"]],
                         ["Veltrane"])
        for name in ("", "odbc", "ODBC Drivers", "a\\b"):
            self.run_tool("driver", "register", "--driver", name, "--setup", self.stage.setup, code=2)
            self.run_tool("driver", "unregister", "--driver", name, code=3)
        self.assertEqual(self.stage.read("drivers"), before)

    def test_where_shows_the_files_and_libraries_in_use(self):
        places = self.run_json("where")
        self.assertEqual([places[name + "_file"] for name in ("user", "system", "driver")],
                         list(self.stage.places.values()))
        self.assertRegex(places["installer_library"], self.stage.INSTALLER)
        shown, _ = self.run_tool("where")
        self.assertIn(f"DSNs of this user: {self.stage.places['user']} (does not exist)\n", shown)
        self.assertIn(f"Setup library: {self.stage.setup}\n", shown)


class DoctorTest(ToolTest):
    def test_prints_one_line_if_nothing_is_wrong_and_changes_nothing(self):
        library = self.compile("driver", "EXPORTED int SQLAllocHandle;")
        self.stage.write("drivers", {"Veltrane": {"Setup": self.stage.setup, "Driver": library}})
        before = set(os.listdir(self.folder))
        self.add_sales()
        output, _ = self.run_tool("doctor")
        self.assertRegex(output, r"^Nothing is wrong\. --verbose shows \d+ notes\.\n$")
        output, _ = self.run_tool("doctor", "-v", NO_COLOR="1")
        self.assertIn("0 errors, 0 warnings, ", output)
        self.assertLessEqual(max(len(line) for line in output.splitlines()
                                 if "/" not in line and "\\" not in line), 80)
        found = self.findings(0)
        self.assertRegex(found["manager-version"], self.stage.MANAGER)
        self.assertIn("answers requests", found["driver-answers"])
        self.assertLessEqual(set(os.listdir(self.folder)) - {"unwritten.reg", "user.ini"}, before)

    def test_finds_what_is_wrong_with_the_driver(self):
        nowhere = self.stage.NOWHERE
        self.stage.write("drivers", {"Other": {"Setup": nowhere}})
        self.assertIn("Registered are: Other", self.findings()["driver-not-registered"])
        self.stage.write("drivers", dict.fromkeys(("Veltrane", "SQL Server"), {"Driver": nowhere}))
        found = self.run_json("doctor", "--driver", "SQL Server", code=1)["findings"]
        self.assertTrue(found[0]["repair"].endswith('--driver "SQL Server" --setup PATH.'), found[0])
        self.assertIn("Driver=" + nowhere, found[1]["text"])
        self.assertIn("has no Setup entry", self.findings()["driver-without-setup"])
        self.stage.write("drivers", {"Veltrane": {"Setup": nowhere}})
        found = self.findings()
        self.assertIn(self.stage.NOT_FOUND, found["library-not-found"])
        self.assertIn("programs cannot connect", found["driver-without-library"])
        self.register(self.stage.NOWHERE.replace("C:", "")[1:])
        self.assertIn("depends on the working directory", self.findings()["library-path-relative"])
        for library, finding in ((self.write_file("text.so", "not a library"), "library-not-a-library"),
                                 (self.stage.native(self.folder), "library-not-a-library"),
                                 (self.compile("tested", "EXPORTED int nothing;"), "library-no-entry-point")):
            self.register(library)
            self.assertIn(finding, self.findings())

    def test_finds_a_library_that_another_one_needs_missing(self):
        needed = self.compile("libneeded_by_test", "EXPORTED int needed(void) { return 1; }")
        library = self.compile("tested", "int needed(void); EXPORTED int ConfigDSN(void) { return needed(); }",
                               needed)
        self.register(library)
        needed = self.stage.unix(needed)
        os.remove(needed)
        self.assertIn(f"Setup={library} cannot be loaded: it needs {os.path.basename(needed)}, which",
                      self.findings()["library-missing-dependency"])

    def test_finds_a_library_of_another_architecture(self):
        library = self.compile("tested", "EXPORTED int SQLAllocHandle;")
        self.stage.make_foreign(library)
        self.stage.write("drivers", {"Veltrane": {"Setup": self.stage.setup, "Driver": library}})
        self.assertRegex(self.findings()["library-wrong-architecture"],
                         r"^Driver=.* (64-bit AArch64|.*x86-64) instead of ")

    def test_finds_what_is_wrong_with_dsns(self):
        self.write({"sales": SALES}, "system")
        self.write({"sales": {"Driver": "Veltrane", "Server": "s", "PWD": "hunter2"},
                    "lost": {"Driver": "Nobody"}, "none": {"x": "1"}})
        found = self.findings()
        user, system = (self.stage.places[name] for name in ("user", "system"))
        for name, text in (("value-missing", 'Database of the DSN "sales"'),
                           ("user-dsn-shadows-system-dsn", f"of {user} hides the one of {system}."),
                           ("dsn-of-unknown-driver", '"Nobody", which is not registered'),
                           ("dsn-without-driver", '"none"')):
            self.assertIn(text, found[name])
        self.assertNotIn("hunter2", str(found))

    def test_check_judges_stored_dsns(self):
        self.write({"a": {"Driver": "Veltrane", "Server": "s"}, "b": {"Driver": "Other"}})
        result = self.run_json("check", code=1)
        self.assertEqual([dsn["name"] for dsn in result["dsns"]], ["a"])
        self.assertEqual(result["dsns"][0]["findings"][0]["id"], "value-missing")
        self.assertTrue(self.run_tool("check", code=1)[0].startswith("a:\nerror: Database of"))
        self.assertEqual(self.run_tool("check", "b")[0], "b: sound\n")
        self.write({"b": {"Driver": "Other"}}, "system")
        self.assertIn('veltrane-dsn set "b" --system --driver "Other" -p Server=VALUE.', str(
            self.run_json("check", "b", "--system", "--driver", "Other", code=1)))


if __name__ == "__main__":
    main()
