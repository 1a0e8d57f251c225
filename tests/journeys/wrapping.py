#!/usr/bin/python3
"""Wrapping of lines: the switch in the palette, the settings, and a line that runs on."""

import journey
from driver import until

LINE = "吾輩は猫である。名前はまだ無い。I am a cat. " * 12


class Wrapping(journey.Journey):
    def place(self, offset):
        """Where a character is on the screen."""
        text = self.app.text_interface(self.app.wait_for("text", "memo.txt"))
        return text.character_extents(offset)

    def is_on_screen(self, offset):
        frame = self.app.extents(self.app.find("frame"))
        place = self.place(offset)
        return frame.x <= place.x <= frame.x + frame.width

    def test_the_palette_switches_wrapping_off_and_on(self):
        path = self.write("memo.txt", LINE + "\nend\n")
        app = self.start(path)
        last = len(LINE) - 2
        until(lambda: self.place(last).y > self.place(0).y, "several rows")
        self.choose_in_palette("view.wrap", "折り返し")
        self.wait_for_keyboard("memo.txt")
        until(lambda: self.place(last).y == self.place(0).y, "one row")
        until(lambda: "wrapping=off" in self.settings_file.read_text(), "the stored choice")
        self.assertFalse(self.is_on_screen(last))
        app.press("End")
        until(lambda: self.is_on_screen(last), "the end of the line")
        self.assertFalse(self.is_on_screen(0))
        app.type("x")
        self.wait_for_text("memo.txt", LINE + "x\nend\n")
        self.session.screenshot(journey.PICTURES / "wrapping-off.png")
        app.press("Home")
        until(lambda: self.is_on_screen(0), "the start of the line")
        self.session.screenshot(journey.PICTURES / "wrapping-off-start.png")
        app.click(app.wait_for("text", "memo.txt"), button=7)  # A wheel or touchpad, to the right.
        until(lambda: not self.is_on_screen(0), "text scrolled out on the left")
        self.choose_in_palette("view.wrap", "折り返し")
        self.wait_for_keyboard("memo.txt")
        until(lambda: self.place(last).y > self.place(0).y, "several rows again")
        self.session.screenshot(journey.PICTURES / "wrapping-on.png")

    def test_settings_wrap_at_a_column(self):
        self.settings_file.parent.mkdir(parents=True)
        self.settings_file.write_text("[General]\nwrapping=column\nwrapColumn=40\n")
        self.start(self.write("memo.txt", "漢" * 50 + "\n" + "x" * 100 + "\n"))
        until(lambda: self.place(20).y > self.place(19).y, "twenty wide characters in a row")
        self.assertEqual(self.place(19).y, self.place(0).y)
        self.assertEqual(self.place(51 + 39).y, self.place(51).y)
        self.assertGreater(self.place(51 + 40).y, self.place(51).y)
        self.session.screenshot(journey.PICTURES / "wrapping-column.png")


if __name__ == "__main__":
    journey.main()
