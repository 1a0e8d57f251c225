#!/usr/bin/python3
"""The window of the settings, by keys, and the file of the settings in a tab."""

import journey
from driver import until

TITLE = "設定"
SEARCH = "設定を検索"


class Settings(journey.Journey):
    def write_settings(self, lines):
        self.settings_file.parent.mkdir(parents=True)
        self.settings_file.write_text(f"[General]\n{lines}")

    def stored(self):
        return self.settings_file.read_text().splitlines()

    def open_settings(self):
        self.app.press("ctrl+comma")
        until(lambda: TITLE in self.app.windows(), "the settings")
        self.app.focus_window(TITLE)
        field = self.app.wait_for("text", SEARCH)
        until(lambda: self.app.has_state(field, "focused"), "the keyboard in the search field")

    def close_settings(self, key="Escape"):
        self.app.press(key)
        until(lambda: TITLE not in self.app.windows(), "the end of the settings")
        self.wait_for_keyboard("memo.txt")

    def go_to(self, words, role, name):
        """Finds a setting by words and goes to its control."""
        field = self.app.wait_for("text", SEARCH)
        self.app.click(field)
        self.app.press("ctrl+a", "Delete")
        self.app.type(words)
        control = self.app.wait_for(role, name)
        self.app.press("Return")
        until(lambda: self.app.has_state(control, "focused"), f"the keyboard in {name}")
        return control

    def wait_for_setting(self, line):
        until(lambda: line in self.stored(), lambda: f"{line} among {self.stored()}")

    def test_settings_act_at_once_and_are_kept(self):
        path = self.write("memo.txt", "")
        app = self.start(path)
        self.open_settings()
        width = self.go_to("tabwidth", "spin button", "タブの幅")
        app.press("ctrl+a")
        app.type("2")
        app.press("Return")
        self.wait_for_setting("tabWidth=2")
        self.assertEqual(app.description(width), "既定値: 4 桁")
        # The toolkit names a combo box by its choice.
        self.go_to("tabkeyinserts", "combo box", "タブ")
        app.press("Down")
        self.wait_for_setting("tabKeyInserts=spaces")
        keeps = self.go_to("keepindentation", "check box", "改行で字下げを引き継ぐ")
        app.press("space")
        until(lambda: app.has_state(keeps, "checked"), "the check")
        self.wait_for_setting("keepIndentation=true")
        self.session.screenshot(journey.PICTURES / "settings.png")
        self.close_settings()
        app.press("Tab")
        app.type("a")
        app.press("Return")
        app.type("b")
        self.wait_for_text("memo.txt", "  a\n  b")
        self.save(path, "  a\n  b")
        app.press("ctrl+q")
        app.wait_for_end()

        app = self.start(path)
        app.press("ctrl+End", "Return", "Tab")
        app.type("c")
        self.wait_for_text("memo.txt", "  a\n  b\n    c")
        self.open_settings()
        self.go_to("tabwidth", "spin button", "タブの幅")
        app.press("Tab", "space")  # The button back to the default.
        until(lambda: "tabWidth=2" not in self.stored(), "the default")
        self.close_settings("ctrl+w")
        app.press("Return", "Home", "Tab")
        self.wait_for_text("memo.txt", "  a\n  b\n    c\n        ")

    def test_all_go_back_to_their_defaults(self):
        self.write_settings("zoom=150\ntabWidth=eight\nrecovery=false\n")
        app = self.start(self.write("memo.txt", "text"))
        self.open_settings()
        app.wait_for("label", "設定ファイルの tabWidth の値は使えないため、既定値 (4 桁) で動いています")
        zoom = app.wait_for("spin button", "文字の拡大率")
        self.assertEqual(app.text_of(zoom), "150 %")
        app.click(app.wait_for("push button", "すべて既定値に戻す…"))
        self.answer("既定値に戻す", "すべての設定を既定値に戻しますか？")
        until(lambda: app.text_of(zoom) == "100 %", "the default zoom")
        lines = self.stored()
        for key in ("zoom", "tabWidth", "recovery"):
            self.assertFalse([line for line in lines if line.startswith(f"{key}=")], lines)
        self.close_settings()

    def test_the_file_is_edited_in_a_tab(self):
        self.write_settings("zoom=150\n")
        app = self.start(self.write("memo.txt", "text"))
        self.open_settings()
        app.click(app.wait_for("push button", "設定ファイルを開く"))
        self.wait_for_title("penwick.conf")
        app.focus_window("penwick.conf")
        self.wait_for_keyboard("penwick.conf")
        app.press("ctrl+h")
        app.wait_for("text", "置換")
        app.type("zoom=150")
        app.press("Tab")
        app.type("zoom=80")
        app.press("Return", "Escape", "ctrl+s")
        self.wait_for_setting("zoom=80")
        app.focus_window(TITLE)
        zoom = app.wait_for("spin button", "文字の拡大率")
        until(lambda: app.text_of(zoom) == "80 %", lambda: f"80 %, not {app.text_of(zoom)}")


if __name__ == "__main__":
    journey.main()
