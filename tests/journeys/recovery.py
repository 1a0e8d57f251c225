#!/usr/bin/python3
"""What was typed before a sudden end is offered at the next start, and no file changes meanwhile."""

import signal

import journey
from composition import Composing
from driver import until

TITLE = "保存されていないテキスト"


class Killed(journey.Journey):
    def copies(self):
        return sorted((self.session.home / ".local/state/penwick/recovery").glob("*/*.copy"))

    def kill_with_copies(self, app, count=1):
        """Kills penwick once it has a copy of each of its `count` edited texts."""
        until(lambda: len(self.copies()) == count, lambda: f"{count} copies: {self.copies()}")
        app.process.send_signal(signal.SIGKILL)
        app.wait_for_end()

    def killed_with_change(self):
        """The file of a penwick that was killed after "new " was typed into it."""
        memo = self.write("memo.txt", "古い\n")
        app = self.start(memo)
        app.type("new ")
        self.wait_for_title("memo.txt*")
        self.kill_with_copies(app)
        return memo

    def press_button(self, label):
        self.app.focus_window(TITLE)
        self.app.click(self.app.wait_for("push button", label))

    def wait_for_nothing_left(self):
        until(lambda: not self.copies(), lambda: f"no copies: {self.copies()}")

    def start_after_kill(self, *files):
        app = self.start(*files)
        app.wait_for_window(TITLE)
        return app


class Recovery(Killed):
    def test_killed_with_two_texts_offers_both(self):
        memo = self.write("memo.txt", "古い\n")
        app = self.start(memo)
        app.type("new ")
        self.wait_for_title("memo.txt*")
        app.press("ctrl+n")
        app.type("untitled words")
        self.wait_for_title("名称未設定*")
        self.kill_with_copies(app, 2)
        self.assertEqual(memo.read_text(), "古い\n")

        app = self.start_after_kill()
        self.assertEqual([path.name for path in self.files.iterdir()], ["memo.txt"])
        app.wait_for(name="memo.txt", role="table cell")
        app.wait_for(name="名称未設定", role="table cell")
        app.focus_window(TITLE)
        app.press("ctrl+a", "Return")
        self.wait_for_text("名称未設定", "untitled words")
        app.click(self.tab("memo.txt"))
        self.wait_for_text("memo.txt", "new 古い\n")
        self.assertEqual(memo.read_text(), "古い\n")

    def test_opened_text_is_kept_until_it_is_saved(self):
        memo = self.killed_with_change()
        app = self.start_after_kill()
        self.press_button("開く")
        self.wait_for_text("memo.txt", "new 古い\n")
        self.kill_with_copies(app)
        app = self.start_after_kill()
        self.press_button("開く")
        self.wait_for_title("memo.txt*")
        app.focus_window("memo.txt")
        app.press("ctrl+s")
        self.wait_for_content(memo, "new 古い\n")
        self.wait_for_nothing_left()
        app.press("ctrl+q")
        self.assertEqual(app.wait_for_end(), 0)
        self.assertFalse((self.session.home / ".local/state/penwick").exists())

    def test_changed_file_is_not_opened_over(self):
        memo = self.killed_with_change()
        memo.write_text("changed since\n")
        app = self.start_after_kill()
        self.press_button("開く")
        self.wait_for_text("名称未設定", "new 古い\n")
        self.wait_for_title("名称未設定*")
        app.focus_window("名称未設定")
        app.press("ctrl+s")
        app.wait_for_window("保存")
        app.press("Return")
        self.wait_for_content(self.files / "memo-復元.txt", "new 古い\n")
        self.assertEqual(memo.read_text(), "changed since\n")

    def test_comparison_shows_what_differs(self):
        memo = self.killed_with_change()
        app = self.start_after_kill()
        self.press_button("ファイルと比べる")
        shown = app.wait_for("text", "「memo.txt」との違い")
        until(lambda: "\n-古い\n+new 古い" in app.text_of(shown), lambda: app.text_of(shown))
        self.assertEqual(memo.read_text(), "古い\n")
        self.assertEqual(len(self.copies()), 1)

    def test_text_is_saved_elsewhere(self):
        memo = self.killed_with_change()
        app = self.start_after_kill()
        self.press_button("別の場所に保存…")
        app.wait_for_window("保存")
        app.press("Return")
        self.wait_for_content(self.files / "memo-復元.txt", "new 古い\n")
        self.wait_for_nothing_left()
        self.assertEqual(memo.read_text(), "古い\n")

    def test_text_is_discarded_after_a_question(self):
        self.killed_with_change()
        app = self.start_after_kill()
        self.press_button("破棄")
        self.answer("キャンセル", "破棄します")
        self.assertEqual(len(self.copies()), 1)
        self.press_button("破棄")
        self.answer("削除", "破棄します")
        self.wait_for_nothing_left()
        app.focus_window("名称未設定")
        app.press("ctrl+q")
        self.assertEqual(app.wait_for_end(), 0)
        self.assertFalse((self.session.home / ".local/state/penwick").exists())

    def test_text_decided_later_is_offered_again(self):
        self.killed_with_change()
        app = self.start_after_kill()
        self.press_button("あとで決める")
        app.focus_window("名称未設定")
        app.press("ctrl+q")
        self.assertEqual(app.wait_for_end(), 0)
        self.start_after_kill()

    def test_living_process_keeps_its_texts(self):
        memo = self.write("memo.txt", "古い\n")
        first = self.start(memo)
        first.type("new ")
        self.wait_for_title("memo.txt*")
        until(self.copies, "the copy")
        # Another runtime folder: the second start does not find the first process.
        runtime = self.session.home / "second"
        runtime.mkdir(mode=0o700)
        second = self.start(environment={"XDG_RUNTIME_DIR": str(runtime)})
        second.type("word")
        until(lambda: len(self.copies()) == 2, "the second copy")
        self.assertNotIn(TITLE, second.windows())
        second.press("ctrl+z", "ctrl+q")
        self.assertEqual(second.wait_for_end(), 0)
        self.assertEqual(len(self.copies()), 1)

    def test_copy_that_cannot_be_written_is_reported(self):
        state = self.session.home / ".local/state"
        state.mkdir(parents=True, exist_ok=True)
        (state / "penwick").write_text("a file where the folder should be")
        app = self.start(self.write("memo.txt", "古い\n"))
        app.type("new ")
        self.wait_for_status("保存していないテキストの控えを書き込めません。こまめに保存してください")

    def test_setting_switches_it_off(self):
        folder = self.session.home / ".config/penwick"
        folder.mkdir(parents=True)
        (folder / "penwick.conf").write_text("recovery=false\n")
        app = self.start(self.write("memo.txt", "古い\n"))
        app.type("new ")
        self.wait_for_title("memo.txt*")
        app.process.send_signal(signal.SIGTERM)
        self.answer("保存しない")
        self.assertEqual(app.wait_for_end(), 0)
        self.assertFalse((self.session.home / ".local/state/penwick").exists())


class JapaneseRecovery(Killed, Composing):
    input_method = "anthy"

    def test_committed_japanese_is_offered(self):
        memo = self.write("memo.txt", "始め\n")
        app = self.start(memo)
        app.press("ctrl+End")
        self.compose()
        app.press("Return")
        self.wait_for_title("memo.txt*")
        self.kill_with_copies(app)
        self.start_after_kill()
        self.press_button("開く")
        self.wait_for_text("memo.txt", "始め\n日本語")
        self.assertEqual(memo.read_text(), "始め\n")


if __name__ == "__main__":
    journey.main()
