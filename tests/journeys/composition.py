#!/usr/bin/python3
"""A real Japanese input method: a composition keeps macros out and is committed afterwards."""

import journey

REFUSAL = "日本語入力の変換を確定してからマクロを実行してください"


class Composition(journey.Journey):
    input_method = True

    def compose(self):
        """Leaves a composition open that shows 日本語."""
        self.session.open_input_method()
        self.app.type("nihongo")
        # The first blank converts, the second one shows the other candidates: a composition that
        # is sure to have reached the program.
        self.app.press("space", "space")
        self.app.wait_for_window("Fcitx5 Input Window")
        self.app.press("Up")

    def choose_macro(self, *path):
        """Picks an item over the bus: a click on the menu would end the composition first."""
        item = self.app.menu_item(*path)
        self.app.do_action(item)

    def test_conversion_is_committed_as_text(self):
        path = self.write("memo.txt", "始め\r\n")
        app = self.start(path)
        app.press("ctrl+End")
        self.compose()
        app.press("Return")
        self.wait_for_title("memo.txt*")
        self.session.close_input_method()
        app.type("!")
        self.save(path, "始め\r\n日本語!")

    def test_macro_during_composition_is_refused_and_changes_nothing(self):
        before = "空白  \n"
        path = self.write("memo.txt", before)
        app = self.start(path)
        app.press("ctrl+End")
        self.compose()

        self.choose_macro("マクロ", "行末スペースを削除")
        self.wait_for_status(REFUSAL)
        self.wait_for_title("memo.txt")
        self.wait_for_text("memo.txt", before)
        self.assertEqual(path.read_bytes(), before.encode())

        app.press("Return")
        self.wait_for_title("memo.txt*")
        self.session.close_input_method()
        self.save(path, before + "日本語")

        # What was composed is one step: the refused macro left nothing in the undo stack.
        app.press("ctrl+z")
        self.wait_for_title("memo.txt*")
        self.save(path, before)

        self.choose_macro("マクロ", "行末スペースを削除")
        self.wait_for_status("1件の行末スペースを削除しました")
        self.save(path, "空白\n")

    def test_cancelled_composition_leaves_the_document_as_it_was(self):
        path = self.write("memo.txt", "そのまま")
        app = self.start(path)
        self.compose()
        # Out of the candidates, out of the conversion, out of the composition.
        app.press("Escape", "Escape", "Escape")
        # By its key, which stays behind the others: closed from outside, it might commit first.
        app.press("ctrl+space", "ctrl+End")
        app.type("x")
        self.wait_for_title("memo.txt*")
        self.save(path, "そのままx")


if __name__ == "__main__":
    journey.main()
