"""A root file system with little more than what given packages need, for tests that install.

It is made without a network from the packages installed on this machine: their files and their
records in dpkg's database, without local changes in /etc. Commands run in new namespaces, whose
mounts end with the last of them.
"""
import os
import re
import shutil
import subprocess
from pathlib import Path

# The contents on a clean machine of files that this one may have changed.
PRISTINE = {"etc/odbc.ini": "", "etc/odbcinst.ini": "", "etc/hosts": "127.0.0.1 localhost\n"}
LEFT_OUT = re.compile(r"^/usr/share/(doc|info|locale|man|lintian|icons)/.|^/(dev|proc|sys|tmp|run|var/cache)/.")


# Not in every user's search path, but every user may run the programs used here.
os.environ["PATH"] += ":/usr/sbin:/sbin"


class Unavailable(Exception):
    """This machine cannot do it; the text is the reason."""


def namespaces():
    """The command that starts another one in new namespaces, as root in them."""
    command = ["unshare", "--mount", "--pid", "--fork", "--kill-child"]
    return command if os.geteuid() == 0 else [*command, "--user", "--map-root-user"]


def check_available(programs):
    missing = [name for name in programs if shutil.which(name) is None]
    if missing:
        raise Unavailable("not installed: " + ", ".join(missing))
    probe = subprocess.run([*namespaces(), "true"], capture_output=True, text=True, check=False)
    if probe.returncode != 0:
        raise Unavailable("no namespaces: " + probe.stderr.strip())


class CleanRoot:
    def __init__(self, path):
        self.path = Path(path)

    def run(self, *command, stdin="", timeout=300, **environment):
        """Runs a command in the root and returns its result; the output includes its errors."""
        script = ('mount -t proc proc "$0/proc" && mount --rbind /dev "$0/dev" && '
                  'root=$0 && exec chroot "$root" "$@"')
        variables = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "HOME": "/root", "LC_ALL": "C.UTF-8",
                     "DEBIAN_FRONTEND": "noninteractive", **environment}
        return subprocess.run(
            [*namespaces(), "sh", "-c", script, str(self.path), *command], env=variables,
            input=stdin, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            timeout=timeout, check=False)

    def read(self, path):
        return (self.path / path).read_text(encoding="utf-8")

    def write(self, path, text):
        (self.path / path).write_text(text, encoding="utf-8")

    def list_files(self):
        """All paths except dpkg's own records and logs."""
        paths = set()
        for folder, folders, files in os.walk(self.path):
            inner = os.path.relpath(folder, self.path)
            if inner in ("var/lib/dpkg", "var/log", "var/cache", "tmp", "dev", "proc"):
                folders.clear()
                continue
            paths.update(os.path.join(inner, name) for name in folders + files)
        return paths


class Installed:
    """The packages of this machine."""

    FIELDS = ("Package", "Architecture", "Status", "Essential", "Depends", "Pre-Depends", "Provides")

    def __init__(self):
        layout = "\\t".join("${%s}" % field for field in self.FIELDS) + "\\n"
        self.packages, self.providers = {}, {}
        for line in subprocess.check_output(["dpkg-query", "-W", "-f", layout],
                                            text=True).splitlines():
            package = dict(zip(self.FIELDS, line.split("\t")))
            if package["Status"] != "install ok installed":
                continue
            name = package["Package"]
            self.packages.setdefault(name, package)
            for provided in [name, *self.names(package["Provides"])]:
                self.providers.setdefault(provided, name)

    @staticmethod
    def names(relation):
        """The names in a list of dependencies, with alternatives in their order."""
        return [re.split(r"[\s:(]", part.strip())[0] for part in re.split(r"[,|]", relation)
                if part.strip()]

    def closure(self, relations):
        """Everything that the dependencies and the essential packages need."""
        chosen = {}
        todo = relations.split(",")
        todo += [name for name, package in self.packages.items() if package["Essential"] == "yes"]
        while todo:
            alternatives = self.names(todo.pop())
            if not alternatives:
                continue
            found = next((self.providers[name] for name in alternatives if name in self.providers),
                         None)
            if found is None:
                raise Unavailable("not installed: " + " or ".join(alternatives))
            if found not in chosen:
                package = chosen[found] = self.packages[found]
                todo += package["Depends"].split(",") + package["Pre-Depends"].split(",")
        return chosen


def records_of(package):
    """dpkg's files of a package."""
    info = Path("/var/lib/dpkg/info")
    names = (package["Package"], package["Package"] + ":" + package["Architecture"])
    return [path for name in names for path in info.glob(glob_escape(name) + ".*")
            if path.name[:len(name) + 1] == name + "." and "." not in path.name[len(name) + 1:]]


def glob_escape(name):
    return re.sub(r"([*?[])", r"[\1]", name)


def is_copyable(path):
    """Only root can read a few files, which nothing here needs."""
    return os.path.islink(path) or os.access(path, os.R_OK)


def files_of(records):
    for record in records:
        if record.suffix == ".list":
            yield from (path for path in record.read_text().splitlines()
                        if path not in ("", "/.") and not LEFT_OUT.match(path)
                        and is_copyable(path))


def copy_files(paths, root):
    listing = "\0".join(sorted(path.lstrip("/") for path in paths))
    reader = subprocess.Popen(["tar", "-C", "/", "--null", "--no-recursion", "-T", "-", "-cf", "-"],
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE)
    writer = subprocess.Popen(["tar", "-C", str(root), "--keep-directory-symlink", "-xpf", "-"],
                              stdin=reader.stdout)
    reader.stdout.close()
    reader.stdin.write(listing.encode())
    reader.stdin.close()
    if reader.wait() != 0 or writer.wait() != 0:
        raise RuntimeError("copying the files of the clean root failed")


def stanzas(packages):
    """The entries of dpkg's status file for the packages."""
    for stanza in Path("/var/lib/dpkg/status").read_text(encoding="utf-8").split("\n\n"):
        match = re.match(r"Package: (\S+)\n", stanza)
        architecture = re.search(r"^Architecture: (\S+)$", stanza, re.MULTILINE)
        if (match and match[1] in packages
                and architecture[1] == packages[match[1]]["Architecture"]):
            yield stanza.strip("\n") + "\n\n"


def make_clean_root(path, relations):
    """@param relations  dependencies as in a control file"""
    root = Path(path)
    packages = Installed().closure(relations)
    for name in ("bin", "sbin", "lib", "lib32", "lib64"):
        if os.path.islink("/" + name):
            (root / "usr" / name).mkdir(parents=True, exist_ok=True)
            (root / name).symlink_to("usr/" + name)
    records = [record for package in packages.values() for record in records_of(package)]
    copy_files(set(files_of(records)), root)
    for name in ("dev", "proc", "sys", "tmp", "run", "root", "var/lib/dpkg/info",
                 "var/lib/dpkg/updates", "var/lib/dpkg/triggers", "var/log", "var/cache"):
        (root / name).mkdir(parents=True, exist_ok=True)
    for record in records:
        shutil.copy2(record, root / "var/lib/dpkg/info")
    (root / "var/lib/dpkg/info/format").write_text("1\n")
    (root / "var/lib/dpkg/status").write_text("".join(stanzas(packages)), encoding="utf-8")
    for name in ("etc/passwd", "etc/group"):
        shutil.copy2("/" + name, root / name)
    for name, text in PRISTINE.items():
        (root / name).write_text(text)
    if not os.path.lexists(root / "bin/sh"):
        (root / "bin/sh").symlink_to("dash")
    subprocess.run(["ldconfig", "-r", str(root)], check=True)
    return CleanRoot(root)
