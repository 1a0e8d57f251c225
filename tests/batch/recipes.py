#!/usr/bin/python3
"""Runs the recipes of both guides to the command line as they stand there, and looks at the files afterwards.

In a guide, `<!-- recipe: NAME -->` begins a recipe. Its blocks of `sh` are commands; a block after
`<!-- file: NAME -->` is the content of that file."""

import re
import unittest

from workplace import ROOT, Workplace

BLOCK = re.compile(
    r"^<!-- recipe: (?P<recipe>\S+) -->$"
    r"|^(?:<!-- file: (?P<file>\S+) -->\n\n)?```(?P<kind>\w+)\n(?P<content>.*?)^```$",
    re.MULTILINE | re.DOTALL,
)
DIRTY = "一 \t\n二\u3000\n"
CLEAN = "一\n二\n"
TEXTS = ("a.txt", "下 書き/b c.txt", "-n.txt", "改\n行.txt")
PAGE = "<p>見出し</p>\n"
PAGE_TEXT = "見出し\n"


def read_guide(name):
    return (ROOT / "docs" / name).read_text()


def read_recipes(guide):
    """Returns the blocks of each recipe, in order: (name of a file or None, content)."""
    recipes = {}
    recipe = None
    for block in BLOCK.finditer(read_guide(guide)):
        if block["recipe"]:
            recipe = block["recipe"]
            assert recipe not in recipes, f"{guide}: {recipe} comes twice"
            recipes[recipe] = []
        else:
            assert recipe, f"{guide}: a block before the first recipe"
            assert block["file"] or block["kind"] == "sh", f"{guide}: a block that nothing runs: {block[0]}"
            recipes[recipe].append((block["file"], block["content"]))
    return recipes


class Guides(unittest.TestCase):
    def test_both_guides_have_the_same_recipes_and_each_has_a_test(self):
        english = read_recipes("command-line.md")
        self.assertEqual(english, read_recipes("command-line.ja.md"))
        tested = {name.removeprefix("test_").replace("_", "-") for name in dir(Recipes) if name.startswith("test_")}
        self.assertEqual(set(english), tested)

    def test_both_guides_list_the_codes_of_errors_that_the_program_has(self):
        source = (ROOT / "batch/FileTask.cpp").read_text()
        codes = set(re.findall(r'(?:return |\{)"(\w+)"_L1', source))
        self.assertIn("diffUnavailable", codes)
        for guide in ("command-line.md", "command-line.ja.md"):
            table = re.search(r"^\| `error\.code`.*?\n\n", read_guide(guide), re.MULTILINE | re.DOTALL)[0]
            listed = set()
            for row in table.strip().splitlines()[2:]:
                listed |= set(re.findall(r"`(\w+)`", row.split("|")[1]))
            self.assertEqual(listed, codes, guide)

    def test_both_guides_list_the_members_that_the_program_has(self):
        source = (ROOT / "batch/ReportPrinter.cpp").read_text()
        members = set(re.findall(r'(?:\{|\[)u"(\w+)"_s[,\]]', source))
        self.assertIn("milliseconds", members)
        for guide in ("command-line.md", "command-line.ja.md"):
            table = re.search(r"## JSON.*?(?=^\| `error\.code)", read_guide(guide), re.MULTILINE | re.DOTALL)[0]
            for member in members:
                self.assertIn(f"`{member}`", table, guide)


class Recipes:
    guide = None

    def setUp(self):
        super().setUp()
        name = self._testMethodName.removeprefix("test_").replace("_", "-")
        self.blocks = list(read_recipes(self.guide)[name])
        self.addCleanup(lambda: self.assertEqual(self.blocks, [], "blocks that nothing ran"))

    def need(self, *tools):
        try:
            for tool in tools:
                super().need(tool)
        except unittest.SkipTest:
            self.blocks.clear()
            raise

    def write_file_block(self):
        name, content = self.blocks.pop(0)
        self.assertIsNotNone(name)
        return self.write(name, content)

    def next_commands(self):
        name, content = self.blocks.pop(0)
        self.assertIsNone(name)
        return content

    def run_commands(self, commands, status=0):
        return self.run_command("bash", "-e", "-o", "pipefail", "-c", commands, status=status)

    def run_block(self, status=0):
        return self.run_commands(self.next_commands(), status)

    def make_repository(self):
        self.need("git")
        (self.home / ".gitconfig").write_text(
            "[user]\nname = a\nemail = a@example.com\n[init]\ndefaultBranch = main\n[core]\nquotePath = false\n"
        )
        self.run_command("git", "init", "--quiet")

    def commit(self):
        self.run_command("git", "add", "--all")
        self.run_command("git", "commit", "--quiet", "--no-verify", "--message", "a")

    def assert_content(self, contents):
        for name, content in contents.items():
            self.assertEqual(self.read(name), content, name)

    def test_start(self):
        self.write("memo.txt", "a \n\nb\n")
        self.write("下 書き.txt", DIRTY)
        self.assertIn("default_trimTrailingSpaces\t行末スペースを削除\t", self.run_block())
        self.assertIn("--- a/memo.txt\n+++ b/memo.txt\n@@ -1,3 +1,3 @@\n-a \n+a\n", self.run_block())
        self.assert_content({"memo.txt": "a\n\nb\n", "下 書き.txt": CLEAN})
        self.assertRegex(self.run_block(), r"^> a\n> b> .*\d")
        self.assertEqual(self.run_block(), "# a\n\nb\n")
        self.assert_content({"memo.txt": "a\n\nb\n"})

    def write_texts(self):
        for name in TEXTS:
            self.write(name, DIRTY)
        self.write("a.md", DIRTY)

    def test_find(self):
        self.need("find", "xargs")
        for _ in range(2):
            self.write_texts()
            self.run_block()
            for name in TEXTS:
                self.assertEqual(self.read(name), CLEAN, name)
            self.assertEqual(self.read("a.md"), DIRTY)

    def test_parallel(self):
        self.need("parallel")
        self.write("pages/a.html", PAGE)
        self.write("pages/下 書き.html", PAGE)
        self.run_block()
        self.assert_content({"pages/a.txt": PAGE_TEXT, "pages/下 書き.txt": PAGE_TEXT, "pages/a.html": PAGE})

    def test_make(self):
        self.need("make")
        self.write_file_block()
        self.write("pages/a.html", PAGE)
        self.write("pages/日本.html", "変わらない\n")
        commands = self.next_commands()
        self.run_commands(commands)
        self.assert_content({"pages/a.txt": PAGE_TEXT, "pages/日本.txt": "変わらない\n"})
        self.assertNotIn("penwick-macro", self.run_commands(commands))
        self.write("pages/bad.html", b"\xff")
        self.run_commands(commands, status=2)
        self.assertFalse((self.folder / "pages/bad.txt").exists())

    def test_ls_files(self):
        self.make_repository()
        for name in ("a.txt", "下 書き/b.txt", "a.md", "a.c"):
            self.write(name, DIRTY)
        self.commit()
        self.write("new.txt", DIRTY)
        names = self.run_block().splitlines()
        self.assertEqual(set(names), {"a.txt", "下 書き/b.txt", "a.md"})
        self.assert_content({"a.txt": CLEAN, "下 書き/b.txt": CLEAN, "a.md": CLEAN, "a.c": DIRTY, "new.txt": DIRTY})

        self.write("same.txt", DIRTY)
        self.write("gone.txt", "")
        self.commit()
        (self.folder / "gone.txt").unlink()
        self.write("下 書き/b.txt", DIRTY)
        self.assertEqual(self.run_block(), "下 書き/b.txt\n")
        self.assert_content({"下 書き/b.txt": CLEAN, "same.txt": DIRTY})

    def test_filter(self):
        self.make_repository()
        self.write("下 書き.txt", DIRTY)
        self.commit()
        self.run_block()
        self.assertEqual(self.run_command("git", "show", ":下 書き.txt"), CLEAN)
        self.assert_content({"下 書き.txt": DIRTY})
        self.commit()
        (self.folder / "下 書き.txt").unlink()
        self.run_command("git", "checkout", "--", ".")
        self.assert_content({"下 書き.txt": CLEAN})
        self.assertEqual(self.run_command("git", "status", "--short"), "")
        self.write("bad.txt", b"\xff")
        self.run_command("git", "add", "bad.txt", status=128)

    def test_textconv(self):
        self.make_repository()
        self.write("a b.html", "<p>一</p>\n")
        self.commit()
        self.write("a b.html", "<p>二</p>\n")
        said = self.run_block()
        self.assertIn("\n-一\n+二\n", said)
        self.assertNotIn("<p>", said)

    def test_pre_commit(self):
        self.need("pre-commit")
        self.make_repository()
        config = self.write_file_block().read_text()
        self.use_hooks_of_this_repository(
            re.search(r"repo: (\S+)", config)[1], re.search(r"rev: (\S+)", config)[1])
        self.write("a.txt", DIRTY)
        self.write("-下 書き.txt", DIRTY)
        self.write("a.c", DIRTY)
        self.run_block()
        self.run_command("git", "add", "--all")
        run = self.next_commands()
        self.run_commands(run, status=1)
        self.assert_content({"a.txt": CLEAN, "-下 書き.txt": CLEAN, "a.c": DIRTY})
        self.run_command("git", "add", "--all")
        self.run_commands(run)
        self.run_command("git", "commit", "--quiet", "--message", "a")
        self.write("a.txt", DIRTY)
        self.run_command("git", "commit", "--quiet", "--all", "--message", "b", status=1)
        self.assert_content({"a.txt": CLEAN})

    def use_hooks_of_this_repository(self, address, revision):
        """git fetches `address` from a repository here that has this one's hooks."""
        hooks = self.home / "hooks"
        hooks.mkdir()
        (hooks / ".pre-commit-hooks.yaml").write_bytes((ROOT / ".pre-commit-hooks.yaml").read_bytes())
        for command in (["init", "--quiet"], ["add", "."], ["commit", "--quiet", "--message", "a"], ["tag", revision]):
            self.run_command("git", "-C", str(hooks), *command)
        self.run_command("git", "config", "--global", f"url.file://{hooks}.insteadOf", address)

    def test_ci(self):
        self.make_repository()
        self.write("下 書き.txt", DIRTY)
        self.commit()
        check = self.next_commands()
        self.assertIn("+++ b/下 書き.txt", self.run_commands(check, status=1))
        self.assert_content({"下 書き.txt": DIRTY})
        self.write("下 書き.txt", CLEAN)
        self.assertEqual(self.run_commands(check), "")

        self.write_file_block()
        lint = self.next_commands()
        self.run_commands(lint)
        self.write("下 書き.txt", "一\n  FIXME 二\n")
        self.assertEqual(self.run_commands(f"{{\n{lint}}} 2>&1", status=1), "下 書き.txt: 2: FIXME 二\n")

    def test_command(self):
        self.write_file_block()
        self.run_block()
        self.write("memo.txt", DIRTY)
        self.write("下 書き.txt", "a \r\nb\r\n")
        said = self.run_block()
        self.assertTrue(said.startswith(CLEAN), said)
        self.assertIn("memo.txt\n下 書き.txt\nuntidy\n", said)
        self.assert_content({"memo.txt": CLEAN, "下 書き.txt": "a\r\nb\r\n"})


class EnglishRecipes(Recipes, Workplace):
    guide = "command-line.md"


class JapaneseRecipes(Recipes, Workplace):
    guide = "command-line.ja.md"


if __name__ == "__main__":
    unittest.main()
