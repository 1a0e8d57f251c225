#!/usr/bin/python3
"""The first sizes of the windows, on screens that are large enough for them and on smaller ones."""

import re
import subprocess

import journey
from driver import until


class Screen(journey.Journey):
    environment = None

    def place(self, title):
        """The rectangle of the window's frame and the size of the window, in pixels; None before
        the window has its frame."""
        search = ("xdotool", "search", "--onlyvisible", "--name", f"^{re.escape(title)}")
        try:
            window = self.session.run(*search).split()[0]
            lines = self.session.run("xwininfo", "-id", window)
            extents = self.session.run("xprop", "-id", window, "_NET_FRAME_EXTENTS")
        except subprocess.CalledProcessError:
            return None
        number = r"(?:Absolute upper-left [XY]|Width|Height): +(-?\d+)"
        x, y, width, height = map(int, re.findall(number, lines))
        if "=" not in extents:
            return None
        left, right, top, bottom = map(int, extents.split("=")[1].split(","))
        frame = (x - left, y - top, width + left + right, height + top + bottom)
        return frame, (width, height)

    def is_on_screen(self, title):
        place = self.place(title)
        if not place:
            return False
        x, y, width, height = place[0]
        return x >= 0 and y >= 0 and x + width <= self.screen[0] and y + height <= self.screen[1]

    def wait_until_on_screen(self, title):
        until(
            lambda: self.is_on_screen(title),
            lambda: f"{title!r} on the screen, which is at {self.place(title)}",
        )

    def look_at_manager(self, menu, item, title):
        self.app.do_action(self.app.menu_item(menu, item))
        self.look_at_window(title)

    def look_at_window(self, title):
        until(lambda: title in self.app.windows(), title)
        self.wait_until_on_screen(title)
        self.app.focus_window(title)
        self.app.press("ctrl+w")
        until(lambda: title not in self.app.windows(), f"the end of {title!r}")

    def look(self):
        self.start(self.write("memo.txt", "abc\n"), environment=self.environment)
        self.wait_until_on_screen("memo.txt")
        self.look_at_manager("マクロ", "マクロ管理…", "マクロ管理")
        self.look_at_manager(
            "プロファイル", "UI文言プロファイル管理…", "UI文言プロファイル管理"
        )
        self.app.focus_window("memo.txt")
        self.app.press("ctrl+comma")
        self.look_at_window("設定")


class SmallScreen(Screen):
    screen = (640, 480)

    def test_windows_are_cut_to_it(self):
        self.look()


class LargePixels(Screen):
    screen = (1920, 1080)
    environment = {"QT_SCALE_FACTOR": "2"}

    def test_windows_are_cut_to_the_screen(self):
        self.look()


class LargeScreen(Screen):
    def test_windows_have_their_sizes(self):
        self.look()
        self.assertEqual(self.place("memo.txt")[1], (900, 650))


if __name__ == "__main__":
    journey.main()
