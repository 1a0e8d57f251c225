#!/usr/bin/python3
"""A script engine that does not work on this system, for example after an update, is reported once,
in plain words, before a macro is needed. The document is not damaged."""

import shutil
import subprocess

import journey
from driver import Application

WARNING = "マクロの実行エンジンが正しく動作しません（終了ステータス: 3）。開発元に報告してください"


class Engine(journey.Journey):
    def setUp(self):
        super().setUp()
        # The program looks for its script host in its own folder.
        folder = self.session.home / "bin"
        folder.mkdir()
        self.program = folder / "penwick"
        shutil.copy2(journey.PROGRAM, self.program)
        host = folder / "penwick-script-host"
        host.write_text("#!/bin/sh\nexit 3\n")
        host.chmod(0o755)

    def test_broken_engine_is_reported_at_start(self):
        path = self.write("memo.txt", "元の文\n")
        self.app = Application(self.session, self.program, path)
        self.wait_for_title("memo.txt")
        self.wait_for_status(WARNING)
        journey.PICTURES.mkdir(parents=True, exist_ok=True)
        self.session.screenshot(journey.PICTURES / "engine.png")
        self.app.focus_window("memo.txt")
        self.app.type("x")
        self.save(path, "x元の文\n")

    def test_version_reports_it(self):
        answer = subprocess.run(
            [self.program, "--version"], stdout=subprocess.PIPE, text=True, env=self.session.environment
        )
        self.assertEqual(answer.returncode, 0)
        self.assertIn("終了ステータス: 3", answer.stdout)


if __name__ == "__main__":
    journey.main()
