"""Editors that run on one display, seen from outside."""

import contextlib
import os
import pathlib
import shlex
import shutil
import subprocess
import sys
import time

import processes
from screen import Screen

ROOT = pathlib.Path(__file__).resolve().parent.parent
SIZE = (1000, 700)  # Of the window while typing.
KEYS = 21
WARM_KEYS = 5
PATIENCE = 60  # Seconds.
REST = 0.2  # Seconds; shorter than the blink interval of a caret.
KEY_REST = 0.1  # Seconds.
KEY_PATIENCE = 10  # Seconds.
PRESS_INTERVAL = 0.02  # Seconds.
STRIP = 64  # Pixels.
CARET_WIDTH = 4  # Pixels, at most.
LEAST_CONTRAST = 1.3  # Of the ink of the last page and the first.


class NotMeasured(Exception):
    """An editor cannot be measured; the text says why."""


class Editor:
    """An editor given by its command line.

    `name` is the command line without folders, `version` the package and version of the program, if known."""

    def __init__(self, command):
        self.words = shlex.split(command)
        built = [ROOT / "build" / preset / "bin/penwick" for preset in ("bench", "release")]
        built = [path for path in built if path.exists()]
        if self.words == ["penwick"] and built:
            self.words = [str(max(built, key=lambda path: path.stat().st_mtime))]
        program = shutil.which(self.words[0])
        if not program:
            sys.exit(f"peers: {command}: there is no such program")
        self.words[0] = os.path.abspath(program)
        self.name = " ".join([pathlib.Path(program).name, *self.words[1:]])
        self.version = version_of(program)
        self.home = None  # As its first start left it.
        self.pages = {}  # {kind: Page}.
        self.figures = {}  # {(case, kind): values of the runs}.

    def add(self, case, value, kind=""):
        self.figures.setdefault((case, kind), []).append(value)


class Page:
    """How an editor shows the pages of a text, measured with a short text: the colour of its background,
    and which share of a strip down the window is ink: without text (`empty`), on the first page and on the
    last."""

    def __init__(self, running):
        pixels = b"".join(running.strip())
        colours = [pixels[start:start + 4] for start in range(0, len(pixels), 4)]
        self.background = max(set(colours), key=colours.count)
        self.first = self.ink(running)
        self.empty = self.last = None

    def ink(self, running):
        pixels = b"".join(running.strip())
        return 1 - pixels.count(self.background) * 4 / len(pixels) if pixels else 0

    def is_usable(self):
        return self.first > self.empty and self.last > self.first * LEAST_CONTRAST

    def shows_first(self, ink):
        # A window that has not been painted yet may have another colour, which looks like ink everywhere.
        return (self.empty + self.first) / 2 <= ink <= (self.first + self.last) / 2

    def shows_last(self, ink):
        return ink >= (self.first + 3 * self.last) / 4


class Running:
    """A running editor with its window; a context manager that ends it."""

    def __init__(self, desk, editor, file=None):
        self._editor, self._screen = editor, desk.screen
        self._wait_for(lambda: not self._screen.windows(), "cannot start: another window is open")
        self.home = desk.new_home(editor)
        words = list(editor.words)
        if file:  # An editor may put files of its own beside it.
            copy = self.home / file.name
            os.link(file, copy)
            words.append(str(copy))
        self.started = time.monotonic()
        self._process = subprocess.Popen(words, env=desk.environment(self.home), cwd=self.home,
                                         stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            self.window = self._wait_for(self._screen.windows, "shows no window")[0]
            self._screen.watch(self.window)
        except BaseException:
            self.__exit__()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        processes.end(self.home)
        with contextlib.suppress(subprocess.TimeoutExpired):
            self._process.wait(10)
        shutil.rmtree(self.home, ignore_errors=True)

    def _check(self, condition, what):
        if not condition:
            raise NotMeasured(f"{self._editor.name} {what}")

    def _wait_for(self, condition, problem):
        limit = time.monotonic() + PATIENCE
        while not (result := condition()):
            self._check(time.monotonic() < limit, problem)
            self._screen.drawn(0.5)  # An event of the display also ends this.
        return result

    def strip(self):
        width, height = self._screen.size(self.window)
        return self._screen.pixels(self.window, (width // 4, 0, STRIP, height))

    def quiet(self):
        """Milliseconds from the start to the last drawing before a rest."""
        last = self._screen.rest(REST, PATIENCE)
        self._check(last, "does not stop drawing")
        return (last - self.started) * 1000

    def settle(self):
        """Waits until it neither draws nor works for a moment."""
        limit = time.monotonic() + PATIENCE
        while True:
            before = processes.processor_time(self.home)
            self.quiet()
            if processes.processor_time(self.home) - before < REST / 10:
                return
            self._check(time.monotonic() < limit, "does not stop working")

    def wait_for_focus(self):
        self._wait_for(lambda: self._screen.active_window() == self.window, "gets no focus")

    def to_end(self):
        self._screen.press("Control_L", "End")

    def until_shown(self, is_shown, page, press=None):
        """Milliseconds from the start until `is_shown` accepts the ink, with `press` again and again."""
        pressed = 0
        limit = time.monotonic() + PATIENCE
        while True:
            now = time.monotonic()
            if is_shown(page.ink(self)):
                return (now - self.started) * 1000
            self._check(now < limit, "does not show the text")
            if press and now - pressed >= PRESS_INTERVAL:
                press()
                pressed = now
            self._screen.drawn(PRESS_INTERVAL)

    def type(self):
        """Yields (milliseconds to the first changed pixels, to the last drawing) of each key."""
        self._screen.resize(self.window, *SIZE)
        self.settle()
        for _ in range(WARM_KEYS + KEYS):
            self._check(self._screen.rest(KEY_REST, PATIENCE), "does not stop drawing")
            yield self._type_key()

    def _type_key(self):
        before = self._screen.pixels(self.window, (0, 0, *self._screen.size(self.window)))
        start = time.monotonic()
        self._screen.press("x")
        changed = last = None
        limit = start + KEY_PATIENCE
        while (now := time.monotonic()) < limit:
            areas = self._screen.drawn(limit - now)
            now = time.monotonic()
            if areas and (changed or any(self._changes_text(before, area) for area in areas)):
                changed, last, limit = changed or now, now, now + KEY_REST
        self._check(changed, "shows no typed character")
        return (changed - start) * 1000, (last - start) * 1000

    def _changes_text(self, before, area):
        """Whether more than a blinking caret has changed in that area since the picture `before`."""
        x, y = max(0, area[0]), max(0, area[1])
        ends = []
        for number, line in enumerate(self._screen.pixels(self.window, area), y):
            old = before[number][x * 4:x * 4 + len(line)]
            if line != old:
                changed = [i for i in range(0, len(line), 4) if line[i:i + 4] != old[i:i + 4]]
                ends += changed[0], changed[-1]
        return bool(ends) and (max(ends) - min(ends)) // 4 >= CARET_WIDTH


class Desk:
    """The display, and the home folders of the editors on it."""

    def __init__(self, session):
        self._session = session
        self.screen = Screen(session.environment["DISPLAY"])
        self._count = 0

    def new_home(self, editor):
        self._count += 1
        home = self._session.home / f"run-{self._count}"
        if editor.home:  # Without the sockets of its last run.
            shutil.copytree(editor.home, home, symlinks=True, ignore=shutil.ignore_patterns(".runtime"))
        for name in (".config", ".local/share", ".local/state", ".cache", ".runtime"):
            (home / name).mkdir(parents=True, exist_ok=True, mode=0o700)
        return home

    def environment(self, home):
        old, new = str(self._session.home), str(home)
        environment = {name: value if name.startswith("DBUS") else value.replace(old, new)
                       for name, value in self._session.environment.items()}
        environment.pop("QT_LINUX_ACCESSIBILITY_ALWAYS_ON")  # No screen reader listens.
        return environment

    def file(self, name):
        folder = self._session.home / "files"
        folder.mkdir(exist_ok=True)
        return folder / name

    def keep(self, editor, running):
        """Keeps the home of the first start for those that follow."""
        processes.end(running.home)
        editor.home = self._session.home / f"home-of-{self._count}"
        running.home.rename(editor.home)


def version_of(program):
    """The Debian package of a program with its version; empty if it belongs to none."""
    found = subprocess.run(["dpkg-query", "--search", os.path.realpath(program)], stdout=subprocess.PIPE,
                           stderr=subprocess.DEVNULL, text=True).stdout
    package = found.partition(":")[0]
    return package and subprocess.run(["dpkg-query", "--show", package], stdout=subprocess.PIPE, text=True,
                                      check=True).stdout.strip().replace("\t", " ")
