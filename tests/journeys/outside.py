#!/usr/bin/python3
"""Other programs change, replace and delete open files."""

import journey
from driver import until

CHANGED = "「memo.txt」は、ほかのプログラムによって変更されています。"
KEEP = "自分の編集を残す"
LOAD = "ファイルの内容を読み込む"


class Outside(journey.Journey):
    def leave_and_come_back(self, change):
        """Makes a change while another window has the focus, such as a terminal."""
        other = self.session.start("xmessage", "-title", "elsewhere", "elsewhere")
        self.app.wait_for_window("elsewhere")
        self.app.focus_window("elsewhere")
        # Qt ignores focus changes that are too short.
        window = self.app.find("frame")
        until(lambda: not self.app.has_state(window, "active"), "penwick to be left")
        change()
        other.terminate()
        other.wait()
        until(lambda: self.app.has_state(window, "active") or self.question(), "penwick again")

    def question(self):
        return self.app.find(name=CHANGED)

    def test_text_without_edits_follows_and_undo_goes_back(self):
        path = self.write("memo.txt", "一行目\n二行目\n")
        app = self.start(path)
        self.leave_and_come_back(lambda: path.write_text("一行目\n新しい二行目\n"))
        self.wait_for_text("memo.txt", "一行目\n新しい二行目\n")
        self.wait_for_title("memo.txt")
        self.wait_for_status("ほかのプログラムによる変更を読み込みました")
        app.press("ctrl+z")
        self.wait_for_text("memo.txt", "一行目\n二行目\n")
        self.wait_for_title("memo.txt*")
        self.save(path, "一行目\n二行目\n")

    def test_edited_text_asks_and_keeps_mine(self):
        path = self.write("memo.txt", "old")
        app = self.start(path)
        app.type("x")
        self.wait_for_title("memo.txt*")
        self.leave_and_come_back(lambda: path.write_text("theirs"))
        self.answer(KEEP, CHANGED)
        self.wait_for_text("memo.txt", "xold")
        self.save(path, "xold")

    def test_edited_text_asks_and_loads_theirs(self):
        path = self.write("memo.txt", "old")
        app = self.start(path)
        app.type("x")
        self.wait_for_title("memo.txt*")
        self.leave_and_come_back(lambda: path.write_text("theirs"))
        self.answer(LOAD, CHANGED)
        self.wait_for_text("memo.txt", "theirs")
        self.wait_for_title("memo.txt")
        app.focus_window("memo.txt")
        app.press("ctrl+z")
        self.wait_for_text("memo.txt", "xold")

    def test_saving_over_a_change_asks(self):
        path = self.write("memo.txt", "old")
        app = self.start(path)
        app.type("x")
        path.write_text("theirs")
        app.press("ctrl+s")
        self.answer("キャンセル", CHANGED)
        self.assertEqual(path.read_text(), "theirs")
        self.wait_for_title("memo.txt*")

    def test_tab_that_comes_forward_follows_its_file(self):
        first = self.write("first.txt", "first")
        path = self.write("memo.txt", "old")
        app = self.start(first, path)
        app.focus_window("memo.txt")
        app.click(self.tab("first.txt"))
        self.wait_for_title("first.txt")
        path.write_text("theirs")
        app.click(self.tab("memo.txt"))
        self.wait_for_title("memo.txt")
        self.wait_for_text("memo.txt", "theirs")

    def test_deleted_file_is_unsaved_and_comes_back(self):
        path = self.write("memo.txt", "old")
        self.start(path)
        self.leave_and_come_back(path.unlink)
        self.wait_for_title("memo.txt*")
        self.wait_for_status("ファイルが削除または移動されました。保存すると再び作られます")
        self.save(path, "old")

if __name__ == "__main__":
    journey.main()
