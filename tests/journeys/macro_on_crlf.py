#!/usr/bin/python3
"""A file with mixed line ends keeps its bytes through a macro, undo, redo and typing."""

import journey
from driver import until

TRIM = ("マクロ", "行末スペースを削除")
SAMPLE = journey.ROOT / "docs/samples/sample.txt"
# For a macro only a line feed ends a line, so blanks before a carriage return are not trailing.
TRIMMED = (
    SAMPLE.read_bytes()
    .decode()
    .replace("です。   \n", "です。\n")
    .replace("です。　　\n", "です。\n")
    .replace("です。\t\t\n", "です。\n")
    .replace("行 　\t\n", "行\n")
    .removesuffix("　 ")
)


class MacroOnCrLf(journey.Journey):
    def test_mixed_line_ends_survive_everything(self):
        original = SAMPLE.read_bytes()
        path = self.write("memo.txt", original)
        app = self.start(path)

        self.wait_for_text("memo.txt", original.decode())

        app.choose(*TRIM)
        self.wait_for_status("5件の行末スペースを削除しました")
        self.wait_for_text("memo.txt", TRIMMED)
        self.wait_for_title("memo.txt*")
        self.save(path, TRIMMED)

        app.choose("編集", "元に戻す")
        self.wait_for_title("memo.txt*")
        self.save(path, original)

        app.choose("編集", "やり直す")
        self.wait_for_title("memo.txt*")
        self.save(path, TRIMMED)

        app.press("ctrl+Home")
        app.type("abc")
        self.wait_for_title("memo.txt*")
        self.save(path, "abc" + TRIMMED)

        app.press("Return", "Delete")
        self.wait_for_title("memo.txt*")
        self.save(path, "abc\r\n" + TRIMMED.removeprefix("p"))

    def test_a_macro_that_mixes_line_ends_is_marked_and_one_click_makes_them_uniform(self):
        path = self.write("crlf.txt", "一\r\n二")
        app = self.start(path)

        def mark():
            return app.find("push button", lambda name: name.startswith("改行が混在しています"))

        app.choose("マクロ", "行末に文字を追加")
        self.answer("OK", "行末に追加する文字列を入力してください")
        self.wait_for_text("crlf.txt", "一\r,\n二,")
        app.press("Escape")  # Shows the counters again.
        app.click(until(mark, "the mark"))
        self.wait_for_text("crlf.txt", "一\r\n,\r\n二,")
        until(lambda: not mark(), "the end of the mark")
        app.press("ctrl+z", "ctrl+z")
        self.wait_for_text("crlf.txt", "一\r\n二")
        self.wait_for_title("crlf.txt")

    def test_undo_back_to_the_file_is_not_a_change(self):
        path = self.write("memo.txt", SAMPLE.read_bytes())
        app = self.start(path)
        app.choose(*TRIM)
        self.wait_for_title("memo.txt*")
        app.press("ctrl+z")
        self.wait_for_title("memo.txt")
        app.press("ctrl+q")
        self.assertEqual(app.wait_for_end(), 0)

    def test_a_macro_that_finds_nothing_changes_nothing(self):
        path = self.write("crlf.txt", "日本語  \r\n二行目\r\n")
        app = self.start(path)
        app.choose(*TRIM)
        self.wait_for_status("削除する行末スペースはありませんでした")
        self.wait_for_title("crlf.txt")


if __name__ == "__main__":
    journey.main()
