#!/usr/bin/python3
"""Line numbers, the mark of the current line, the marks of blanks and line ends, and the font."""

import journey
from driver import until


class Looks(journey.Journey):
    def set(self, *lines):
        self.settings_file.parent.mkdir(parents=True, exist_ok=True)
        self.settings_file.write_text("[General]\n" + "\n".join(lines) + "\n")

    def character(self, offset):
        text = self.app.text_interface(self.app.wait_for("text", "memo.txt"))
        return text.character_extents(offset)

    def test_line_numbers_are_switched_on_and_select_lines(self):
        path = self.write("memo.txt", "")
        path.write_bytes("one\r\ntwo\r\nthree".encode())
        app = self.start(path)
        left = self.character(0).x
        self.choose_in_palette("view.linenumbers", "行番号を表示")
        gutter = app.wait_for(name="行番号")
        until(lambda: self.character(0).x > left, "the text beside the numbers")
        self.wait_for_keyboard("memo.txt")
        place = app.extents(gutter)
        second = self.character(5)  # The first letter of the second line.
        x, y = place.x + 4, second.y + second.height // 2
        self.session.run("xdotool", "mousemove", x, y, "click", "1")
        app.type("2")
        self.wait_for_text("memo.txt", "one\r\n2three")
        app.press("ctrl+z", "ctrl+Home")
        # With accessibility on, keys pass through another process, and the mouse may overtake them.
        self.wait_for_text("memo.txt", "one\r\ntwo\r\nthree")
        app.wait_for(name="行: 1 列: 0")
        self.session.run("xdotool", "mousemove", x, y, "mousedown", "1")
        self.session.run("xdotool", "mousemove", x, y - second.height, "mouseup", "1")
        app.press("Delete")
        self.wait_for_text("memo.txt", "three")
        self.choose_in_palette("view.currentline", "カーソルのある行を強調")
        self.session.screenshot(journey.PICTURES / "looks.png")
        until(
            lambda: {"showsLineNumbers=true", "marksCurrentLine=true"}
            <= set(self.settings_file.read_text().split()),
            "the settings",
        )
        self.choose_in_palette("view.linenumbers", "行番号を表示")
        until(lambda: self.character(0).x == left, "the text at its old place")

    def test_going_to_a_line_and_starting_at_one_agree(self):
        path = self.write("memo.txt", "")
        path.write_bytes("1\r\n2\r\n3\r4\n5".encode())
        app = self.start("+2", path)
        app.type("a")
        self.wait_for_text("memo.txt", "1\r\na2\r\n3\r4\n5")
        app.press("ctrl+l")
        app.wait_for("text", "コマンドパレット")
        app.type("4")
        until(lambda: app.find(name="4 行へ移動"), "the row of line 4")
        app.press("Return")
        self.wait_for_keyboard("memo.txt")
        app.type("b")
        self.wait_for_text("memo.txt", "1\r\na2\r\n3\rb4\n5")

    def test_the_font_of_the_settings_is_used_and_broken_values_are_ignored(self):
        self.set("fontFamily=Noto Sans Mono CJK JP", "fontSize=28", "lineSpacing=huge")
        self.start(self.write("memo.txt", "0漢\nx"))
        digit, ideograph = self.character(0), self.character(1)
        self.assertAlmostEqual(ideograph.width, 2 * digit.width, delta=1)
        self.assertEqual(round(ideograph.width), 28)
        self.assertEqual(self.character(3).y - digit.y, digit.height)

    def test_all_marks_are_shown_from_the_palette(self):
        app = self.start(self.write("memo.txt", "a b\n"))
        before = self.session.home / "before.png"
        after = self.session.home / "after.png"
        place = app.extents(app.wait_for("text", "memo.txt"))
        crop = f"200x30+{place.x}+{place.y}"

        def picture(path):
            app.press("ctrl+End")  # Shows the caret in the second line, blinking or not.
            self.session.run("import", "-window", "root", "-crop", crop, "+repage", path)
            return self.session.run("identify", "-format", "%#", path)

        plain = picture(before)
        self.choose_in_palette("view.allmarks", "空白と改行をすべて表示")
        until(lambda: picture(after) != plain, "the marks")
        self.choose_in_palette("view.allmarks", "空白と改行をすべて表示")
        until(lambda: picture(after) == plain, "the plain text")


if __name__ == "__main__":
    journey.main()
