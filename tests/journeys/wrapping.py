#!/usr/bin/python3
"""Wrapping of lines: the switch in the palette, the settings, and a line that runs on."""

import journey
from driver import until

LINE = "吾輩は猫である。名前はまだ無い。I am a cat. " * 12


class Wrapping(journey.Journey):
    def settings(self):
        return self.session.home / ".config/penwick/penwick.conf"

    def switch_wrapping(self):
        self.app.press("F1")
        field = self.app.wait_for("text", "コマンドパレット")
        until(lambda: self.app.has_state(field, "focused"), "the keyboard in the palette")
        self.app.type("view.wrap")

        def first():
            listed = self.app.find("list", "候補")
            rows = self.app.children(listed) if listed else []
            return self.app.name(rows[0]) if rows else ""

        until(lambda: first().startswith("折り返し"), lambda: f"the switch before {first()}")
        self.app.press("Return")
        until(lambda: not self.app.find("text", "コマンドパレット"), "the end of the palette")
        self.wait_for_keyboard("memo.txt")

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
        self.switch_wrapping()
        until(lambda: self.place(last).y == self.place(0).y, "one row")
        until(lambda: "wrapping=off" in self.settings().read_text(), "the stored choice")
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
        self.switch_wrapping()
        until(lambda: self.place(last).y > self.place(0).y, "several rows again")
        self.session.screenshot(journey.PICTURES / "wrapping-on.png")

    def test_settings_wrap_at_a_column(self):
        self.settings().parent.mkdir(parents=True)
        self.settings().write_text("[General]\nwrapping=column\nwrapColumn=40\n")
        self.start(self.write("memo.txt", "漢" * 50 + "\n" + "x" * 100 + "\n"))
        until(lambda: self.place(20).y > self.place(19).y, "twenty wide characters in a row")
        self.assertEqual(self.place(19).y, self.place(0).y)
        self.assertEqual(self.place(51 + 39).y, self.place(51).y)
        self.assertGreater(self.place(51 + 40).y, self.place(51).y)
        self.session.screenshot(journey.PICTURES / "wrapping-column.png")


if __name__ == "__main__":
    journey.main()
