#!/usr/bin/python3
"""Several documents in one window: switched by keyboard and mouse, reordered, dragged into a window
of their own and back, closed one by one."""

import time

import journey
from driver import until

QUESTION = "「two.txt」への変更を保存しますか？"


class Tabs(journey.Journey):
    def start_three(self):
        """Starts with three files in one window, the last of them in front."""
        self.paths = [self.write(f"{name}.txt", f"text of {name}\n") for name in ("one", "two", "three")]
        app = self.start(*self.paths)
        self.wait_for_tabs(["one", "two", "three"])
        return app

    def tabs(self, title=None):
        """The names of the tabs, from left to right, of the window whose title starts with
        `title`."""
        bars = [
            node
            for window in self.app.children(self.app._root)
            if title is None or self.app.name(window).startswith(title)
            for node in self.app.walk(window)
            if self.app.role(node) == "page tab list" and self.app.has_state(node, "showing")
        ]
        nodes = [n for bar in bars for n in self.app.children(bar) if self.app.role(n) == "page tab"]
        return [self.app.name(node).replace(".txt", "") for node in nodes]

    def wait_for_tabs(self, names, title=None):
        until(lambda: self.tabs(title) == names, lambda: f"{names} where {self.tabs(title)} are")

    def in_front(self, name):
        """Waits until the window shows that document, with the focus in it."""
        self.wait_for_title(name)
        self.wait_for_keyboard(name.removesuffix("*"))

    def middle(self, name):
        box = self.tab(name).get_component_iface().get_extents(self.app._atspi.CoordType.SCREEN)
        return box.x + box.width // 3, box.y + box.height // 2

    def mouse(self, *words):
        self.session.run("xdotool", *words)

    def pull(self, start, end):
        """Drags in steps, because the toolkit checks the pointer's position only when it moves."""
        self.mouse("mousemove", *start, "mousedown", 1)
        steps = 12
        for step in range(1, steps + 1):
            x = start[0] + (end[0] - start[0]) * step // steps
            y = start[1] + (end[1] - start[1]) * step // steps
            self.mouse("mousemove", x, y)
            time.sleep(0.04)
        for wiggle in (1, 0):
            self.mouse("mousemove", end[0], end[1] + wiggle)
            time.sleep(0.15)

    def drag(self, start, end):
        self.pull(start, end)
        self.mouse("mouseup", 1)

    def window_place(self, title):
        window = self.session.run(
            "xdotool", "search", "--onlyvisible", "--name", f"^{title}"
        ).split()[0]
        numbers = dict(
            line.split("=")
            for line in self.session.run("xdotool", "getwindowgeometry", "--shell", window).split()
        )
        return int(numbers["X"]), int(numbers["Y"])

    def test_a_single_document_shows_no_bar(self):
        app = self.start(self.write("one.txt", ""))
        self.assertEqual(self.tabs(), [])
        app.press("ctrl+n")
        self.wait_for_tabs(["one", "名称未設定"])
        self.in_front("名称未設定")
        app.press("ctrl+w")
        self.wait_for_tabs([])
        self.in_front("one.txt")

    def test_keys_go_round_and_each_text_keeps_its_place(self):
        app = self.start_three()
        self.in_front("three.txt")
        app.press("ctrl+Tab")
        self.in_front("one.txt")
        app.press("Right", "Right")
        app.type("X")
        app.press("ctrl+Next")
        self.in_front("two.txt")
        app.press("ctrl+shift+Tab")
        self.in_front("one.txt*")
        app.type("Y")  # Where the caret was.
        self.wait_for_text("one.txt", "teXYxt of one\n")
        app.press("ctrl+Prior")
        self.in_front("three.txt")
        app.press("ctrl+z")  # Must not undo an edit of this text.
        app.press("ctrl+Tab", "ctrl+z", "ctrl+z")
        self.in_front("one.txt")
        self.wait_for_text("one.txt", "text of one\n")

    def test_an_assistive_program_sees_and_switches_tabs(self):
        app = self.start_three()
        bar = app.wait_for("page tab list")
        self.assertEqual(app.name(bar), "three.txt")
        app.do_action(self.tab("one.txt"))
        self.in_front("one.txt")
        until(lambda: app.name(bar) == "one.txt", "the name of the tab in front")
        # Texts of background tabs must not be exposed to a screen reader.
        self.assertIsNone(app.find("text", "three.txt"))

    def test_the_mouse_reorders_and_the_middle_button_closes(self):
        app = self.start_three()
        start, end = self.middle("three.txt"), self.middle("one.txt")
        self.drag(start, (end[0] - 20, end[1]))
        self.wait_for_tabs(["three", "one", "two"])
        self.in_front("three.txt")
        app.press("ctrl+Tab")
        self.in_front("one.txt")
        app.click(self.tab("two.txt"), button=2)
        self.wait_for_tabs(["three", "one"])
        self.in_front("one.txt")

    def test_out_into_a_window_and_back_keeps_everything(self):
        app = self.start_three()
        app.press("ctrl+shift+Tab")
        self.in_front("two.txt")
        app.press("End")
        app.type("!")
        self.in_front("two.txt*")
        start = self.middle("two.txt")
        self.drag(start, (start[0] + 300, start[1] + 250))
        self.wait_for_tabs(["two" + journey.EDITED], "two.txt")
        self.wait_for_tabs(["one", "three"], "three.txt")
        self.in_front("two.txt*")
        app.type("?")
        self.wait_for_text("two.txt", "text of two!?\n")

        # Drops the tab between the other two.
        there = self.middle("three.txt")
        self.drag(self.middle("two.txt"), (there[0] - 30, there[1]))
        self.wait_for_tabs(["one", "two" + journey.EDITED, "three"])
        self.assertEqual(app.windows(), ["two.txt* — penwick"])
        self.in_front("two.txt*")
        app.press("ctrl+z", "ctrl+z")
        self.wait_for_text("two.txt", "text of two\n")

    def test_escape_leaves_the_tab_where_it_is(self):
        app = self.start_three()
        start = self.middle("two.txt")
        self.pull(start, (start[0] + 300, start[1] + 250))
        app.press("Escape")
        self.mouse("mouseup", 1)
        app.type("!")  # Typed after the drag, so that any late effect of the drag would come first.
        self.in_front("two.txt*")
        self.wait_for_tabs(["one", "two" + journey.EDITED, "three"])
        self.assertEqual(app.windows(), ["two.txt* — penwick"])

    def test_a_window_without_a_bar_takes_a_tab_anywhere(self):
        app = self.start_three()
        self.move_to_new_window("two.txt")
        app.focus_window("three.txt")  # The new window covers it.
        self.wait_for_keyboard("three.txt")
        self.move_to_new_window("three.txt")
        app.focus_window("one.txt")
        self.assertEqual(self.tabs("one.txt"), [])
        app.focus_window("two.txt")
        x, y = self.window_place("one.txt")
        self.drag(self.middle("two.txt"), (x + 10, y + 300))
        self.wait_for_tabs(["one", "two"], "two.txt")
        self.in_front("two.txt")

    def test_the_menu_opens_again_at_once(self):
        app = self.start_three()
        self.in_front("three.txt")
        for node in (self.tab("two.txt"), app.wait_for("text", "three.txt")):
            on_screen = app.windows_on_screen()
            # So fast that the toolkit takes the second click as part of a double click.
            for _ in range(2):
                app.click(node, button=3)
                until(lambda: app.windows_on_screen() - on_screen, "the menu")
                time.sleep(0.1)  # Time for an event that would close the menu again.
                self.assertTrue(app.windows_on_screen() - on_screen, app.name(node))
                app.press("Escape")
                until(lambda: app.windows_on_screen() == on_screen, "no menu")

    def test_closing_the_window_asks_before_anything_goes(self):
        app = self.start_three()
        app.press("ctrl+shift+Tab")
        self.in_front("two.txt")
        app.type("x")
        app.press("ctrl+Tab")
        self.in_front("three.txt")
        app.press("alt+F4")
        self.answer("キャンセル", QUESTION)
        self.in_front("two.txt*")
        self.wait_for_tabs(["one", "two" + journey.EDITED, "three"])
        app.press("alt+F4")
        self.answer("保存", QUESTION)
        self.assertEqual(app.wait_for_end(), 0)
        self.assertEqual(self.paths[1].read_bytes(), b"xtext of two\n")


if __name__ == "__main__":
    journey.main()
