#!/usr/bin/env python3
"""A program with more rights than its user, set-user-id or by file capabilities, does nothing that
the user could not do, although the user controls the environment and a home folder. Needs root;
uses its own mount namespace and /etc."""
import ctypes
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SKIPPED = 77
USER = 64999
CLONE_NEWNS = 0x20000
OTHERS = "[Other]\nk=v\n"
SAVED = "[sales]\nDriver=Veltrane\nServer=s\nDatabase=d\n"


class SetUserIdTest(unittest.TestCase):
    def setUp(self):
        self.directory = Path(tempfile.mkdtemp(prefix="veltrane-set-user-id-"))
        self.addCleanup(shutil.rmtree, self.directory)
        self.directory.chmod(0o755)
        self.home = self.make_folder("home")
        self.evil = self.make_folder("evil")
        program = self.directory / "bin"
        program.mkdir()
        self.library = shutil.copy(os.environ["SETUP_LIBRARY"], program)
        self.client = Path(shutil.copy(os.environ["CLIENT"], program))
        self.give_rights()
        self.make_etc()
        self.ini = self.home / ".odbc.ini"
        self.system_ini = Path("/etc/odbc.ini")
        self.system_ini.write_text(OTHERS)

    def give_rights(self):
        self.client.chmod(0o4755)

    def make_folder(self, name):
        folder = self.directory / name
        folder.mkdir()
        os.chown(folder, USER, USER)
        return folder

    def make_etc(self):
        etc = self.directory / "etc"
        (etc / "veltrane").mkdir(parents=True)
        for name in ("ld.so.cache", "nsswitch.conf", "group"):
            if Path("/etc", name).exists():
                shutil.copy(Path("/etc", name), etc)
        (etc / "passwd").write_text(f"root:x:0:0::/root:/bin/sh\nuser:x:{USER}:{USER}::{self.home}:/bin/sh\n")
        (etc / "veltrane" / "dsn-defaults.ini").write_text(
            "[DSN]\nDSN=sales\nServer=s\nDatabase=d\n")
        subprocess.run(["mount", "--bind", etc, "/etc"], check=True)
        self.addCleanup(subprocess.run, ["umount", "/etc"], check=True)

    def configure(self, mode="user", request=1):
        """Calls the program with an environment that names wrong places everywhere."""
        values = self.evil / "values.ini"
        values.write_text("[DSN]\nDSN=evil\nServer=evil\nDatabase=evil\n")
        before = sorted(self.evil.iterdir())
        environment = {"ODBCINI": f"{self.evil}/odbc.ini", "ODBCSYSINI": str(self.evil),
                       "SYSODBCINI": f"{self.evil}/odbc.ini", "HOME": str(self.evil),
                       "VELTRANE_DSN_INITIAL_VALUES": str(values), "TMPDIR": str(self.evil),
                       "TR4CE": f"5:{self.evil}/trace"}
        run = subprocess.run([self.client, self.library, mode, str(request)], env=environment,
                             user=USER, group=USER, extra_groups=[], cwd="/", text=True,
                             stdout=subprocess.PIPE, check=True)
        self.assertEqual(sorted(self.evil.iterdir()), before)
        result, *errors = run.stdout.splitlines()
        return result, errors

    def assert_refused(self, reason):
        result, errors = self.configure()
        self.assertEqual(result, "result 0")
        self.assertEqual(len(errors), 1, errors)
        self.assertFalse([path for path in self.home.iterdir() if path != self.ini], reason)
        self.assertEqual(self.system_ini.read_text(), OTHERS, reason)

    def test_the_file_is_the_users_own(self):
        self.assertEqual(self.configure(), ("result 1", []))
        self.assertEqual(self.ini.read_text().strip(), SAVED.strip())
        status = self.ini.stat()
        self.assertEqual((status.st_uid, status.st_gid, status.st_mode & 0o7777),
                         (USER, USER, 0o600))

    def test_links_are_not_followed_to_new_places(self):
        secret = self.directory / "secret.ini"
        secret.write_text("[sales]\nDriver=Veltrane\nServer=hidden\nDatabase=d\n")
        secret.chmod(0o600)
        for target in (self.system_ini, secret, Path("/etc/new.ini")):
            self.ini.symlink_to(target)
            self.assert_refused(f"a symbolic link to {target}")
            self.ini.unlink()
        self.assertFalse(Path("/etc/new.ini").exists())
        self.assertIn("hidden", secret.read_text())

    def test_a_hard_link_to_a_file_of_root(self):
        other = self.directory / "other.ini"
        other.write_text(OTHERS)
        self.ini.hardlink_to(other)
        self.assert_refused("a hard link")
        self.assertEqual(other.read_text(), OTHERS)

    def test_system_requests_use_the_rights_of_the_program(self):
        self.assertEqual(self.configure("system"), ("result 1", []))
        self.assertTrue(self.system_ini.read_text().startswith(OTHERS))
        self.assertIn(SAVED, self.system_ini.read_text())
        self.assertFalse(self.ini.exists())


@unittest.skipIf(shutil.which("setcap") is None, "setcap is not installed")
class FileCapabilitiesTest(SetUserIdTest):
    """The same for a program with rights from its file, not from its owner."""

    def give_rights(self):
        rights = "cap_chown,cap_dac_override,cap_dac_read_search,cap_fowner,cap_fsetid+ep"
        subprocess.run(["setcap", rights, self.client], check=True)


def enter_namespace():
    """False if mounting is not allowed."""
    if os.getuid() != 0 or ctypes.CDLL(None).unshare(CLONE_NEWNS) != 0:
        return False
    return subprocess.run(["mount", "--make-rprivate", "/"], check=False).returncode == 0


if __name__ == "__main__":
    if not enter_namespace():
        print("skipped: needs root and a mount namespace")
        sys.exit(SKIPPED)
    unittest.main(verbosity=2)
