#!/usr/bin/python3
"""How a user comes to an English interface."""

import json

import journey
from driver import until


class English(journey.Journey):
    def menus(self):
        return [self.app.name(entry) for entry in self.app.menu_entries(self.app.menu_bar())]

    def wait_for_english(self):
        until(lambda: self.menus()[1:] == ["File", "Edit", "Macro", "Profile", "Help"], self.menus)

    def test_the_command_makes_everything_english_for_good(self):
        path = self.write("memo.txt", "one\r\ntwo\n")
        app = self.start(path)
        app.press("F1")
        app.wait_for("text", "コマンドパレット")
        app.type("use english")
        app.wait_for("list item", "英語の文言を使う (Use English)")
        app.press("Return")
        self.wait_for_english()
        app.wait_for("label", "Ln: 1 Col: 0")
        self.wait_for_keyboard("memo.txt")
        app.press("ctrl+f")
        app.wait_for("push button", "Find Next")
        app.press("ctrl+q")
        app.wait_for_end()

        app = self.start(path)
        self.wait_for_english()
        app.press("F1")
        app.wait_for("text", "Command Palette")
        app.type("use english")
        app.wait_for("list item", "Use English")

    def test_the_first_import_starts_where_the_profile_is(self):
        app = self.start()
        title = "UI文言プロファイル管理"
        app.choose("プロファイル", f"{title}…")
        until(lambda: title in app.windows(), title)
        app.focus_window(title)
        app.click(app.wait_for("push button", "インポート"))
        field = app.wait_for("text", "ファイル名:")
        until(lambda: app.has_state(field, "focused"), "the keyboard in the panel")
        app.type("english.json")
        app.press("Return")
        self.answer("OK", "プロファイルをインポートしました")
        app.wait_for("list item", "English")
        folder = self.session.home / ".local/share/penwick/ui-wording-profiles"
        profile = json.loads((folder / "english.json").read_text())
        self.assertEqual(profile["values"]["menu.file.new"], "New")


if __name__ == "__main__":
    journey.main()
