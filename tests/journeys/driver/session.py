"""A separate desktop: X server, window manager, buses, and optionally a Japanese input method.

All files of its programs are in a temporary home, so a run neither reads nor changes the
developer's files."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile

from .waiting import until

# Only one input method, so that opening it always selects Japanese.
_FCITX_PROFILE = """\
[Groups/0]
Name=Default
Default Layout=us
DefaultIM={method}

[Groups/0/Items/0]
Name=keyboard-us
Layout=

[Groups/0/Items/1]
Name={method}
Layout=

[GroupOrder]
0=Default
"""

# Prevents popups over the window under test.
_FCITX_CONFIG = """\
[Behavior]
ActiveByDefault=False
ShowInputMethodInformation=False
ShowInputMethodInformationWhenFocusIn=False
"""


class Session:
    """A context manager. `input_method` is "anthy", "mozc" or None. `home` is the temporary home;
    `environment` is the environment of the session's programs."""

    def __init__(self, input_method=None, width=1200, height=800):
        self._input_method = input_method
        self._size = f"{width}x{height}x24"
        self._processes = []
        self._display = None
        self.home = None
        self.environment = None

    def __enter__(self):
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="penwick-journey-"))
        try:
            self._make_environment()
            self._start_display()
            self._start_buses()
            if self._input_method:
                self._start_input_method()
        except BaseException:
            self.__exit__(None, None, None)
            raise
        return self

    def __exit__(self, *_):
        # Terminates all first: a window manager may end only when its display has gone.
        for process in reversed(self._processes):
            process.terminate()
        for process in reversed(self._processes):
            try:
                process.wait(5)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        self._processes.clear()
        shutil.rmtree(self.home, ignore_errors=True)

    def start(self, *command, **options):
        """Starts a program that is terminated with the session."""
        options = {"cwd": self.home, **options}
        process = subprocess.Popen(
            [str(word) for word in command], env=self.environment, **options
        )
        self._processes.append(process)
        return process

    def lose_display(self):
        """Kills the X server while programs are connected to it, as in a crash."""
        self._display.kill()
        self._display.wait()

    def run(self, *command):
        """Runs a program to its end and returns its standard output."""
        return subprocess.run(
            [str(word) for word in command],
            env=self.environment,
            cwd=self.home,
            check=True,
            stdout=subprocess.PIPE,
            text=True,
        ).stdout

    def screenshot(self, path, window="root"):
        """Writes a picture of the screen, or of one window by its X id, as a PNG file."""
        pathlib.Path(path).parent.mkdir(parents=True, exist_ok=True)
        self.run("import", "-window", window, path)

    def open_input_method(self):
        """Directs keys to Japanese input from now on. A text field must have the focus."""

        def switched():
            # The state is per text field, so this has no effect until the field has the focus.
            try:
                self.run("fcitx5-remote", "-s", self._input_method)
                return self.run("fcitx5-remote", "-n").strip() == self._input_method
            except subprocess.CalledProcessError:
                return False  # It replies late while it starts a helper program.

        until(switched, "the input method to switch to Japanese")

    def close_input_method(self):
        """Directs keys to the program again."""
        self.run("fcitx5-remote", "-c")

    def _make_environment(self):
        folders = {
            "XDG_CONFIG_HOME": self.home / ".config",
            "XDG_DATA_HOME": self.home / ".local/share",
            "XDG_STATE_HOME": self.home / ".local/state",
            "XDG_CACHE_HOME": self.home / ".cache",
            "XDG_RUNTIME_DIR": self.home / ".runtime",
        }
        for folder in folders.values():
            folder.mkdir(parents=True, mode=0o700)
        self.environment = {
            "HOME": str(self.home),
            "PATH": os.environ["PATH"],
            "LANG": "C.UTF-8",
            "TZ": "Asia/Tokyo",
            "QT_QPA_PLATFORM": "xcb",
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
            "QT_IM_MODULE": "fcitx" if self._input_method else "compose",
            "XMODIFIERS": "@im=fcitx" if self._input_method else "@im=none",
            **{name: str(folder) for name, folder in folders.items()},
        }
        for name in ("ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"):
            if name in os.environ:
                self.environment[name] = os.environ[name]

    def _start_display(self):
        # The server chooses a free display number, so that sessions can run in parallel.
        reader, writer = os.pipe()
        self._display = self.start(
            "Xvfb",
            "-displayfd",
            writer,
            "-screen",
            "0",
            self._size,
            "-nolisten",
            "tcp",
            "-noreset",
            "-r",  # A key that a busy machine releases late must not repeat.
            pass_fds=[writer],
            stderr=subprocess.DEVNULL,
        )
        os.close(writer)
        with os.fdopen(reader) as answer:
            number = answer.readline().strip()
        if not number:
            raise RuntimeError("Xvfb did not start")
        self.environment["DISPLAY"] = f":{number}"
        self.start(
            *("openbox", "--sm-disable", "--config-file", self._configure_window_manager()),
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )
        until(self._window_manager_answers, "the window manager")

    def _window_manager_answers(self):
        """The window manager announces itself before it handles events, and a window shown in
        between can stay unmapped for ever. So this requests something and looks for the effect."""
        if "window id" not in self.run("xprop", "-root", "_NET_SUPPORTING_WM_CHECK"):
            return False
        self.run("xdotool", "set_num_desktops", 1)
        return self.run("xprop", "-root", "_NET_NUMBER_OF_DESKTOPS").strip().endswith("= 1")

    def _configure_window_manager(self):
        """Leaves the program the Alt key that the usual settings take for moving windows."""
        settings = pathlib.Path("/etc/xdg/openbox/rc.xml").read_text()
        settings = settings.replace('button="A-Left"', 'button="W-Left"')
        path = self.home / ".config/openbox.xml"
        # `_window_manager_answers` requests another number.
        settings = re.sub(r"<number>\d+</number>", "<number>2</number>", settings)
        path.write_text(settings.replace('key="S-A-', 'key="W-S-A-'))
        return path

    def _start_buses(self):
        bus = self.start(
            "dbus-daemon",
            "--session",
            "--nofork",
            "--print-address=1",
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
            text=True,
        )
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().strip()
        self.start(
            "/usr/libexec/at-spi-bus-launcher",
            "--launch-immediately",
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )
        # This process's accessibility library reads the environment once, at first use.
        for name in ("DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"):
            os.environ[name] = self.environment[name]

    def _start_input_method(self):
        folder = self.home / ".config/fcitx5"
        (folder / "conf").mkdir(parents=True)
        (folder / "profile").write_text(_FCITX_PROFILE.format(method=self._input_method))
        (folder / "config").write_text(_FCITX_CONFIG)
        self.start(
            "fcitx5",
            "--disable",
            "wayland,waylandim,notificationitem,notifications,spell,emoji,kimpanel",
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )

        def answers():
            probe = subprocess.run(
                ["fcitx5-remote"],
                env=self.environment,
                stdout=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL,
            )
            return probe.returncode == 0

        until(answers, "the input method")
