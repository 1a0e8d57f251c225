#!/usr/bin/python3
"""The palette, going to a line, running the last macro again, and keys of macros."""

import journey
from driver import until


class Palette(journey.Journey):
    def open_palette(self, *keys):
        self.app.press(*keys)
        field = self.app.wait_for("text", "コマンドパレット")
        until(lambda: self.app.has_state(field, "focused"), "the keyboard in the palette")
        return field

    def rows(self):
        """What a screen reader reads of the rows."""
        listed = self.app.find("list", "候補")
        return [self.app.name(row) for row in self.app.children(listed)] if listed else []

    def wait_for_rows(self, *starts):
        """Waits until the first rows start with these texts."""
        until(
            lambda: [row[: len(start)] for row, start in zip(self.rows(), starts)] == list(starts),
            lambda: f"{starts} first among {self.rows()}",
        )

    def wait_for_no_palette(self):
        until(lambda: not self.app.find("text", "コマンドパレット"), "the end of the palette")

    def test_a_typed_command_is_run(self):
        path = self.write("memo.txt", "one two\n")
        app = self.start(path)
        self.open_palette("ctrl+shift+p")
        self.wait_for_rows("新規作成, Ctrl+N")
        app.type("select edit")
        self.wait_for_rows("すべてを選択, Ctrl+A")
        app.press("Return")
        self.wait_for_no_palette()
        self.wait_for_keyboard("memo.txt")
        app.type("x")
        self.wait_for_text("memo.txt", "x")
        self.open_palette("F1")
        self.wait_for_rows("すべてを選択")  # It was chosen last.
        app.type("undo")
        self.wait_for_rows("元に戻す, Ctrl+Z")
        app.press("Return")
        self.wait_for_text("memo.txt", "one two\n")

    def test_escape_leaves_everything_and_the_current_row_is_announced(self):
        app = self.start(self.write("memo.txt", "one two\n"))
        app.press("ctrl+Right", "shift+End")
        self.open_palette("F1")
        with app.events("object:state-changed:focused") as events:
            app.press("Down")
            events.wait_for("object:state-changed:focused", 1)
        listed = app.find("list", "候補")
        second = app.children(listed)[1]
        self.assertTrue(app.has_state(second, "focused"), app.name(second))
        app.press("Escape")
        self.wait_for_no_palette()
        self.wait_for_keyboard("memo.txt")
        app.type("!")  # Replaces what was selected before.
        self.wait_for_text("memo.txt", "one !\n")

    def test_a_row_is_clicked(self):
        app = self.start(self.write("one.txt", "1"), self.write("two.txt", "2"))
        self.open_palette("F1")
        app.type("one")
        self.wait_for_rows("one.txt, タブ")
        app.click(app.children(app.find("list", "候補"))[0])
        self.wait_for_title("one.txt")
        self.wait_for_keyboard("one.txt")

    def test_lines_and_headings_are_gone_to(self):
        app = self.start(self.write("memo.txt", "■ 一\nabc\n## 二\n" + "x\n" * 300))
        self.open_palette("ctrl+l")
        app.type("2:3")
        self.wait_for_rows("2 行 3 文字目へ移動")
        app.press("Return")
        self.wait_for_keyboard("memo.txt")
        app.type("!")
        self.wait_for_text("memo.txt", "■ 一\nab!c\n## 二\n" + "x\n" * 300)
        self.open_palette("ctrl+l")
        app.type("999")
        app.press("Return")
        self.wait_for_status("999 行目はありません。テキストの末尾へ移動しました")
        self.wait_for_keyboard("memo.txt")
        self.open_palette("F1")
        app.type("@")
        self.wait_for_rows("■ 一, 1 行", "## 二, 3 行")
        app.press("Down", "Return")
        self.wait_for_keyboard("memo.txt")
        app.press("shift+End")
        app.type("#")
        self.wait_for_text("memo.txt", "■ 一\nab!c\n#\n" + "x\n" * 300)

    def test_the_last_macro_runs_again_with_its_input(self):
        app = self.start(self.write("memo.txt", "a"))
        self.open_palette("F1")
        app.type("prefix line")
        self.wait_for_rows("行頭に文字を追加, 組み込み")
        app.press("Return")
        app.wait_for("label", "行頭に追加する文字列を入力してください：")
        app.type("* ")
        app.press("Return")
        self.wait_for_text("memo.txt", "* a")
        self.wait_for_keyboard("memo.txt")
        app.press("ctrl+shift+r")
        app.wait_for("label", "行頭に追加する文字列を入力してください：")
        app.press("Return")  # The last input is in the field.
        self.wait_for_text("memo.txt", "* * a")

    def test_a_macro_gets_a_key(self):
        app = self.start(self.write("memo.txt", "a  \nb"))
        app.choose("マクロ", "マクロ管理…")
        until(lambda: "マクロ管理" in app.windows(), "the macro manager")
        app.focus_window("マクロ管理")
        app.click(app.wait_for("list item", "行末スペースを削除, 組み込み"))
        field = app.wait_for("text", "キー")
        app.click(field)
        until(lambda: app.has_state(field, "focused"), "the keyboard in the field")
        app.press("ctrl+s")
        app.wait_for("label", "Ctrl+S: 「保存」が使うキーです")
        app.press("ctrl+shift+a")
        app.wait_for("label", "Ctrl+Shift+A: 「選択を解除」が使うキーです")
        app.press("ctrl+F7")
        until(lambda: app.text_of(field) == "Ctrl+F7", "the key in the field")
        settings = self.settings_file
        self.assertIn("[macroKeys]\ndefault_trimTrailingSpaces=Ctrl+F7\n", settings.read_text())
        app.press("Tab", "ctrl+w")  # The field would take the key.
        until(lambda: "マクロ管理" not in app.windows(), "the end of the manager")
        app.focus_window("memo.txt")
        self.wait_for_keyboard("memo.txt")
        app.press("ctrl+F7")
        self.wait_for_text("memo.txt", "a\nb")
        self.open_palette("F1")
        app.type("trim")
        until(lambda: any(row.endswith("Ctrl+F7") for row in self.rows()), lambda: self.rows())
        app.press("Escape")

    def test_a_recent_file_and_a_key_are_chosen_from_an_empty_window(self):
        app = self.start(self.write("memo.txt", "a  \nb"))
        app.press("ctrl+q")
        app.wait_for_end()
        app = self.start()
        editor = app.wait_for("text", "名称未設定")
        until(
            lambda: app.description(editor)
            == "Ctrl+Shift+P: コマンド, Ctrl+O: ファイルを開く, 前のファイル: memo.txt",
            lambda: f"the hint in {app.description(editor)}",
        )
        self.assertEqual(app.text_of(editor), "")
        self.open_palette("F1")
        self.wait_for_rows("memo.txt, 最近のファイル", "新規作成, Ctrl+N")
        app.press("Return")
        self.wait_for_title("memo.txt")
        self.wait_for_keyboard("memo.txt")
        self.open_palette("F1")
        app.type("trim spaces")
        self.wait_for_rows("行末スペースを削除, 組み込み")
        app.press("ctrl+k")
        field = app.wait_for("text", "「行末スペースを削除」のキー")
        until(lambda: app.has_state(field, "focused"), "the keyboard in the field")
        app.press("ctrl+s")
        app.wait_for("label", "Ctrl+S: 「保存」が使うキーです")
        app.press("ctrl+F7")
        until(lambda: self.rows()[0].endswith(", Ctrl+F7"), lambda: self.rows())
        app.press("Escape")
        self.wait_for_keyboard("memo.txt")
        app.press("ctrl+F7")
        self.wait_for_text("memo.txt", "a\nb")


if __name__ == "__main__":
    journey.main()
