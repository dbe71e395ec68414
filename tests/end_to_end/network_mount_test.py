#!/usr/bin/env python3
"""An odbc.ini on a network file system: folders of a server that sshfs mounts, with its own caches,
times in whole seconds, and a server that can go away. Needs root, /dev/fuse and sshfs; uses its own
mount namespace.

Arguments: veltrane-dsn, the setup library, and the test programs to run on such a mount.
"""
import ctypes
import os
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

TOOL, SETUP, *PROGRAMS = sys.argv[1:]
SKIPPED = 77
SERVER = "/usr/lib/openssh/sftp-server"
CLONE_NEWNS = 0x20000
KEPT = "# kept\n[Other]\nk = v\n"


class NetworkMountTest(unittest.TestCase):
    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="veltrane-network-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.server = self.folder / "server"
        self.server.mkdir()
        self.server.chmod(0o777)
        self.folder.chmod(0o755)
        (self.folder / "odbc.ini").write_text("")
        (self.folder / "odbcinst.ini").write_text(f"[Veltrane]\nSetup={SETUP}\n")
        self.ini = self.server / "user.ini"
        self.ini.write_text(KEPT)

    def mount(self, name, *options):
        """Mounts the server's folder, as one host does. Returns the place and the server's pid."""
        place = self.folder / name
        place.mkdir()
        # sshfs unmounts when its server is gone. The folder below is read-only, so nothing is
        # written there.
        subprocess.run(["mount", "-t", "tmpfs", "-o", "ro", "none", place], check=True)
        self.addCleanup(self.unmount, place)
        number = self.folder / f"{name}.pid"
        connect = self.folder / f"{name}.connect"
        connect.write_text(f"#!/bin/sh\necho $$ > {number}\nexec {SERVER}\n")
        connect.chmod(0o755)
        flags = ["allow_other", "default_permissions", f"ssh_command={connect}", *options]
        below = os.stat(place).st_dev
        process = subprocess.Popen(["sshfs", "-f", f"server:{self.server}", place, "-o",
                                    ",".join(flags)], stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        self.addCleanup(process.wait)
        self.addCleanup(self.unmount, place)
        deadline = time.monotonic() + 20
        while not number.exists() or os.stat(place).st_dev == below:
            self.assertIsNone(process.poll(), "sshfs ended")
            self.assertLess(time.monotonic(), deadline, "no mount")
            time.sleep(0.02)
        return place, int(number.read_text())

    def unmount(self, place):
        subprocess.run(["umount", "-l", place], check=False, stderr=subprocess.DEVNULL)

    def start(self, place, name):
        environment = {"PATH": os.environ["PATH"], "HOME": str(self.folder),
                       "ODBCSYSINI": str(self.folder), "ODBCINI": f"{place}/user.ini"}
        for key in ("ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS"):
            if key in os.environ:
                environment[key] = os.environ[key]
        return subprocess.Popen([TOOL, "add", name, "--server", f"of {name}", "--database", "d"],
                                env=environment, text=True, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE)

    def add(self, place, name, code=0):
        process = self.start(place, name)
        output, errors = process.communicate(timeout=60)
        self.assertEqual(process.returncode, code, output + errors)
        return errors

    def assert_nothing_left(self):
        """The replaced file goes a moment later, when the server is told that it was closed."""
        deadline = time.monotonic() + 5
        while os.listdir(self.server) != ["user.ini"] and time.monotonic() < deadline:
            time.sleep(0.02)
        self.assertEqual(os.listdir(self.server), ["user.ini"])

    def saved(self, text):
        """Returns its data sources; checks that they are whole and everything else is unchanged."""
        self.assertTrue(text.startswith(KEPT), text)
        blocks = [block for block in text[len(KEPT):].split("\n\n") if block.strip()]
        names = [block.strip().splitlines()[0][1:-1] for block in blocks]
        for name, block in zip(names, blocks):
            self.assertEqual(block.strip(),
                             f"[{name}]\nDriver=Veltrane\nServer=of {name}\nDatabase=d", text)
        return names

    def test_is_like_any_other_folder(self):
        place, _ = self.mount("a")
        for program in PROGRAMS:
            listing = subprocess.run([program, "--gtest_list_tests"], text=True, check=True,
                                     stdout=subprocess.PIPE).stdout.splitlines()
            names = [line.strip() for line in listing if line.startswith(" ")]
            self.assertTrue(names)
            for name in names:
                with self.subTest(name):
                    run = subprocess.run([program, f"--gtest_filter=*.{name}"], text=True, timeout=400,
                                         env={**os.environ, "TMPDIR": str(place)}, check=False,
                                         stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
                    self.assertEqual(run.returncode, 0, run.stdout)

    def test_a_read_only_mount_refuses(self):
        place, _ = self.mount("a", "ro")
        self.assertIn("Read-only file system", self.add(place, "sales", code=1))
        self.assertEqual(self.ini.read_text(), KEPT)
        self.assert_nothing_left()

    def test_hosts_that_take_turns_lose_nothing(self):
        hosts = [self.mount(name)[0] for name in ("a", "b")]
        names = []
        for number in range(10):
            for host in hosts:
                (host / "user.ini").read_text()  # to fill its caches
            for host in hosts:
                names.append(f"{host.name}{number}")
                self.add(host, names[-1])
                self.assertEqual(self.saved(self.ini.read_text()), names)
        self.assert_nothing_left()

    def test_waits_for_a_server_that_does_not_answer(self):
        place, server = self.mount("a")
        self.add(place, "first")
        os.kill(server, signal.SIGSTOP)
        waiting = self.start(place, "second")
        time.sleep(0.5)
        self.assertIsNone(waiting.poll())
        os.kill(server, signal.SIGCONT)
        self.assertEqual(waiting.communicate(timeout=60)[1], "")
        self.assertEqual(self.saved(self.ini.read_text()), ["first", "second"])

    def test_a_server_that_goes_away_leaves_the_old_file_or_the_new_one(self):
        for number in range(8):
            with self.subTest(number):
                place, server = self.mount(f"a{number}")
                writers = {f"{number}-{i}": self.start(place, f"{number}-{i}") for i in range(6)}
                time.sleep(random.uniform(0.02, 0.3))
                os.kill(server, signal.SIGKILL)
                ends = {name: (writer.communicate(timeout=60), writer.returncode)
                        for name, writer in writers.items()}
                self.unmount(place)
                # sshfs renames an open file before it replaces it. The largest such file is
                # the last.
                aside = sorted(self.server.glob(".fuse_hidden*"), key=os.path.getsize)
                if not self.ini.exists():
                    aside.pop().rename(self.ini)
                names = self.saved(self.ini.read_text())
                for name, ((output, errors), code) in ends.items():
                    self.assertIn(code, (0, 1), output + errors)
                    self.assertTrue(code == 0 or errors, "a failure says so")
                    self.assertTrue(code != 0 or name in names, f"{name}: {output} {aside}")
                for path in aside:
                    if path.exists():
                        path.unlink()
                after, _ = self.mount(f"b{number}")
                self.add(after, f"after-{number}")
                self.assert_nothing_left()


def why_not():
    if os.getuid() != 0:
        return "needs root"
    for path in ("/dev/fuse", shutil.which("sshfs") or "sshfs", SERVER):
        if not os.path.exists(path):
            return f"needs {path}"
    if ctypes.CDLL(None).unshare(CLONE_NEWNS) != 0:
        return "needs a mount namespace"
    if subprocess.run(["mount", "--make-rprivate", "/"], check=False).returncode != 0:
        return "needs to mount"
    return ""


if __name__ == "__main__":
    reason = why_not()
    if reason:
        print(f"skipped: {reason}")
        sys.exit(SKIPPED)
    unittest.main(argv=sys.argv[:1], verbosity=2)
