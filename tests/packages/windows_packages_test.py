#!/usr/bin/env python3
"""The archive and the installer for Windows, made and installed in a separate Wine folder.

  windows_packages_test.py BUILD RUN_IN_WINE VERSION TEST_INSTALLER [unittest arguments]
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
import zipfile

BUILD, RUN_IN_WINE, VERSION, TEST_INSTALLER = sys.argv[1:5]
DRIVERS = r"HKLM\SOFTWARE\ODBC\ODBCINST.INI"
SYSTEM_DSNS = r"HKLM\SOFTWARE\ODBC\ODBC.INI"
UNINSTALL = r"HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall"
SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
# A function of each, and its file.
FUNCTIONS = {"VeltraneSetup.dll": ("ConfigDSNW", "Setup/EntryPoints.cpp"),
             "VeltraneDialog.dll": ("VeltraneShowDSNDialog", "VeltraneDialog/library/EntryPoint.cpp"),
             "veltrane-dsn.exe": ("main", "cli/main.cpp")}
PROGRAMS = set(FUNCTIONS)
DOCS = {"docs/" + name for name in
        ("LICENSE", "THIRD-PARTY.txt", "CHANGELOG.md", "dsn-keys.md", "editor.md", "guide.md", "tracing.md",
         "troubleshooting.md", "veltrane-dsn.md", "windows.md")}
SCRATCH = tempfile.mkdtemp(prefix="veltrane packages ü ")
WINE = os.path.join(SCRATCH, "wine")


def run(*command, code=0, **options):
    """Returns the output and errors of a command; accepts any exit code if `code` is None."""
    result = subprocess.run(command, capture_output=True, timeout=120, check=False, **options)
    if code is not None and result.returncode != code:
        raise AssertionError(f"{command}: {result.returncode}\n{result.stdout}\n{result.stderr}")
    return result.stdout, result.stderr


def setUpModule():
    run(RUN_IN_WINE, WINE, "--create")


def tearDownModule():
    run(RUN_IN_WINE, WINE, "--stop")
    shutil.rmtree(SCRATCH)


class InWine(unittest.TestCase):
    """A registry with another product's driver and DSN."""

    def wine(self, *command, code=0, stdin=b""):
        environment = dict(os.environ, LC_ALL="C.UTF-8", WINEDLLOVERRIDES="odbccp32=n,b",
                           VELTRANE_TEST_INSTALLER_KEY="ODBC")
        return run(RUN_IN_WINE, WINE, *command, code=code, input=stdin, env=environment)

    def setUp(self):
        for key in (DRIVERS, SYSTEM_DSNS):
            self.wine("reg", "delete", key, "/f", code=None)
        self.wine("reg", "add", DRIVERS + r"\ODBC Drivers", "/v", "Other", "/d", "Installed")
        self.wine("reg", "add", DRIVERS + r"\Other", "/v", "Setup", "/d", r"C:\other.dll")
        self.wine("reg", "add", SYSTEM_DSNS + r"\theirs", "/v", "Server", "/d", "s")
        self.before = self.registry(DRIVERS)

    def registry(self, key):
        """The keys below one with their values, as text."""
        path = os.path.join(SCRATCH, "exported.reg")
        self.wine("reg", "export", key, "Z:" + path, "/y")
        with open(path, encoding="utf-16") as file:
            return file.read()

    def unix_path(self, path):
        return os.path.join(WINE, "drive_c", *path.split("\\")[1:])

    def check_registered(self, folder):
        setup = folder.replace("\\", "\\\\") + "\\\\VeltraneSetup.dll"
        text = self.registry(DRIVERS)
        self.assertIn(f'"Setup"="{setup}"\n', text)
        self.assertIn('"Veltrane"="Installed"\n', text)
        self.assertIn('"Other"="Installed"\n', text)

    def check_works(self, folder):
        """Checks that the installed tool adds a DSN through an installer that loads the setup
        library. Wine's own ignores the value Setup, so the test installer is there meanwhile. It
        also needs the driver, which is another product."""
        self.wine("reg", "add", DRIVERS + r"\Veltrane", "/v", "Driver", "/d", r"C:\driver.dll", "/f")
        shutil.copy(TEST_INSTALLER, self.unix_path(folder))
        self.wine(folder + r"\veltrane-dsn.exe", "add", "--system", "grün", "--server", "db",
                  "--database", "d", "--uid", "anna", "--pwd-stdin", stdin="p ü\n".encode())
        os.remove(os.path.join(self.unix_path(folder), os.path.basename(TEST_INSTALLER)))
        text = self.registry(SYSTEM_DSNS)
        for line in ("ODBC.INI\\grün]", '"PWD"="p ü"', '"Server"="db"', '"grün"="Veltrane"'):
            self.assertIn(line, text)

    def check_gone(self, folder):
        for _ in range(100):
            if not os.path.exists(self.unix_path(folder)):
                break
            time.sleep(0.1)
        self.assertFalse(os.path.exists(self.unix_path(folder)), folder)
        self.assertEqual(self.registry(DRIVERS), self.before)
        for name in ("theirs", "grün"):
            self.assertIn(f"ODBC.INI\\{name}]", self.registry(SYSTEM_DSNS))


class ArchiveTest(InWine):
    def setUp(self):
        super().setUp()
        run("cpack", "-G", "ZIP", "--config", os.path.join(BUILD, "CPackConfig.cmake"), "-B",
            SCRATCH)
        name = f"veltrane-odbc-setup-{VERSION}-win64"
        self.files = os.path.join(SCRATCH, name)
        shutil.rmtree(self.files, ignore_errors=True)
        with zipfile.ZipFile(self.files + ".zip") as archive:
            archive.extractall(SCRATCH)

    def script(self, path, *arguments, code=0):
        return self.wine("cmd", "/c", path, *arguments, code=code)[1].decode(errors="replace")

    def install(self, *folder, code=0):
        return self.script("Z:" + os.path.join(self.files, "install.cmd").replace("/", "\\"), *folder,
                           code=code)

    def uninstall(self, folder):
        self.script(folder + r"\uninstall.cmd")
        # Wine keeps a running script open, so the script cannot remove its folder as on Windows.
        os.rmdir(self.unix_path(folder))

    def test_has_the_programs_the_scripts_and_the_documentation(self):
        found = {os.path.relpath(os.path.join(folder, name), self.files)
                 for folder, _, names in os.walk(self.files) for name in names}
        self.assertEqual(found, PROGRAMS | DOCS | {"install.cmd", "uninstall.cmd"})
        with zipfile.ZipFile(self.files + "-symbols.zip") as symbols:
            symbols.extractall(SCRATCH)
        for name, (function, file) in FUNCTIONS.items():
            path = os.path.join(self.files, name)
            self.assertIn(b"no symbols", run("x86_64-w64-mingw32-nm", path)[1])
            names = run("x86_64-w64-mingw32-nm", path + ".debug")[0].decode()
            address = re.search(rf"^(\w+) T {function}$", names, re.MULTILINE)[1]
            found = run("x86_64-w64-mingw32-addr2line", "-f", "-e", path, address)[0].decode()
            self.assertRegex(found, rf"^{function}\n\.\S*/{file}:\d+")

    def test_installs_works_and_uninstalls(self):
        first, second = r"C:\Program Files\Veltrane", r"C:\Veltrané2"
        self.install()
        self.check_registered(first)
        self.check_works(first)
        registered = self.registry(DRIVERS)
        self.install()
        self.assertEqual(self.registry(DRIVERS), registered)
        self.assertEqual(set(os.listdir(self.unix_path(first))), PROGRAMS | {"uninstall.cmd"})
        # The registration of another folder stays when this one is removed.
        self.install(second)
        self.uninstall(first)
        self.check_registered(second)
        self.uninstall(second)
        self.check_gone(second)

    def test_accepts_any_form_of_a_folder_and_uninstalls_after_a_library_was_in_use(self):
        for given, folder in (("C:\\Vé\\", r"C:\Vé"), ("Relative", None)):
            with self.subTest(given):
                self.setUp()
                work = os.path.join(SCRATCH, "work")
                os.makedirs(work, exist_ok=True)
                folder = folder or "Z:" + os.path.join(work, given).replace("/", "\\")
                here = folder[2:].replace("\\", "/") if folder[0] == "Z" else self.unix_path(folder)
                before, path = os.getcwd(), "Z:" + os.path.join(self.files, "install.cmd")
                os.chdir(work)
                try:
                    self.script(path.replace("/", "\\"), given)
                finally:
                    os.chdir(before)
                self.check_registered(folder)
                os.chmod(os.path.join(here, "VeltraneSetup.dll"), 0o444)  # cannot be deleted either
                self.assertIn("in use", self.script(folder + r"\uninstall.cmd", code=1))
                os.chmod(os.path.join(here, "VeltraneSetup.dll"), 0o644)
                self.script(folder + r"\uninstall.cmd")
                self.assertEqual(os.listdir(here), [])
                self.assertEqual(self.registry(DRIVERS), self.before)
                os.rmdir(here)

    def test_changes_nothing_if_it_cannot_finish(self):
        self.assertRegex(self.install(r"C:\windows\explorer.exe", code=1), "cannot be (made|copied)")
        os.remove(os.path.join(self.files, "VeltraneDialog.dll"))
        self.assertIn("cannot be copied", self.install(r"C:\V", code=1))
        self.assertEqual(os.listdir(self.unix_path(r"C:\V")), [])
        self.assertEqual(self.registry(DRIVERS), self.before)


class InstallerTest(InWine):
    """The .msi, installed without questions."""

    @classmethod
    def setUpClass(cls):
        missing = [name for name in ("wixl", "msibuild") if not shutil.which(name)]
        if missing:
            print("no " + ", ".join(missing) + ": the installer is not tested")
            raise unittest.SkipTest("no " + missing[0])
        run("cmake", "--build", BUILD, "--target", "installer")
        cls.program = os.path.join(BUILD, "packages", f"veltrane-odbc-setup-{VERSION}-win64.msi")

    def msi(self, option, path, *properties, code=0):
        self.wine("msiexec", option, "Z:" + path.replace("/", "\\"), "/qn", *properties, code=code)

    def make_next_version(self, is_refusing=False):
        """The installer of the next version; one whose tool refuses everything."""
        files = os.path.join(SCRATCH, "next")
        shutil.rmtree(files, ignore_errors=True)
        run("cmake", "--install", BUILD, "--component", "runtime", "--prefix", files)
        with open(os.path.join(files, "docs", "LICENSE"), "a", encoding="utf-8") as file:
            file.write("next\n")
        if is_refusing:
            shutil.copy(self.unix_path(r"C:\windows\system32\reg.exe"),
                        os.path.join(files, "veltrane-dsn.exe"))
        path = os.path.join(SCRATCH, "next.msi")
        run(os.path.join(SOURCE, "packaging/windows/build-installer"), files, "99.0.0", path)
        return path

    def programs_list(self):
        """Our versions in the list of programs."""
        text = self.registry(UNINSTALL)
        entries = [entry for entry in text.split("\n\n") if '"DisplayName"="Veltrane ODBC setup"' in entry]
        for entry in entries:
            self.assertIn('"Publisher"="The Veltrane ODBC setup authors"', entry)
        return [re.search('"DisplayVersion"="(.*)"', entry)[1] for entry in entries]

    def test_installs_works_upgrades_and_removes(self):
        for properties, folder in (([], r"C:\Program Files\Veltrane"),
                                   ([r"INSTALLDIR=C:\Veltrané 2"], r"C:\Veltrané 2")):
            with self.subTest(folder):
                self.setUp()
                here = self.unix_path(folder)
                self.msi("/i", self.program, *properties)
                self.check_registered(folder)
                self.assertLessEqual(PROGRAMS | {"docs"}, set(os.listdir(here)))
                self.check_works(folder)
                self.assertEqual(self.programs_list(), [VERSION])
                foreign = os.path.join(here, "docs", "ours.txt")
                with open(foreign, "w", encoding="utf-8") as file:
                    file.write("a file of the administrator's")
                # An upgrade installs into the same folder and leaves one entry.
                self.msi("/i", self.make_next_version())
                self.assertEqual(self.programs_list(), ["99.0.0"])
                self.check_registered(folder)
                with open(os.path.join(here, "docs", "LICENSE"), encoding="utf-8") as file:
                    self.assertTrue(file.read().endswith("next\n"))
                self.msi("/i", self.program, code=None)
                self.assertEqual(self.programs_list(), ["99.0.0"], "an older version is refused")
                self.msi("/x", os.path.join(SCRATCH, "next.msi"))
                self.assertEqual(self.programs_list(), [])
                self.assertEqual([os.path.join(path, name) for path, _, names in os.walk(here)
                                  for name in names], [foreign])
                shutil.rmtree(here)
                self.check_gone(folder)
                self.wine("reg", "query", r"HKLM\SOFTWARE\Veltrane", code=1)

    def test_the_same_files_make_the_same_package(self):
        packages = []
        for name in ("one", "two"):
            files, package = os.path.join(SCRATCH, name), os.path.join(SCRATCH, name + ".msi")
            run("cmake", "--install", BUILD, "--component", "runtime", "--prefix", files)
            os.utime(os.path.join(files, "docs", "LICENSE"))
            run(os.path.join(SOURCE, "packaging/windows/build-installer"), files, VERSION, package)
            with open(package, "rb") as file:
                packages.append(file.read())
            time.sleep(2)  # its times are in steps of two seconds
        self.assertEqual(packages[0], packages[1])

    def test_signed_files_verify(self):
        folder = os.path.join(SCRATCH, "signing")
        os.makedirs(folder)
        key, certificate, script = (os.path.join(folder, name) for name in ("key", "cert", "sign"))
        run("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=Test", "-addext",
            "extendedKeyUsage=codeSigning", "-days", "2", "-keyout", key, "-out", certificate)
        with open(script, "w", encoding="utf-8") as file:
            file.write(f'#!/bin/sh\nosslsigncode sign -certs "{certificate}" -key "{key}" -in "$1" '
                       '-out "$1.signed" && mv "$1.signed" "$1"\n')
        files, package = os.path.join(folder, "files"), os.path.join(folder, "signed.msi")
        environment = dict(os.environ, ORSKA_SIGN_COMMAND=f"sh '{script}'")
        run("cmake", "--install", BUILD, "--component", "runtime", "--prefix", files, env=environment)
        run(os.path.join(SOURCE, "packaging/windows/build-installer"), files, VERSION, package,
            env=environment)
        for path in (*(os.path.join(files, name) for name in PROGRAMS), package):
            run("osslsigncode", "verify", "-CAfile", certificate, "-in", path)
        run("osslsigncode", "verify", "-CAfile", certificate, "-in", self.program, code=1)

    def test_another_folders_registration_stays(self):
        self.msi("/i", self.program)
        self.wine(r"C:\Program Files\Veltrane\veltrane-dsn.exe", "driver", "register", "--replace",
                  "--setup", r"C:\windows\system32\odbccp32.dll", code=None)
        registered = self.registry(DRIVERS)
        self.msi("/x", self.program)
        self.assertEqual(self.registry(DRIVERS), registered)

    def test_a_refused_installation_changes_nothing(self):
        self.msi("/i", self.make_next_version(is_refusing=True), code=91)  # of 1627
        self.assertFalse(os.path.exists(self.unix_path(r"C:\Program Files\Veltrane")))
        self.assertEqual(self.registry(DRIVERS), self.before)
        self.assertEqual(self.programs_list(), [])


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[5:]])
