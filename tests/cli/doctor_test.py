#!/usr/bin/env python3
"""driver, where and doctor of veltrane-dsn: installations with one fault each."""
import json
import os
import shutil
import subprocess
import unittest
from pathlib import Path

from cli_harness import SETUP_LIBRARY, CliTest


class Driver(CliTest):
    def test_register_list_unregister(self):
        self.drivers.write_text("")
        self.check("driver", "register", "--setup", "/no/such.so", code=1,
                   err="/no/such.so: No such file or directory. Correct the path")
        self.assertEqual(self.drivers.read_text(), "")
        self.check("driver", "register", "--setup", SETUP_LIBRARY, out="Veltrane: registered")
        self.assertEqual(self.section("Veltrane", self.drivers)["Setup"], SETUP_LIBRARY)
        self.check("driver", "list", out=f"Veltrane (setup: {SETUP_LIBRARY})")
        self.add()
        self.check("driver", "register", "--setup", SETUP_LIBRARY, code=4, err="--replace")
        self.check("driver", "register", "--replace", "--setup", SETUP_LIBRARY, "--library",
                   "/opt/driver.so")
        self.assertEqual(self.section("Veltrane", self.drivers)["Driver"], "/opt/driver.so")
        self.check("driver", "unregister", out="Veltrane: unregistered")
        self.assertEqual(json.loads(self.check("driver", "list", "--json").stdout), [])
        self.check("driver", "unregister", code=3)

    def test_where(self):
        self.assertEqual(json.loads(self.check("where", "--json").stdout), {
            "user": str(self.user_ini), "system": str(self.system_ini),
            "drivers": str(self.drivers), "setup": SETUP_LIBRARY})
        self.check("where", out=f"system DSNs:   {self.system_ini}\n")


class Doctor(CliTest):
    def finds(self, text):
        self.check("doctor", code=1, out=text, err="Findings: 1.")

    def use_library(self, path):
        self.drivers.write_text(f"[Veltrane]\nSetup={path}\n")

    def build(self, name, source, *options):
        compiler = shutil.which("cc")
        if compiler is None:
            self.skipTest("no C compiler")
        path = str(self.folder / name)
        subprocess.run([compiler, "-shared", "-fPIC", "-x", "c", "-", "-o", path, *options],
                       input=source, text=True, check=True)
        return path

    def test_a_sound_installation(self):
        self.add()
        self.check("doctor", out="Driver manager: unixODBC 2.3.")
        self.assertEqual(json.loads(self.check("doctor", "--json").stdout)["findings"], [])

    def test_the_driver(self):
        self.drivers.write_text("")
        self.finds(f'The driver "Veltrane" is not registered in {self.drivers}. Register it')
        self.drivers.write_text("[Veltrane]\nDescription=x\n")
        self.finds("has no setup library")
        self.use_library("/no/such.so")
        self.finds("/no/such.so: No such file or directory. Correct the path")

    def test_libraries_that_do_not_load(self):
        text = self.folder / "text.so"
        text.write_text("text")
        self.use_library(text)
        self.finds("it is no shared library")
        foreign = self.folder / "foreign.so"
        header = bytearray(Path(SETUP_LIBRARY).read_bytes()[:4096])
        header[18] ^= 0x55
        foreign.write_bytes(header)
        self.use_library(foreign)
        self.finds("another architecture")
        self.use_library(self.build("a.so", "int ConfigDSN(void) { return 0; } int f;"))
        self.check("doctor")
        self.use_library(self.build("b.so", "int f(void) { return 0; }"))
        self.finds("A symbol is missing")
        self.use_library(self.build("c.so", "int g(void); int ConfigDSN(void) { return g(); }"))
        self.finds("undefined symbol: g")
        needed = self.build("libneeded.so", "int g(void) { return 0; }")
        self.use_library(self.build("d.so", "int g(void); int ConfigDSN(void) { return g(); }",
                                    "-x", "none", needed))
        os.remove(needed)
        self.finds("A library that it needs is missing")

    def test_files(self):
        self.add()
        self.check("set", "a", "--pwd-stdin", text="geheim")
        self.check("doctor")
        self.user_ini.chmod(0o644)
        self.finds(f"Run: chmod go-rwx {self.user_ini}")
        self.user_ini.chmod(0o600)
        self.system_ini.write_text("[a]\nDriver=Veltrane\nServer=s\nDatabase=d\n")
        self.finds("DSN a: the user's one hides the system's one")
        self.system_ini.write_text("[b]\nDriver=Veltrane\nServer=s\nDatabase=d\n"
                                   "# " + "x" * 1000 + "\n")
        self.finds(f"{self.system_ini}, line 5: it is longer than 999 bytes")
        self.system_ini.write_text("[b]\nDriver=Veltrane\nServer=s\n")
        self.finds("DSN b: It has no Database")
        self.system_ini.write_text("stray\n")
        self.finds(f"{self.system_ini}: there is text before the first section")
        self.system_ini.write_text("")
        path = str(self.folder / "missing" / "odbc.ini")
        self.check("doctor", code=1, environment={"ODBCINI": path},
                   out=f"{path}: cannot create it in {self.folder / 'missing'}: No such file")


if __name__ == "__main__":
    unittest.main()
