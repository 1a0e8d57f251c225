#!/usr/bin/python3
"""Finding and replacing by keyboard: the messages of the bar, and the content of the file
afterwards."""

import journey
from driver import until

TEXT = "猫 cat\r\nCat 猫\rcategory\u2028終わり"


class Find(journey.Journey):
    def start_with_bar(self, keys="ctrl+f"):
        path = self.write("memo.txt", TEXT)
        app = self.start(path)
        editor = app.wait_for("text", "memo.txt")
        until(lambda: app.has_state(editor, "focused"), "the keyboard to be in the text")
        app.press(keys)
        app.wait_for("text", "検索")
        return app, path

    def test_steps_go_forward_and_back_and_around(self):
        app, path = self.start_with_bar()
        app.type("cat")
        app.wait_for("label", "1 / 3")
        app.press("Return")
        app.wait_for("label", "2 / 3")
        app.press("shift+Return")
        app.wait_for("label", "1 / 3")
        app.press("shift+F3")
        app.wait_for("label", "↻ 3 / 3")
        app.press("ctrl+g")
        app.wait_for("label", "↻ 1 / 3")
        app.press("Escape")
        until(lambda: not app.find("text", "検索"), "the bar to close")
        app.press("F3")
        app.type("dog")  # Replaces the match, because the text has the focus again.
        self.save(path, TEXT.replace("Cat", "dog"))

    def test_replace_all_is_one_step_and_keeps_every_other_byte(self):
        app, path = self.start_with_bar("ctrl+h")
        app.type("cat")
        app.wait_for("label", "1 / 3")
        app.press("Tab")
        app.type("dog")
        self.wait_for_text("置換", "dog")
        app.click(app.wait_for("push button", "すべて置換"))
        app.wait_for("label", "3 件を置換しました")
        app.press("Escape")
        replaced = TEXT.replace("cat", "dog").replace("Cat", "dog")
        self.save(path, replaced)
        app.press("ctrl+z")
        self.save(path, TEXT)

    def test_a_faulty_expression_is_reported_in_the_bar(self):
        app, _ = self.start_with_bar()
        app.click(app.wait_for(name="正規表現"))
        app.type("(cat")
        app.wait_for("label", lambda text: text.startswith("正規表現の 5 文字目に誤りがあります"))
        app.type("|end)")
        app.wait_for("label", "1 / 3")

    def test_quitting_during_a_search_ends_the_program(self):
        path = self.write("prose.txt", "The quick brown fox jumps over the lazy dog\n" * 30_000)
        app = self.start(path)
        editor = app.wait_for("text", "prose.txt")
        until(lambda: app.has_state(editor, "focused"), "the keyboard to be in the text")
        app.press("ctrl+f")
        app.click(app.wait_for(name="正規表現"))
        app.type("(.|\\n)*zzz")  # Backtracks for seconds.
        app.press("ctrl+q")
        self.assertEqual(app.wait_for_end(), 0)


if __name__ == "__main__":
    journey.main()
