#!/usr/bin/env python3
"""Runs the commands of README.md, of docs/ and of the Ansible role's page, page by page.

Arguments: the tool, the setup library and the source folder. Each page has a scratch folder with a
HOME and the files of an ODBC installer; paths of an installed product are replaced by those of the
build. PATH has only the programs that pages may use, so no page installs or builds anything here.
doc_blocks.py explains the info strings of blocks.
"""
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
from doc_blocks import matches, read_blocks, read_literals, read_messages  # noqa: E402

TOOL, SETUP = sys.argv[1:3]
SOURCE = Path(sys.argv[3])
sys.path.append(str(SOURCE / "tests/support"))
from terminal import run_on_terminal  # noqa: E402

PRODUCT_TEXTS = read_literals([SOURCE / name for name in ("cli", "Setup", "VeltraneDialog")])
COMMANDS = ("ansible-playbook bash cat chmod cp dirname env grep head id isql ls mkdir mv odbcinst rm "
            "sed sh sort stat tail touch wc").split()
PAGES_OF_WINDOWS = {"windows.md"}
# These show how the driver is registered, so they start without it.
PAGES_THAT_REGISTER = {"README.md", "docs/guide.md"}
# Files that a reader of the page has before the first command.
FIXTURES = {
    "README.md": {"password": "s3cret\n"},
}


class Page(unittest.TestCase):
    """One page in its scratch folder. A subclass for each page names it."""
    name = ""

    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="veltrane-docs-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        for folder in ("bin", "etc", "home/work", "tmp"):
            (self.folder / folder).mkdir(parents=True)
        self.home = self.folder / "home"
        self.work = self.home / "work"
        for command in COMMANDS:
            if shutil.which(command):
                (self.folder / "bin" / command).symlink_to(shutil.which(command))
        (self.folder / "bin/veltrane-dsn").symlink_to(TOOL)
        (self.work / "examples").symlink_to(SOURCE / "examples")
        (self.work / "packaging").symlink_to(SOURCE / "packaging")
        for name, text in FIXTURES.get(self.name, {}).items():
            (self.work / name).write_text(text, encoding="utf-8")
        self.register()
        # Paths of an installed product and their replacements.
        self.paths = {"/usr/lib/libVeltraneSetup.so": SETUP,
                      "/opt/veltrane/lib/libVeltraneSetup.so": SETUP,
                      "/home/anna": str(self.home),
                      "/etc/odbc": f"{self.folder}/etc/odbc",
                      "/tmp/": f"{self.folder}/tmp/"}

    def register(self):
        if self.name in PAGES_THAT_REGISTER:
            return
        (self.folder / "etc/odbcinst.ini").write_text(f"[Veltrane]\nSetup={SETUP}\n")

    def to_scratch(self, text):
        shown = "|".join(map(re.escape, self.paths))
        return re.sub(rf"(?<![\w.-])(?:{shown})", lambda match: self.paths[match[0]], text)

    def to_page(self, text):
        for shown, real in self.paths.items():
            text = text.replace(real, shown)
        return text

    def environment(self):
        kept = {name: os.environ[name] for name in os.environ
                if name.endswith("SAN_OPTIONS") or name == "LD_LIBRARY_PATH"}
        return {"PATH": str(self.folder / "bin"), "HOME": str(self.home), "TERM": "dumb",
                "LANG": "C.UTF-8", "USER": "anna", "ODBCSYSINI": str(self.folder / "etc"),
                "ODBCINI": str(self.home / ".odbc.ini"), "NO_COLOR": "1", **kept}

    def run_commands(self, block):
        """Returns the exit code and the output, with errors in it as on a terminal."""
        command = ["bash", "-eu", "-o", "pipefail", "-c", self.to_scratch(block.text)]
        if "types" in block.options:
            return self.type_answers(command, block.options["types"])
        result = subprocess.run(command, cwd=self.work, env=self.environment(), timeout=120,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, check=False)
        return result.returncode, self.to_page(result.stdout.decode("utf-8", "replace"))

    def type_answers(self, command, answer):
        asked = 0

        def reply(shown, _):
            nonlocal asked
            if len(shown) == asked or not shown.endswith(b": "):  # new passwords have two prompts
                return b""
            asked = len(shown)
            return answer.encode() + b"\n"
        code, text = run_on_terminal(command, self.environment(), reply, self.work)
        self.assertGreater(asked, 0, "nothing was asked for")
        self.assertNotIn(answer, text)
        return code, self.to_page(text)

    def check_message(self, place, message):
        for piece in message.split("..."):
            self.assertTrue(any(piece.strip() in text for text in PRODUCT_TEXTS),
                            f"{place}: the product does not say: {piece}")

    def test_page(self):
        output, ran = None, 0
        for block in read_blocks(SOURCE / self.name, self.name):
            reason = block.options.get("norun") or block.options.get("run-by")
            if "file" in block.options:
                path = self.work / block.options["file"]
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(self.to_scratch(block.text), "utf-8")
            elif block.language in ("sh", "bash", "shell", "console") and reason:
                print(f"{block.place}: not run here: {reason}")
                output = None
            elif block.language in ("bash", "shell", "console"):
                self.fail(f"{block.place}: commands belong in blocks marked sh")
            elif block.language == "sh":
                code, output = self.run_commands(block)
                expected = int(block.options.get("exit", "0"))
                self.assertEqual(code, expected, f"{block.place}:\n{block.text}{output}")
                ran += 1
            elif "output" in block.flags and block.language == "json" and output is not None:
                self.assertEqual(json.loads(output), json.loads(block.text), block.place)
            elif "output" in block.flags and output is not None:
                order = sorted if "unordered" in block.flags else list
                self.assertTrue(matches(order(block.lines), order(output.splitlines())),
                                f"{block.place}: this is printed instead:\n{output}")
            elif "message" in block.flags:
                self.check_message(block.place, " ".join(block.lines))
        for line, message in read_messages(SOURCE / self.name):
            self.check_message(f"{self.name}:{line}", message)
        print(f"{self.name}: {ran} blocks of commands ran")


class KeysTest(unittest.TestCase):
    def test_the_page_has_the_keys_of_the_code_and_the_options_of_the_tool(self):
        """The page and the code require the same keys, and the tool has each named option."""
        code = (SOURCE / "VeltraneDialog/DialogFields.h").read_text("utf-8")
        fields = dict(re.findall(r'{"(\w+)", &DialogValues::\w+, [\w:]+, (true|false)', code))
        page = (SOURCE / "docs/dsn-keys.md").read_text("utf-8").split("\n## ")[0]
        rows = re.findall(r"(?m)^\| (`\w+`|\(the section\)) \| (.*?) \| (yes|no) \|", page)
        found = {key.strip("`"): needed for key, _, needed in rows}
        expected = {key: "yes" if needed == "true" else "no" for key, needed in fields.items()}
        expected["(the section)"] = expected.pop("DSN")
        self.assertEqual(found, expected | {"Driver": "yes"})
        usage = subprocess.run([TOOL, "add", "--help"], capture_output=True, text=True,
                               check=True).stdout
        for option in re.findall(r"--[\w-]+", " ".join(options for _, options, _ in rows)):
            self.assertRegex(usage, rf"(?m)^  {option}( |$)")


def make_tests():
    pages = ["README.md", *sorted(f"docs/{path.name}" for path in (SOURCE / "docs").glob("*.md")
                                  if path.name not in PAGES_OF_WINDOWS)]
    pages += sorted(str(path.relative_to(SOURCE))
                    for path in (SOURCE / "packaging/ansible").glob("**/*.md"))
    suite = unittest.defaultTestLoader.loadTestsFromTestCase(KeysTest)
    for page in pages:
        class_name = re.sub(r"\W", "_", page)
        suite.addTest(type(class_name, (Page,), {"name": page})("test_page"))
    return suite


if __name__ == "__main__":
    RESULT = unittest.TextTestRunner(verbosity=2).run(make_tests())
    sys.exit(0 if RESULT.wasSuccessful() else 1)
