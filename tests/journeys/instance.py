#!/usr/bin/python3
"""One penwick per display: a second start hands over to the running one, waits for it on request,
and never hangs."""

import json
import os
import pathlib
import signal
import subprocess

import journey
from driver import Application, until

TIMEOUT = 60  # Seconds; the limit for a start that ends by itself.


class Instance(journey.Journey):
    def launch(self, *arguments, **options):
        """Starts penwick from outside, without looking for its window."""
        options = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options}
        return self.session.start(journey.PROGRAM, *arguments, **options)

    def hand_over(self, *arguments, status=0, **options):
        """Starts penwick once more, waits for its end, and returns its error output."""
        process = self.launch(*arguments, **options)
        _, said = process.communicate(timeout=TIMEOUT)
        self.assertEqual(process.returncode, status, said)
        return said.decode()

    def find_editor(self):
        """Attaches to the one penwick that has windows, whichever start created it."""
        self.app = Application.running(self.session, until(self.editor_pids, "an editor")[0])
        return self.app

    def editor_pids(self):
        """The processes with a window: neither waiting clients nor script hosts."""
        windows = self.output_of("xdotool", "search", "--onlyvisible", "--name", ".").split()
        pids = {self.output_of("xdotool", "getwindowpid", window) for window in windows}
        return [int(pid) for pid in pids if pid and self.is_ours(pid)]

    def output_of(self, *command):
        """The output of a command that may fail, as a search without a result does."""
        answer = {"stdout": subprocess.PIPE, "stderr": subprocess.DEVNULL, "text": True}
        return subprocess.run(command, env=self.session.environment, **answer).stdout.strip()

    def is_ours(self, pid):
        try:
            return os.path.samefile(f"/proc/{pid}/exe", journey.PROGRAM)
        except OSError:
            return False

    def tabs(self):
        nodes = (node for node in self.app.walk() if self.app.role(node) == "page tab")
        return [self.app.name(node) for node in nodes if self.app.has_state(node, "showing")]

    def cursor(self, line, column):
        self.app.wait_for("label", f"行: {line} 列: {column}")

    def test_second_start_opens_in_the_first_and_ends(self):
        first = self.write("first.txt", "一\n")
        second = self.write("second.txt", "二\n")
        app = self.start(first)
        self.hand_over(second)
        self.wait_for_title("second.txt")
        self.wait_for_text("second.txt", "二\n")
        self.assertEqual(len(app.windows()), 1)

        # A file that is already open comes to the front, with the caret at the requested place.
        self.hand_over("+2:1", first)
        self.wait_for_title("first.txt")
        self.cursor(2, 0)

        # The window has the focus.
        app.type("x")
        self.wait_for_title("first.txt*")
        self.save(first, "一\nx")

    def test_names_are_taken_from_the_second_folder(self):
        self.start(self.write("first.txt", ""))
        folder = self.files / "sub folder"
        folder.mkdir()
        (folder / "名 前.txt").write_text("内容\n")
        process = subprocess.run(
            [journey.PROGRAM, "名 前.txt"], env=self.session.environment, cwd=folder, timeout=TIMEOUT
        )
        self.assertEqual(process.returncode, 0)
        self.wait_for_title("名 前.txt")
        self.wait_for_text("名 前.txt", "内容\n")

    def test_names_after_two_dashes_are_files_whatever_they_look_like(self):
        names = ["-style", "-platform", "-geometry", "-display", "--version", "-reverse", "-"]
        for name in names:
            self.write(name, name)
        process = self.launch("-style", "fusion", "--", *names, cwd=self.files)
        app = self.find_editor()
        until(lambda: len(self.tabs()) == len(names), lambda: f"{names}, not {self.tabs()}")
        self.assertEqual(sorted(self.tabs()), sorted(names))
        app.focus_window(names[-1])
        self.wait_for_text("-", "-")
        self.assertIsNone(process.poll())

    def test_new_window_is_a_window_of_its_own(self):
        app = self.start(self.write("first.txt", ""))
        self.hand_over("--new-window", self.write("second.txt", ""))
        until(lambda: len(app.windows()) == 2, lambda: f"two windows, not {app.windows()}")

    def test_window_comes_forward_without_a_file(self):
        app = self.start(self.write("first.txt", ""))
        self.hand_over()
        self.wait_for_title("first.txt")
        self.assertEqual(len(app.windows()), 1)
        self.assertEqual(self.tabs(), [])

    def test_launcher_learns_that_the_start_is_over(self):
        app = self.start(self.write("first.txt", ""))
        log = self.session.home / "events.txt"
        with log.open("wb") as output:
            self.session.start("stdbuf", "-oL", "xev", "-root", "-event", "property", stdout=output)

        def is_listening():
            self.session.run("xprop", "-root", "-f", "_TEST", "8s", "-set", "_TEST", "x")
            return b"_TEST" in log.read_bytes()

        until(is_listening, "the listener")
        self.session.environment["DESKTOP_STARTUP_ID"] = "launcher-1_TIME12345"
        self.hand_over(self.write("second.txt", ""))
        self.wait_for_title("second.txt")
        until(lambda: b"_NET_STARTUP_INFO_BEGIN" in log.read_bytes(), "the message")
        window = self.session.run("xdotool", "getactivewindow").strip()
        until(
            lambda: "12345" in self.session.run("xprop", "-id", window, "_NET_WM_USER_TIME"),
            "the time of the start",
        )
        app.type("x")
        self.wait_for_title("second.txt*")

    def test_folder_is_reported_by_the_first(self):
        app = self.start(self.write("first.txt", ""))
        self.hand_over(self.files, status=1)
        app.wait_for("push button", "OK")
        # While the message is open, requests are accepted; their files open after the answer.
        second = self.write("second.txt", "二\n")
        self.hand_over(second)
        self.assertNotIn("second.txt — penwick", app.windows())
        self.answer("OK")
        self.wait_for_title("second.txt")

    def test_question_at_the_end_does_not_lose_a_file(self):
        app = self.start(self.write("first.txt", ""))
        app.type("x")
        self.wait_for_title("first.txt*")
        app.press("ctrl+q")
        app.wait_for("push button", "保存しない")
        self.hand_over(self.write("second.txt", "二\n"))
        self.answer("保存しない")
        self.wait_for_title("second.txt")
        self.assertIsNone(app.process.poll())

    def test_standard_input_becomes_an_unsaved_text(self):
        app = self.start(self.write("first.txt", ""))
        self.hand_over("+2", "-", stdin=self.source("一\n二\n"))
        self.wait_for_title("名称未設定*")
        self.wait_for_text("名称未設定", "一\n二\n")
        self.cursor(2, 0)

    def test_large_standard_input_arrives(self):
        self.start(self.write("first.txt", ""))
        text = "日本語の行です。\n" * 400_000
        self.hand_over("-", stdin=self.source(text))
        self.wait_for_title("名称未設定*")
        self.app.press("ctrl+s")
        self.app.wait_for("dialog")
        copy = self.files / "copy.txt"
        self.app.press("ctrl+a")
        self.app.type(str(copy))
        self.app.press("Return")
        self.wait_for_content(copy, text)

    def test_standard_input_that_is_no_text_is_refused(self):
        app = self.start(self.write("first.txt", ""))
        said = self.hand_over("-", stdin=self.source(b"\xff\xfe\0"), status=1)
        self.assertEqual(said.count("\n"), 1)
        self.assertIn("UTF-8", said)
        self.assertEqual(app.windows(), ["first.txt — penwick"])

    def test_first_start_takes_standard_input(self):
        process = self.launch("-", stdin=self.source("最初\n"))
        self.find_editor()
        self.wait_for_title("名称未設定*")
        self.wait_for_text("名称未設定", "最初\n")
        self.assertIsNone(process.poll())

    def source(self, content):
        path = self.session.home / "input"
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        stream = path.open("rb")
        self.addCleanup(stream.close)
        return stream

    def test_wait_ends_when_its_file_is_closed(self):
        first, second = self.write("first.txt", ""), self.write("second.txt", "")
        app = self.start(first)
        waiting = self.launch("--wait", second)
        self.wait_for_title("second.txt")
        self.assertIsNone(waiting.poll())
        app.press("ctrl+w")
        self.assertEqual(waiting.wait(TIMEOUT), 0)
        self.wait_for_title("first.txt")

    def test_wait_fails_when_penwick_is_killed(self):
        app = self.start(self.write("first.txt", ""))
        waiting = self.launch("--wait", self.write("second.txt", ""))
        self.wait_for_title("second.txt")
        app.process.kill()
        self.assertEqual(waiting.wait(TIMEOUT), 1)
        self.assertEqual(waiting.stderr.read().count(b"\n"), 1)

    def test_wait_fails_when_its_file_cannot_be_opened(self):
        self.start(self.write("first.txt", ""))
        waiting = self.launch("--wait", self.files)
        self.answer("OK")
        self.assertEqual(waiting.wait(TIMEOUT), 1)

    def test_first_start_with_wait_leaves_other_files_alone(self):
        waiting = self.launch("--wait", self.write("message.txt", ""))
        app = self.find_editor()
        self.wait_for_title("message.txt")
        self.hand_over(self.write("other.txt", ""))
        self.wait_for_title("other.txt")
        app.focus_window("other.txt")
        self.hand_over(self.files / "message.txt")
        self.wait_for_title("message.txt")
        app.press("ctrl+w")
        # The output of the waiting process ends too.
        waiting.communicate(timeout=TIMEOUT)
        self.assertEqual(waiting.returncode, 0)
        self.wait_for_title("other.txt")

    def test_closed_standard_streams_leave_the_place_taken(self):
        closed = ("sh", "-c", 'exec "$0" "$@" <&- >&- 2>&-', journey.PROGRAM)
        for number, options in enumerate(((), ("--wait",))):
            with self.subTest(options=options):
                first = self.write(f"first{number}.txt", "")
                process = self.session.start(*closed, *options, first)
                app = self.find_editor()
                self.wait_for_title(first.name)
                self.hand_over(self.write(f"second{number}.txt", ""))
                self.wait_for_title(f"second{number}.txt")
                app.focus_window(f"second{number}.txt")
                app.press("ctrl+q")
                self.assertEqual(process.wait(TIMEOUT), 0)
                until(lambda: not self.editor_pids(), "the end")

    def test_git_commit_waits_for_its_message(self):
        def git(*arguments):
            names = ["-c", "user.name=p", "-c", "user.email=p@localhost"]
            return ["git", "-C", self.files, *names, *arguments]

        self.session.run(*git("init", "-q"))
        self.write("a.txt", "a\n")
        self.session.run(*git("add", "a.txt"))
        self.session.environment["GIT_EDITOR"] = f'"{journey.PROGRAM}" --wait'
        commit = self.session.start(*git("commit", "-q"))
        app = self.find_editor()
        self.wait_for_title("COMMIT_EDITMSG")
        app.focus_window("COMMIT_EDITMSG")
        app.type("A message")
        self.wait_for_title("COMMIT_EDITMSG*")
        app.press("ctrl+s")
        self.wait_for_title("COMMIT_EDITMSG")
        self.assertIsNone(commit.poll())
        app.press("ctrl+w")
        self.assertEqual(commit.wait(TIMEOUT), 0)
        self.assertEqual(self.session.run(*git("log", "--format=%s")), "A message\n")

    def test_start_after_a_kill_is_a_first_start(self):
        first = self.write("first.txt", "")
        app = self.start(first)
        app.process.kill()
        app.process.wait()
        runtime = self.session.home / ".runtime"
        self.assertTrue(list(runtime.glob("penwick-*.sock")))  # The socket file was left behind.
        self.start(first)

    def test_place_that_was_cleaned_away_is_put_up_again(self):
        self.start(self.write("first.txt", ""))
        runtime = self.session.home / ".runtime"
        for number, pattern in enumerate(("penwick-*.sock", "penwick-*")):
            with self.subTest(pattern=pattern):
                for path in list(runtime.glob(pattern)):
                    path.unlink()
                until(lambda: list(runtime.glob("penwick-*.sock")), "the socket")
                second = self.write(f"second{number}.txt", "")
                self.hand_over(second)
                self.wait_for_title(second.name)
        self.assertEqual(len(self.editor_pids()), 1)

    def test_end_leaves_no_socket(self):
        app = self.start(self.write("first.txt", ""))
        app.press("ctrl+q")
        self.assertEqual(app.wait_for_end(), 0)
        self.assertEqual(list((self.session.home / ".runtime").glob("penwick-*.sock")), [])

    def test_first_that_hangs_does_not_hang_the_second(self):
        app = self.start(self.write("first.txt", ""))
        app.process.send_signal(signal.SIGSTOP)
        try:
            for arguments in ((self.write("second.txt", ""),), ("-",)):
                said = self.hand_over(*arguments, status=1, stdin=self.source("x" * 10_000_000))
                self.assertEqual(said.count("\n"), 1)
        finally:
            app.process.send_signal(signal.SIGCONT)
        self.wait_for_title("first.txt")

    def test_starts_at_the_same_moment_make_one_window(self):
        files = [self.write(f"{number}.txt", f"{number}\n") for number in range(10)]
        processes = [self.launch(file) for file in files]
        app = self.find_editor()
        until(lambda: len(self.tabs()) == 10, lambda: f"ten tabs, not {self.tabs()}")
        until(
            lambda: sum(process.poll() is None for process in processes) == 1,
            "the end of all but one",
        )
        self.assertEqual([p.returncode for p in processes if p.poll() is not None], [0] * 9)
        self.assertEqual(len(app.windows()), 1)
        self.assertEqual(len(self.editor_pids()), 1)

    def test_help_and_errors_need_no_display(self):
        self.session.environment.pop("DISPLAY")
        for argument, status in (("--help", 0), ("--version", 0), ("--nonsense", 2), ("+5", 2)):
            process = self.launch(argument)
            answer, said = process.communicate(timeout=TIMEOUT)
            self.assertEqual(process.returncode, status)
            self.assertEqual(bool(answer), status == 0)
            self.assertEqual(said.count(b"\n"), 1 if status else 0)

    def test_help_and_errors_have_the_words_of_the_profile(self):
        home = pathlib.Path(self.session.environment["HOME"])
        profile = {"id": "own", "name": "Own", "description": "", "locale": "en", "isBuiltIn": False}
        profile |= {"createdAt": "", "updatedAt": ""}
        profile["values"] = {
            "cli.help": "shows this text",
            "cli.unknownOption": "unknown option",
            "cli.sandbox": "Sandbox:",
            "cli.outputUnwritable": "no output",
        }
        folder = home / ".local/share/penwick/ui-wording-profiles"
        folder.mkdir(parents=True)
        (folder / "own.json").write_text(json.dumps(profile))
        (home / ".config/penwick").mkdir(parents=True)
        (home / ".config/penwick/penwick.conf").write_text("activeUIWordingProfileId=own\n")
        def files():
            return sorted((*(home / ".config").rglob("*"), *(home / ".local").rglob("*")))

        before = files()
        answers = [self.launch(option).communicate(timeout=20) for option in ("--help", "--version")]
        self.assertIn("--help        shows this text\n", answers[0][0].decode())
        self.assertIn("Sandbox:\n", answers[1][0].decode())
        self.assertEqual(self.hand_over("--x", status=2), "penwick: unknown option: --x\n")
        with open("/dev/full", "wb") as full:
            said = self.hand_over("--help", status=1, stdout=full)
        self.assertTrue(said.startswith("penwick: no output: "))
        self.assertEqual(files(), before)

    def test_answer_that_cannot_be_written_is_an_error(self):
        self.session.environment.pop("DISPLAY")
        for argument in ("--help", "--version"):
            with open("/dev/full", "wb") as full:
                said = self.hand_over(argument, status=1, stdout=full)
            self.assertEqual(said.count("\n"), 1)

    def test_names_in_a_folder_that_was_removed_are_refused(self):
        first = self.write("first.txt", "一\n")
        app = self.start(first)
        gone = self.files / "gone"
        in_gone = ("sh", "-c", 'mkdir "$0" && cd "$0" && rmdir "$0" && exec "$@"', gone)
        process = self.session.start(
            *in_gone, journey.PROGRAM, "second.txt", stderr=subprocess.PIPE
        )
        self.assertEqual(process.wait(TIMEOUT), 1)
        self.assertEqual(process.stderr.read().count(b"\n"), 1)
        self.assertEqual(app.windows(), ["first.txt — penwick"])
        # A file with an absolute path is found nevertheless.
        second = self.write("second.txt", "二\n")
        process = self.session.start(*in_gone, journey.PROGRAM, second)
        self.assertEqual(process.wait(TIMEOUT), 0)
        self.wait_for_title("second.txt")


if __name__ == "__main__":
    journey.main()
