"""Windows, in Wine: profiles are ODBC's own registry keys in the build's WINEPREFIX; the installer
is the test installer, which is beside the tool.

Environment, besides that of tool_test.py: RUN_IN_WINE and WINE_FOLDER, TEST_INSTALLER,
DIALOG_LIBRARY and C_COMPILER.
"""
import os
import re
import shutil
import subprocess

RECORD_KEY = r"Software\Veltrane\veltrane-dsn"
DATA_SOURCES = "ODBC Data Sources"
DRIVERS = "ODBC Drivers"


def quote(text):
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def unquote(text):
    return re.sub(r"\\(.)", r"\1", text[1:-1])


class Stage:
    NOT_FOUND = "Path not found"
    NOWHERE = "C:\\no\\such\\library.dll"
    INSTALLER = r"(?i)^Z:.*\\odbccp32\.dll$"
    MANAGER = r"(?is)^The ODBC installer is Z:.*\\odbccp32\.dll, 10\.20\.30\.40\."
    COMPILER = os.environ["C_COMPILER"]
    LIBRARY, PROGRAM = ".dll", ".exe"
    # For the sources of libraries and programs.
    PRELUDE = """
        #include <stdio.h>
        #include <stdlib.h>
        #include <string.h>
        #include <windows.h>
        #define EXPORTED __declspec(dllexport)
    """

    def __init__(self, folder):
        self.folder = folder
        self.environment = {
            "PATH": os.environ["PATH"], "HOME": os.environ.get("HOME", folder),
            "LC_ALL": "C.UTF-8", "TERM": "xterm",
            "WINEDLLOVERRIDES": "odbccp32=n", "VELTRANE_TEST_INSTALLER_KEY": "ODBC",
        }
        for name in ("VELTRANE_DSN", "TEST_INSTALLER"):
            os.symlink(os.environ[name], os.path.join(folder, os.path.basename(os.environ[name])))
        self.tool = os.path.join(folder, os.path.basename(os.environ["VELTRANE_DSN"]))
        # A separate folder, as for an installed driver.
        os.mkdir(os.path.join(folder, "driver"))
        for name in ("SETUP_LIBRARY", "DIALOG_LIBRARY"):
            shutil.copy(os.environ[name], os.path.join(folder, "driver"))
        self.setup = self.native(os.path.join(folder, "driver",
                                              os.path.basename(os.environ["SETUP_LIBRARY"])))
        self.places = {"user": r"HKEY_CURRENT_USER\Software\ODBC\ODBC.INI",
                       "system": r"HKEY_LOCAL_MACHINE\SOFTWARE\ODBC\ODBC.INI",
                       "drivers": r"HKEY_LOCAL_MACHINE\SOFTWARE\ODBC\ODBCINST.INI"}
        # Changes of the registry, written before the next program starts: a program for each would
        # take as long to start as the tool.
        self.unwritten = [f"[-HKEY_CURRENT_USER\\{RECORD_KEY}]",
                          f"[-HKEY_LOCAL_MACHINE\\{RECORD_KEY}]"]
        self.exported = {}  # keys read since the tool last ran
        self.write("user", {})
        self.write("system", {})

    def command(self, *words):
        return [os.environ["RUN_IN_WINE"], os.environ["WINE_FOLDER"], *words]

    def write_registry(self):
        if not self.unwritten:
            return
        path = os.path.join(self.folder, "unwritten.reg")
        with open(path, "w", encoding="utf-16", newline="\r\n") as file:
            file.write("Windows Registry Editor Version 5.00\n\n" + "\n".join(self.unwritten) + "\n")
        subprocess.run(self.command("reg", "import", self.native(path)), env=self.environment,
                       check=True, capture_output=True)
        self.unwritten = []

    def prepare(self, arguments):
        self.write_registry()
        self.exported = {}
        return self.command(self.tool, *arguments), self.environment

    def native(self, path):
        return "Z:" + path.replace("/", "\\")

    def driver(self, library):
        return {"Driver": "C:\\windows\\system32\\odbc32.dll", "Setup": library}

    def write(self, place, sections):
        """A value is a text, or bytes with the form of another type in a .reg file."""
        root = self.places[place]
        self.exported.pop(root, None)
        lists = {}
        self.unwritten.append(f"[-{root}]")
        for name, entries in sections.items():
            self.unwritten.append(f"[{root}\\{name}]")
            self.unwritten += [f"{quote(key)}=" + (value.decode() if isinstance(value, bytes)
                                                   else quote(value))
                               for key, value in entries.items()]
            if place == "drivers" and name != "ODBC":
                lists.setdefault(DRIVERS, {})[name] = "Installed"
            elif "Driver" in entries:
                lists.setdefault(DATA_SOURCES, {})[name] = entries["Driver"]
        for name, entries in lists.items():
            self.unwritten.append(f"[{root}\\{name}]")
            self.unwritten += [f"{quote(key)}={quote(value)}" for key, value in entries.items()]

    def export(self, key):
        """The sections below a key of the registry."""
        self.write_registry()
        if key in self.exported:
            return self.exported[key]
        path = os.path.join(self.folder, "exported.reg")
        result = subprocess.run(self.command("reg", "export", key, self.native(path), "/y"),
                                env=self.environment, capture_output=True, check=False)
        sections = {}
        if result.returncode == 0:
            with open(path, encoding="utf-16") as file:
                for line in file:
                    if line.startswith("["):
                        entries = sections.setdefault(line[len(key) + 2:-2], {})
                    elif match := re.match(r'("(?:[^"\\]|\\.)*")=(.*)$', line):
                        value = match[2]
                        entries[unquote(match[1])] = (unquote(value) if value.startswith('"')
                                                      else value.encode())
        sections.pop("", None)
        self.exported[key] = sections
        return sections

    def read(self, place):
        """The sections without their list, which has to agree with them."""
        sections = dict(self.export(self.places[place]))
        if place == "drivers":
            expected = dict.fromkeys(sections.keys() - {DRIVERS, "ODBC"}, "Installed")
            assert sections.pop(DRIVERS, {}) == expected, sections
        else:
            expected = {name: entries["Driver"] for name, entries in sections.items()
                        if "Driver" in entries}
            assert sections.pop(DATA_SOURCES, {}) == expected, sections
        return sections

    def unix(self, path):
        return path[2:].replace("\\", "/")

    def make_foreign(self, library):
        """Changes the library to one for another processor."""
        with open(self.unix(library), "r+b") as file:
            file.seek(0x3c)
            header = int.from_bytes(file.read(4), "little")
            file.seek(header + 4)
            file.write(b"\x64\xaa")
