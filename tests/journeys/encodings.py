#!/usr/bin/python3
"""A file in another encoding opens as a converted copy, chosen by keyboard; it stays as it is."""

import journey
from driver import until

TEXT = "髙橋①～の一覧\r\nﾊﾝｶｸの文字\r\n"
OLD = TEXT.encode("cp932")
CONVERT = "変換した写しを開く…"


class Encodings(journey.Journey):
    def offer(self, content):
        """Opens a file whose content is not UTF-8, beside an open text, and waits for the message."""
        app = self.start(self.write("open.txt", "開いている文書\n"))
        path = self.write("memo.txt", content)
        app.press("ctrl+o")
        app.wait_for("push button", "開く")
        app.type(str(path))
        app.press("Return")
        app.wait_for(name=lambda text: "UTF-8 のテキストではありません。" in text)
        return app, path

    def choose_conversion(self, app):
        app.wait_for("push button", CONVERT)
        app.press("Tab", "space")
        return app.wait_for("list", "文字コード")

    def test_shift_jis_opens_as_a_copy_and_is_saved_beside_the_file(self):
        app, path = self.offer(OLD)
        app.wait_for(name=lambda text: "Shift_JIS (CP932) のようです。" in text)
        rows = self.choose_conversion(app)
        app.wait_for("list item", lambda text: text.startswith("Shift_JIS"), within=rows)
        app.press("Return")
        self.wait_for_title("名称未設定*")
        self.wait_for_text("名称未設定", TEXT)
        self.assertEqual(path.read_bytes(), OLD)

        app.focus_window("名称未設定")
        app.press("ctrl+s")
        app.wait_for("push button", "保存")
        app.press("Return")
        self.wait_for_content(path.with_name("memo.utf8.txt"), TEXT)
        self.wait_for_title("memo.utf8.txt")
        self.assertEqual(path.read_bytes(), OLD)

    def test_escape_leaves_everything_as_it_was(self):
        app, path = self.offer(OLD)
        rows = self.choose_conversion(app)
        app.wait_for("list item", lambda text: text.startswith("Shift_JIS"), within=rows)
        app.press("Escape")
        until(lambda: not app.find("list", "文字コード"), "the end of the dialog")
        self.wait_for_text("open.txt", "開いている文書\n")
        self.assertEqual(path.read_bytes(), OLD)

    def test_a_binary_file_is_only_reported(self):
        app, _ = self.offer(b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR")
        app.wait_for(name=lambda text: "バイナリファイルのようです。" in text)
        self.assertFalse(app.find("push button", CONVERT))
        app.press("Escape")
        until(lambda: not app.find("push button", "OK"), "the end of the message")


if __name__ == "__main__":
    journey.main()
