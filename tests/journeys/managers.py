#!/usr/bin/python3
"""The two manager windows with real file panels: macros and wording profiles are exported and
imported."""

import json

import journey
from driver import until


class Managers(journey.Journey):
    def macros(self):
        return json.loads((self.session.home / ".local/share/penwick/macros.json").read_text())

    def open_macro_manager(self):
        self.app.choose("マクロ", "マクロ管理…")
        until(lambda: "マクロ管理" in self.app.windows(), "the macro manager")
        self.app.focus_window("マクロ管理")

    def open_profile_manager(self):
        self.app.choose("プロファイル", "UI文言プロファイル管理…")
        until(lambda: "UI文言プロファイル管理" in self.app.windows(), "the profile manager")
        self.app.focus_window("UI文言プロファイル管理")

    def choose_row(self, name):
        self.app.click(self.app.wait_for("list item", name))

    def press_button(self, name):
        self.app.click(self.app.wait_for("push button", name))

    def fill_panel(self, path):
        """Types a path into the open file panel."""
        until(lambda: self.app.find("file chooser") or self.app.find("dialog"), "the file panel")
        self.app.press("ctrl+a")
        self.app.type(str(path))
        self.app.press("Return")

    def test_macro_is_exported_and_imported(self):
        app = self.start()
        self.open_macro_manager()
        self.choose_row("空行を削除, 組み込み")
        self.press_button("エクスポート…")
        file = self.files / "exported.json"
        self.fill_panel(file)
        self.answer("OK", "エクスポートしました")
        exported = json.loads(file.read_text())
        self.assertEqual(exported["id"], "default_removeEmptyLines")
        self.assertTrue(exported["code"].startswith("// penwick:macro\n// name: 空行を削除\n"))

        app.focus_window("マクロ管理")
        self.press_button("インポート…")
        self.fill_panel(file)
        self.answer("OK", "マクロをインポートしました")
        app.wait_for("list item", "空行を削除 のコピー, インポート")
        imported = self.macros()[-1]
        self.assertEqual(imported["source"], "imported")
        self.assertEqual(imported["code"], self.macros()[1]["code"])

    def test_new_macro_is_written_saved_and_run(self):
        app = self.start(self.write("memo.txt", "abc\n"))
        self.open_macro_manager()
        self.press_button("追加")
        name = app.wait_for("text", "マクロ名")
        app.click(name)
        app.press("ctrl+a")
        app.type("upper")
        app.click(app.wait_for("text", "JavaScript コード"))
        app.press("ctrl+a", "Delete")
        app.type("return { textEdits: [{ type: 'replaceAll', text: context.document.text.toUpperCase() }] };")
        self.press_button("テスト実行")
        self.wait_for_text("memo.txt", "ABC\n")
        app.press("ctrl+s")
        app.wait_for("list item", "upper, ユーザー")
        until(lambda: self.macros()[-1]["name"] == "upper", "the macro in the file")
        app.press("ctrl+w")
        until(lambda: "マクロ管理" not in app.windows(), "the window to close")
        app.focus_window("memo.txt")
        app.press("ctrl+z")
        self.wait_for_text("memo.txt", "abc\n")
        app.choose("マクロ", "upper")
        self.wait_for_text("memo.txt", "ABC\n")

    def test_macro_switched_off_leaves_the_menu(self):
        app = self.start()
        self.open_macro_manager()
        self.choose_row("行末スペースを削除, 組み込み")
        app.press("space")
        until(lambda: self.macros()[0]["isEnabled"] is False, "the switch in the file")
        app.focus_window("名称未設定")
        menu = app.menu_item("マクロ")
        until(
            lambda: "行末スペースを削除" not in [app.name(e) for e in app.menu_entries(menu)],
            "the macro to leave the menu",
        )

    def test_profile_is_duplicated_exported_imported_and_applied(self):
        app = self.start()
        self.open_profile_manager()
        self.choose_row("English (Built-in), 組み込み")
        self.press_button("複製")
        app.wait_for("list item", "English (Built-in) のコピー")
        self.press_button("エクスポート")
        file = self.files / "profile.json"
        self.fill_panel(file)
        self.answer("OK", "エクスポートしました")
        profile = json.loads(file.read_text())
        profile["name"] = "Mine"
        profile["values"]["profile.manageWindowTitle"] = "My Profiles"
        file.write_text(json.dumps(profile))

        app.focus_window("UI文言プロファイル管理")
        self.press_button("インポート")
        self.fill_panel(file)
        self.answer("OK", "プロファイルをインポートしました")
        app.wait_for("list item", "Mine")
        app.focus_window("UI文言プロファイル管理")
        self.press_button("このプロファイルを適用")
        self.answer("OK")
        until(lambda: "My Profiles" in app.windows(), "the new title")
        app.wait_for("list item", "Mine, 適用中")
        self.assertEqual([app.name(m) for m in app.menu_entries(app.menu_bar())][1], "File")


if __name__ == "__main__":
    journey.main()
