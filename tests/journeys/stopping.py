#!/usr/bin/python3
"""An endless macro can be stopped. Whatever it does, the document and the program are as before,
and no process remains."""

import json
import os
import pathlib
import re
import signal
import subprocess

import journey
from driver import until

ENDLESS = "終わらないマクロ"
SLOW = "遅いマクロ"
SLOWER = "もっと遅いマクロ"


def appends_after(milliseconds):
    return (
        f"const end = Date.now() + {milliseconds}; while (Date.now() < end) ;"
        "return {textEdits: [{type: 'insertAtCursor', text: '!'}]};"
    )


MACROS = {ENDLESS: "while (true) ;", SLOW: appends_after(300), SLOWER: appends_after(4000)}
MESSAGE = f"マクロ「{ENDLESS}」を実行しています。"
STOPPED = "マクロの実行を停止しました"


def hosts_of(editor):
    """The process ids of the script hosts that this editor has started and that run."""
    found = subprocess.run(
        ["pgrep", "-P", str(editor.pid), "-x", "penwick-script-"], stdout=subprocess.PIPE, text=True
    )
    return {int(line) for line in found.stdout.split()}


def seconds_in(label):
    """The seconds that the notice shows in this label; 0 for any other label."""
    shown = re.fullmatch("経過時間: ([0-9]+) 秒", label)
    return int(shown[1]) if shown else 0


def state_of(process):
    try:
        return pathlib.Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()[0]
    except FileNotFoundError:
        return None


class Stopping(journey.Journey):
    def start_with_macros(self):
        folder = self.session.home / ".local/share/penwick"
        folder.mkdir(parents=True)
        (folder / "macros.json").write_text(
            json.dumps(
                [
                    {
                        "id": f"00000000-0000-0000-0000-00000000000{index}",
                        "name": name,
                        "description": "",
                        "code": code,
                        "isEnabled": True,
                        "source": "user",
                        "version": "1.0",
                        "createdAt": "2024-02-29T00:00:00Z",
                        "updatedAt": "2024-02-29T00:00:00Z",
                        "sortOrder": index,
                        "category": "",
                        "helpURL": "",
                    }
                    for index, (name, code) in enumerate(MACROS.items())
                ]
            )
        )
        self.seen_hosts = set()
        self.path = self.write("memo.txt", "元の文\r\n")
        self.app = self.start(self.path)
        self.app.type("x")
        self.wait_for_title("memo.txt*")
        return self.app

    def own_hosts(self):
        # Those seen before count even after the editor has ended. Hosts of other editors do not: other
        # tests may be running.
        self.seen_hosts |= hosts_of(self.app.process)
        return {process for process in self.seen_hosts if state_of(process) not in (None, "Z")}

    def start_endless(self, app):
        app.choose("マクロ", ENDLESS)
        app.wait_for("label", MESSAGE)

    def test_escape_stops_and_editing_goes_on(self):
        app = self.start_with_macros()
        self.start_endless(app)
        app.wait_for("label", lambda text: seconds_in(text) >= 3)
        journey.PICTURES.mkdir(parents=True, exist_ok=True)
        self.session.screenshot(journey.PICTURES / "stopping.png")
        app.press("Escape")
        self.wait_for_status(STOPPED)
        self.wait_for_text("memo.txt", "x元の文\r\n")
        app.type("y")
        self.save(self.path, "xy元の文\r\n")
        app.press("ctrl+z", "ctrl+z")
        self.save(self.path, "元の文\r\n")

    def test_the_button_stops(self):
        app = self.start_with_macros()
        self.start_endless(app)
        app.type("lost")  # The notice gets these keys, because editing is blocked.
        self.answer("停止")
        self.wait_for_status(STOPPED)
        self.wait_for_text("memo.txt", "x元の文\r\n")

    def test_keys_during_a_short_run_come_after_it(self):
        app = self.start_with_macros()
        app.choose("マクロ", SLOW)
        app.type("abc")
        self.wait_for_text("memo.txt", "x!abc元の文\r\n")
        app.press("ctrl+z", "ctrl+z")
        self.wait_for_text("memo.txt", "x元の文\r\n")

    def test_keys_before_the_notice_come_after_the_run(self):
        app = self.start_with_macros()
        app.choose("マクロ", SLOWER)
        app.type("abc")
        app.wait_for("label", f"マクロ「{SLOWER}」を実行しています。")
        self.wait_for_text("memo.txt", "x!abc元の文\r\n")

    def test_closing_and_quitting_offer_to_stop(self):
        app = self.start_with_macros()
        self.start_endless(app)
        app.press("ctrl+q")
        app.wait_for("label", MESSAGE)
        self.assertIsNone(app.process.poll())
        app.press("Escape")
        self.wait_for_status(STOPPED)
        app.press("ctrl+q")
        self.answer("保存しない", "「memo.txt」への変更を保存しますか？")
        self.assertEqual(app.wait_for_end(), 0)
        until(lambda: not self.own_hosts(), "the end of the processes for macros")

    def test_another_window_stays_free(self):
        app = self.start_with_macros()
        app.press("ctrl+n")
        self.move_to_new_window("名称未設定")
        app.wait_for_window("名称未設定")
        app.focus_window("memo.txt")
        self.start_endless(app)
        app.focus_window("名称未設定")
        app.type("abc")
        self.wait_for_text("名称未設定", "abc")
        app.press("ctrl+z")
        self.wait_for_text("名称未設定", "")
        app.focus_window("penwick")  # The notice.
        app.press("Escape")
        self.wait_for_status(STOPPED)
        self.wait_for_text("memo.txt", "x元の文\r\n")

    def test_killed_during_a_run_leaves_no_process(self):
        app = self.start_with_macros()
        until(self.own_hosts, "a process ahead")
        self.start_endless(app)
        self.assertTrue(self.own_hosts())
        os.kill(app.process.pid, signal.SIGKILL)
        app.process.wait()
        until(lambda: not self.own_hosts(), "the end of the processes for macros")

    def test_host_killed_from_outside_is_reported(self):
        app = self.start_with_macros()
        self.start_endless(app)
        for process in self.own_hosts():
            os.kill(process, signal.SIGKILL)
        reported = "マクロの実行中にエラーが発生しました: 実行が異常終了しました（シグナル: SIGKILL、"
        self.wait_for_status(lambda text: text.startswith(reported) and text.endswith("報告してください"))
        self.wait_for_text("memo.txt", "x元の文\r\n")


if __name__ == "__main__":
    journey.main()
