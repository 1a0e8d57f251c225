#!/usr/bin/python3
"""Text dragged between two windows with the mouse, and pasted with the middle button; macros dragged
in their list."""

import json
import time

import journey
from driver import until


class Dragging(journey.Journey):
    def start_two(self):
        """Starts with two windows side by side, so that both are visible."""
        self.left = self.write("left.txt", "apple banana\n")
        self.right = self.write("right.txt", "cherry\n")
        app = self.start(self.left, self.right)
        self.move_to_new_window("right.txt")
        self.wait_for_title("left.txt")
        for name, x in (("left.txt", 0), ("right.txt", 600)):
            app.focus_window(name)
            window = self.session.run(
                "xdotool", "search", "--onlyvisible", "--name", f"^{name}"
            ).split()[0]
            self.session.run("xdotool", "windowsize", "--sync", window, 560, 500)
            self.session.run("xdotool", "windowmove", window, x, 40)
            editor = self.text(name)
            until(lambda: abs(editor.window_extents().x - x) < 40, f"{name} at {x}")
        return app

    def text(self, name):
        return self.app.text_interface(self.app.wait_for("text", name))

    def point(self, name, offset):
        """The center of the character at `offset` of that editor, in screen coordinates."""
        box = self.text(name).character_extents(offset)
        return box.x + box.width // 2, box.y + box.height // 2

    def mouse(self, *words):
        self.session.run("xdotool", *words)

    def pull(self, start, end, key=None):
        """Drags from one point to another in steps, as a user does: the toolkit checks the
        pointer's position only when it moves, and then asks the window there."""
        self.mouse("mousemove", *start, "mousedown", 1)
        if key:
            self.mouse("keydown", key)
        steps = 12
        for step in range(1, steps + 1):
            x = start[0] + (end[0] - start[0]) * step // steps
            y = start[1] + (end[1] - start[1]) * step // steps
            self.mouse("mousemove", x, y)
            time.sleep(0.04)
        for wiggle in (1, 0):
            self.mouse("mousemove", end[0], end[1] + wiggle)
            time.sleep(0.15)

    def drag(self, start, end, key=None):
        self.pull(start, end, key)
        self.mouse("mouseup", 1)
        if key:
            self.mouse("keyup", key)

    def select_apple(self, app):
        app.focus_window("left.txt")
        app.press("ctrl+Home", *["shift+Right"] * 6)

    def test_text_moves_to_another_window(self):
        app = self.start_two()
        self.select_apple(app)
        self.drag(self.point("left.txt", 2), self.point("right.txt", 0))
        self.wait_for_text("left.txt", "banana\n")
        editor = app.wait_for("text", "right.txt")
        until(
            lambda: sorted(app.text_of(editor).replace("apple ", "", 1)) == sorted("cherry\n")
            and "apple " in app.text_of(editor),
            lambda: f"the text to arrive in {app.text_of(editor)!r}",
        )
        # Each window has an undo step of its own.
        app.focus_window("right.txt")
        app.press("ctrl+z")
        self.wait_for_text("right.txt", "cherry\n")
        self.wait_for_text("left.txt", "banana\n")
        app.focus_window("left.txt")
        app.press("ctrl+z")
        self.wait_for_text("left.txt", "apple banana\n")

    def test_control_copies(self):
        app = self.start_two()
        self.select_apple(app)
        self.drag(self.point("left.txt", 2), self.point("right.txt", 0), key="ctrl")
        editor = app.wait_for("text", "right.txt")
        until(
            lambda: "apple " in app.text_of(editor),
            lambda: f"the copy to arrive in {app.text_of(editor)!r}",
        )
        self.wait_for_text("left.txt", "apple banana\n")

    def test_escape_gives_up(self):
        app = self.start_two()
        self.select_apple(app)
        self.pull(self.point("left.txt", 2), self.point("right.txt", 0))
        app.press("Escape")
        self.mouse("mouseup", 1)
        # Typed after the drag, so that any late effect of the drag would come first.
        app.focus_window("right.txt")
        app.press("ctrl+End")
        app.type("!")
        self.wait_for_text("right.txt", "cherry\n!")
        self.wait_for_text("left.txt", "apple banana\n")

    def test_macro_moves_in_the_list(self):
        app = self.start()
        app.choose("マクロ", "マクロ管理…")
        until(lambda: "マクロ管理" in app.windows(), "the macro manager")
        app.focus_window("マクロ管理")
        store = self.session.home / ".local/share/penwick/macros.json"

        def names():
            return [macro["name"] for macro in json.loads(store.read_text())]

        before = names()
        rows = [app.extents(app.wait_for("list item", f"{name}, 組み込み")) for name in before[:3]]
        middles = [(row.x + row.width // 2, row.y + row.height // 2) for row in rows]
        self.drag(middles[0], (middles[2][0], rows[2].y + rows[2].height - 4))
        moved = [before[1], before[2], before[0], *before[3:]]
        until(lambda: names() == moved, lambda: f"the new order in {names()}")
        orders = [macro["sortOrder"] for macro in json.loads(store.read_text())]
        self.assertEqual(orders, sorted(orders))
        app.press("alt+Up")
        until(lambda: names()[:3] == [before[1], before[0], before[2]], lambda: f"{names()}")

    def test_middle_click_pastes_what_was_selected(self):
        app = self.start_two()
        self.select_apple(app)
        self.mouse("mousemove", *self.point("right.txt", 0), "click", 2)
        editor = app.wait_for("text", "right.txt")
        until(
            lambda: "apple " in app.text_of(editor),
            lambda: f"the selection to arrive in {app.text_of(editor)!r}",
        )
        self.wait_for_text("left.txt", "apple banana\n")


if __name__ == "__main__":
    journey.main()
