#!/usr/bin/python3
"""Types command lines with Tab into real shells, runs them, and looks at the files that they change. Also
compares the options in the completions, the manual and the guides with those of the program."""

import os
import pty
import re
import select
import subprocess
import time
import unittest

from workplace import LONG_WAIT, ROOT, Workplace

COMPLETIONS = ROOT / "packaging/completions"


def appending(text):
    return f'return {{ textEdits: [{{ type: "insertAtCursor", text: "{text}" }}] }};'


MACROS = {
    "空白 を 消す": appending("1"),
    "TODO: 整理": appending("2"),
    "It's \"quoted\" $HOME": appending("3"),
    r"back\slash": appending("4"),
}

# What is typed, with Tab; and what becomes of a text that was empty.
LINES = (
    ("penwick-macro -m 空白\t-i a.txt", "1"),
    ("penwick-macro -i a.txt -m 空白\t", "1"),
    ("penwick-macro -i a.txt --macro=空白\t", "1"),
    ("penwick-macro -m TODO\t-i a.txt", "2"),
    ("penwick-macro --macro=TODO\t-i a.txt", "2"),
    ("penwick-macro -m It\t-i a.txt", "3"),
    ("penwick-macro -m back\t-i a.txt", "4"),
    ("penwick-macro -m ID-2\t-i a.txt", "3"),
    ("penwick-macro --in-p\t-m ID-0 a.txt", "1"),
    ("penwick-macro --time\t9 -m ID-0 -i a.txt", "1"),
    ("penwick-macro -i -f scr\ta.txt", "5"),
    ("penwick-macro -i --file=scr\ta.txt", "5"),
    ("penwick-macro -m ID-1 -i -- a\t", "2"),
)


class Terminal:
    """A shell in a terminal of its own."""

    def __init__(self, command, folder, environment):
        master, slave = pty.openpty()
        self.master = master
        self.said = b""
        self.shell = subprocess.Popen(
            command, cwd=folder, env=environment, stdin=slave, stdout=slave, stderr=slave, start_new_session=True,
        )
        os.close(slave)

    def wait_for(self, text):
        end = time.monotonic() + LONG_WAIT
        while text not in self.said:
            if not select.select([self.master], [], [], max(0, end - time.monotonic()))[0]:
                raise AssertionError(f"{text!r} does not come: {self.said.decode(errors='replace')}")
            self.said += os.read(self.master, 4096)
        said, self.said = self.said.split(text, 1)
        return said.decode(errors="replace")

    def type(self, text):
        os.write(self.master, text.encode())

    def close(self):
        self.shell.kill()
        self.shell.wait()
        os.close(self.master)


class Completions(Workplace):
    def setUp(self):
        super().setUp()
        self.store(MACROS)
        self.write("script one.js", appending("5"))

    def type_lines(self, command, lines):
        terminal = Terminal(command, self.folder, self.environment)
        self.addCleanup(terminal.close)
        for line, expected in lines:
            with self.subTest(line):
                self.write("a.txt", "")
                terminal.wait_for(b"READY> ")
                # The sum is not in the echo of the line.
                terminal.type(line + " ; echo DONE-$((40+2))\n")
                said = terminal.wait_for(b"DONE-42")
                self.assertEqual(self.read("a.txt"), expected, said)

    def test_bash(self):
        self.need("bash")
        (self.home / "rc").write_text(f"source '{COMPLETIONS}/penwick-macro.bash'\nPS1='READY> '\n")
        self.type_lines(
            ["bash", "--noprofile", "--rcfile", str(self.home / "rc"), "-i"],
            LINES + (
                ("penwick-macro -m \"空白\t -i a.txt", "1"),
                ("penwick-macro -m \"It\t -i a.txt", "3"),
                ("penwick-macro -m \"back\t -i a.txt", "4"),
                ("penwick-macro -m 'It\t -i a.txt", "3"),
                ("penwick-macro -m 'TODO: \t -i a.txt", "2"),
                ("penwick-macro -m TODO:\t-i a.txt", "2"),
                ("penwick-macro -m 空白\\ を\t-i a.txt", "1"),
            ),
        )

    def bash_candidates(self, line):
        script = (f"source '{COMPLETIONS}/penwick-macro.bash'; compopt() {{ :; }}; COMP_LINE=$1 COMP_POINT=${{#1}};"
                  "_penwick_macro penwick-macro; printf '%s\\n' \"${COMPREPLY[@]}\"")
        return self.run_command("bash", "-c", script, "bash", line).split("\n")[:-1]

    def test_bash_candidates(self):
        names = self.bash_candidates("penwick-macro -m ")
        for name in (r"空白\ を\ 消す", r"TODO:\ 整理", r"back\\slash", "ID-0", "行末スペースを削除", "default_trimTrailingSpaces"):
            self.assertIn(name, names)
        self.assertEqual(self.bash_candidates("penwick-macro --color="), ["auto", "always", "never"])
        self.assertEqual(self.bash_candidates("penwick-macro --files"), ["--files-from=", "--files0-from="])
        for line in ("penwick-macro a", "penwick-macro -e ", "penwick-macro -- --c", "penwick-macro -o ",
                     "penwick-macro --input=a"):
            self.assertEqual(self.bash_candidates(line), [""], line)

    def test_zsh(self):
        self.need("zsh")
        self.run_command("zsh", "-n", str(COMPLETIONS / "_penwick-macro"))
        (self.home / ".zshrc").write_text(
            f"fpath=('{COMPLETIONS}' $fpath)\nautoload -U compinit\ncompinit -u -D\nPROMPT='READY> '\n"
            "unsetopt prompt_cr prompt_sp\n"
        )
        self.type_lines(["zsh", "-d", "-i"], LINES + (("echo a.txt | xargs penwick-macro -i -m 空白\t", "1"),))

    def fish(self, code):
        return self.run_command(
            "fish", "--no-config", "--init-command", f"set fish_complete_path '{COMPLETIONS}'", "--command", code
        )

    def test_fish(self):
        self.need("fish")
        self.run_command("fish", "--no-execute", str(COMPLETIONS / "penwick-macro.fish"))
        for start, expected in (("空白", "1"), ("TODO", "2"), ("It", "3"), ("back", "4"), ("ID-2", "3")):
            for option in ("-m ", "--macro="):
                self.write("a.txt", "")
                self.fish(f"set -l found (complete --escape -C 'penwick-macro {option}{start}')\n"
                          "set -l word (string split \\t -- $found[1])[1]\n"
                          f"string match --quiet -- '--*' $word; or set word {option}$word\n"
                          "eval penwick-macro -i a.txt $word")
                self.assertEqual(self.read("a.txt"), expected, option + start)
        self.assertIn("空白 を 消す\tID-0\n", self.fish("complete -C 'penwick-macro -m '"))
        self.assertIn("--in-place\t", self.fish("complete -C 'penwick-macro --in'"))
        self.assertIn("script one.js", self.fish("complete -C 'penwick-macro -f scr'"))
        japanese = self.fish("set -x LC_ALL ja_JP.UTF-8; complete -C 'penwick-macro --check'")
        self.assertIn("変わるファイルを挙げる", japanese)


class Options(unittest.TestCase):
    """The table of the program is the truth."""

    def setUp(self):
        source = (ROOT / "batch/BatchOptions.cpp").read_text()
        self.long = set(re.findall(r'^    \{"([a-z0-9-]+)", ', source, re.MULTILINE))
        letters = re.search(r'kShortOptions\[\] = ":([^"]+)"', source)[1]
        self.short = set(letters) - {":"}
        self.assertIn("stdin-filename", self.long)

    def check(self, name, text):
        long = set(re.findall(r"--([a-z][a-z0-9-]*[a-z0-9])", text))
        short = set(re.findall(r"(?<![\w-])-([A-Za-z0])(?![\w-])", text))
        self.assertEqual(long, self.long, name)
        self.assertEqual(short, self.short, name)

    def test_manuals_have_every_option(self):
        for name in ("penwick-macro.1", "penwick-macro.ja.1"):
            page = (ROOT / "packaging" / name).read_text()
            inside = re.search(r"^\.SH (OPTIONS|オプション)\n(.*?)^\.SH ", page, re.MULTILINE | re.DOTALL)[2]
            self.check(name, inside.replace("\\", ""))

    def test_guides_have_every_option(self):
        for name in ("command-line.md", "command-line.ja.md"):
            guide = (ROOT / "docs" / name).read_text()
            rows = re.findall(r"^\| (`-.*?) \|", guide, re.MULTILINE)
            self.check(name, "\n".join(rows))

    def test_completions_have_every_long_option(self):
        for name, pattern in (("penwick-macro.bash", r"(?<=[ \n])--([a-z0-9-]+)"),
                              ("_penwick-macro", r"(?<!\()--([a-z0-9-]+)"),
                              ("penwick-macro.fish", r"(?m)^__.* -l ([a-z0-9-]+)")):
            found = set(re.findall(pattern, (COMPLETIONS / name).read_text()))
            self.assertEqual(self.long - found, set(), name)
            self.assertEqual(found - self.long, set(), name)


if __name__ == "__main__":
    unittest.main()
