#!/usr/bin/python3
"""Macros that ask for input before they run."""

import datetime
import zoneinfo

import journey

PREFIX = ("マクロ", "行頭に文字を追加")
DATE = ("マクロ", "日付・時刻を挿入")
TOKYO = zoneinfo.ZoneInfo("Asia/Tokyo")


class Prompts(journey.Journey):
    def start_with(self, content):
        path = self.write("memo.txt", content)
        self.start(path)
        return path

    def open_prompt(self, macro, message):
        self.app.choose(*macro)
        self.app.wait_for("label", message)

    def open_prefix_prompt(self):
        self.open_prompt(PREFIX, "行頭に追加する文字列を入力してください：")

    def test_offered_prefix_is_taken_as_it_is(self):
        path = self.start_with("a\r\n\nb")
        self.open_prefix_prompt()
        self.answer("OK")
        self.wait_for_status("3行の行頭に文字を追加しました")
        self.save(path, "- a\r\n- \n- b")

    def test_two_spaces_are_a_prefix(self):
        path = self.start_with("a\nb")
        self.open_prefix_prompt()
        self.app.press("ctrl+a")
        self.app.type("  ")
        self.app.press("Return")
        self.wait_for_status("2行の行頭に文字を追加しました")
        self.save(path, "  a\n  b")

    def test_empty_prefix_runs_nothing(self):
        path = self.start_with("a\nb")
        self.open_prefix_prompt()
        self.app.press("ctrl+a", "Delete", "Return")
        self.wait_for_status("文字列が指定されなかったため、実行を中止しました")
        self.wait_for_title(path.name)

    def test_cancelled_prefix_runs_nothing(self):
        path = self.start_with("a\nb")
        self.open_prefix_prompt()
        self.answer("キャンセル")
        self.wait_for_status("キャンセルしました")
        self.wait_for_title(path.name)

    def test_offered_date_form_is_inserted(self):
        path = self.start_with("日時: ")
        self.app.press("ctrl+End")
        self.open_prompt(DATE, "挿入する日付の形式を選択してください：")
        earliest = datetime.datetime.now(TOKYO)
        self.answer("OK")
        self.wait_for_status("日付・時刻を挿入しました")
        latest = datetime.datetime.now(TOKYO)
        self.app.press("ctrl+s")
        self.wait_for_title(path.name)
        # The minute may change between the two readings of the clock.
        form = "日時: %Y-%m-%d %H:%M"
        self.assertIn(path.read_text(), {earliest.strftime(form), latest.strftime(form)})

    def test_japanese_date_form_has_no_leading_zeros(self):
        path = self.start_with("")
        self.open_prompt(DATE, "挿入する日付の形式を選択してください：")
        earliest = datetime.datetime.now(TOKYO)
        self.app.press("End", "Return")
        self.wait_for_status("日付・時刻を挿入しました")
        latest = datetime.datetime.now(TOKYO)
        self.app.press("ctrl+s")
        self.wait_for_title(path.name)
        wanted = {f"{day.year}年{day.month}月{day.day}日" for day in (earliest, latest)}
        self.assertIn(path.read_text(), wanted)

    def test_cancelled_date_runs_nothing(self):
        path = self.start_with("a")
        self.open_prompt(DATE, "挿入する日付の形式を選択してください：")
        self.app.press("Escape")
        self.wait_for_status("キャンセルしました")
        self.wait_for_title(path.name)


if __name__ == "__main__":
    journey.main()
