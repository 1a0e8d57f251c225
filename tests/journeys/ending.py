#!/usr/bin/python3
"""Signals ask like quitting does, and the loss of the display loses no text that can be saved."""

import os
import signal
import time

import journey
from driver import Application, until

QUESTION = "「memo.txt」への変更を保存しますか？"


class Ending(journey.Journey):
    def start_with_change(self):
        path = self.write("memo.txt", "old")
        app = self.start(path)
        app.type("x")
        self.wait_for_title("memo.txt*")
        return app, path

    def hosts(self):
        """The script hosts of this penwick. They are its children while it runs."""
        found = []
        for entry in os.listdir("/proc"):
            try:
                if open(f"/proc/{entry}/comm").read().startswith("penwick-script"):
                    if os.path.samefile(f"/proc/{entry}/cwd", self.session.home):
                        found.append(int(entry))
            except OSError:
                continue
        return found

    def names(self):
        return sorted(entry.name for entry in self.files.iterdir())

    def test_each_signal_without_changes_ends_the_program(self):
        for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGINT):
            app = self.start(self.write("memo.txt", "old"))
            app.process.send_signal(number)
            self.assertEqual(app.wait_for_end(), 0)

    def test_signal_with_changes_asks(self):
        app, path = self.start_with_change()
        app.process.send_signal(signal.SIGTERM)
        self.answer("キャンセル", QUESTION)
        self.wait_for_title("memo.txt*")
        self.assertEqual(path.read_text(), "old")
        # After a cancelled question, a later signal asks again.
        app.process.send_signal(signal.SIGHUP)
        self.answer("保存", QUESTION)
        self.assertEqual(app.wait_for_end(), 0)
        self.assertEqual(path.read_text(), "xold")

    def test_second_signal_during_the_first_message_ends_the_program(self):
        app = Application(self.session, journey.PROGRAM, "/no/such/folder/memo.txt")
        app.wait_for("push button", "OK")
        app.process.send_signal(signal.SIGTERM)
        time.sleep(1)  # Two pending signals of one kind are one.
        app.process.send_signal(signal.SIGTERM)
        self.assertEqual(app.wait_for_end(), 128 + signal.SIGTERM)

    def test_second_signal_during_the_question_ends_without_saving(self):
        app, path = self.start_with_change()
        app.process.send_signal(signal.SIGTERM)
        app.wait_for(name=lambda text: QUESTION in text)
        app.process.send_signal(signal.SIGTERM)
        self.assertEqual(app.wait_for_end(), 128 + signal.SIGTERM)
        self.assertEqual(path.read_text(), "old")
        self.assertEqual(self.names(), ["memo.txt"])
        until(lambda: not self.hosts(), "the end of the script host")

    def test_lost_display_keeps_unsaved_texts(self):
        path = self.write("memo.txt", "old")
        path.chmod(0o644)
        app = self.start(path)
        app.type("x")
        self.wait_for_title("memo.txt*")
        app.press("ctrl+n")
        app.focus_window("名称未設定")
        app.type("untitled words")
        self.wait_for_title("名称未設定*")
        until(self.hosts, "the script host")
        self.session.lose_display()
        self.assertNotEqual(app.wait_for_end(), 0)
        self.assertEqual(path.read_text(), "old")
        kept = self.files / "memo.txt.unsaved"
        self.assertEqual(kept.read_text(), "xold")
        self.assertEqual(kept.stat().st_mode & 0o777, 0o600)
        untitled = self.session.home / "untitled.txt.unsaved"
        self.assertEqual(untitled.read_text(), "untitled words")
        self.assertEqual(self.names(), ["memo.txt", "memo.txt.unsaved"])
        said = app.output.read_text(errors="replace")
        self.assertIn(f"penwick: unsaved text is in {kept}", said)
        until(lambda: not self.hosts(), "the end of the script host")

    def test_lost_display_during_the_question_keeps_the_text(self):
        app, path = self.start_with_change()
        earlier = self.write("memo.txt.unsaved", "of an earlier time")
        app.press("ctrl+w")
        app.wait_for(name=lambda text: QUESTION in text)
        self.session.lose_display()
        self.assertNotEqual(app.wait_for_end(), 0)
        self.assertEqual(path.read_text(), "old")
        self.assertEqual(earlier.read_text(), "of an earlier time")
        self.assertEqual((self.files / "memo.txt.unsaved-2").read_text(), "xold")

    def test_lost_display_without_changes_leaves_nothing(self):
        app = self.start(self.write("memo.txt", "old"))
        self.session.lose_display()
        self.assertNotEqual(app.wait_for_end(), 0)
        self.assertEqual(self.names(), ["memo.txt"])

    def test_lost_display_during_a_save_finishes_it(self):
        path = self.write("memo.txt", "old" * 20_000_000)
        app = self.start(path)
        # The first page is shown while the rest is read, and takes no keys.
        until(lambda: app.has_state(app.wait_for("text", "memo.txt"), "editable"), "the whole text")
        app.type("x")
        self.wait_for_title("memo.txt*")
        app.press("ctrl+s")
        self.session.lose_display()
        self.assertNotEqual(app.wait_for_end(), 0)
        content = path.read_bytes()
        self.assertIn(content[:4], (b"xold", b"oldo"))
        self.assertIn(len(content), (60_000_000, 60_000_001))
        if content[:4] != b"xold":  # The key came too late, so the text is unsaved.
            self.assertEqual((self.files / "memo.txt.unsaved").stat().st_size, 60_000_001)
        self.assertFalse([name for name in self.names() if name.startswith(".")])


if __name__ == "__main__":
    journey.main()
