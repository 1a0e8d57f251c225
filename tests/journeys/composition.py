#!/usr/bin/python3
"""A real Japanese input method: no macro runs during a composition, which is committed
afterwards."""

import journey

REFUSAL = "日本語入力の変換を確定してからマクロを実行してください"


class Composing(journey.Journey):
    def compose(self):
        """Leaves a composition open that shows 日本語."""
        self.session.open_input_method()
        self.app.type("nihongo")
        # The first blank converts, the second one shows the candidates. After that the composition
        # has certainly reached the program.
        self.app.press("space", "space")
        self.app.wait_for_window("Fcitx5 Input Window")
        self.app.press("Up")

    def choose_over_the_bus(self, *path):
        """Chooses an item over the bus: a click on the menu would end the composition first."""
        item = self.app.menu_item(*path)
        self.app.do_action(item)


class Composition(Composing):
    input_method = "anthy"

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

        self.choose_over_the_bus("マクロ", "行末スペースを削除")
        self.wait_for_status(REFUSAL)
        self.wait_for_title("memo.txt")
        self.wait_for_text("memo.txt", before)
        self.assertEqual(path.read_bytes(), before.encode())

        app.press("Return")
        self.wait_for_title("memo.txt*")
        self.session.close_input_method()
        self.save(path, before + "日本語")

        # The composition is one undo step: the refused macro added no step.
        app.press("ctrl+z")
        self.wait_for_title("memo.txt*")
        self.save(path, before)

        self.choose_over_the_bus("マクロ", "行末スペースを削除")
        self.wait_for_status("1件の行末スペースを削除しました")
        self.save(path, "空白\n")

    def test_cancelled_composition_leaves_the_document_as_it_was(self):
        path = self.write("memo.txt", "そのまま")
        app = self.start(path)
        self.compose()
        # Closes the candidates, then the conversion, then the composition.
        app.press("Escape", "Escape", "Escape")
        # Uses the shortcut, which the program gets after the other keys. Closing the input method
        # from outside might commit the composition first.
        app.press("ctrl+space", "ctrl+End")
        app.type("x")
        self.wait_for_title("memo.txt*")
        self.save(path, "そのままx")

    def test_undo_during_a_composition_forgets_it(self):
        path = self.write("memo.txt", "")
        app = self.start(path)
        app.type("abc")
        self.wait_for_title("memo.txt*")
        self.compose()
        self.choose_over_the_bus("編集", "元に戻す")
        self.wait_for_text("memo.txt", "")
        app.press("ctrl+space")
        app.type("x")
        # The discarded composition must not return in any way.
        self.wait_for_text("memo.txt", "x")


class Mozc(Composing):
    input_method = "mozc"
    needs_plain_user = True

    def test_conversion_over_a_selection_is_one_step(self):
        path = self.write("memo.txt", "始め終わり")
        app = self.start(path)
        app.press("ctrl+Home", "shift+Right", "shift+Right")
        self.compose()
        app.press("Return")
        self.wait_for_text("memo.txt", "日本語終わり")
        self.session.close_input_method()
        app.press("ctrl+z")
        self.wait_for_text("memo.txt", "始め終わり")
        self.wait_for_title("memo.txt")

    def test_click_elsewhere_ends_the_composition(self):
        far = "\n" * 15  # Below the candidate window.
        path = self.write("memo.txt", f"始め{far}終わり\n")
        app = self.start(path)
        app.press("ctrl+Home")
        self.compose()
        editor = app.wait_for("text", "memo.txt")
        box = app.text_interface(editor).character_extents(2 + len(far) + 1)
        self.session.run("xdotool", "mousemove", box.x + 1, box.y + box.height // 2, "click", 1)
        self.session.close_input_method()
        app.type("x")
        # The composition is committed where it began, and typing continues at the click.
        self.wait_for_text("memo.txt", f"日本語始め{far}終xわり\n")


if __name__ == "__main__":
    journey.main()
