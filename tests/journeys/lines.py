#!/usr/bin/python3
"""The commands for lines and characters, the indentation of the settings, zoom and full screen."""

import journey
from driver import until


class Lines(journey.Journey):
    def height(self):
        """The height of the first character on the screen."""
        text = self.app.text_interface(self.tab_text())
        return text.character_extents(0).height

    def tab_text(self):
        return self.app.wait_for("text", "memo.txt")

    def test_keys_change_lines_and_keep_their_ends(self):
        path = self.write("memo.txt", "")
        path.write_bytes("one\r\ntwo\r\n三".encode())
        app = self.start(path)
        app.press("alt+Down")
        self.wait_for_text("memo.txt", "two\r\none\r\n三")
        app.press("ctrl+shift+d")
        self.wait_for_text("memo.txt", "two\r\none\r\none\r\n三")
        app.press("alt+Up", "alt+Up")
        self.wait_for_text("memo.txt", "one\r\ntwo\r\none\r\n三")
        app.press("Home", "shift+Down", "Tab")  # A single line is replaced.
        self.wait_for_text("memo.txt", "\ttwo\r\none\r\n三")
        app.press("ctrl+z", "ctrl+a", "Tab", "Tab")
        self.wait_for_text("memo.txt", "\t\tone\r\n\t\ttwo\r\n\t\tone\r\n\t\t三")
        app.press("shift+Tab")
        self.wait_for_text("memo.txt", "\tone\r\n\ttwo\r\n\tone\r\n\t三")
        self.session.screenshot(journey.PICTURES / "lines.png")
        self.save(path, "\tone\r\n\ttwo\r\n\tone\r\n\t三")

    def test_the_palette_sorts_and_converts(self):
        app = self.start(self.write("memo.txt", "b2 \nａ1\nA"))
        app.press("ctrl+a")
        self.choose_in_palette("lines.sort", "行を並べ替え (文字コード順)")
        self.wait_for_keyboard("memo.txt")
        self.wait_for_text("memo.txt", "A\nb2 \nａ1")
        self.choose_in_palette("uppercase", "選択範囲を大文字に変換")
        self.wait_for_keyboard("memo.txt")
        self.wait_for_text("memo.txt", "A\nB2 \nＡ1")
        self.choose_in_palette("halfwidth", "選択範囲を半角に変換")
        self.wait_for_keyboard("memo.txt")
        self.wait_for_text("memo.txt", "A\nB2 \nA1")
        self.choose_in_palette("trimends", "行末の空白を削除")
        self.wait_for_keyboard("memo.txt")
        self.wait_for_text("memo.txt", "A\nB2\nA1")
        self.choose_in_palette("lines.join", "行を連結")
        self.wait_for_keyboard("memo.txt")
        self.wait_for_text("memo.txt", "A B2 A1")
        for text in ("A\nB2\nA1", "A\nB2 \nA1", "A\nB2 \nＡ1", "A\nb2 \nａ1", "b2 \nａ1\nA"):
            app.press("ctrl+z")
            self.wait_for_text("memo.txt", text)

    def test_settings_change_tab_and_enter(self):
        self.settings_file.parent.mkdir(parents=True)
        self.settings_file.write_text(
            "[General]\ntabWidth=2\ntabKeyInserts=spaces\nkeepIndentation=true\nzoom=huge\n"
        )
        app = self.start(self.write("memo.txt", ""))
        app.press("Tab")
        app.type("a")
        app.press("Tab", "Return")
        app.type("b")
        self.wait_for_text("memo.txt", "  a \n  b")

    def test_zoom_is_kept_and_full_screen_ends(self):
        path = self.write("memo.txt", "text\n")
        app = self.start(path)
        normal = self.height()
        app.press("ctrl+plus", "ctrl+plus", "ctrl+plus")
        until(lambda: self.height() > normal, "larger characters")
        until(lambda: "zoom=130" in self.settings_file.read_text(), "the zoom in the settings")
        app.press("F11")
        until(lambda: self.size() == (1200, 800), lambda: f"the full screen, not {self.size()}")
        self.session.screenshot(journey.PICTURES / "zoom.png")
        app.press("F11")
        until(lambda: self.size() != (1200, 800), "a window")
        app.press("ctrl+0")
        until(lambda: self.height() == normal, "the size of the text as before")

    def size(self):
        frame = self.app.extents(self.app.find("frame"))
        return frame.width, frame.height


if __name__ == "__main__":
    journey.main()
