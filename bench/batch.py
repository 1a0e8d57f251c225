"""Measures penwick-macro beside other tools that do the same work on the same files, in one run.

Every figure comes from several runs of whole processes; the tools take turns. Peak memory includes what
this program had when it started the process, so it keeps no texts. node does the work in one
process with its synchronous calls; sed and perl appear where they can do it. penwick-macro alone waits until
what it writes is on the disk (fsync), where it writes files. The results of all tools are compared."""

import filecmp
import itertools
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import tempfile
import time

from table import Floor, Row

SMALL_LIMIT = 40.0  # Milliseconds.
FILE_LIMIT = 2.0  # Milliseconds for each of many files.
FILES = 1000
FILE_SIZE = 10_000  # Bytes.
UNCHANGED_FILES = 10_000
JOBS = 2
MEMORY_LIMIT = 1.2  # Times the peak memory for a tenth of the files.
PREFIX = "> "
MACROS = {"trailing blanks": ("default_trimTrailingSpaces",), "prefix": ("default_addLinePrefix", f"--input={PREFIX}")}
# Each is a function of a text.
NODE_WORK = {"trailing blanks": r"t => t.split('\n').map(l => l.replace(/[ \t\u3000]+$/, '')).join('\n')",
             "prefix": f"t => t.split('\\n').map(l => '{PREFIX}' + l).join('\\n')"}
SED_WORK = {"trailing blanks": r"s/[ \t　]*$//", "prefix": f"s/^/{PREFIX}/"}
PERL_WORK = {"trailing blanks": r"s/[ \t\x{3000}]+$//", "prefix": f"s/^/{PREFIX}/"}
LINES = {"ASCII": "some words of text in line {}, to be cut at its end",
         "Japanese": "これは日本語の行です。行末の空白を取り除きます {}",
         "CR LF": "a line of a file from another system, number {}"}


def write_lines(path, kind, size):
    """Writes a text of about `size` bytes; every third line ends with blanks."""
    end = "\r\n" if kind == "CR LF" else "\n"
    blanks = "　 " if kind == "Japanese" else "   "
    with path.open("wb") as file:
        for number in itertools.count():
            file.write((LINES[kind].format(number) + (blanks if number % 3 == 0 else "") + end).encode())
            if file.tell() >= size:
                return


def run(command, home, output=None):
    """Runs a command and returns its time in milliseconds and its peak memory in bytes."""
    environment = dict(os.environ, HOME=str(home), LC_ALL="C.UTF-8")
    for name in ("XDG_DATA_HOME", "XDG_CONFIG_HOME"):
        environment.pop(name, None)
    with open(output or os.devnull, "wb") as sink:
        start = time.monotonic()
        process = subprocess.Popen(list(map(str, command)), stdout=sink, env=environment)
        _, status, usage = os.wait4(process.pid, 0)
        duration = (time.monotonic() - start) * 1000
    if status != 0:
        raise RuntimeError(f"{command[0]} failed with status {status}")
    process.returncode = 0
    return duration, usage.ru_maxrss * 1024


def macro(program, work):
    name, *options = MACROS[work]
    return [program, "-m", name, *options]


def on_one(program, work, path):
    """The commands that write the result for one file to standard output."""
    commands = {"penwick-macro": [*macro(program, work), path],
                "sed": ["sed", SED_WORK[work], path],
                "perl": ["perl", "-CSD", "-pe", PERL_WORK[work], path]}
    if shutil.which("node"):
        commands["node"] = ["node", "-e", "const fs = require('fs');"
                            f"process.stdout.write(({NODE_WORK[work]})(fs.readFileSync(process.argv[1], 'utf8')))",
                            path]
    return commands


def in_place(program, work, paths):
    """The commands that change all files."""
    commands = {"penwick-macro": [*macro(program, work), "-i", f"-j{JOBS}", *paths],
                "sed": ["sed", "-i", SED_WORK[work], *paths],
                "perl": ["perl", "-CSD", "-pi", "-e", PERL_WORK[work], *paths]}
    if shutil.which("node"):
        commands["node"] = ["node", "-e", "const fs = require('fs'); for (const f of process.argv.slice(1))"
                            f" fs.writeFileSync(f, ({NODE_WORK[work]})(fs.readFileSync(f, 'utf8')))", *paths]
    return commands


def measure(commands, runs, home, before=lambda: None, after=lambda name: None, output=None):
    """{tool: (times, peaks of memory)} of commands that take turns, one value for each run."""
    results = {name: [] for name in commands}
    for _ in range(runs):
        for name, command in commands.items():
            before()
            results[name].append(run(command, home, output))
            after(name)
    return {name: tuple(zip(*result)) for name, result in results.items()}


def rows_of(case, figures, limit=None, by=1):
    """Yields the row of each tool; the floor of penwick-macro is node."""
    floor = None
    if "node" in figures:
        floor = Floor("node for the same work", statistics.median(figures["node"][0]) / by)
    for name, (times, _) in figures.items():
        runs = [duration / by for duration in times]
        value = statistics.median(runs)
        misses = []
        if name == "penwick-macro":
            if limit and value > limit:
                misses.append(f"{value:.2f} ms, the limit is {limit:.1f} ms")
            if floor and by == 1 and value > floor.value:
                misses.append(f"{value / floor.value:.2f} times node")
        yield Row(f"{case}, {name}", "time", "ms", runs, floor if name == "penwick-macro" else None, "; ".join(misses))


def small_rows(program, folder):
    path = folder / "small.txt"
    write_lines(path, "ASCII", 1000)
    figures = measure(on_one(program, "trailing blanks", path), 21, folder)
    return rows_of("one file of 1 kB, whole process", figures, SMALL_LIMIT)


def large_rows(program, folder, size):
    path, output = folder / "large.txt", folder / "out.txt"
    for kind in LINES:
        write_lines(path, kind, size * 1_000_000)
        for work in MACROS:
            def keep(name):
                shutil.move(output, folder / f"{name}.txt")

            # The system would otherwise write the last result to the disk during the next run.
            figures = measure(on_one(program, work, path), 5, folder, before=os.sync, after=keep, output=output)
            # sed and perl add no prefix to the empty part after the last line feed.
            if "node" in figures and not filecmp.cmp(folder / "penwick-macro.txt", folder / "node.txt", False):
                raise RuntimeError(f"{work}, {kind}: the results differ")
            yield from rows_of(f"{work}, {size} MB {kind}", figures)


def many_rows(program, folder):
    files = folder / "files"
    write_lines(folder / "text", "ASCII", FILE_SIZE)
    text = (folder / "text").read_bytes()

    def make(count=FILES):
        shutil.rmtree(files, ignore_errors=True)
        files.mkdir()
        for i in range(count):
            (files / f"{i:05}.txt").write_bytes(text)
        os.sync()

    make()
    paths = sorted(files.iterdir())
    figures = measure(in_place(program, "trailing blanks", paths), 5, folder, before=make)
    yield from rows_of(f"{FILES:,} files of 10 kB in place, for each", figures, FILE_LIMIT, FILES)
    make()
    few = measure({"few": in_place(program, "trailing blanks", paths[:FILES // 10])["penwick-macro"]}, 3, folder)
    peaks = figures["penwick-macro"][1]
    floor = Floor(f"the peak for {FILES // 10} files", statistics.median(few["few"][1]))
    ratio = statistics.median(peaks) / floor.value
    yield Row(f"peak memory for {FILES:,} files", "memory", "bytes", peaks, floor,
              f"{ratio:.2f} times, the limit is {MEMORY_LIMIT}" if ratio > MEMORY_LIMIT else "")
    make(UNCHANGED_FILES)
    yield from check_rows(program, folder, files)


def check_rows(program, folder, files):
    """10,000 files that a macro does not change, and where the time goes."""
    for path in files.iterdir():
        path.write_bytes(path.read_bytes().replace(b"   \n", b"\n"))
    names = folder / "names"
    names.write_bytes(b"\0".join(str(path).encode() for path in sorted(files.iterdir())))
    command = [*macro(program, "trailing blanks"), "--check", "-v", f"-j{JOBS}", f"--files0-from={names}"]
    process = subprocess.run(list(map(str, command)), env=dict(os.environ, HOME=str(folder)),
                             stderr=subprocess.PIPE, check=True)
    times = [float(number) for number in re.findall(rb"\d+\.\d+", process.stderr.splitlines()[-1])]
    for name, seconds in zip(("in all", "reading", "macros", "writing"), times):
        yield Row(f"--check of {UNCHANGED_FILES:,} unchanged files, {name}",
                  "time of all threads" if name != "in all" else "time", "ms", [seconds * 1000])


def rows(program, quick):
    """Yields the rows of all cases."""
    with tempfile.TemporaryDirectory(prefix="penwick-bench-") as name:
        folder = pathlib.Path(name)
        yield from small_rows(program, folder)
        for size in (10,) if quick else (10, 100):
            yield from large_rows(program, folder, size)
        yield from many_rows(program, folder)
