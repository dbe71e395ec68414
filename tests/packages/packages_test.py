#!/usr/bin/env python3
"""Examines the Debian packages of a build, installs them into a clean root, and builds against them.

Arguments: the build folder, the folder of the packages, the client that asks for an editor, and the
classes to run.
"""
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

sys.dont_write_bytecode = True
from clean_root import CleanRoot, Unavailable, check_available, make_clean_root  # noqa: E402

BUILD, PACKAGES, CLIENT = map(Path, sys.argv[1:4])
SOURCE = Path(__file__).resolve().parents[2]
sys.path.append(str(SOURCE / "tests/support"))
from terminal import run_on_terminal  # noqa: E402

SKIPPED = 77
RUNTIME, DESKTOP, DEV = "veltrane-odbc-setup", "veltrane-odbc-setup-desktop", "liborska-dev"
LIBDIR = next(line.split("=")[1].strip() for line in (BUILD / "CMakeCache.txt").open()
              if line.startswith("CMAKE_INSTALL_LIBDIR:"))
SETUP = f"/usr/{LIBDIR}/odbc/libVeltraneSetup.so"
NO_EDITOR = {"terminal": "The terminal cannot be used", "desktop": "The desktop editor cannot open"}


def output_of(*command, **options):
    return subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          check=False, **options)


def package_files():
    """The built packages by name."""
    return {path.name.split("_")[0]: path for path in PACKAGES.glob("*.deb")}


def field(package, name):
    return subprocess.check_output(["dpkg-deb", "-f", package_files()[package], name],
                                   text=True).strip()


class PackageTest(unittest.TestCase):
    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="veltrane-packages-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def succeed(self, *command, **options):
        result = output_of(*command, **options)
        self.assertEqual(result.returncode, 0, f"{command}:\n{result.stdout}")
        return result.stdout


class ContentTest(PackageTest):
    EXPECTED = {
        RUNTIME: ["bin/veltrane-dsn", "lib*/odbc/libVeltraneSetup.so",
                  "libexec/veltrane/veltrane-dsn-editor-terminal",
                  "share/bash-completion/completions/veltrane-dsn",
                  "share/fish/vendor_completions.d/veltrane-dsn.fish",
                  "share/locale/de/LC_MESSAGES/veltrane-dsn-editor.mo",
                  "share/man/man1/veltrane-dsn.1.gz",
                  "share/veltrane-odbc-setup/ansible/veltrane_dsn/",
                  "share/zsh/vendor-completions/_veltrane-dsn"],
        DESKTOP: ["bin/veltrane-dsn-window", "libexec/veltrane/veltrane-dsn-editor-desktop",
                  "share/applications/veltrane-dsn.desktop",
                  "share/icons/hicolor/scalable/apps/veltrane-dsn.svg",
                  "share/man/man1/veltrane-dsn-window.1.gz"],
        DEV: ["include/orska/", "lib*/liborska_support.a", "lib*/cmake/Orska/",
              "lib*/pkgconfig/orska.pc"],
    }

    def test_each_package_has_its_files_and_no_others(self):
        self.assertLessEqual({RUNTIME, DEV}, package_files().keys())
        for package, path in package_files().items():
            listing = subprocess.check_output(["dpkg-deb", "-c", path], text=True)
            files = {line.split(" ./usr/")[1].replace(LIBDIR, "lib*")
                     for line in listing.splitlines() if line[0] == "-"}
            documents = {name for name in files if name.startswith(
                (f"share/doc/{package}/", f"share/lintian/overrides/{package}"))}
            places = self.EXPECTED[package]
            with self.subTest(package=package):
                for place in places:
                    self.assertTrue([name for name in files if name.startswith(place)], place)
                self.assertEqual([], [name for name in files - documents
                                      if not name.startswith(tuple(places))])
                for name in ("copyright", "changelog.gz", "changelog.Debian.gz"):
                    self.assertIn(f"share/doc/{package}/{name}", documents)
                self.assertNotRegex(listing, r"(?m)^.(?!rw.r-.r-.|rwxr-xr-x|rwx)",
                                    "files that others cannot read")

    def test_links_of_the_documents_lead_to_installed_files(self):
        for path in package_files().values():
            self.succeed("dpkg-deb", "-x", str(path), str(self.folder))
        links = [(page, target.split("#")[0]) for page in self.folder.glob("usr/share/**/*.md")
                 for target in re.findall(r"\]\((?!https?:|#)([^)]+)\)", page.read_text())]
        self.assertGreater(len(links), 10)
        self.assertEqual([], [(page.name, target) for page, target in links
                              if not (page.parent / target).exists()])

    def test_dependencies_are_those_of_the_programs(self):
        names = lambda package: set(re.findall(r"(?:^|, )([a-z0-9.+-]+)", field(package, "Depends")))
        self.assertLessEqual({"odbcinst", "libodbcinst2", "libicu72", "libnewt0.52"}, names(RUNTIME))
        self.assertFalse({name for name in names(RUNTIME) if "qt" in name or "hivex" in name})
        self.assertLessEqual({"libicu-dev", "libhivex-dev"}, names(DEV))
        if DESKTOP in package_files():
            self.assertIn(f"{RUNTIME} (= {field(RUNTIME, 'Version')})", field(DESKTOP, "Depends"))
            self.assertIn("libqt6widgets6", names(DESKTOP))

    def test_lintian_finds_nothing(self):
        if shutil.which("lintian") is None:
            self.skipTest("lintian is not installed")
        self.succeed("lintian", "--fail-on", "error,warning", *package_files().values())


class InstallTest(PackageTest):
    """Installs into a root with the packages' dependencies and nothing of ours."""

    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.mkdtemp(prefix="veltrane-root-")
        cls.addClassCleanup(shutil.rmtree, cls.scratch, ignore_errors=True)
        cls.packages = [name for name in (RUNTIME, DESKTOP) if name in package_files()]
        relations = ", ".join(field(name, "Depends") for name in cls.packages)
        relations = re.sub(rf"{RUNTIME} \([^)]*\), ", "", relations)
        try:
            check_available(["chroot", "ldconfig", "tar"])
            cls.root = make_clean_root(cls.scratch, relations)
        except Unavailable as reason:
            raise unittest.SkipTest(str(reason)) from reason
        for name in cls.packages:
            shutil.copy(package_files()[name], f"{cls.scratch}/tmp/{name}.deb")
        shutil.copy(CLIENT, f"{cls.scratch}/tmp/client")

    def setUp(self):
        super().setUp()
        self.addCleanup(self.root.run, "dpkg", "--purge", *self.packages)
        self.root.write("etc/odbcinst.ini", "")
        self.root.write("etc/odbc.ini", "")

    def run_in_root(self, *command, code=0, **options):
        result = self.root.run(*command, **options)
        self.assertEqual(result.returncode, code, f"{command}:\n{result.stdout}")
        return result.stdout

    def install(self, *names, **environment):
        return self.run_in_root("dpkg", "--install", *(f"/tmp/{name}.deb" for name in names),
                                **environment)

    def remove(self, *names):
        self.run_in_root("dpkg", "--remove", *names)

    def entries(self):
        """The lines of odbcinst.ini, without blank ones."""
        return self.root.read("etc/odbcinst.ini").split("\n\n")[0].split()

    def test_a_dsn_is_added_and_the_package_removed(self):
        before = self.root.list_files()
        self.install(RUNTIME)
        registered = self.root.read("etc/odbcinst.ini")
        self.assertEqual(registered.strip(), "[Veltrane]\nDescription=Veltrane ODBC driver\n"
                                             f"Setup={SETUP}\nUsageCount=1")
        self.run_in_root("veltrane-dsn", "add", "sales", "--system", "--server", "db", "--database",
                         "Köln", "--pwd-stdin", stdin="s3cret\n")
        shown = self.run_in_root("veltrane-dsn", "show", "sales", "--system")
        self.assertIn("Köln", shown)
        self.assertNotIn("s3cret", shown)
        self.assertEqual(self.run_in_root("odbcinst", "-q", "-s", "-l").strip(), "[sales]")
        # An upgrade does not change that.
        self.install(RUNTIME)
        self.assertEqual(self.root.read("etc/odbcinst.ini"), registered)
        # The only findings: there is no driver, and every user can read /etc/odbc.ini.
        findings = json.loads(self.run_in_root("veltrane-dsn", "doctor", "--json"))["findings"]
        self.assertEqual({finding["id"] for finding in findings if finding["severity"] != "note"},
                         {"driver-without-library", "password-readable-by-others"})
        stored = self.root.read("etc/odbc.ini")
        self.remove(RUNTIME)
        self.assertEqual(self.root.read("etc/odbcinst.ini").strip(), "")
        self.assertEqual(self.root.read("etc/odbc.ini"), stored, "DSNs are the administrator's")
        self.assertEqual(self.root.list_files(), before)
        self.assertNotIn(RUNTIME, self.root.read("var/lib/dpkg/status"))

    def test_entries_of_others_are_kept(self):
        setup = f"Setup={SETUP}"
        with_driver = ["[Veltrane]", "Description=theirs", "Driver=/opt/driver.so"]
        foreign = ["[Veltrane]", "Setup=/opt/libVeltraneSetup.so"]
        # The entries before, with the package installed, and after its removal.
        cases = [
            ("counted once by the driver's package", [*with_driver, "UsageCount=1"],
             [*with_driver, setup, "UsageCount=2"], [*with_driver, setup, "UsageCount=1"]),
            ("made by hand, without a count", with_driver,
             [*with_driver, setup, "UsageCount=2"], [*with_driver, setup, "UsageCount=1"]),
            ("another setup library", foreign, foreign, foreign),
            ("another one for 64 bits", [foreign[0], setup, "Setup64=/opt/x.so"],
             [foreign[0], setup, "Setup64=/opt/x.so"], [foreign[0], setup, "Setup64=/opt/x.so"]),
        ]
        for point, before, installed, after in cases:
            with self.subTest(point):
                self.root.write("etc/odbcinst.ini", "\n".join(before) + "\n")
                # Variables of the administrator's shell that name other files have no effect.
                self.install(RUNTIME, ODBCSYSINI="/tmp", ODBCINSTINI="other.ini")
                self.assertEqual(self.entries(), installed)
                self.remove(RUNTIME)
                self.assertEqual(self.entries(), after)

    def test_an_upgrade_keeps_what_the_administrator_changed(self):
        older = self.folder / "older"
        self.succeed("dpkg-deb", "-R", str(package_files()[RUNTIME]), str(older))
        control = older / "DEBIAN/control"
        control.write_text(re.sub(r"(?m)^Version: .*", "Version: 0.0.9-1", control.read_text()))
        self.succeed("dpkg-deb", "-b", str(older), f"{self.scratch}/tmp/older.deb")
        self.install("older")
        changed = self.root.read("etc/odbcinst.ini").replace(
            "Description=Veltrane ODBC driver", "# by the DBA team\nDescription=ours\nDriver=/opt/d.so")
        self.root.write("etc/odbcinst.ini", changed)
        self.install(RUNTIME)
        self.assertEqual(self.root.read("etc/odbcinst.ini"), changed)
        self.assertIn(f"Version: {field(RUNTIME, 'Version')}",
                      self.run_in_root("dpkg", "-s", RUNTIME))

    def test_a_registration_that_was_removed_stays_removed(self):
        self.install(RUNTIME)
        self.run_in_root("veltrane-dsn", "driver", "unregister")
        self.install(RUNTIME)
        self.assertEqual(self.root.read("etc/odbcinst.ini").strip(), "")
        self.remove(RUNTIME)
        self.install(RUNTIME)
        self.assertIn("UsageCount=1", self.entries())

    def test_the_installed_library_finds_the_installed_editors(self):
        if DESKTOP not in self.packages:
            self.skipTest("built without Qt 6")
        refused = self.run_in_root("dpkg", "--install", f"/tmp/{DESKTOP}.deb", code=1)
        self.assertIn(f"depends on {RUNTIME}", refused)
        self.install(RUNTIME, DESKTOP)
        for editor, answer in NO_EDITOR.items():
            self.run_in_root("setsid", "--wait", "/tmp/client", "/tmp/answer", "add", "DSN=x",
                             VELTRANE_DSN_EDITOR=editor)
            self.assertIn(answer, self.root.read("tmp/answer"))


class ScriptTest(PackageTest):
    """The commands of the README on a machine with only Debian's minimum."""

    def test_the_script_builds_packages_that_install_as_printed(self):
        if os.geteuid() != 0:
            self.skipTest("debootstrap needs root")
        try:
            check_available(["chroot", "debootstrap"])
        except Unavailable as reason:
            self.skipTest(str(reason))
        sites = output_of("apt-get", "indextargets", "--format", "$(SITE)",
                          "Created-By: Packages").stdout.split()
        self.succeed("debootstrap", "--variant=minbase", "bookworm", str(self.folder), *sites[:1])
        root = CleanRoot(self.folder)
        source = self.folder / "source"
        source.mkdir()
        files = subprocess.check_output(["git", "ls-files"], cwd=SOURCE, text=True).splitlines()
        archive = subprocess.check_output(["tar", "-C", SOURCE, "-c", *files])
        subprocess.run(["tar", "-C", source, "-x"], input=archive, check=True)
        built = root.run("source/scripts/package", timeout=1700)
        self.assertEqual(built.returncode, 0, built.stdout)
        line = built.stdout.splitlines()[-1].split()
        self.assertEqual(line[:2], ["apt-get", "install"])
        installed = root.run(*line, "-y", "--no-install-recommends")
        self.assertEqual(installed.returncode, 0, installed.stdout)
        for command in (["veltrane-dsn", "add", "sales", "--server", "db", "--database", "d"],
                        ["test", "-x", "/usr/libexec/veltrane/veltrane-dsn-editor-desktop"]):
            done = root.run(*command)
            self.assertEqual(done.returncode, 0, done.stdout)
        self.assertEqual(root.run("odbcinst", "-q", "-s").stdout.strip(), "[sales]")


class RelocationTest(PackageTest):
    def test_an_installation_works_in_any_folder(self):
        prefix = self.folder / "moved"
        self.succeed("cmake", "--install", str(BUILD), "--prefix", str(prefix))
        setup = prefix / LIBDIR / "odbc/libVeltraneSetup.so"
        (self.folder / "odbcinst.ini").write_text(f"[Veltrane]\nSetup={setup}\n")
        environment = {"PATH": os.environ["PATH"], "HOME": str(self.folder),
                       "ODBCSYSINI": str(self.folder), "ODBCINSTINI": "odbcinst.ini",
                       "ODBCINI": str(self.folder / "user.ini")}
        self.succeed(str(prefix / "bin/veltrane-dsn"), "add", "x", "--server", "s", "--database",
                     "d", env=environment)
        if (prefix / "libexec/veltrane/veltrane-dsn-editor-terminal").exists():
            self.assertIn("Neue Datenquelle", self.show_in_terminal(
                {**environment, "LANGUAGE": "de", "LC_ALL": "C.UTF-8", "TERM": "xterm",
                 "VELTRANE_DSN_EDITOR": "terminal"}))
        for editor, answer in NO_EDITOR.items():
            program = prefix / f"libexec/veltrane/veltrane-dsn-editor-{editor}"
            if not program.exists():
                continue
            self.assertIn(answer, self.ask_for(editor, environment))
            program.unlink()
            self.assertRegex(self.ask_for(editor, environment),
                             rf"looked for in {prefix}/.*libexec/veltrane \(No such file")

    def show_in_terminal(self, environment):
        """The screen of an editor in the user's language, up to its title; Ctrl+C ends it."""
        def reply(shown, _):
            return b"\x03" if b"datenquelle" in shown.lower() else b""
        return run_on_terminal([str(CLIENT), str(self.folder / "answer"), "add"], environment, reply)[1]

    def ask_for(self, editor, environment):
        answer = self.folder / "answer"
        self.succeed("setsid", "--wait", str(CLIENT), str(answer), "add", "DSN=x",
                     env={**environment, "VELTRANE_DSN_EDITOR": editor}, stdin=subprocess.DEVNULL)
        return answer.read_text(encoding="utf-8")


class ConsumerTest(PackageTest):
    """Builds programs with the development package, unpacked in a folder that is not its prefix."""

    def setUp(self):
        super().setUp()
        self.succeed("dpkg-deb", "-x", str(package_files()[DEV]), str(self.folder))
        self.prefix = self.folder / "usr"
        self.example = self.prefix / "share/doc" / DEV / "examples"

    def check_program(self, program):
        self.assertEqual(self.succeed(str(program), "42", "Да"),
                         "number: 42\nUTF-16LE: 14 04 30 04\nKOI8-R: e4 c1\n")
        refused = output_of(str(program), "4x", "")
        self.assertEqual(refused.returncode, 1)
        self.assertRegex(refused.stdout, '^consumer: .*"StrToNumConvFailed".*\\["4x"\\]')

    def test_a_program_builds_with_find_package(self):
        build = self.folder / "build"
        self.succeed("cmake", "-G", "Ninja", "-S", str(self.example), "-B", str(build),
                     f"-DCMAKE_PREFIX_PATH={self.prefix}")
        self.succeed("cmake", "--build", str(build))
        self.check_program(build / "consumer")
        wrong = (self.example / "CMakeLists.txt").read_text().replace("Orska 0.1", "Orska 9.0")
        (self.example / "CMakeLists.txt").write_text(wrong)
        self.assertNotEqual(output_of("cmake", "-S", str(self.example), "-B", str(build)).returncode,
                            0)

    def test_a_program_builds_with_pkg_config(self):
        environment = {**os.environ,
                       "PKG_CONFIG_PATH": str(self.prefix / LIBDIR / "pkgconfig")}
        flags = self.succeed("pkg-config", "--cflags", "--libs", "orska", env=environment).split()
        program = self.folder / "consumer"
        self.succeed("g++", "-std=c++20", str(self.example / "main.cpp"), *flags, "-o", str(program))
        self.check_program(program)

    def test_each_header_compiles_alone(self):
        root = self.prefix / "include/orska"
        headers = sorted(path.relative_to(root) for path in root.glob("**/*.h"))
        self.assertGreater(len(headers), 20)
        # A program's own folders of the same names come first.
        for header in headers:
            path = self.folder / "theirs" / header
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text("#error theirs\n")

        def compile_alone(header, standard="c++20"):
            return output_of("g++", "-std=" + standard, "-Wall", "-Wextra", "-Werror",
                             "-fsyntax-only", f"-I{self.folder}/theirs", f"-I{root.parent}", "-x",
                             "c++", "-", input=f"#include <orska/{header}>\n")

        with ThreadPoolExecutor(2) as pool:
            for header, result in zip(headers, pool.map(compile_alone, headers)):
                self.assertEqual(result.returncode, 0, f"{header}:\n{result.stdout}")
        for header in headers:
            with self.subTest(header):
                self.assertIn("The headers of Orska need C++20: compile with -std=c++20 or later.",
                              compile_alone(header, "c++17").stdout)

    def test_the_reference_has_every_header(self):
        reference = self.prefix / "share/doc" / DEV / "reference"
        if not reference.exists() and shutil.which("doxygen") is None:
            self.skipTest("built without Doxygen")
        files = (reference / "files.html").read_text()
        for path in (self.prefix / "include/orska").glob("**/*.h"):
            self.assertIn(f">{path.name}<", files)
        self.assertIn("Counted start-up", (reference / "Platform_8h.html").read_text())


if __name__ == "__main__":
    RESULT = unittest.main(argv=sys.argv[:1] + sys.argv[4:], verbosity=2, exit=False).result
    if RESULT.wasSuccessful() and len(RESULT.skipped) >= max(RESULT.testsRun, 1):
        sys.exit(SKIPPED)
    sys.exit(0 if RESULT.wasSuccessful() else 1)
