"""The text of one node, as a screen reader queries it. Offsets are in UTF-16 code units."""


class Text:
    def __init__(self, atspi, node):
        self._atspi, self._node = atspi, node
        self._text = node.get_text_iface()

    def character_count(self):
        return self._atspi.Text.get_character_count(self._text)

    def string_at(self, offset, granularity):
        """The piece at `offset`, its start and its end. `granularity` is "char", "word", "sentence"
        or "line"."""
        # Uses the older of two calls: the toolkit implements only this one, so screen readers use
        # it too.
        name = "CHAR" if granularity == "char" else f"{granularity.upper()}_START"
        size = getattr(self._atspi.TextBoundaryType, name)
        found = self._atspi.Text.get_text_at_offset(self._text, offset, size)
        return found.content, found.start_offset, found.end_offset

    def caret(self):
        return self._atspi.Text.get_caret_offset(self._text)

    def set_caret(self, offset):
        self._atspi.Text.set_caret_offset(self._text, offset)

    def selection(self):
        """Start and end of the selection, or None."""
        if self._atspi.Text.get_n_selections(self._text) == 0:
            return None
        found = self._atspi.Text.get_selection(self._text, 0)
        return found.start_offset, found.end_offset

    def set_selection(self, start, end):
        self._atspi.Text.set_selection(self._text, 0, start, end)

    def character_extents(self, offset):
        """The rectangle of a character, in screen coordinates."""
        screen = self._atspi.CoordType.SCREEN
        return self._atspi.Text.get_character_extents(self._text, offset, screen)

    def range_extents(self, start, end):
        screen = self._atspi.CoordType.SCREEN
        return self._atspi.Text.get_range_extents(self._text, start, end, screen)

    def offset_at(self, x, y):
        screen = self._atspi.CoordType.SCREEN
        return self._atspi.Text.get_offset_at_point(self._text, x, y, screen)

    def window_extents(self):
        """The rectangle of the node, in screen coordinates."""
        return self._node.get_component_iface().get_extents(self._atspi.CoordType.SCREEN)

    def replace(self, start, end, replacement):
        """Edits as dictation does: one deletion and one insertion."""
        editable = self._node.get_editable_text_iface()
        self._atspi.EditableText.delete_text(editable, start, end)
        length = len(replacement.encode("utf-16-le")) // 2
        self._atspi.EditableText.insert_text(editable, start, replacement, length)
