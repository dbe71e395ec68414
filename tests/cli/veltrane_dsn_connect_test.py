#!/usr/bin/env python3
"""veltrane-dsn test through the installed driver managers, with Debian's drivers for SQLite and
PostgreSQL, and with a driver of this test that hangs, crashes and reveals secrets. In Wine, whose
odbc32.dll uses the driver manager and the drivers of Linux, only a part of it."""
import os
import signal
import subprocess
import time

from tool_test import ToolTest, main

# Does what the user name says, and writes its process number to a file.
DRIVER = r"""
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>
static char s_said[4096];
short SQLAllocHandle(short kind, void *parent, void **out) { *out = s_said; return 0; }
short SQLFreeHandle(short kind, void *handle) { return 0; }
short SQLSetEnvAttr(void *e, int attribute, void *value, int length) { return 0; }
short SQLDisconnect(void *c) { pause(); return 0; }
short SQLGetInfo(void *c, unsigned short kind, void *out, short size, short *length) {
    *length = snprintf(out, size, kind == 17 ? "Toy" : kind == 77 ? "03.00" : "1.0");
    return 0;
}
short SQLDriverConnect(void *c, void *window, char *in, short inSize, char *out, short outSize,
                       short *length, unsigned short completion) {
    FILE *file = fopen(getenv("TOY_PROCESS"), "w");
    fprintf(file, "%d", (int)getpid());
    fclose(file);
    printf("printed by the driver\n");
    fflush(stdout);
    snprintf(s_said, sizeof s_said, "no entry with %s \xfc\n", in);
    if (strstr(in, "UID=hang") && fork() >= 0) for (;;) pause();
    if (strstr(in, "UID=wait")) for (;;) pause();
    if (strstr(in, "UID=crash")) abort();
    if (strstr(in, "UID=exit")) _exit(3);
    for (int i = 3; i < 64; ++i) {
        if (strstr(in, "UID=babble") && write(i, "text\n", 5) < 0) continue;
        if (strstr(in, "UID=shut") && shutdown(i, SHUT_WR) == 0) sleep(1), _exit(7);
    }
    return strstr(in, "UID=refuse") ? -1 : 0;
}
short SQLGetDiagRec(short kind, void *c, short number, char *state, int *code, char *text,
                    short size, short *length) {
    if (number > 2 || s_said[0] == 0) return 100;
    strcpy(state, number == 1 ? "28000" : "HY000");
    *code = number == 1 ? -7 : 0;
    *length = snprintf(text, size, "%s", number == 1 ? s_said : "second");
    return 0;
}
"""


class ConnectionTest(ToolTest):
    def assert_gone(self, path, send=os.killpg):
        """Checks that the process whose number is in the file has ended, and its group."""
        number = int(self.read_file(path))
        end = time.monotonic() + 60
        try:
            while time.monotonic() < end:
                send(number, 0)
                time.sleep(0.01)
            self.fail(f"{number} still runs")
        except ProcessLookupError:
            pass


class ConnectTest(ConnectionTest):
    def setUp(self):
        super().setUp()
        # Bare names, as Debian's packages register them.
        self.drivers = {"Veltrane": self.stage.driver(self.stage.setup),
                        "SQLite3": {"Driver": "libsqlite3odbc.so"},
                        "PostgreSQL Unicode": {"Driver": "psqlodbcw.so"}}
        self.stage.write("drivers", self.drivers)

    def add_drivers(self, libraries):
        """Registers drivers, {name: library}, each with a DSN of its name in lower case."""
        self.stage.write("drivers", {**self.drivers, **{name: {"Driver": path} for name, path
                                                        in libraries.items()}})
        self.write({name.lower(): {"Driver": name, "PWD": "stored-secret"} for name in libraries})

    def test_connects_to_real_drivers(self):
        lite = {"Driver": "SQLite3", "Database": self.path("data")}
        self.write({"lite": lite, "pg": {"Driver": "PostgreSQL Unicode", "Servername": "127.0.0.1",
                                         "Port": "1", "Database": "d"}})
        self.write({"system-ü": lite}, "system")
        for name, *manager in (("lite", ), ("system-ü", ), ("system-ü", "--driver-manager", "libiodbc.so.2")):
            self.assertRegex(self.run_tool("test", name, *manager, SYSODBCINI=self.path("odbc.ini"),
                                           SYSODBCINSTINI=self.path("odbcinst.ini"))[0],
                             rf"^{name}: Connected in \d+ ms to SQLite 3\.\d+\.\d+\.\n$")
        self.assertEqual(self.run_tool("test", "lite", "-q"), ("", ""))
        result = self.run_json("test", "-", stdin=f"Driver={{SQLite3}};Database={self.path('new')}")
        self.assertEqual((result["connected"], result["server"], result["diagnostics"]), (True, "SQLite", []))
        said = self.run_json("test", "pg", "--pwd-stdin", stdin="x", code=1)["diagnostics"][0]
        self.assertEqual((said["state"], said["native_code"]), ("08001", 101))
        self.assertIn("Connection refused", self.run_tool("test", "pg", code=1)[0])

    def test_reports_why_the_driver_manager_finds_no_driver(self):
        lacking = self.compile("lacking", "void missing_function(void);\n"
                                     "short SQLAllocHandle() { missing_function(); return 0; }")
        self.add_drivers({"Gone": "/no/such.so", "Lacking": lacking,
                          "Empty": self.compile("empty", "int nothing;")})
        self.write({**self.dsns(), "sales": {"Driver": "Veltrane"}, "lost": {"Driver": "Nobody"},
                    "path": {"Driver": "/no/such.so"}, "none": {"Server": "s"}})
        for name, state, finding, word, code in (
                ("gone", "01000", "library-not-found", '--driver "Gone" --library PATH', 1),
                ("lacking", None, "library-missing-symbol", "missing_function", 1),
                ("empty", "IM004", "library-no-entry-point", "SQLAllocHandle", 1),
                ("path", "01000", "library-not-found", "/no/such.so", 1),
                ("sales", "IM002", "driver-without-library", "programs cannot connect", 1),
                ("lost", "IM002", "driver-not-registered", "name of a registered driver as Driver,", 1),
                ("none", "IM002", "dsn-without-driver", "none", 1),
                ("unknown", "IM002", "dsn-missing", self.path("user.ini"), 3)):
            with self.subTest(name):
                result = self.run_json("test", name, code=code)
                states = [record["state"] for record in result["diagnostics"]] or [None]
                self.assertEqual((states[0], result["findings"][0]["id"]), (state, finding))
                self.assertIn(word, "{text} {repair}".format(**result["findings"][0]))
        # A sanitizer ends iODBC here, which returns a text that it has freed.
        if os.environ.get("SANITIZED") != "1":
            result = self.run_json("test", "gone", "--driver-manager", "libiodbc.so.2", code=1,
                                   SYSODBCINSTINI=self.path("odbcinst.ini"))
            self.assertEqual([record["state"] for record in result["diagnostics"]], ["IM003"])
        self.assertIn("is not part of these programs", self.run_tool("test", "sales", code=1)[0])

    def test_a_driver_is_kept_apart(self):
        process = self.path("process")
        self.add_drivers({"Toy": self.compile("toy", DRIVER)})
        for arguments, code, outcome, text in (
                (["--uid", "fine"], 0, "connected", "to Toy 1.0."),
                (["--uid", "crash"], 1, "crashed", "signal 6 (Aborted)"),
                (["--uid", "shut"], 1, "crashed", "exit code 7"),
                (["--uid", "babble"], 1, "not tested", "sent an invalid answer"),
                (["--uid", "hang", "--timeout", "1"], 5, "timed out", "No answer within 1 s")):
            with self.subTest(arguments):
                result = self.run_json("test", "toy", *arguments, "--pwd-env", "SECRET", code=code,
                                       SECRET="hunter2", TOY_PROCESS=process)
                self.assertEqual(result["outcome"], outcome)
                self.assertIn(text, result["text"])
                self.assert_gone(process)
                self.assertNotIn("hunter2", str(result))
        said = self.run_tool("test", "toy", "--uid", "refuse", "--pwd-stdin", code=1, stdin="us",
                             TOY_PROCESS=process)[0]
        self.assertIn("28000 (-7) no entry with DSN=toy;UID=refuse;PWD=********; ü\n", said)
        self.assertIn("HY000 (0) second\n", said)
        said, _ = self.run_tool("test", "-", code=1, TOY_PROCESS=process,
                                stdin="driver={Toy}; UID=refuse;Token={a;}}b};Database= x=y} ;X={p;}}q}")
        self.assertIn("28000 (-7) no entry with driver=Toy;UID=refuse;Token={********};Database=x=y};"
                      "X={p;}}q};", said)

    def test_the_driver_ends_with_the_tool_and_no_argument_is_a_secret(self):
        process = self.path("process")
        self.add_drivers({"Toy": self.compile("toy", DRIVER)})
        tool = self.start(["test", "toy", "--uid", "hang", "--pwd-stdin"],
                                {"TOY_PROCESS": process}, stdin=subprocess.PIPE)
        tool.stdin.write(b"hunter2\n")
        tool.stdin.close()
        while not os.path.exists(process) or not self.read_file(process):
            time.sleep(0.01)
        for number in (tool.pid, int(self.read_file(process))):
            arguments = self.read_file(f"/proc/{number}/cmdline")
            self.assertIn("test", arguments)
            self.assertNotIn("hunter2", arguments)
        tool.send_signal(signal.SIGKILL)
        tool.wait()
        self.assert_gone(process)

    def test_says_why_no_driver_manager_can_be_used(self):
        for library, text in (("libnothing.so", "No driver manager can be loaded: libnothing.so"),
                              ("libm.so.6", "libm.so.6 is no driver manager")):
            self.assertIn(text, self.run_tool("test", "x", "--driver-manager", library, code=1)[0])


class ConnectInWineTest(ConnectionTest):
    def test_connects_and_stops_a_driver_that_hangs(self):
        toy = self.path("toy.so")
        subprocess.run(["cc", "-x", "c", "-shared", "-fPIC", "-o", toy, "-"], input=DRIVER, text=True,
                       check=True)
        self.write_file("odbcinst.ini", f"[SQLite3]\nDriver=libsqlite3odbc.so\n[Toy]\nDriver={toy}\n")
        self.write_file("odbc.ini", "[lite]\nDriver=SQLite3\nDatabase=:memory:\n[toy]\nDriver=Toy\n")
        others = {"ODBCSYSINI": self.folder, "ODBCINI": self.path("none"),
                  "TOY_PROCESS": self.path("process")}
        self.assertRegex(self.run_tool("test", "lite", **others)[0],
                         r"^lite: Connected in \d+ ms to SQLite 3\.\d+\.\d+\.\n$")
        for user, seconds, code, outcome in (("exit", "60", 1, "crashed"), ("wait", "4", 5, "timed out"),
                                             ("refuse", "60", 1, "refused")):
            result = self.run_json("test", "toy", "--uid", user, "--timeout", seconds, "--pwd-stdin",
                                   stdin="hunter2", code=code, **others)
            self.assertEqual(result["outcome"], outcome)
            self.assertNotIn("hunter2", str(result))
            self.assert_gone(self.path("process"), os.kill)
        self.assertEqual(result["diagnostics"][-1]["state"], "28000")
        self.assertIn("No driver manager can be loaded: no.dll: ", self.run_tool(
            "test", "lite", "--driver-manager", "no.dll", code=1, **others)[0])
        result = self.run_json("test", "nowhere", code=3, **others)
        self.assertEqual(result["findings"][0]["id"], "dsn-missing")


if __name__ == "__main__":
    main()
