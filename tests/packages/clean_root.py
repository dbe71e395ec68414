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

DPKG = Path("/var/lib/dpkg")
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


def closure(relations):
    """The installed packages that the dependencies and the essential packages need."""
    layout = "${Package}\t${Essential}\t${db:Status-Status}\n"
    listed = subprocess.check_output(["dpkg-query", "-W", "-f", layout], text=True).splitlines()
    essential = {name: is_essential == "yes" for name, is_essential, status in
                 (line.split("\t") for line in listed) if status == "installed"}
    wanted = [name for name, is_essential in essential.items() if is_essential]
    for relation in relations.split(","):
        found = [name for name in re.findall(r"(?:^|\|)\s*([\w.+-]+)", relation) if name in essential]
        if not found:
            raise Unavailable("not installed: " + relation)
        wanted += found[:1]
    tree = subprocess.check_output(["apt-cache", "depends", "--recurse", "--installed", "--important",
                                    *wanted], text=True)
    return [line for line in tree.splitlines() if line in essential]


def copy_files(paths, root):
    """Copies those that can be read: a few only by root, which nothing here needs."""
    listing = "\0".join(sorted(path.lstrip("/") for path in paths
                               if os.path.islink(path) or os.access(path, os.R_OK)))
    pipe = ('set -o pipefail; tar -C / --null --no-recursion -T - -cf - | '
            'tar -C "$0" --keep-directory-symlink -xpf -')
    subprocess.run(["bash", "-c", pipe, root], input=listing.encode(), check=True)


def make_clean_root(path, relations):
    """@param relations  dependencies as in a control file"""
    root = Path(path)
    packages = closure(relations)
    for name in ("bin", "sbin", "lib", "lib32", "lib64"):
        if os.path.islink("/" + name):
            (root / "usr" / name).mkdir(parents=True, exist_ok=True)
            (root / name).symlink_to("usr/" + name)
    owned = subprocess.check_output(["dpkg-query", "-L", *packages], text=True).splitlines()
    copy_files({path for path in owned
                if path[:1] == "/" and path != "/." and not LEFT_OUT.match(path)}, root)
    for name in ("dev", "proc", "sys", "tmp", "run", "root", "var/lib/dpkg/info",
                 "var/lib/dpkg/updates", "var/lib/dpkg/triggers", "var/log", "var/cache"):
        (root / name).mkdir(parents=True, exist_ok=True)
    for record in (record for name in packages for record in DPKG.glob(f"info/{name}[.:]*")):
        shutil.copy2(record, root / "var/lib/dpkg/info")
    (root / "var/lib/dpkg/info/format").write_text("1\n")
    stanzas = (DPKG / "status").read_text(encoding="utf-8").split("\n\n")
    (root / "var/lib/dpkg/status").write_text("".join(
        stanza + "\n\n" for stanza in stanzas
        if stanza.split("\n")[0].removeprefix("Package: ") in packages), encoding="utf-8")
    for name in ("etc/passwd", "etc/group"):
        shutil.copy2("/" + name, root / name)
    for name, text in PRISTINE.items():
        (root / name).write_text(text)
    if not os.path.lexists(root / "bin/sh"):
        (root / "bin/sh").symlink_to("dash")
    subprocess.run(["ldconfig", "-r", str(root)], check=True)
    return CleanRoot(root)
