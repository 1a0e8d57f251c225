#!/usr/bin/python3
"""Nothing unsaved is lost: closing asks, and a failed save damages neither document nor file."""

import os
import shutil
import journey
from driver import Application, until

QUESTION = "「memo.txt」への変更を保存しますか？"


class Unsaved(journey.Journey):
    def start_with_change(self):
        path = self.write("memo.txt", "元の文\r\n")
        app = self.start(path)
        app.type("x")
        self.wait_for_title("memo.txt*")
        return app, path

    def test_close_and_save_writes_the_file(self):
        app, path = self.start_with_change()
        app.choose("ファイル", "閉じる")
        self.answer("保存", QUESTION)
        self.assertEqual(app.wait_for_end(), 0)
        self.assertEqual(path.read_bytes(), "x元の文\r\n".encode())

    def test_close_and_discard_leaves_the_file(self):
        app, path = self.start_with_change()
        app.press("ctrl+w")
        self.answer("保存しない", QUESTION)
        self.assertEqual(app.wait_for_end(), 0)
        self.assertEqual(path.read_bytes(), "元の文\r\n".encode())

    def test_close_and_cancel_keeps_the_window(self):
        app, path = self.start_with_change()
        app.press("ctrl+w")
        self.answer("キャンセル", QUESTION)
        self.wait_for_title("memo.txt*")
        self.assertEqual(path.read_bytes(), "元の文\r\n".encode())
        app.focus_window("memo.txt")
        app.type("y")
        self.save(path, "xy元の文\r\n")

    def test_quit_and_cancel_keeps_the_program(self):
        app, path = self.start_with_change()
        app.press("ctrl+q")
        self.answer("キャンセル", QUESTION)
        self.wait_for_title("memo.txt*")
        self.assertIsNone(app.process.poll())

    def test_failed_save_keeps_the_text_and_can_be_repeated(self):
        app, path = self.start_with_change()
        hidden = self.session.home / "hidden"
        shutil.move(self.files, hidden)
        app.press("ctrl+s")
        self.answer("OK", "ファイルを保存できませんでした")
        self.wait_for_title("memo.txt*")
        self.assertEqual((hidden / "memo.txt").read_bytes(), "元の文\r\n".encode())
        self.assertEqual([entry.name for entry in hidden.iterdir()], ["memo.txt"])

        shutil.move(hidden, self.files)
        app.focus_window("memo.txt")
        self.save(path, "x元の文\r\n")

    def test_limit_on_the_size_of_files_costs_no_text(self):
        content = "<p>行です。\n" * 100_000
        path = self.write("memo.txt", content)
        limited = ("sh", "-c", 'ulimit -f 100; exec "$0" "$@"', journey.PROGRAM, path)
        if os.geteuid() == 0:  # Root may raise any limit, and its script host would.
            limited = ("setpriv", "--bounding-set", "-sys_resource", *limited)
        app = self.app = Application(self.session, *limited)
        self.wait_for_title("memo.txt")
        app.focus_window("memo.txt")
        # A macro gets long texts through a memory file, to which the limit applies as well.
        app.choose("マクロ", "HTMLタグを除去")
        self.wait_for_status("HTMLタグを除去しました")
        self.wait_for_title("memo.txt*")
        app.press("ctrl+s")
        self.answer("OK", "ファイルを保存できませんでした")
        self.wait_for_title("memo.txt*")
        self.assertEqual(path.read_text(), content)

    def test_save_as_into_a_vanished_folder_leaves_the_old_file(self):
        app, path = self.start_with_change()
        app.press("ctrl+shift+s")
        until(lambda: app.find("dialog"), "the save dialog")
        app.press("ctrl+a")
        app.type(str(self.files / "nowhere" / "copy.txt"))
        app.press("Return")
        self.answer("OK")
        until(lambda: app.windows(), "a window")
        self.assertEqual(path.read_bytes(), "元の文\r\n".encode())
        self.assertFalse((self.files / "nowhere").exists())

    def test_save_as_writes_a_copy_and_goes_on_with_it(self):
        app, path = self.start_with_change()
        app.choose("ファイル", "別名で保存…")
        until(lambda: app.find("dialog"), "the save dialog")
        copy = self.files / "copy.txt"
        app.press("ctrl+a")
        app.type(str(copy))
        app.press("Return")
        self.wait_for_content(copy, "x元の文\r\n")
        self.wait_for_title("copy.txt")
        self.assertEqual(path.read_bytes(), "元の文\r\n".encode())


if __name__ == "__main__":
    journey.main()
