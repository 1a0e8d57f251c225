"""The base of the journeys: each test has a desktop and a home folder of its own, and accesses
penwick only from outside."""

import os
import pathlib
import subprocess
import sys
import unittest

from driver import Application, Session, until

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAM = os.environ.get("PENWICK_PROGRAM", ROOT / "build/release/bin/penwick")
# The folder for a screenshot of a failed journey.
PICTURES = pathlib.Path(os.environ.get("PENWICK_PICTURES", ROOT / "build/release/journeys"))


# A screen reader speaks this after the name of a tab whose document is edited.
EDITED = "（未保存の変更あり）"


class Journey(unittest.TestCase):
    input_method = None
    screen = (1200, 800)
    needs_plain_user = False  # Some programs refuse to run as root.

    def setUp(self):
        self.session = self.enterContext(Session(self.input_method, *self.screen))
        self.files = self.session.home / "files"
        self.files.mkdir()
        self.app = None

    def _callTestMethod(self, method):
        try:
            method()
        except BaseException:
            self._leave_picture()
            raise

    def _leave_picture(self):
        try:
            PICTURES.mkdir(parents=True, exist_ok=True)
            picture = PICTURES / f"{self.id()}.png"
            self.session.screenshot(picture)
            print(f"\nthe screen at the failure: {picture}")
            if self.app:
                print(self.app.output.read_text(errors="replace"))
                print(self.app.tree())
        except Exception as error:  # The test's failure matters more.
            print(f"\nno picture of the screen: {error}")

    def start(self, *files, environment=None):
        """Starts penwick and waits until its window has the focus."""
        self.app = Application(self.session, PROGRAM, *files, environment=environment)
        name = files[-1].name if files else "名称未設定"
        self.wait_for_title(name)
        self.app.focus_window(name)
        return self.app

    def tab(self, name):
        """The tab of the document of that name, edited or not."""
        return self.app.wait_for("page tab", lambda text: text.removesuffix(EDITED) == name)

    def move_to_new_window(self, name):
        """Moves the tab of that name into a window of its own, with the tab's menu."""
        count = len(self.app.windows())
        on_screen = self.app.windows_on_screen()
        self.app.click(self.tab(name), button=3)
        until(lambda: self.app.windows_on_screen() - on_screen, "the tab's menu")
        self.app.press("Up", "Return")  # Its last item.
        until(
            lambda: len(self.app.windows()) == count + 1,
            lambda: f"another window among {self.app.windows()}",
        )
        self.wait_for_keyboard(name)

    def wait_for_keyboard(self, name):
        """Waits until the editor of that name has the focus."""
        editor = self.app.wait_for("text", name)
        until(lambda: self.app.has_state(editor, "focused"), f"the keyboard in {name}")

    @property
    def settings_file(self):
        return self.session.home / ".config/penwick/penwick.conf"

    def choose_in_palette(self, typed, title):
        """Types into the palette and runs the first row, whose title must start with `title`."""
        self.app.press("F1")
        field = self.app.wait_for("text", "コマンドパレット")
        until(lambda: self.app.has_state(field, "focused"), "the keyboard in the palette")
        self.app.type(typed)

        def first():
            listed = self.app.find("list", "候補")
            rows = self.app.children(listed) if listed else []
            return self.app.name(rows[0]) if rows else ""

        until(lambda: first().startswith(title), lambda: f"{title} before {first()}")
        self.app.press("Return")
        until(lambda: not self.app.find("text", "コマンドパレット"), "the end of the palette")

    def write(self, name, content):
        path = self.files / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def wait_for_title(self, name):
        """Waits for the window of the document of that name; a star after the name means
        unsaved."""
        until(
            lambda: any(title == f"{name} — penwick" for title in self.app.windows()),
            lambda: f"the window {name!r} among {self.app.windows()}",
        )

    def wait_for_text(self, name, content):
        """Waits until the editor of that name shows that text, as seen by a screen reader."""
        editor = self.app.wait_for("text", name)
        until(
            lambda: self.app.text_of(editor) == content,
            lambda: f"{content!r} in the editor, which shows {self.app.text_of(editor)!r}",
        )

    def wait_for_status(self, message):
        self.app.wait_for("label", message)

    def wait_for_content(self, path, content):
        """Waits until the file holds exactly this content, a text or bytes."""
        wanted = content if isinstance(content, bytes) else content.encode()
        until(
            lambda: path.exists() and path.read_bytes() == wanted,
            lambda: f"{_start_of(wanted)} in {path.name}, which holds "
            f"{_start_of(path.read_bytes()) if path.exists() else 'nothing'}",
        )

    def save(self, path, content):
        """Saves by keyboard and waits until the file holds `content` and the star is gone."""
        self.app.press("ctrl+s")
        self.wait_for_content(path, content)
        self.wait_for_title(path.name)

    def answer(self, label, question=None):
        """Clicks the button with that label in the open dialog. With `question`, waits first for a
        dialog that contains that text."""
        if question:
            self.app.wait_for(name=lambda text: question in text)
        self.app.click(self.app.wait_for("push button", label))
        until(lambda: not self.app.find("push button", label), f"the end of the dialog ({label})")


def _start_of(content, most=200):
    """For messages: some contents are megabytes."""
    return repr(content[:most]) + (f"… ({len(content)} bytes)" if len(content) > most else "")


def main():
    """Runs the tests of the script, or those that its arguments name.

    Each test runs in a process of its own, because the accessibility library connects to only one
    bus per process."""
    if len(sys.argv) > 1:
        unittest.main()
    suite = unittest.defaultTestLoader.loadTestsFromModule(sys.modules["__main__"])
    tests = [test for cases in suite for test in cases]
    failed = [test for test in tests if not _passes_alone(test)]
    print(f"{len(tests) - len(failed)} of {len(tests)} passed")
    sys.exit(bool(failed))


# The prefix of a command that runs as an unprivileged user.
_PLAIN_USER = ("setpriv", "--reuid=65534", "--regid=65534", "--clear-groups")


def _can_run_as_plain_user():
    tries = (*_PLAIN_USER, "test", "-x", PROGRAM, "-a", "-r", sys.argv[0])
    return subprocess.run(tries, stderr=subprocess.DEVNULL).returncode == 0


def _passes_alone(test):
    name = test.id().removeprefix("__main__.")
    print(f"== {name}", flush=True)
    command = [sys.executable, "-B", "-W", "ignore::DeprecationWarning", sys.argv[0], name]
    if test.needs_plain_user and os.geteuid() == 0:
        if not _can_run_as_plain_user():
            print("skipped: the input method does not run for root, and no other user can get here")
            return True
        command = [*_PLAIN_USER, *command]
    return subprocess.run(command).returncode == 0
