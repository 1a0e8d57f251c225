#!/usr/bin/python3
"""Rectangular selections: with keys, the mouse and an input method, from the palette, and for macros."""

import journey
from composition import Composing
from driver import until


class Columns(journey.Journey):
    def text(self):
        return self.app.text_interface(self.app.wait_for("text", "memo.txt"))

    def point(self, offset):
        """The left edge of the character at `offset`, in screen coordinates."""
        box = self.text().character_extents(offset)
        return box.x + 1, box.y + box.height // 2

    def pull(self, start, end):
        """Drags with Alt from the character at one offset to that at another."""
        self.session.run("xdotool", "mousemove", *self.point(start), "keydown", "alt", "mousedown", 1)
        self.session.run("xdotool", "mousemove", *self.point(end), "mouseup", 1, "keyup", "alt")

    def test_keys_edit_each_row(self):
        path = self.write("memo.txt", "")
        path.write_bytes("one 1\r\n二 2\r\n\r\nfour 4".encode())
        app = self.start(path)
        app.press("alt+shift+Down", "alt+shift+Down", "alt+shift+Down")
        app.type("- ")
        self.wait_for_text("memo.txt", "- one 1\r\n- 二 2\r\n- \r\n- four 4")
        app.press("alt+shift+Left", "alt+shift+Left", "ctrl+x")
        self.wait_for_text("memo.txt", "one 1\r\n二 2\r\n\r\nfour 4")
        app.press("Escape", "Down", "End", "ctrl+v")
        self.wait_for_text("memo.txt", "one 1\r\n二 2- \r\n    - \r\nfour-  4\r\n    - ")
        app.press("ctrl+z", "ctrl+z", "ctrl+z")
        self.wait_for_text("memo.txt", "one 1\r\n二 2\r\n\r\nfour 4")
        self.wait_for_title("memo.txt")

    def test_the_mouse_selects_and_a_macro_gets_the_first_row(self):
        app = self.start(self.write("memo.txt", "name  date\nabc   2026\n漢字  2027\n"))
        self.pull(2, 19)
        until(lambda: self.text().selection() == (2, 8), lambda: f"2 to 8, not {self.text().selection()}")
        self.session.screenshot(journey.PICTURES / "columns.png")
        app.choose("マクロ", "テストマクロを実行（replaceSelection）")
        self.wait_for_text("memo.txt", "na[選択テスト: me  da]te\nabc   2026\n漢字  2027\n")
        app.press("ctrl+z")
        self.wait_for_text("memo.txt", "name  date\nabc   2026\n漢字  2027\n")
        self.pull(0, 24)
        app.press("Delete")
        self.wait_for_text("memo.txt", "  date\n  2026\n  2027\n")

    def test_the_palette_starts_a_rectangle(self):
        app = self.start(self.write("memo.txt", "a\nb\nc\n"))
        self.choose_in_palette("edit.columns", "列選択を開始")
        self.wait_for_keyboard("memo.txt")
        app.press("shift+Down", "shift+Down")
        app.type("#")
        self.wait_for_text("memo.txt", "#a\n#b\n#c\n")


class ColumnComposition(Composing):
    input_method = "anthy"

    def test_a_commit_goes_into_each_row(self):
        app = self.start(self.write("memo.txt", "1\n2\n3"))
        app.press("alt+shift+Down", "alt+shift+Down")
        self.compose()
        self.session.screenshot(journey.PICTURES / "columns_composition.png")
        app.press("Return")
        self.wait_for_text("memo.txt", "日本語1\n日本語2\n日本語3")
        app.press("ctrl+z")
        self.wait_for_text("memo.txt", "1\n2\n3")


if __name__ == "__main__":
    journey.main()
