"""Hosts of a fleet test: clean roots on this machine, each with an SSH daemon on its own port.

Everything is in one scratch folder; nothing of the machine's own /etc is read or changed.
"""
import os
import shutil
import signal
import socket
import subprocess
import threading
import time
from pathlib import Path

HERE = Path(__file__).resolve().parent
FOLDERS = """.layers dev/pts etc/apt/apt.conf.d etc/apt/preferences.d etc/apt/sources.list.d
etc/apt/trusted.gpg.d opt proc root run srv tmp usr var/cache/apt/archives/partial var/cache/debconf
var/lib/apt/lists/partial var/lib/dpkg var/log/apt var/tmp""".split()
PASSWD = ("root:*:0:0:root:/root:/bin/sh\n_apt:*:42:65534::/nonexistent:/usr/sbin/nologin\n"
          "nobody:*:65534:65534:nobody:/nonexistent:/usr/sbin/nologin\n")
GROUP = "root:*:0:\nnogroup:*:65534:\n"


def run(*command, **options):
    return subprocess.run([str(word) for word in command], check=True, capture_output=True,
                          text=True, **options).stdout


def why_not_possible():
    """The reason why this machine cannot run such hosts; empty if it can."""
    programs = ("ansible-playbook", "chroot", "dpkg-deb", "dropbear", "dropbearkey", "ssh",
                "setpriv", "ssh-keygen", "unshare")
    path = os.environ["PATH"] + ":/usr/sbin:/sbin"
    missing = [name for name in programs if shutil.which(name, path=path) is None]
    if missing:
        return "not installed: " + ", ".join(missing)
    if subprocess.run(["/usr/bin/python3", "-c", "import apt"], check=False,
                      stderr=subprocess.DEVNULL).returncode != 0:
        return "not installed: python3-apt"
    if os.geteuid() != 0:
        return "only root may make the hosts"
    probe = ("mkdir /tmp/u /tmp/w /tmp/m && mount -t overlay o "
             "-o lowerdir=/usr,upperdir=/tmp/u,workdir=/tmp/w /tmp/m && mount -t proc p /proc"
             " && mount -t devpts -o newinstance d /tmp/w")
    result = subprocess.run(["unshare", "--mount", "--pid", "--fork", "sh", "-c",
                             "mount -t tmpfs t /tmp && " + probe],
                            check=False, capture_output=True, text=True)
    return "mounts are not permitted: " + result.stderr.strip() if result.returncode else ""


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Host:
    def __init__(self, name, folder, recorder, public_key):
        self.name = name
        self.root = folder / name
        self.port = free_port()
        self.process = None
        self.system_log = []
        self._make_root(recorder, public_key)
        self._listen_to_system_log()

    def path(self, name):
        return self.root / name.lstrip("/")

    def read(self, name):
        return self.path(name).read_text("utf-8")

    def write(self, name, text, mode=0o644):
        self.path(name).parent.mkdir(parents=True, exist_ok=True)
        self.path(name).write_text(text, "utf-8")
        self.path(name).chmod(mode)

    def _make_root(self, recorder, public_key):
        for name in FOLDERS:
            self.path(name).mkdir(parents=True)
        for name in ("bin", "lib", "lib32", "lib64", "libx32", "sbin"):
            if Path("/" + name).is_symlink():
                self.path(name).symlink_to("usr/" + name)
        for name in ("full", "null", "random", "tty", "urandom", "zero"):
            self.path("dev/" + name).touch()
        self.path("etc/os-release").symlink_to("../usr/lib/os-release")
        self.path("dev/ptmx").symlink_to("pts/ptmx")
        self.path("tmp").chmod(0o1777)
        self.path("root").chmod(0o700)
        shutil.copytree("/etc/alternatives", self.path("etc/alternatives"), symlinks=True)
        shutil.copy("/etc/ld.so.cache", self.path("etc"))
        shutil.copy(recorder, self.path("opt/record.so"))
        self.write("etc/passwd", PASSWD)
        self.write("etc/group", GROUP)
        self.write("etc/nsswitch.conf", "passwd: files\ngroup: files\n")
        self.write("etc/apt/sources.list", "")
        self.write("etc/ld.so.preload", "/opt/record.so\n")
        self.write("root/.ssh/authorized_keys", public_key, 0o600)
        self.path("root/.ssh").chmod(0o700)
        text = run("dropbearkey", "-t", "ed25519", "-f", self.path("etc/hostkey"))
        self.host_key = next(line for line in text.splitlines() if line.startswith("ssh-"))

    def _listen_to_system_log(self):
        receiver = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        receiver.bind(str(self.path("dev/log")))

        def receive():
            while True:
                self.system_log.append(receiver.recv(1 << 16).decode("utf-8", "replace"))
        threading.Thread(target=receive, daemon=True).start()

    def start(self):
        """Starts it in new process and mount namespaces, which end with the process."""
        with open(self.path("../" + self.name + ".daemon.log"), "wb") as log:
            self.process = subprocess.Popen(
                ["setpriv", "--pdeathsig", "KILL", "unshare", "--mount", "--pid", "--fork", "--kill-child", HERE / "start-host",
                 self.root, str(self.port)], stdout=log, stderr=log, stdin=subprocess.DEVNULL)
        for _ in range(200):
            try:
                socket.create_connection(("127.0.0.1", self.port)).close()
                return
            except OSError:
                time.sleep(0.05)
            if self.process.poll() is not None:
                break
        raise RuntimeError(f"{self.name} does not start: {self.daemon_log()}")

    def run(self, command, key, known_hosts):
        """Runs commands of a shell on the host, as its root."""
        return run("ssh", "-F", "/dev/null", "-i", key, "-o", f"UserKnownHostsFile={known_hosts}",
                   "-o", "BatchMode=yes", "-p", self.port, "root@127.0.0.1", command)

    def daemon_log(self):
        return self.path("../" + self.name + ".daemon.log").read_text("utf-8", "replace")

    def stop(self):
        if self.process and self.process.poll() is None:
            self.process.send_signal(signal.SIGKILL)
            self.process.wait()
