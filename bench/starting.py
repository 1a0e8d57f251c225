"""Starts penwick and a minimal window alternately on one display and times both until a quiet window;
starts penwick with large files and times it until their first page and until their whole text."""

import contextlib
import json
import os
import pathlib
import select
import subprocess
import tempfile
import time

RUNS = 25
OWN_MACROS = 20  # In addition to the built-in ones.
OWN_PROFILES = 3


@contextlib.contextmanager
def display():
    """Runs a virtual X server for the duration of the context and yields the name of its display."""
    reading, writing = os.pipe()
    server = subprocess.Popen(
        ["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x900x24", "-nolisten", "tcp"],
        pass_fds=[writing], stderr=subprocess.DEVNULL)
    os.close(writing)
    try:
        yield ":" + os.fdopen(reading).readline().strip()
    finally:
        server.terminate()
        server.wait()


def start(program, probe, environment, *arguments):
    """Starts a program once; returns {"start": ms to the quiet window, "work": ms of processor time}.

    "work" is the processor time of the main thread. With PENWICK_PAGE in the environment: {"page": ms to the
    first page of a large file, "text": ms to its whole text}."""
    reading, writing = os.pipe()
    probed = dict(environment, LD_PRELOAD=str(probe), PENWICK_STARTED=str(time.monotonic_ns()))
    process = os.posix_spawn(program, [str(program), *map(str, arguments)], probed,
                             file_actions=[(os.POSIX_SPAWN_DUP2, writing, 1)])
    os.close(writing)
    with os.fdopen(reading) as output:
        if not select.select([output], [], [], 60)[0]:
            os.kill(process, 9)
        lines = output.read().splitlines()
    os.waitpid(process, 0)
    # penwick may write other lines before.
    return json.loads(next(line for line in lines if line.startswith("{")))


def fill(data):
    """Adds a realistic number of macros and profiles to `data`, the data folder of a first start."""
    store = data / "macros.json"
    macros = json.loads(store.read_text(encoding="utf-8"))
    own = [dict(macros[i % len(macros)], id=f"OWN-{i}", name=f"自分のマクロ {i}", source="user")
           for i in range(OWN_MACROS)]
    store.write_text(json.dumps(macros + own, ensure_ascii=False, indent=2), encoding="utf-8")
    for i in range(OWN_PROFILES):
        identity = f"OWN-{i}"
        stamp = "2026-01-01T00:00:00Z"
        profile = {"id": identity, "name": f"自分の文言 {i}", "description": "", "locale": "ja",
                   "isBuiltIn": False, "createdAt": stamp, "updatedAt": stamp,
                   "values": {"menu.file": "書類", "menu.edit": "編集"}}
        (data / "ui-wording-profiles" / f"{identity}.json").write_text(
            json.dumps(profile, ensure_ascii=False), encoding="utf-8")


@contextlib.contextmanager
def place():
    """Yields the environment of programs with a display and a home folder of their own."""
    with tempfile.TemporaryDirectory(prefix="penwick-bench-") as home, display() as name:
        yield {"PATH": os.environ["PATH"], "HOME": home, "XDG_RUNTIME_DIR": home, "LC_ALL": "C.UTF-8",
               "DISPLAY": name}


def measure_opening(folder, path, runs):
    """Returns the values of "page" and "text", see `start`, for penwick in `folder` and a file that was just written."""
    program, probe = folder / "penwick", folder / "libpenwick_quiet_probe.so"
    with place() as environment:
        start(program, probe, environment)
        environment["PENWICK_PAGE"] = "1"
        figures = [start(program, probe, environment, path) for _ in range(runs)]
    return {name: [figure[name] for figure in figures] for name in figures[0]}


def measure(folder):
    """Returns [figures of penwick, figures of the minimal window], both programs in `folder`.

    The figures are those of `start`, with a list of the single runs."""
    programs = [folder / name for name in ("penwick", "penwick_minimal_window")]
    probe = folder / "libpenwick_quiet_probe.so"
    with place() as environment:
        for program in programs:  # The first starts read the system's files from the disk.
            start(program, probe, environment)
        fill(pathlib.Path(environment["HOME"]) / ".local/share/penwick")
        runs = [[start(program, probe, environment) for program in programs] for _ in range(RUNS)]
    return [{figure: [run[i][figure] for run in runs] for figure in runs[0][i]} for i in range(len(programs))]
