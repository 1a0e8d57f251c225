#!/usr/bin/python3
"""Shortcuts that only some platforms have."""

import journey


class Keys(journey.Journey):
    def start_with(self, content):
        path = self.write("memo.txt", content)
        self.start(path)
        return self.app

    def test_control_k_deletes_to_the_end_of_the_line(self):
        app = self.start_with("one two\r\nthree")
        app.press("ctrl+Home", "ctrl+Right", "ctrl+k")
        self.wait_for_text("memo.txt", "one \r\nthree")
        # At the end of a line it deletes the line break.
        app.press("ctrl+k")
        self.wait_for_text("memo.txt", "one three")

    def test_control_u_deletes_the_line(self):
        app = self.start_with("one\ntwo\nthree")
        app.press("ctrl+Home", "Down", "Right", "ctrl+u")
        self.wait_for_text("memo.txt", "one\nthree")

    def test_control_shift_a_deselects(self):
        app = self.start_with("one two")
        app.press("ctrl+a", "ctrl+shift+a")
        app.type("!")
        self.wait_for_text("memo.txt", "one two!")

    def test_menu_key_opens_the_context_menu(self):
        app = self.start_with("one two")
        app.press("ctrl+a", "Menu")
        app.press("Down", "Return")  # To the first enabled entry: Cut.
        self.wait_for_text("memo.txt", "")


if __name__ == "__main__":
    journey.main()
