"""What the tests of penwick-macro with other programs share: a home and a folder of their own.

PENWICK_MACRO is the path of the program."""

import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAM = pathlib.Path(os.environ.get("PENWICK_MACRO", ROOT / "build/release/bin/penwick-macro"))
LONG_WAIT = 120  # Seconds; only a test that fails waits so long.


class Workplace(unittest.TestCase):
    """Each test has a home without settings, and an empty folder, which its commands run in."""

    def setUp(self):
        base = tempfile.TemporaryDirectory(prefix="penwick-macro-test-")
        self.addCleanup(base.cleanup)
        self.home = pathlib.Path(base.name, "home")
        self.folder = pathlib.Path(base.name, "folder with blanks")
        for folder in (self.home, self.folder):
            folder.mkdir()
        self.environment = {
            "HOME": str(self.home),
            "PATH": f"{PROGRAM.parent}:/usr/local/bin:/usr/bin:/bin",
            "LC_ALL": "C.UTF-8",
            "TERM": "vt100",
            "GIT_CONFIG_NOSYSTEM": "1",
        }

    def need(self, tool):
        if not shutil.which(tool, path=self.environment["PATH"]):
            self.skipTest(f"{tool} is not installed")

    def run_command(self, *command, status=0):
        """Runs a command, checks its exit status, and returns its output."""
        done = subprocess.run(
            command, cwd=self.folder, env=self.environment, stdin=subprocess.DEVNULL,
            capture_output=True, encoding="utf-8", timeout=LONG_WAIT,
        )
        self.assertEqual(done.returncode, status, f"{command}\n{done.stdout}\n{done.stderr}")
        return done.stdout

    def write(self, name, content):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content.encode() if isinstance(content, str) else content)
        return path

    def read(self, name):
        return (self.folder / name).read_bytes().decode()

    def store(self, macros):
        """Stores macros by name."""
        empty = dict.fromkeys(("description", "version", "createdAt", "updatedAt", "category", "helpURL"), "")
        path = self.home / ".local/share/penwick/macros.json"
        path.parent.mkdir(parents=True)
        path.write_text(json.dumps([
            empty | {"id": f"ID-{number}", "name": name, "code": code, "isEnabled": True,
                     "source": "user", "sortOrder": number}
            for number, (name, code) in enumerate(macros.items())
        ]))
