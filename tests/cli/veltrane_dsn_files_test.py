#!/usr/bin/env python3
"""What the built veltrane-dsn does with files, on Linux, and the texts for manuals and shells.

Environment, besides that of tool_test.py: MANUAL, the man page, and COMPLETION, the folder of the
scripts for shells.
"""
import ctypes
import fcntl
import glob
import json
import os
import re
import shlex
import shutil
import signal
import subprocess
import sys
import time
import unittest

from tool_test import ToolTest, main


# Calls a function of the installer in a new process, because the installer caches what it reads.
INSTALLER = """
import ctypes, sys
library = ctypes.CDLL("libodbcinst.so.2")
request, name, key = sys.argv[1:]
value = ctypes.create_string_buffer(b"DSN=" + name.encode() + b"\\0", 1000)
if int(request):
    sys.exit(not library.SQLConfigDataSource(None, int(request), b"Veltrane", value))
library.SQLGetPrivateProfileString(name.encode(), key.encode(), b"", value, 1000, b"odbc.ini")
print(value.value.decode(), end="")
"""


class FilesTest(ToolTest):
    def installer(self, request, name, key="", **environment):
        return subprocess.run([sys.executable, "-c", INSTALLER, str(request), name, key], text=True,
                              check=True, env={**self.stage.environment, **environment},
                              stdout=subprocess.PIPE).stdout

    @unittest.skipIf(os.environ["SANITIZED"] == "1", "a sanitizer has to be in its host from the start")
    def test_the_tool_and_the_installer_read_each_others_files(self):
        read, add, configure, remove = range(4)
        values = {"Server": "ü=;#", "Database": "日本", "UID": "[x]", "Trace": "1"}
        self.run_tool("apply", "-", stdin=json.dumps([{"name": "sales", "values": values}]))
        for key, value in {**values, "Driver": "Veltrane"}.items():
            self.assertEqual(self.installer(read, "sales", key), value)
        for request, name in ((add, "theirs"), (configure, "sales")):
            initial = self.write_file("initial.ini", f"[DSN]\nDSN={name}\nServer=s2\nDatabase=d2\nUID=ü\n")
            self.installer(request, name, VELTRANE_DSN_INITIAL_VALUES=initial)
            # The setup library drops keys that it does not know.
            self.assertEqual(self.run_json("show", name)["values"],
                             {"Server": "s2", "UID": "ü", "Database": "d2"})
        self.installer(remove, "sales")
        self.assertEqual(self.run_tool("list")[0], "theirs\n")

    def test_keeps_comments_repeated_lines_and_places(self):
        self.write_file("user.ini", "# ours\n[sales]\nDriver = Veltrane\nHint=1\nServer=s\n"
                                    "Database=d\nhint = 2\nOld=1\nOld=2\nPWD=a\nPWD=b\n\n[other]\nx=1\n")
        self.run_tool("set", "sales", "--server", "t", "--unset", "Old")
        expected = ("# ours\n[sales]\nDriver = Veltrane\nHint=1\nServer=t\nDatabase=d\nhint = 2\n"
                    "PWD=a\nPWD=b\n\n[other]\nx=1\n")
        self.assertEqual(self.read_file(self.user), expected)
        # An old password must not stay in a line that no reader uses.
        self.run_tool("set", "sales", "--pwd-stdin", stdin="new")
        self.assertEqual(self.read_file(self.user), expected.replace("PWD=a\nPWD=b\n", "PWD=new\n"))

    def test_while_it_waits_for_the_lock_a_run_can_be_stopped_and_the_file_can_change(self):
        opened = {os.path.realpath(self.user), os.path.realpath(self.folder)}  # a mere reader opens the file alone
        for act, code, reason, *command in (
                (lambda run: run.send_signal(signal.SIGINT), 130, "Interrupted. Nothing has been written.",
                 "apply", self.write_file("dsns.ini", "[sales]\nServer=t\n")),
                (lambda _: os.truncate(self.user, 0), 3, f'There is no DSN "sales" in {self.user}.',
                 "set", "sales", "--server", "t")):
            self.write_file("user.ini", "[sales]\nDriver=Veltrane\nServer=s\nDatabase=d\n")
            with open(self.user) as ini:
                fcntl.flock(ini, fcntl.LOCK_EX)
                run = self.start(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
                while not opened <= set(map(os.path.realpath, glob.glob(f"/proc/{run.pid}/fd/*"))):
                    self.assertIsNone(run.poll())
                    time.sleep(0.01)
                act(run)
                before = self.read_file(self.user)
            output, _ = run.communicate(timeout=60)
            self.assertEqual((run.returncode, output, self.read_file(self.user)), (code, f"veltrane-dsn: {reason}\n", before))

    def test_results_name_the_file_that_is_not_the_users_own(self):
        self.assertEqual(self.add_sales(SUDO_USER="anna")[0], f"sales: added in {self.user}\n")
        result = self.run_json("remove", "sales", SUDO_USER="anna")
        self.assertEqual(result["file"], self.user)
        self.assertEqual(self.add_sales("--system")[0], f"sales: added in {self.stage.places['system']}\n")

    def test_errors_name_path_and_reason(self):
        missing = self.path("nowhere/odbc.ini")
        _, errors = self.add_sales(code=1, ODBCINI=missing)
        self.assertIn(missing + ": cannot create: No such file or directory", errors)
        with open("/dev/full", "w", encoding="utf-8") as full:
            self.assertEqual(self.start(["where"], stdout=full).wait(), 1)


PTRACE = ctypes.CDLL(None).ptrace
PTRACE.argtypes = ctypes.c_long, ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p


def start_traced(program, environment):
    child = os.fork()
    if child == 0:
        os.dup2(os.open(os.devnull, os.O_WRONLY), 1)
        os.dup2(1, 2)
        PTRACE(0, 0, None, None)  # TRACEME
        os.execve(program[0], program, environment)
    os.waitpid(child, 0)
    return child


def kill_at(number, program, environment):
    """Kills a program at its system call of a number. Returns its status if it has ended before."""
    child = start_traced(program, environment)
    for _ in range(2 * number - 1):  # each stops at its begin and at its end
        PTRACE(24, child, None, None)  # SYSCALL
        _, status = os.waitpid(child, 0)
        if not os.WIFSTOPPED(status):
            return status
    os.kill(child, signal.SIGKILL)
    os.waitpid(child, 0)
    return None


def memory_at_end(program, environment):
    """The memory that a program can write, right before it ends."""
    child = start_traced(program, environment)
    PTRACE(0x4200, child, None, 0x40)  # SETOPTIONS, TRACEEXIT
    PTRACE(7, child, None, None)  # CONT
    os.waitpid(child, 0)
    content = b""
    with open(f"/proc/{child}/maps", encoding="utf-8") as maps, open(f"/proc/{child}/mem", "rb") as memory:
        for area in maps:
            if " rw" in area and "[v" not in area:
                begin, end = (int(it, 16) for it in area.split()[0].split("-"))
                memory.seek(begin)
                content += memory.read(end - begin)
    PTRACE(7, child, None, None)
    os.waitpid(child, 0)
    return content


# Before the first sync it writes a section to odbc.ini, as a program without the lock does, or
# sends Ctrl-C.
FOREIGN = """
    #include <fcntl.h>
    #include <signal.h>
    #include <stdlib.h>
    #include <string.h>
    #include <sys/syscall.h>
    #include <unistd.h>
    int fsync(int file) {
        static int is_done;
        if (getenv("INTERRUPT")) {
            raise(SIGINT);
            unsetenv("INTERRUPT");
        } else if (!is_done++) {
            const char text[] = "[foreign]\\nx=1\\n";
            const int ini = open(getenv("ODBCINI"), O_WRONLY | O_APPEND);
            if (ini < 0 || write(ini, text, strlen(text)) < 0) abort();
            close(ini);
        }
        return (int)syscall(SYS_fsync, file);
    }
"""


class KillsTest(ToolTest):
    def test_no_password_stays_in_memory(self):
        values = {"Server": "s", "Database": "d", "PWD": "hunter2"}
        add = ["add", "x", "--server", "s", "--database", "d", "-n"]
        for text, *command in (("hunter2\n", *add, "--pwd-file"),
                               (json.dumps([{"name": "x", "values": values}]), "apply", "-n", "--json"),
                               ("[x]\nServer=s\nDatabase=d\nPWD=hunter2\n", "apply", "-n"),
                               ('[{"name": "x", "values": {"PWD": "hunter2"}', "apply")):
            memory = memory_at_end(*self.stage.prepare([*command, self.write_file("password", text)]))
            self.assertIn(command[0].encode(), memory)
            self.assertFalse(b"hunter2" in memory, text)
        program, environment = self.stage.prepare([*add, "--pwd-env", "SECRET"])
        self.assertFalse(b"hunter2" in memory_at_end(program, {**environment, "SECRET": "hunter2"}))

    def test_a_kill_at_any_system_call_leaves_the_old_file_or_the_new_one(self):
        before = "# ours\n[sales]\nDriver=Veltrane\nServer=s\nDatabase=d\nHint=1\n\n[gone]\nDriver=Veltrane\n"
        file = self.write_file("dsns.json", json.dumps(
            [{"name": f"n{i}", "values": {"Server": "s", "Database": "d"}} for i in range(3)] +
            [{"name": "sales", "values": {"Server": "t"}}, {"name": "gone", "state": "absent"}]))
        points = 0
        for command in (["set", "sales", "--server", "t"], ["apply", file]):
            self.write_file("user.ini", before)
            self.run_tool(*command)
            states = {before: 0, self.read_file(self.user): 0}
            self.assertEqual(len(states), 2)
            beside = set(os.listdir(self.folder))
            number, is_over = 1, False
            while not is_over:
                self.write_file("user.ini", before)
                status = kill_at(number, *self.stage.prepare(command))
                self.assertIn(status, (None, 0))
                is_over = status == 0
                states[self.read_file(self.user)] += 1  # a third state is a KeyError
                if set(os.listdir(self.folder)) != beside:
                    self.run_tool("list")
                    self.assertEqual(set(os.listdir(self.folder)), beside, number)
                number += 1
            self.assertGreater(min(states.values()), 1)
            points += number - 2
        self.assertGreater(points, 300)

    def test_changes_by_others_between_read_and_write_are_not_lost(self):
        preload = self.compile("foreign", FOREIGN)
        sales = "[sales]\nDriver=Veltrane\nServer=s\nDatabase=d\n"
        for command, after in ((["set", "sales", "--server", "t"], sales.replace("=s", "=t")),
                               (["remove", "sales"], "")):
            self.write_file("user.ini", sales)
            self.run_tool(*command, LD_PRELOAD=preload)
            self.assertEqual(self.read_file(self.user), after + "[foreign]\nx=1\n")

    def test_after_ctrl_c_while_it_writes_the_tool_reports_what_is_done(self):
        preload = self.compile("foreign", FOREIGN)
        file = self.write_file("dsns.ini", "[a]\nServer=s\nDatabase=d\n[b]\n")
        output, errors = self.run_tool("apply", file, code=130, LD_PRELOAD=preload, INTERRUPT="1")
        self.assertEqual(output, "a: added\n1 added, 1 failed\n")
        self.assertIn("b: Server: ", errors)
        self.assertIn("Interrupted. The changes reported as done are written.\n", errors)
        self.assertEqual(set(self.dsns()), {"a", "foreign"})


class FileFindingsTest(ToolTest):
    def test_finds_what_is_wrong_with_a_shared_object(self):
        library = self.compile("version", "int ConfigDSN(void) { return getpid(); }")
        with open(library, "rb") as file:
            content = file.read().replace(b"GLIBC_2.", b"GLIBC_9.")
        self.register(library)
        for size, name, text in ((None, "library-missing-symbol", "no library defines version GLIBC_9."),
                                 (64, "library-cannot-be-loaded", "cannot be loaded: " + library)):
            with open(library, "wb") as file:
                file.write(content[:size])
            self.assertIn(text, self.findings()[name])
        for source, name in (("__attribute__((constructor)) static void f(void) { abort(); }", "library-crashes"),
                             ('int ConfigDSN(void) { write(1, "no JSON", 7); abort(); }', "driver-does-not-answer")):
            self.register(self.compile(name, source))
            self.assertIn(name, self.findings())

    def test_names_the_defects_of_the_driver_managers_version(self):
        shutil.copy(self.run_json("where")["installer_library"], self.path("libodbcinst.so.2"))
        remembers, locks = "manager-remembers-values", "manager-locks-requests"
        for version, defects in (("2.3.11", {remembers}), ("2.3.12", set()), ("2.3.13", {locks}), ("2.3", set())):
            self.write_file("libodbc.so.2", f"2.3.4x\0{version}\0")
            found = self.findings(0, LD_LIBRARY_PATH=f"{self.folder}:{os.environ.get('LD_LIBRARY_PATH', '')}")
            self.assertIn("unixODBC " + (version if version > "2.3" else "of an unknown"),
                          found["manager-version"])
            self.assertEqual(found.keys() & {remembers, locks}, defects)

    def test_asks_a_driver_whose_name_is_not_utf_8(self):
        with open(self.path("odbcinst.ini"), "ab") as file:
            file.write(b"[Treib\xe4r]\nSetup=" + self.stage.setup.encode() + b"\n")
        found = self.run_json("doctor", "--driver", "Treib\udce4r")["findings"]
        self.assertIn("driver-answers", [finding["id"] for finding in found])

    def test_check_examines_every_line_of_a_dsn(self):
        sound = "Server=s\nDatabase=d\n"
        cases = {"sound": (sound, []), "no database": ("Server=s\n", ["value-missing"]),
                 "a control character": ("Server=s\x01\nDatabase=d\n", ["value-refused-as-new"]),
                 "the longest line": (sound + "X=" + 997 * "v" + "\n", []),
                 "a longer line": (sound + "X=" + 998 * "v" + "\n", ["value-does-not-survive"]),
                 "a key near one of ours": (sound + "Sever=t\n", ["key-unknown"]),
                 "another driver": ("Driver=Other\nSever=s\n", []),
                 "a key three times": (sound + "server=t\nSERVER=u\n", ["key-twice"]),
                 "a value that iODBC cuts": (sound + "PWD=a ;b\n", ["value-cut-by-iodbc"]),
                 "a semicolon that it does not": (sound + "PWD=a;b\n", [])}
        self.write_file("user.ini", "".join(f"[{name}]\n{lines}" for name, (lines, _) in cases.items()))
        for dsn in self.run_json("check", *cases, code=1)["dsns"]:
            self.assertEqual([it["id"] for it in dsn["findings"]], cases[dsn["name"]][1], dsn)

    def test_finds_what_is_wrong_with_files(self):
        self.write_file("user.ini", "[sales]\nDriver=Veltrane\nServer=s\nPWD=hunter2\nServer=t\n"
                                    "[SALES]\n" + "".join(f"[d{i}]\nPWD=x\n" for i in range(10)))
        os.chmod(self.user, 0o666)
        found = self.findings(ODBCSEARCH="ODBC_SYSTEM_DSN")
        for name in ("key-twice", "section-twice", "password-readable-by-others",
                     "file-writable-by-others", "environment-odbcsearch"):
            self.assertIn(name, found)
        self.assertTrue(found["password-readable-by-others"].endswith(", d8 and 1 more."))
        self.assertNotIn("hunter2", str(found))
        os.chmod(self.user, 0o640)
        self.assertIn("by its group", self.findings()["password-readable-by-others"])
        os.chmod(self.user, 0o600)
        self.assertNotIn("password-readable-by-others", self.findings())
        found = self.findings(ODBCINI="/nowhere/odbc.ini")
        self.assertIn("/nowhere/odbc.ini: cannot create", found["file-not-writable"])
        self.write_file("user.ini.veltrane-0123456789abcdef", "[sales]\nPWD=hunter2\n")
        self.assertIn("user.ini.veltrane-0123456789abcdef", self.findings()["temporary-file-left"])
        self.assertNotIn("temporary-file-left", self.findings())
        record = self.write_file("user.ini.veltrane-dsn-change", "[change]\n")
        self.assertIn(record, self.findings()["change-interrupted"])
        self.write_file("user.ini", "text\n")
        self.assertIn("before the first section", self.findings()["file-unreadable"])
        self.write_file("user.ini", "[sales]\nDriver=Veltrane\n")
        self.assert_refused("dsn: " + self.write_file("odbcinst.ini", "text\n"), "apply", "-", code=1,
                            stdin='[{"name": "sales", "state": "absent"}, {"name": "new", "values": {"Server": "s", "Database": "d"}}]')

    def test_warns_of_a_password_that_others_can_read(self):
        secret = {"stdin": json.dumps([{"name": "sales", "values": {"Server": "s", "Database": "d",
                                                                    "PWD": "hunter2"}}])}
        warning = " (mode 0644) now holds a password that every user of this machine can read."
        self.assertEqual(self.run_tool("apply", "-", **secret)[1], "")  # a new file is private
        os.chmod(self.user, 0o644)
        self.assertEqual(self.run_tool("apply", "-", **secret)[1], "")  # nothing new
        self.assertEqual(self.run_tool("set", "sales", "--pwd-stdin", "-n", stdin="x")[1], "")
        self.assertEqual(self.run_tool("set", "sales", "--uid", "u")[1], "")
        self.assertIn(self.user + warning, self.run_tool("set", "sales", "--pwd-stdin", stdin="x")[1])
        self.assertIn(self.stage.places["system"] + warning,
                      self.run_json("apply", "-", "--system", **secret)["warnings"][0])


class TextsTest(ToolTest):
    def test_help_manual_and_completion_have_every_command_and_option(self):
        overview, _ = self.run_tool("--help")
        self.assertEqual(self.run_tool("driver", "--help")[0], overview)
        self.assertRegex(self.run_tool("--version")[0], r"^veltrane-dsn [0-9.]+\n$")
        manual = self.read_file(os.environ["MANUAL"]).replace("\\-", "-")
        commands = re.findall(r"(?m)^  ((?:driver )?[a-z]+)  +", overview)
        self.assertGreater(len(commands), 10)
        for command in commands:
            help_text, _ = self.run_tool(*command.split(), "-h")
            self.assertLessEqual(max(map(len, (overview + help_text).splitlines())), 80)
            self.assertNotIn("--pwd,", help_text)  # parsed only to be refused
            examples = help_text.partition("Examples:\n")[2].replace("\\\n", "").splitlines()
            self.assertTrue(examples, command)
            for example in examples:
                words = shlex.split(example.split("| ")[-1].partition(" > ")[0])
                self.assertEqual(words.pop(0), "veltrane-dsn")
                self.assertEqual(self.run_tool(*words, "--help")[0], help_text, example)
            options = set(re.findall(r"(?m)^  (?:-\w, )?(--[a-z-]+)", help_text))
            self.assertEqual(self.complete("bash", *command.split(), "--"), sorted(options), command)
            self.assertIn(f".SS veltrane-dsn {command}", manual)
            for option in options - {"--help"}:
                self.assertIn(option, manual)
        if shutil.which("groff"):
            result = subprocess.run(["groff", "-man", "-Tutf8", "-ww", os.environ["MANUAL"]], text=True,
                                    capture_output=True, check=True)
            self.assertEqual(result.stderr, "")

    # How each shell completes the last word of a line.
    SHELLS = {
        # bash divides words at "=", and completes files without the script.
        "bash": ("--norc", """compopt() { compgen -f -- "$cur"; }; COMP_LINE="$*" last=${!#}; . "$0"
                              [[ $last == *=* ]] && set -- "${@:1:$#-1}" "${last%=*}" = "${last#*=}"
                              COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)); _veltrane_dsn
                              printf '%s\\n' "${COMPREPLY[@]}" """),
        "fish": ("--no-config", 'source $argv[1]; complete -C "$argv[2..]"'),
        "zsh": ("-f", """_files() { print -rl -- $words[CURRENT]*; }; _parameters() { print ODBCSYSINI; }
                         compset() { :; }; compadd() { print -rl -- $names; }; words=("$@") CURRENT=$#; . "$0" """),
    }

    def complete(self, shell, *words):
        option, source = self.SHELLS[shell]
        script = os.path.join(os.environ["COMPLETION"], "veltrane-dsn." + shell)
        path = os.path.dirname(os.environ["VELTRANE_DSN"]) + ":" + os.environ["PATH"]
        result = subprocess.run([shell, option, "-c", source, script, "veltrane-dsn", *words], text=True,
                                capture_output=True, check=True, cwd=self.folder,
                                env={**self.stage.environment, "PATH": path})
        self.assertEqual(result.stderr, "")
        return sorted(re.sub(r"\t.*|\\|--driver=", "", line) for line in result.stdout.splitlines() if line)

    def test_shells_complete_commands_and_names(self):
        self.write({"sales": {}, "it's": {}})
        self.write({"stock": {"Driver": "Other"}, "archive": {}}, "system")
        for shell in filter(shutil.which, self.SHELLS):
            for words, expected in ((["do"], "doctor"), (["driver", ""], "list register unregister"),
                                    (["show", "sa"], "sales"), (["show", "--system", "s"], "stock"),
                                    (["set", "sales", "--driver", "V"], "Veltrane"), (["--he"], "--help"),
                                    (["set", "--driver=V"], "Veltrane"), (["show", "it\\'"], "it's"),
                                    (["list", "--prefix", ""], ""), (["export", "--format", "i"], "ini"),
                                    (["apply", "user"], "user.ini"),
                                    (["add", "x", "--pwd-env", "ODBCSYS"], "ODBCSYSINI")):
                self.assertEqual(self.complete(shell, *words), expected.split(), (shell, words))


if __name__ == "__main__":
    main()
