"""Linux: profiles are files named by the environment; the installer is unixODBC's."""
import os


class Stage:
    NOT_FOUND = "No such file or directory"
    NOWHERE = "/no/such/library.so"
    INSTALLER = r"^/.*/libodbcinst\.so"
    MANAGER = r"unixODBC 2\.\d+\.\d+"
    COMPILER = "cc"
    LIBRARY, PROGRAM = ".so", ""
    # For the sources of libraries and programs.
    PRELUDE = """
        #include <dlfcn.h>
        #include <signal.h>
        #include <stdio.h>
        #include <stdlib.h>
        #include <string.h>
        #include <unistd.h>
        #define EXPORTED
    """

    def __init__(self, folder):
        self.folder = folder
        self.setup = os.environ["SETUP_LIBRARY"]
        self.places = {"user": os.path.join(folder, "user.ini"),
                       "system": os.path.join(folder, "odbc.ini"),
                       "drivers": os.path.join(folder, "odbcinst.ini")}
        self.environment = {
            "PATH": os.environ["PATH"], "HOME": folder, "ODBCSYSINI": folder,
            "ODBCINSTINI": "odbcinst.ini", "ODBCINI": self.places["user"], "TERM": "xterm",
        }
        self.environment |= {name: value for name, value in os.environ.items()
                             if name.endswith("SAN_OPTIONS") or name == "LD_LIBRARY_PATH"}
        self.write("system", {})

    def prepare(self, arguments):
        return [os.environ["VELTRANE_DSN"], *arguments], self.environment

    def native(self, path):
        return path

    def unix(self, path):
        return path

    def driver(self, library):
        return {"Setup": library}

    def write(self, place, sections):
        with open(self.places[place], "w", encoding="utf-8") as file:
            for name, entries in sections.items():
                file.write(f"[{name}]\n")
                file.writelines(f"{key}={value}\n" for key, value in entries.items())

    def read(self, place):
        sections = {}
        if not os.path.exists(self.places[place]):
            return sections
        with open(self.places[place], encoding="utf-8") as file:
            for line in file.read().split("\n"):
                if line.startswith("["):
                    entries = sections.setdefault(line[1:-1], {})
                elif line:
                    key, value = line.split("=", 1)
                    entries[key] = value
        return sections

    def make_foreign(self, library):
        """Changes the library to one for another processor."""
        with open(library, "r+b") as file:
            file.seek(18)
            file.write(b"\xb7\x00" if os.uname().machine != "aarch64" else b"\x3e\x00")
