#!/usr/bin/python3
"""The editor's accessibility interface, as a screen reader queries it over the accessibility bus:
names, roles, states, pieces of text, positions on the screen, and events."""

from journey import Journey, main

LONG = "漢字かな交じり文が長く続いて折り返す。" * 8
CONTENT = LONG + "\r\nshort line\n👨‍👩‍👧と𠮷野家\nabc"


class Accessibility(Journey):
    def open(self, content=CONTENT):
        path = self.write("notes.txt", content)
        self.start(path)
        self.editor = self.app.wait_for("text", "notes.txt")
        self.text = self.app.text_interface(self.editor)
        return path

    def pieces(self, granularity):
        """All pieces of the given granularity, from the start of the text."""
        pieces, offset = [], 0
        while offset < self.text.character_count():
            piece, start, end = self.text.string_at(offset, granularity)
            self.assertEqual(start, offset, "pieces meet")
            self.assertGreater(end, start)
            pieces.append(piece)
            offset = end
        return pieces

    def test_the_tree_says_what_stands_where(self):
        self.open()
        # A screen reader speaks this path when the window comes to the front.
        self.assertEqual(
            [self.app.role(n) for n in self.app.path_to(self.editor)][:2], ["frame", "filler"]
        )
        self.assertEqual(self.app.windows(), ["notes.txt — penwick"])
        for state in ("focused", "focusable", "editable", "multi_line", "enabled", "showing"):
            self.assertTrue(self.app.has_state(self.editor, state), state)
        unnamed = [
            self.app.role(node)
            for node in self.app.walk()
            if self.app.has_state(node, "focusable")
            and self.app.has_state(node, "showing")
            and not self.app.name(node)
        ]
        self.assertEqual(unnamed, [], "everything that can have the focus has a name")

    def test_text_is_read_in_pieces_of_every_size(self):
        self.open()
        self.assertEqual(self.text.character_count(), len(CONTENT.encode("utf-16-le")) // 2)
        rows = self.pieces("line")
        self.assertEqual("".join(rows), CONTENT)
        self.assertGreater(len(rows), 5)
        self.assertEqual(rows[-3:], ["short line\n", "👨‍👩‍👧と𠮷野家\n", "abc"])
        self.assertIn("👨‍👩‍👧", self.pieces("char"))
        words = self.pieces("word")
        self.assertIn("short", words)
        self.assertIn("漢字", words)
        self.assertEqual(len(self.pieces("sentence")), 8 + 3)

    def test_characters_have_a_place_on_the_screen(self):
        self.open("abc\nxyz")
        window = self.text.window_extents()
        a, b, x = (self.text.character_extents(offset) for offset in (0, 1, 4))
        self.assertEqual(a.x + a.width, b.x)
        self.assertEqual((a.x, a.height), (x.x, x.height))
        self.assertEqual(a.y + a.height, x.y)
        self.assertTrue(window.x < a.x < window.x + 40 and window.y < a.y < window.y + 40)
        self.assertEqual(self.text.offset_at(b.x + 2, b.y + 5), 1)
        line = self.text.range_extents(0, 3)
        self.assertEqual((line.x, line.y, line.height), (a.x, a.y, a.height))
        self.assertGreater(line.width, 2 * a.width)

    def test_caret_and_selection_are_reported_and_set(self):
        self.open("one two three")
        with self.app.events("object:text-caret-moved", "object:text-selection-changed") as events:
            self.app.press("End")
            events.wait_for("object:text-caret-moved", detail1=13)
            self.app.press("ctrl+shift+Left")
            events.wait_for("object:text-caret-moved", detail1=8)
            events.wait_for("object:text-selection-changed")
        self.assertEqual(self.text.caret(), 8)
        self.assertEqual(self.text.selection(), (8, 13))
        self.text.set_selection(4, 7)
        self.assertEqual(self.text.selection(), (4, 7))
        self.text.set_caret(2)
        self.assertEqual((self.text.caret(), self.text.selection()), (2, None))

    def test_changes_are_reported_with_the_text(self):
        path = self.open("one two")
        with self.app.events("object:text-changed") as events:
            self.app.type("X")
            events.wait_for("object:text-changed:insert", 0, 1, "X")
            self.app.press("ctrl+z")
            events.wait_for("object:text-changed:delete", 0, 1, "X")
            # The edit of a braille display or of dictation.
            self.text.replace(4, 7, "三つ")
            events.wait_for("object:text-changed:delete", 4, 3, "two")
            events.wait_for("object:text-changed:insert", 4, 2, "三つ")
        self.save(path, "one 三つ")

    def test_a_file_of_another_name_renames_the_editor(self):
        self.open("text")
        with self.app.events("object:property-change:accessible-name") as events:
            self.app.press("ctrl+shift+s")
            self.app.wait_for("dialog")
            self.app.press("ctrl+a")
            self.app.type(str(self.files / "other.txt"))
            self.app.press("Return")
            self.wait_for_title("other.txt")
            events.wait_for("object:property-change:accessible-name")
        self.app.wait_for("text", "other.txt")


if __name__ == "__main__":
    main()
