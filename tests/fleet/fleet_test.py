#!/usr/bin/env python3
"""Runs the Ansible role against three hosts, with the files and commands that docs/guide.md shows.

Each gets 200 DSNs; how long a run takes is printed. A fourth host is made by the Dockerfile of the same
page.

Arguments: the folder of the built packages, the recorder of arguments, and the source folder. The
tests go on from one another in the order of their names. Skips, with the reason, where a machine
does not allow such hosts.
"""
import hashlib
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
PACKAGES, RECORDER, SOURCE = (Path(argument) for argument in sys.argv[1:4])
sys.path.append(str(SOURCE / "tests/docs"))
from doc_blocks import read_blocks  # noqa: E402
from fleet_hosts import Host, run, why_not_possible  # noqa: E402

SKIPPED = 77
# Logs are searched for its middle, because they can escape the other characters.
MARK = "geheim7Rx"
PASSWORD = f"p;#'\"\\%${{}} {MARK} ü€日"
NEW_MARK = "neuesQ4v"
NEW_PASSWORD = f"{NEW_MARK}'\\"
SALES = "[sales]\nDriver=Veltrane\nServer=bi.example.org\nUID=reports\nPWD={}\nDatabase=sales\n"
STOCK = "[stock]\nDriver=Veltrane\nServer=bi.example.org\nDatabase=stock\n"
SHOPS = [{"name": f"shop{number:03}", "driver": "Veltrane",
          "values": {"Server": "shops.example.org", "Database": f"/tmp/shop{number:03}", "UID": "till"}}
         for number in range(1, 199)]
SHOP_LINES = "".join(
    "\n[{}]\nDriver=Veltrane\nServer=shops.example.org\nUID=till\nDatabase={}\n".format(
        shop["name"], shop["values"]["Database"]) for shop in SHOPS)
BROKEN = "left behind by an editor\n[sales]\nDriver=Veltrane\nServer=own\nDatabase=d\n"


def make_repository(package, folder):
    folder.mkdir(parents=True)
    shutil.copy(package, folder)
    control = run("dpkg-deb", "--field", package)
    digest = hashlib.sha256(package.read_bytes()).hexdigest()
    (folder / "Packages").write_text(f"{control.strip()}\nFilename: ./{package.name}\n"
                                     f"Size: {package.stat().st_size}\nSHA256: {digest}\n")


class Fleet:
    """The control node: the guide's files, the hosts, and Ansible's surroundings."""

    def __init__(self, folder):
        self.folder = folder
        self.work = self.folder / "control"
        self.work.mkdir()
        (self.work / "packaging").symlink_to(SOURCE / "packaging")
        self.commands = []
        self._take_guide()
        package = self.work / "packages/veltrane-odbc-setup.deb"
        package.parent.mkdir()
        shutil.copy(next(PACKAGES.glob("veltrane-odbc-setup_*.deb")), package)
        run("ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", self.folder / "key")
        public_key = (self.folder / "key.pub").read_text()
        self.hosts = {name: Host(name, self.folder, RECORDER, public_key)
                      for name in ("alpha", "beta", "gamma")}
        self.image = Host("image", self.folder, RECORDER, public_key)
        make_repository(package, self.hosts["beta"].path("srv/repository"))
        self._describe_hosts()
        self.outputs = []
        self.environment = {
            "PATH": os.environ["PATH"], "HOME": str(self.folder / "home"), "LANG": "C.UTF-8",
            "ANSIBLE_NOCOLOR": "1", "ANSIBLE_PIPELINING": "1",
            "ANSIBLE_SSH_TRANSFER_METHOD": "piped",
            "ANSIBLE_LOG_PATH": str(self.folder / "ansible.log"),
            "ANSIBLE_CACHE_PLUGIN": "jsonfile",
            "ANSIBLE_CACHE_PLUGIN_CONNECTION": str(self.folder / "facts"),
            "LD_PRELOAD": str(RECORDER), "RECORD_ARGUMENTS": str(self.folder / "arguments"),
        }
        (self.folder / "home").mkdir()

    def _take_guide(self):
        for block in read_blocks(SOURCE / "docs/guide.md", "docs/guide.md"):
            runner = block.options.get("run-by", "")
            if runner:
                self.commands += block.lines
            name = block.options.get("file", "")
            if name and not name.startswith(".."):
                path = self.work / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(block.text, "utf-8")

    def _describe_hosts(self):
        (self.work / "shops.json").write_text(json.dumps({"data_sources": SHOPS}))
        self.set_passwords(PASSWORD)
        (self.work / "host_vars").mkdir()
        known = self.folder / "known_hosts"
        known.write_text("".join(f"[127.0.0.1]:{host.port} {host.host_key}\n"
                                 for host in (*self.hosts.values(), self.image)))
        for name, host in self.hosts.items():
            (self.work / f"host_vars/{name}.yml").write_text(
                f"ansible_host: 127.0.0.1\nansible_port: {host.port}\nansible_user: root\n"
                "ansible_python_interpreter: /usr/bin/python3\n"
                f"ansible_ssh_private_key_file: {self.folder}/key\n"
                f"ansible_ssh_common_args: -F /dev/null -o UserKnownHostsFile={known}\n")
        with open(self.work / "host_vars/beta.yml", "a", encoding="utf-8") as file:
            file.write("veltrane_dsn_package_files: []\n"
                       "veltrane_dsn_repository: 'deb [trusted=yes] file:/srv/repository ./'\n")

    def set_passwords(self, password):
        quoted = password.replace("'", "''")
        (self.work / "group_vars/bi_clients/vault.yml").write_text(
            f"vault_sales_pwd: !unsafe '{quoted}'\n", "utf-8")

    def play(self, command, code=0, **environment):
        """Runs ansible-playbook; returns its output and the counts of each host."""
        begin = time.monotonic()
        result = subprocess.run(["sh", "-c", command], cwd=self.work,
                                env={**self.environment, **environment},
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True,
                                stderr=subprocess.STDOUT, timeout=300, check=False)
        print(f"{time.monotonic() - begin:.1f} s: {command}")
        self.outputs.append(result.stdout)
        if result.returncode != code:
            raise AssertionError(f"{command}: {result.returncode}\n{result.stdout[-8000:]}")
        recap = result.stdout.split("PLAY RECAP")[1]
        counts = {}
        for line in recap.splitlines():
            match = re.match(r"(\w+)\s+:", line)
            if match:
                pairs = re.findall(r"(\w+)=(\d+)", line)
                counts[match[1]] = {key: int(value) for key, value in pairs}
        return result.stdout, counts

    def close(self):
        for host in (*self.hosts.values(), self.image):
            host.stop()


class RoleTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        # Not in TMPDIR, which can be long: the paths of the sockets in it have to be short.
        folder = Path(tempfile.mkdtemp(prefix="fleet-", dir="/tmp"))
        cls.addClassCleanup(shutil.rmtree, folder, ignore_errors=True)
        cls.fleet = Fleet(folder)
        cls.addClassCleanup(cls.fleet.close)
        for host in cls.fleet.hosts.values():
            host.start()
        cls.check, cls.apply, cls.all = cls.fleet.commands

    def read(self, path):
        return {name: host.read(path) for name, host in self.fleet.hosts.items()}

    def assert_counts(self, counts, key, expected):
        self.assertEqual({name: count[key] > 0 for name, count in counts.items()},
                         dict(zip(("alpha", "beta", "gamma"), expected)), counts)

    def test_1_check_mode_on_bare_hosts_reports_changes_and_makes_none(self):
        _, counts = self.fleet.play(self.check)
        self.assert_counts(counts, "changed", (True, True, True))
        self.assert_counts(counts, "failed", (False, False, False))
        for host in self.fleet.hosts.values():
            for name in ("etc/odbc.ini", "etc/odbcinst.ini", "var/cache/veltrane-dsn",
                         "etc/apt/sources.list.d/veltrane.list"):
                self.assertFalse(host.path(name).exists(), name)

    def test_2_the_first_run_installs_and_adds(self):
        for host in self.fleet.hosts.values():
            host.write("etc/odbc.ini", "# kept\n[old]\nDriver=Veltrane\nServer=s\nDatabase=d\n")
        output, counts = self.fleet.play(self.apply + " -vvvv", ANSIBLE_PIPELINING="0")
        self.assert_counts(counts, "changed", (True, True, True))
        for text in self.read("etc/odbc.ini").values():
            self.assertEqual(text, "# kept\n\n" + SALES.format(PASSWORD) + "\n" + STOCK + SHOP_LINES)
        # The module has the passwords, so unlike others it is never a file on the host.
        self.assertIn("AnsiballZ_apt", output)
        self.assertNotIn("AnsiballZ_veltrane_dsn", output)
        for text in self.read("etc/odbcinst.ini").values():
            self.assertRegex(text, r"\[Veltrane\]\n(.*\n)*Setup=/usr/lib/.*/libVeltraneSetup.so\n")

    def test_3_the_second_run_changes_nothing(self):
        before = self.read("etc/odbc.ini")
        output, counts = self.fleet.play(self.apply)
        self.assert_counts(counts, "changed", (False, False, False))
        self.assertNotIn("changed: [", output)
        self.assertEqual(self.read("etc/odbc.ini"), before)

    def test_4_check_mode_shows_the_difference_without_the_password(self):
        self.fleet.set_passwords(NEW_PASSWORD)
        path = self.fleet.work / "group_vars/bi_clients/dsns.yml"
        path.write_text(path.read_text("utf-8").replace("Database: stock", "Database: 東京"), "utf-8")
        before = self.read("etc/odbc.ini")
        output, counts = self.fleet.play(self.check + " --limit alpha")
        self.assertEqual(counts["alpha"]["changed"], 1)
        self.assertIn("@@ sales @@\n-PWD=********\n+PWD=********\n@@ stock @@\n-Database=stock\n"
                      "+Database=東京\n", output)
        self.assertEqual(self.read("etc/odbc.ini"), before)

    def test_5_a_broken_file_is_reported_and_the_other_hosts_continue(self):
        self.fleet.hosts["gamma"].write("etc/odbc.ini", BROKEN)
        output, counts = self.fleet.play(self.apply + " -vvvv", code=2)
        self.assert_counts(counts, "failed", (False, False, True))
        self.assert_counts(counts, "changed", (True, True, False))
        self.assertIn("201 of 201 data sources failed. sales: /etc/odbc.ini: text before the first "
                      "section makes the whole file unreadable for the driver manager; ", output)
        files = self.read("etc/odbc.ini")
        self.assertEqual(files["gamma"], BROKEN)
        for name in ("alpha", "beta"):
            self.assertIn(SALES.format(NEW_PASSWORD), files[name])
            self.assertIn("Database=東京\n", files[name])

    def test_6_registers_the_library_prunes_and_connects(self):
        # A library that all hosts have; its databases are files.
        library = next(Path("/usr/lib").glob("*/odbc/libsqlite3odbc.so"), None)
        if library is None:
            self.skipTest("libsqliteodbc is not installed")
        for host in self.fleet.hosts.values():
            host.write("etc/odbc.ini", "[more]\nDriver=Veltrane\nServer=s\nDatabase=d\n[theirs]\nA=1\n")
        command = re.sub(r"/usr/lib/\S+", str(library), self.all)
        _, counts = self.fleet.play(command)
        self.assert_counts(counts, "changed", (True, True, True))
        for host in self.fleet.hosts.values():
            self.assertIn(f"\nDriver={library}\n", host.read("etc/odbcinst.ini"))
            text = host.read("etc/odbc.ini")
            self.assertTrue(text.startswith("[theirs]\nA=1\n\n[sales]\n"), text[:200])
            self.assertTrue(text.endswith(SHOP_LINES))
            # Files that the driver creates when it connects.
            self.assertEqual(len(list(host.path("tmp").glob("shop*"))), len(SHOPS))
        _, counts = self.fleet.play(command.replace("test=true", "test=false"))
        self.assert_counts(counts, "changed", (False, False, False))

    def test_7_a_container_of_any_user_keeps_its_passwords_to_itself(self):
        fleet, image = self.fleet, self.fleet.image
        image.start()
        start = []
        for line in (fleet.work / "Dockerfile").read_text("utf-8").splitlines():
            word, rest = line.split(maxsplit=1)
            if word == "COPY":
                source, target = rest.split()
                image.path(target).parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(fleet.work / source, image.path(target))
            elif word == "RUN":
                self.run_in_image(rest)
            elif word == "ENV":
                start.insert(0, f"env -i PATH=$PATH {rest}")
            elif word == "ENTRYPOINT":
                start += json.loads(rest)
            else:
                self.assertIn(word, ("FROM", "USER"))
        image.path("mnt").mkdir()
        image.write("run/secrets/sales", PASSWORD + "\n", 0o644)
        # As with docker run --read-only --tmpfs --user; the second user is another process.
        image.write("show", "ls -ln $ODBCINI\nveltrane-dsn show sales --show-secrets\ntouch /etc/x\n")
        image.write("run-container", f"""
            mount --rbind / /mnt
            mount -o remount,bind,ro /mnt
            mount -t tmpfs -o mode=1777 tmpfs /mnt/run/odbc
            chroot /mnt setpriv --reuid 12345 --regid 12345 --clear-groups {" ".join(start)} sh /show
            chroot /mnt setpriv --reuid 54321 --regid 54321 --clear-groups cat /run/odbc/odbc.ini
            """)
        shown = self.run_in_image("unshare --mount --propagation unchanged sh /run-container 2>&1; true")
        self.assertRegex(shown, r"(?m)^-rw------- 1 12345 12345 .* /run/odbc/odbc.ini$")
        self.assertIn(f"PWD={PASSWORD}\n", shown)
        self.assertRegex(shown, r"(?s)/etc/x.*Read-only file system.*/odbc.ini: Permission denied")
        self.assertFalse(image.path("etc/odbc.ini").exists())
        self.assertEqual(list(image.path("run/odbc").iterdir()), [])
        image.path("run/secrets/sales").unlink()

    def run_in_image(self, command):
        fleet = self.fleet
        return fleet.image.run(command, fleet.folder / "key", fleet.folder / "known_hosts")

    def test_8_passwords_are_in_the_files_of_dsns_only(self):
        fleet = self.fleet
        texts = {f"output {index}": text for index, text in enumerate(fleet.outputs)}
        for name, host in fleet.hosts.items():
            texts["system log of " + name] = "\n".join(host.system_log)
        for folder, _, names in os.walk(fleet.folder):
            for name in names:
                path = Path(folder) / name
                is_meant = name in ("odbc.ini", "vault.yml")
                if path.is_file() and not path.is_symlink() and not is_meant:
                    texts[str(path)] = path.read_bytes().decode("utf-8", "replace")
        # Checks that the searched texts are the right ones.
        for name in fleet.hosts:
            self.assertIn("data_sources=", texts["system log of " + name])
            arguments = texts[str(fleet.folder / name / "var/log/arguments")]
            self.assertIn("veltrane-dsn\0apply\0-\0", arguments)
        self.assertIn("ansible-playbook\0-i\0", texts[str(fleet.folder / "arguments")])
        self.assertIn("VALUE_SPECIFIED_IN_NO_LOG_PARAMETER", texts["output 1"])
        for place, text in texts.items():
            for mark in (MARK, NEW_MARK):
                self.assertNotIn(mark, text, place) if len(text) < 2000 else \
                    self.assertFalse(mark in text, place)


if __name__ == "__main__":
    REASON = why_not_possible()
    if REASON:
        print("skipped:", REASON)
        sys.exit(SKIPPED)
    os.environ["PATH"] += ":/usr/sbin:/sbin"
    unittest.main(argv=sys.argv[:1], verbosity=2, failfast=True)
