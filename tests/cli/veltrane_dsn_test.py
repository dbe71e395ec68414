#!/usr/bin/env python3
"""Runs the built veltrane-dsn in a scratch folder, through the real ODBC installer.

Arguments: the tool, the setup library, the folder of generated texts, and the classes to run.
"""
import json
import os
import pty
import re
import shutil
import stat
import subprocess
import sys
import tempfile
import unittest

TOOL, SETUP, TEXTS = sys.argv[1:4]
PASSWORD = "p=;#'\"{}[]\\%$ ü€日本😀"


class ToolTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="veltrane-dsn-")
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.user = self.path("user.ini")
        self.write("odbcinst.ini", f"# kept\n[Veltrane]\nSetup={SETUP}\n")
        self.write("odbc.ini", "")
        self.environment = {
            "PATH": os.environ["PATH"], "HOME": self.folder, "ODBCSYSINI": self.folder,
            "ODBCINSTINI": "odbcinst.ini", "ODBCINI": self.user, "TERM": "xterm",
        }
        self.environment |= {name: value for name, value in os.environ.items()
                             if name.endswith("SAN_OPTIONS") or name == "LD_LIBRARY_PATH"}

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, text):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)
        return self.path(name)

    def read(self, path):
        with open(path, encoding="utf-8") as file:
            return file.read()

    def run_tool(self, *arguments, code=0, stdin="", **environment):
        """Runs the tool, checks its exit code, and gives its output and its errors."""
        result = subprocess.run([TOOL, *arguments], input=stdin, text=True, capture_output=True,
                                env={**self.environment, **environment}, timeout=120)
        self.assertEqual(result.returncode, code, f"{arguments}: {result.stdout}{result.stderr}")
        return result.stdout, result.stderr

    def run_json(self, *arguments, **others):
        return json.loads(self.run_tool(*arguments, "--json", **others)[0])

    def compile(self, name, source, *options):
        source = self.write(name + ".c", source)
        library = self.path(name + ".so")
        subprocess.run(["cc", "-shared", "-fPIC", "-o", library, source, *options], check=True)
        return library

    def register(self, library):
        self.write("odbcinst.ini", f"[Veltrane]\nSetup={library}\n")

    def add_sales(self, *arguments):
        return self.run_tool("add", "sales", "--server", "db", "--database", "d", *arguments)


class ChangeTest(ToolTest):
    def test_adds_shows_lists_changes_and_removes(self):
        self.assertEqual(self.add_sales("--uid", "anna", "-p", "LoginMode=1")[0], "sales: added\n")
        self.assertEqual(self.read(self.user), "[sales]\nDriver=Veltrane\nServer=db\nLoginMode=1\n"
                                               "UID=anna\nDatabase=d\n\n")
        self.assertEqual(stat.S_IMODE(os.stat(self.user).st_mode), 0o600)
        self.assertEqual(self.run_tool("list")[0], "sales\n")
        self.run_tool("set", "sales", "--database", "東京", "--unset", "uid", "-q")
        self.assertEqual(self.run_tool("show", "sales")[0],
                         "DSN=sales\nDriver=Veltrane\nServer=db\nLoginMode=1\nDatabase=東京\n")
        self.run_tool("remove", "sales")
        self.assertEqual(self.read(self.user), "")
        self.assertEqual(self.run_tool("list")[0], "")

    def test_works_on_system_dsns(self):
        self.add_sales("--system")
        self.assertEqual(self.read(self.path("odbc.ini")),
                         "[sales]\nDriver=Veltrane\nServer=db\nDatabase=d\n\n")
        self.assertFalse(os.path.exists(self.user))
        self.assertEqual(self.run_tool("list")[0], "")
        self.assertEqual(self.run_json("list", "--system")["dsns"],
                         [{"name": "sales", "driver": "Veltrane"}])
        self.run_tool("remove", "sales", code=3)
        self.run_tool("remove", "sales", "--system")

    def test_takes_a_connection_string(self):
        self.run_tool("add", "sales", "--uid", "bea", "--connection-string",
                      "Driver={Veltrane};Server=db; Database={a;}}b} ;UID=anna")
        self.assertEqual(self.run_json("show", "sales")["values"],
                         {"Server": "db", "UID": "bea", "Database": "a;}b"})

    def test_keeps_keys_that_the_setup_library_drops_and_says_so(self):
        self.write("user.ini", "# ours\n[sales]\nDriver = Veltrane\nExtra = a ; b\nServer=s\n"
                               "Database=d\nTrace=\n\n[other]\nx=1\n")
        output, _ = self.run_tool("set", "sales", "--server", "t")
        self.assertRegex(output, r"^sales: changed; put back .*: Extra Trace\n$")
        after = self.read(self.user)
        self.assertIn("Extra=a ; b\n", after)
        self.assertIn("Trace=\n", after)
        self.assertIn("Server=t\n", after)
        self.assertTrue(after.startswith("# ours\n[sales]\n"), after)
        self.assertTrue(after.endswith("[other]\nx=1\n"), after)

    def test_keeps_lines_of_a_key_that_stands_twice(self):
        self.write("user.ini", "[sales]\nDriver=Veltrane\nHint=1\nServer=s\nDatabase=d\nhint = 2\n"
                               "Old=1\nOld=2\nPWD=a\nPWD=b\n")
        self.run_tool("set", "sales", "--server", "t", "--unset", "Old")
        self.assertEqual(self.read(self.user), "[sales]\nDriver=Veltrane\nServer=t\nPWD=a\n"
                                               "Database=d\nHint=1\nhint=2\n")

    # A setup library that kills the tool before or after it has done its work, when told so.
    KILLER = """
        #include <dlfcn.h>
        #include <signal.h>
        #include <stdlib.h>
        #include <string.h>
        int ConfigDSN(void* window, unsigned short request, const char* driver, const char* values) {
            const char* const moment = getenv("MOMENT");
            if (!strcmp(moment, "before")) raise(SIGKILL);
            void* const library = dlopen("%s", RTLD_NOW);
            int (*configure)(void*, unsigned short, const char*, const char*) =
                dlsym(library, "ConfigDSN");
            const int result = configure(window, request, driver, values);
            if (!strcmp(moment, "after")) raise(SIGKILL);
            return result;
        }
    """
    WITH_EXTRAS = ("[sales]\nDriver=Veltrane\nServer=s\nDatabase=d\nExtra=a ; b\nHint=1\nHint=2\n")

    def test_the_next_run_finishes_what_a_killed_one_left(self):
        record = self.user + ".veltrane-dsn-change"
        self.register(self.compile("killer", self.KILLER % SETUP))
        # The moment of the kill, the change, what somebody writes then, and the section afterwards.
        set_server = ("set", "sales", "--server", "t", "-p", "New=3")
        saved = "[sales]\nDriver=Veltrane\nServer=t\nDatabase=d\n"
        cases = [
            ("before", set_server, None, self.WITH_EXTRAS),
            ("after", set_server, None, saved + "Extra=a ; b\nHint=1\nNew=3\nHint=2\n"),
            ("after", ("set", "sales", "--server", "t", "--unset", "Hint"), None,
             saved + "Extra=a ; b\n"),
            ("after", set_server, saved + "Extra=other\n",
             saved + "Extra=other\nHint=1\nNew=3\nHint=2\n"),
            ("after", set_server, "[else]\nDriver=Veltrane\n", "[else]\nDriver=Veltrane\n"),
            ("after", ("add", "fresh", "--server", "s", "--database", "d", "-p", "New=3"), None,
             self.WITH_EXTRAS + "\n[fresh]\nDriver=Veltrane\nServer=s\nDatabase=d\nNew=3\n"),
        ]
        for moment, change, written, after in cases:
            with self.subTest(moment=moment, change=change, written=written):
                self.write("user.ini", self.WITH_EXTRAS)
                self.run_tool(*change, code=-9, MOMENT=moment)
                self.assertEqual(stat.S_IMODE(os.stat(record).st_mode), 0o600)
                ids = {finding["id"] for finding in self.run_json("doctor")["findings"]}
                self.assertIn("change-interrupted", ids)
                if written:
                    self.write("user.ini", written)
                # Any change of the file will do, also one of nothing.
                _, notice = self.run_tool("remove", "nothing", "--if-exists", MOMENT="")
                self.assertEqual("put back" in notice, after not in (self.WITH_EXTRAS, written), notice)
                self.assertEqual(self.read(self.user), after)
                self.assertFalse(os.path.exists(record))

    def test_a_record_that_others_can_write_to_is_refused(self):
        self.write("user.ini", self.WITH_EXTRAS)
        record = self.write("user.ini.veltrane-dsn-change",
                            "[change]\nDSN=sales\n[before]\n[kept]\nEvil=1\n[end]\n")
        os.chmod(record, 0o666)
        _, errors = self.run_tool("set", "sales", "--server", "t", code=1)
        self.assertIn(f"{record}: is somebody else's", errors)
        # One that was cut off while it was written stands for a change that had not begun.
        os.chmod(record, 0o600)
        self.write("user.ini.veltrane-dsn-change", "[change]\nDSN=sales\n[before]\n[kept]\nEvil=1\n")
        self.run_tool("set", "sales", "--server", "s")
        self.assertEqual(self.read(self.user), self.WITH_EXTRAS)

    def test_existing_and_missing_dsns_have_exit_codes_of_their_own(self):
        self.add_sales("--uid", "anna", "-p", "Trace=1")
        before = self.read(self.user)
        self.run_tool("add", "sales", "--server", "x", "--database", "y", code=4)
        result = self.run_json("add", "SALES", "--server", "x", "--database", "y", "--if-missing")
        self.assertFalse(result["changed"])
        self.assertEqual(self.read(self.user), before)
        self.run_tool("add", "sales", "--server", "x", "--database", "y", "--replace")
        self.assertEqual(self.read(self.user),
                         "[sales]\nDriver=Veltrane\nServer=x\nDatabase=y\n\n")
        for command in (["set", "no", "--uid", "u"], ["remove", "no"], ["show", "no"],
                        ["export", "no"], ["check", "no"], ["remove", "sales", "no"]):
            self.run_tool(*command, code=3)
        self.run_tool("remove", "no", "--if-exists")
        self.assertEqual(self.run_tool("list")[0], "sales\n")

    def test_a_dry_run_shows_the_difference_and_writes_nothing(self):
        self.add_sales("--uid", "anna")
        before = self.read(self.user)
        output, _ = self.run_tool("set", "sales", "--server", "x", "--unset", "UID", "-p", "A=", "-n")
        self.assertEqual(output, "sales: would be changed\n-Server=db\n+Server=x\n-UID=anna\n+A=\n")
        self.run_tool("remove", "sales", "--dry-run")
        self.run_tool("add", "more", "--server", "x", "--database", "y", "--dry-run")
        self.assertEqual(self.read(self.user), before)

    def test_a_value_that_could_not_be_read_back_changes_nothing(self):
        self.add_sales()
        before = self.read(self.user)
        for arguments in (["-p", "UID=a\nb"], ["--server", " x"], ["-p", "X=" + 1000 * "x"],
                          ["--server", ""], ["--database", 1000 * "x"]):
            self.run_tool("set", "sales", *arguments, code=1)
        self.run_tool("add", "a[b", "--server", "s", "--database", "d", code=1)
        self.assertEqual(self.read(self.user), before)

    def test_errors_name_path_and_reason(self):
        missing = self.path("nowhere/odbc.ini")
        _, errors = self.run_tool("add", "sales", "--server", "s", "--database", "d", code=1,
                                  ODBCINI=missing)
        self.assertIn(missing + ": cannot create: No such file or directory", errors)
        os.mkdir(self.path("folder.ini"))
        _, errors = self.run_tool("add", "sales", "--server", "s", "--database", "d", code=1,
                                  ODBCINI=self.path("folder.ini"))
        self.assertIn("folder.ini: ", errors)
        self.write("user.ini", "text before\n[sales]\n")
        _, errors = self.run_tool("show", "sales", code=1)
        self.assertIn("before the first section", errors)
        self.assertEqual(self.read(self.user), "text before\n[sales]\n")

    def test_an_installer_error_comes_with_its_code_and_the_cause(self):
        self.write("odbcinst.ini", "[Veltrane]\nSetup=/no/such/library.so\n")
        _, errors = self.run_tool("add", "sales", "--server", "s", "--database", "d", code=1)
        self.assertRegex(errors, r"(?m)^veltrane-dsn: \d+: ")
        self.assertIn("/no/such/library.so", errors)
        _, errors = self.run_tool("add", "sales", "--server", "s", "--database", "d",
                                  "--driver", "Nobody", code=1)
        self.assertIn('"Nobody" is not registered', errors)
        self.assertNotIn("sales", self.read(self.user) if os.path.exists(self.user) else "")

    def test_dsns_of_other_drivers_are_left_alone(self):
        text = "[theirs]\nDriver=Other\nServer=s\nDatabase=d\n"
        self.write("user.ini", text)
        self.assertEqual(self.run_tool("list")[0], "")
        self.assertEqual(self.run_tool("list", "--all")[0], "theirs\n")
        for command in (["set", "theirs", "--uid", "u"], ["remove", "theirs"],
                        ["add", "theirs", "--server", "s", "--database", "d", "--replace"]):
            self.assertIn('"Other"', self.run_tool(*command, code=1)[1])
        self.assertEqual(self.read(self.user), text)


class SecretsTest(ToolTest):
    def test_a_password_comes_from_input_file_or_environment(self):
        self.write("password", PASSWORD + "\nmore\n")
        self.add_sales()
        for arguments, others in ((["--pwd-stdin"], {"stdin": PASSWORD + "\r\nmore"}),
                                  (["--pwd-file", self.path("password")], {}),
                                  (["--pwd-env", "SECRET"], {"SECRET": PASSWORD})):
            self.run_tool("set", "sales", "--unset", "PWD")
            output, _ = self.run_tool("set", "sales", *arguments, **others)
            self.assertNotIn("日本", output)
            values = self.run_json("show", "sales", "--show-secrets")["values"]
            self.assertEqual(values["PWD"], PASSWORD)
        self.assertNotIn("日本", self.run_tool("show", "sales")[0])
        self.assertEqual(self.run_json("show", "sales")["masked"], ["PWD"])
        self.assertNotIn("日本", self.run_tool("set", "sales", "--pwd-stdin", "-n", stdin="日本")[0])

    def test_a_password_on_the_command_line_is_refused_with_a_hint(self):
        for arguments in (["-p", "PWD=hunter2"], ["-p", "pwd=hunter2"], ["--pwd", "hunter2"],
                          ["--password=hunter2"], ["--connection-string", "UID=u;PWD=hunter2"],
                          ["--pwd-stdin", "hunter2"]):
            _, errors = self.run_tool("add", "sales", "--server", "s", "--database", "d",
                                      *arguments, code=2)
            self.assertNotIn("hunter2", errors)
            if arguments[0] != "--pwd-stdin":
                self.assertIn("--pwd-stdin", errors)
        self.assertFalse(os.path.exists(self.user))
        self.run_tool("add", "s", "--pwd-stdin", "--pwd-env", "X", code=2)
        self.run_tool("add", "s", "--pwd-env", "NOT_SET", code=1)
        self.run_tool("add", "s", "--pwd-file", "/no/such/file", code=1)

    def test_asks_on_a_terminal_without_showing_the_answer(self):
        self.add_sales()
        process, terminal = pty.fork()
        if process == 0:
            os.execve(TOOL, [TOOL, "set", "sales", "--pwd-prompt"], self.environment)
        shown = b""
        while b": " not in shown:
            shown += os.read(terminal, 1024)
        os.write(terminal, b"hunter2\n")
        try:
            while chunk := os.read(terminal, 1024):
                shown += chunk
        except OSError:
            pass
        self.assertEqual(os.waitpid(process, 0)[1], 0, shown)
        os.close(terminal)
        self.assertIn(b"Password", shown)
        self.assertNotIn(b"hunter2", shown)
        self.assertEqual(self.run_json("show", "sales", "--show-secrets")["values"]["PWD"], "hunter2")

    def test_no_password_is_left_in_files_beside_or_in_the_trace(self):
        trace = self.path("trace")
        self.run_tool("add", "sales", "--server", "s", "--database", "d", "--pwd-stdin",
                      stdin="hunter2\n", TR4CE="9:" + trace)
        for name in os.listdir(self.folder):
            if name != "user.ini":
                self.assertNotIn("hunter2", self.read(self.path(name)), name)


class ApplyTest(ToolTest):
    def describe(self, dsns):
        return self.write("dsns.json", json.dumps({"data_sources": dsns}))

    def states(self, result):
        return {entry["name"]: entry["state"] for entry in result["results"]}

    def test_is_idempotent_and_reports_each_dsn(self):
        self.write("user.ini", "[gone]\nDriver=Veltrane\nServer=s\nDatabase=d\n"
                               "[same]\nDriver=Veltrane\nServer=s\nDatabase=d\nX=1\n")
        dsns = self.describe([
            {"name": "new", "values": {"Server": "s", "Database": "日本", "PWD": PASSWORD, "Y": "2"}},
            {"name": "same", "values": {"Server": "s"}},
            {"name": "gone", "state": "absent"},
            {"name": "bad", "values": {"Server": "s"}},
            {"name": "env", "pwd_env": "SECRET", "values": {"Server": "s", "Database": "d"}},
        ])
        expected = {"new": "changed", "same": "unchanged", "gone": "changed", "bad": "failed",
                    "env": "changed"}
        before = self.read(self.user)
        dry = self.run_json("apply", dsns, "--dry-run", code=1, SECRET="hunter2")
        self.assertEqual(self.read(self.user), before)
        result = self.run_json("apply", dsns, code=1, SECRET="hunter2")
        for report in (dry, result):
            self.assertEqual(self.states(report), expected)
            self.assertEqual((report["changed"], report["failed"]), (True, 1))
            self.assertNotIn("hunter2", json.dumps(report))
            self.assertNotIn(PASSWORD, json.dumps(report, ensure_ascii=False))
        self.assertEqual(dry["results"][0]["difference"], result["results"][0]["difference"])
        self.assertIn("PWD=hunter2\n", self.read(self.user))
        self.assertNotIn("[bad]", self.read(self.user))
        again = self.run_json("apply", dsns, code=1, SECRET="hunter2")
        self.assertFalse(again["changed"])
        self.assertEqual(self.states(again), {**dict.fromkeys(expected, "unchanged"), "bad": "failed"})

    def test_an_export_is_a_description_of_what_is_there(self):
        self.add_sales("-p", "Trace=", "--uid", "ü")
        self.run_tool("set", "sales", "--pwd-stdin", stdin=PASSWORD)
        before = self.read(self.user)
        for form in ("json", "ini"):
            text, errors = self.run_tool("export", "--format", form)
            self.assertNotIn("日本", text)
            self.assertIn("left out", errors)
            self.assertEqual(self.run_tool("apply", "-", stdin=text)[0], "sales: unchanged\n")
            text, errors = self.run_tool("export", "--format", form, "--show-secrets")
            self.assertEqual(errors, "")
            os.remove(self.user)
            self.assertEqual(self.run_tool("apply", "-", stdin=text)[0], "sales: added\n")
            self.assertEqual(self.read(self.user), before)

    def test_a_malformed_description_changes_nothing(self):
        for text in ("{", '{"data_sources": [{"name": "a", "values": {"Server": "s", "Database": "d"}}, 1]}',
                     "[a]\nServer=s\nDatabase=d\nx\n"):
            self.run_tool("apply", "-", stdin=text, code=1)
        self.run_tool("apply", "/no/such/file", code=1)
        self.assertFalse(os.path.exists(self.user))

    def test_replace_removes_what_is_not_described(self):
        self.add_sales("--uid", "u", "-p", "X=1")
        dsns = self.describe([{"name": "sales", "values": {"Server": "db", "Database": "d"}}])
        self.assertEqual(self.run_tool("apply", dsns)[0], "sales: unchanged\n")
        self.assertEqual(self.run_tool("apply", dsns, "--replace")[0], "sales: changed\n")
        self.assertEqual(self.read(self.user),
                         "[sales]\nDriver=Veltrane\nServer=db\nDatabase=d\n\n")

    def test_a_thousand_dsns_by_two_processes_at_once(self):
        for part in ("a", "b"):
            self.write(part, json.dumps([{"name": f"{part}{i}", "values": {
                "Server": f"s{i}", "Database": "d", "PWD": f"p{i}", "X": "1"}} for i in range(100)]))
        processes = [subprocess.Popen([TOOL, "apply", "-q", self.path(part)], env=self.environment)
                     for part in ("a", "b")]
        self.assertEqual([process.wait(300) for process in processes], [0, 0])
        text = self.read(self.user)
        for part in ("a", "b"):
            for i in range(100):
                self.assertIn(f"[{part}{i}]\nDriver=Veltrane\nServer=s{i}\nPWD=p{i}\nDatabase=d\nX=1\n",
                              text)

    def test_two_processes_on_the_same_dsns_lose_nothing(self):
        names = [f"x{i}" for i in range(50)]
        self.write("user.ini", "".join(f"[{name}]\nDriver=Veltrane\nServer=s\nDatabase=d\nKeep=1\n"
                                       for name in names))
        for server in ("a", "b"):
            self.write(server, json.dumps([{"name": name, "values": {"Server": server, "UID": server}}
                                           for name in names]))
        processes = [subprocess.Popen([TOOL, "apply", "-q", self.path(server)], env=self.environment)
                     for server in ("a", "b")]
        self.assertEqual([process.wait(300) for process in processes], [0, 0])
        text = self.read(self.user)
        for name in names:
            self.assertRegex(text, rf"\[{name}\]\nDriver=Veltrane\nServer=(a|b)\nUID=\1\n"
                                   r"Database=d\nKeep=1\n")
        self.assertEqual(sorted(os.listdir(self.folder)),
                         ["a", "b", "odbc.ini", "odbcinst.ini", "user.ini"])


class DriverTest(ToolTest):
    def test_registers_and_unregisters(self):
        before = self.read(self.path("odbcinst.ini"))
        arguments = ["driver", "register", "--driver", "V 2"]
        self.run_tool(*arguments, code=2)
        self.run_tool(*arguments, "--setup", "relative.so", code=2)
        self.run_tool(*arguments, "--setup", SETUP, "-n")
        self.assertEqual(self.read(self.path("odbcinst.ini")), before)
        self.assertEqual(self.run_tool(*arguments, "--setup", SETUP)[0], "Driver V 2: added\n")
        self.assertFalse(self.run_json(*arguments, "--setup", SETUP)["changed"])
        self.run_tool(*arguments, "--setup", "/other.so", code=4)
        self.run_tool(*arguments, "--library", "/d.so", "--replace")
        self.assertIn({"name": "V 2", "description": "", "setup": SETUP, "library": "/d.so"},
                      self.run_json("driver", "list")["drivers"])
        self.run_tool("add", "s", "--driver", "v 2", "--server", "s", "--database", "d")
        self.run_tool("driver", "unregister", "--driver", "V 2")
        self.assertEqual(self.read(self.path("odbcinst.ini")), before)
        self.run_tool("driver", "unregister", "--driver", "V 2", code=3)

    def test_where_names_the_files_of_this_environment(self):
        places = self.run_json("where")
        self.assertEqual(places["user_file"], self.user)
        self.assertEqual(places["system_file"], self.path("odbc.ini"))
        self.assertEqual(places["driver_file"], self.path("odbcinst.ini"))
        self.assertEqual(places["setup_library"], SETUP)
        self.assertTrue(os.path.exists(places["installer_library"]))
        self.assertIn("(does not exist)", self.run_tool("where")[0])


class DoctorTest(ToolTest):
    def findings(self, code, **environment):
        report = self.run_json("doctor", code=code, **environment)
        for finding in report["findings"]:
            self.assertRegex(finding["repair"], r"\.$")
        return {finding["id"]: finding["text"] for finding in report["findings"]}

    def test_finds_nothing_wrong_where_nothing_is(self):
        self.add_sales()
        found = self.findings(0)
        self.assertIn("manager-version", found)
        self.assertRegex(found["manager-version"], r"unixODBC 2\.\d+\.\d+")
        self.assertNotIn("library-not-found", found)
        output, _ = self.run_tool("doctor", NO_COLOR="1")
        self.assertTrue(all(len(line) <= 80 or "/" in line for line in output.splitlines()), output)
        self.assertIn("0 errors", output)

    def test_finds_what_is_wrong_with_the_driver(self):
        self.write("odbcinst.ini", "[Other]\nSetup=/x.so\n")
        self.assertIn("Registered are: Other", self.findings(1)["driver-not-registered"])
        self.write("odbcinst.ini", "[Veltrane]\nDriver=/x.so\n")
        found = self.findings(1)
        self.assertIn("driver-without-setup", found)
        self.assertIn("Driver=/x.so", found["library-not-found"])
        self.register("/no/such/file.so")
        self.assertIn("No such file or directory", self.findings(1)["library-not-found"])
        self.register(self.write("text.so", "not a library"))
        self.assertIn("library-not-a-library", self.findings(1))
        self.register(self.compile("empty", "int nothing;"))
        self.assertIn("ConfigDSN", self.findings(1)["library-no-entry-point"])
        self.register(self.compile("symbol", "int absent_function(void);"
                                             "int ConfigDSN(void) { return absent_function(); }"))
        self.assertIn("absent_function", self.findings(1)["library-missing-symbol"])
        self.compile("libneeded_by_test", "int needed(void) { return 1; }")
        self.register(self.compile("depends", "int needed(void);"
                                              "int ConfigDSN(void) { return needed(); }",
                                   "-L" + self.folder, "-l:libneeded_by_test.so"))
        os.remove(self.path("libneeded_by_test.so"))
        self.assertIn("libneeded_by_test.so", self.findings(1)["library-missing-dependency"])
        self.register(self.compile("crash", "#include <stdlib.h>\n__attribute__((constructor)) "
                                            "static void f(void) { abort(); }"))
        self.assertIn("library-crashes", self.findings(1))

    def test_finds_a_library_of_another_architecture(self):
        library = self.compile("other", "int ConfigDSN(void) { return 1; }")
        with open(library, "r+b") as file:
            file.seek(18)
            file.write(b"\xb7\x00" if os.uname().machine != "aarch64" else b"\x3e\x00")
        self.register(library)
        self.assertIn(" instead of ", self.findings(1)["library-wrong-architecture"])

    def test_finds_what_is_wrong_with_files_and_dsns(self):
        self.write("odbc.ini", "[sales]\nDriver=Veltrane\nServer=s\nDatabase=d\n")
        self.write("user.ini", "[sales]\nDriver=Veltrane\nServer=s\nPWD=hunter2\nServer=t\n"
                               "[lost]\nDriver=Nobody\n[none]\nx=1\n[SALES]\n")
        os.chmod(self.user, 0o666)
        found = self.findings(1, ODBCSEARCH="ODBC_SYSTEM_DSN")
        for name in ("value-missing", "key-twice", "section-twice", "password-readable-by-others",
                     "file-writable-by-others", "user-dsn-shadows-system-dsn",
                     "dsn-of-unknown-driver", "dsn-without-driver", "environment-odbcsearch"):
            self.assertIn(name, found)
        self.assertNotIn("hunter2", str(found))
        os.chmod(self.user, 0o600)
        self.assertNotIn("password-readable-by-others", self.findings(1))
        found = self.findings(1, ODBCINI="/nowhere/odbc.ini")
        self.assertIn("/nowhere/odbc.ini: cannot create", found["file-not-writable"])
        self.write("user.ini", "text\n")
        self.assertIn("before the first section", self.findings(1)["file-unreadable"])

    def test_check_judges_stored_dsns(self):
        self.add_sales()
        self.assertEqual(self.run_tool("check")[0], "sales: sound\n")
        self.write("user.ini", "[a]\nDriver=Veltrane\nServer=s\n[b]\nDriver=Other\n")
        result = self.run_json("check", code=1)
        self.assertEqual([dsn["name"] for dsn in result["dsns"]], ["a"])
        self.assertEqual(result["dsns"][0]["findings"][0]["id"], "value-missing")


class TextsTest(ToolTest):
    def names(self):
        """Every command with its options, as the tool's own help has them."""
        overview, _ = self.run_tool("--help")
        commands = re.findall(r"(?m)^  ((?:driver )?[a-z]+)  +", overview)
        self.assertGreater(len(commands), 10)
        for command in commands:
            text, _ = self.run_tool(*command.split(), "--help")
            yield command, re.findall(r"(?m)^  (?:-\w, )?(--[a-z-]+)", text)

    def test_the_manual_names_every_option_and_formats_cleanly(self):
        page = os.path.join(TEXTS, "man", "veltrane-dsn.1")
        if shutil.which("groff"):
            result = subprocess.run(["groff", "-man", "-Tutf8", "-ww", page], text=True,
                                    capture_output=True, check=True)
            self.assertEqual(result.stderr, "")
        source = self.read(page).replace("\\-", "-")
        for command, options in self.names():
            self.assertIn(f".SS veltrane-dsn {command}", source)
            for option in options:
                if option != "--help":
                    self.assertIn(option, source)

    def complete(self, *words):
        script = os.path.join(TEXTS, "bash", "veltrane-dsn")
        quoted = " ".join("'" + word + "'" for word in ("veltrane-dsn", *words))
        result = subprocess.run(
            ["bash", "-c", f"source '{script}'; COMP_WORDS=({quoted}); COMP_CWORD={len(words)}; "
                           "_veltrane_dsn; printf '%s\\n' \"${COMPREPLY[@]}\""],
            text=True, capture_output=True, check=True,
            env={**self.environment, "PATH": os.path.dirname(TOOL) + ":" + os.environ["PATH"]})
        self.assertEqual(result.stderr, "")
        return result.stdout.split("\n")[:-1]

    def test_bash_completes_commands_options_and_names(self):
        self.add_sales()
        for command, options in self.names():
            self.assertEqual(set(self.complete(*command.split(), "--")) - {""}, set(options), command)
        self.assertIn("doctor", self.complete("do"))
        self.assertEqual(set(self.complete("driver", "")), {"register", "unregister", "list"})
        self.assertEqual(self.complete("show", "sa"), ["sales"])
        self.assertEqual(self.complete("set", "sales", "--driver", "V"), ["Veltrane"])
        self.assertEqual(self.complete("add", "x", "--pwd-env", "ODBCSYS"), ["ODBCSYSINI"])

    def test_other_shells_take_their_completion(self):
        for shell, name in (("zsh", "_veltrane-dsn"), ("fish", "veltrane-dsn.fish")):
            path = os.path.join(TEXTS, shell, name)
            text = self.read(path)
            for _, options in self.names():
                for option in options:
                    if option != "--help":
                        self.assertIn(option if shell == "zsh" else "-l " + option[2:], text)
            if shutil.which(shell):
                subprocess.run([shell, "-n", path], check=True)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]])
