#!/usr/bin/python3
"""The menu bar and its shortcuts, as a screen reader reads them, with both built-in profiles."""

import journey

SEPARATOR = ("", "")
MACROS = [
    ("行末スペースを削除", ""),
    ("空行を削除", ""),
    ("行頭に文字を追加", ""),
    ("行末に文字を追加", ""),
    ("日付・時刻を挿入", ""),
    ("URLを抽出", ""),
    ("HTMLタグを除去", ""),
]
JAPANESE = {
    "penwick": [("penwick について", ""), SEPARATOR, ("penwick を終了", "Ctrl+Q")],
    "ファイル": [
        ("新規作成", "Ctrl+N"),
        ("開く…", "Ctrl+O"),
        SEPARATOR,
        ("閉じる", "Ctrl+W"),
        ("保存", "Ctrl+S"),
        ("別名で保存…", "Ctrl+Shift+S"),
    ],
    "編集": [
        ("元に戻す", "Ctrl+Z"),
        ("やり直す", "Ctrl+Shift+Z"),
        SEPARATOR,
        ("切り取り", "Ctrl+X"),
        ("コピー", "Ctrl+C"),
        ("貼り付け", "Ctrl+V"),
    ],
    "マクロ": [
        *MACROS,
        SEPARATOR,
        ("マクロ管理…", ""),
        SEPARATOR,
        ("テストマクロを実行（replaceAll）", ""),
        ("テストマクロを実行（replaceSelection）", ""),
    ],
    "プロファイル": [("UI文言プロファイル管理…", "")],
    "ヘルプ": [("アップデートを確認…", "")],
}
# The English profile renames seven menus and items; all others keep their Japanese text.
ENGLISH_TITLES = {
    "ファイル": "File",
    "編集": "Edit",
    "マクロ": "Macro",
    "プロファイル": "Profile",
    "ヘルプ": "Help",
}
ENGLISH = {ENGLISH_TITLES.get(title, title): list(items) for title, items in JAPANESE.items()}
ENGLISH["Profile"] = [("Manage UI Wording Profiles...", "")]


class Menus(journey.Journey):
    def menu_bar(self):
        app = self.app
        return {
            app.name(menu): [
                SEPARATOR if app.role(item) == "separator" else (app.name(item), app.shortcut(item))
                for item in app.menu_entries(menu)
            ]
            for menu in app.menu_entries(app.menu_bar())
        }

    def test_japanese_menu_bar(self):
        self.start()
        self.assertEqual(list(self.menu_bar()), list(JAPANESE))
        self.assertEqual(self.menu_bar(), JAPANESE)

    def test_english_menu_bar(self):
        self.use_profile("default-en")
        self.start()
        self.assertEqual(list(self.menu_bar()), list(ENGLISH))
        self.assertEqual(self.menu_bar(), ENGLISH)

    def test_update_item_is_off_where_nothing_can_update(self):
        self.start()
        item = self.app.menu_item("ヘルプ", "アップデートを確認…")
        self.assertFalse(self.app.has_state(item, "enabled"))

    def use_profile(self, profile):
        folder = self.session.home / ".config/penwick"
        folder.mkdir(parents=True)
        (folder / "penwick.conf").write_text(
            f"[General]\nactiveUIWordingProfileId={profile}\n"
        )


if __name__ == "__main__":
    journey.main()
