"""The processes of one program that runs in a home folder of its own, and what they take."""

import os
import pathlib
import signal
import time

_TICK = 1 / os.sysconf("SC_CLK_TCK")  # Seconds.


def of_home(home):
    """Those whose environment has this home folder, with all that they started."""
    mark = b"\0HOME=" + os.fsencode(home) + b"\0"
    found, parents = set(), {}
    for folder in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            if mark in b"\0" + (folder / "environ").read_bytes() + b"\0":
                found.add(int(folder.name))
            parents[int(folder.name)] = int(_stat(folder.name)[1])
        except (OSError, IndexError):
            continue  # It ended, or belongs to another user.
    while more := {child for child, parent in parents.items() if parent in found} - found:
        found |= more
    return found


def memory(home):
    """The memory of these processes in bytes; what several share counts in proportion (PSS)."""
    return sum(_pss(process) for process in of_home(home)) * 1024


def processor_time(home):
    """Seconds of processor time that they have used."""
    total = 0
    for process in of_home(home):
        try:
            total += sum(map(int, _stat(process)[11:13])) * _TICK
        except (OSError, IndexError):
            continue
    return total


def end(home, patience=3):
    """Asks them to end, and kills what remains after `patience` seconds."""
    for name, wait in ((signal.SIGTERM, patience), (signal.SIGKILL, 10)):
        for process in of_home(home):
            try:
                os.kill(process, name)
            except ProcessLookupError:
                continue
        limit = time.monotonic() + wait
        while of_home(home) and time.monotonic() < limit:
            time.sleep(0.02)


def _stat(process):
    """The fields of /proc/PID/stat from the third on."""
    return pathlib.Path(f"/proc/{process}/stat").read_text(errors="replace").rpartition(")")[2].split()


def _pss(process):
    try:
        lines = pathlib.Path(f"/proc/{process}/smaps_rollup").read_text().splitlines()
    except OSError:
        return 0
    return next((int(line.split()[1]) for line in lines if line.startswith("Pss:")), 0)
