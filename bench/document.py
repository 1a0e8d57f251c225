"""Writes the tables of docs/performance.md."""

import os
import pathlib
import platform
import re
import subprocess
import textwrap

ROOT = pathlib.Path(__file__).resolve().parent.parent
DOCUMENT = ROOT / "docs/performance.md"
WIDTH = 120


def replaced(text, section, lines):
    """`text` with `lines` between the markers of a section; its markers must be there once."""
    begin, end = f"<!-- {section} -->", f"<!-- end of {section} -->"
    if text.count(begin) != 1 or text.count(end) != 1 or text.index(begin) > text.index(end):
        raise ValueError(f"the markers of the section {section} are missing")
    head, rest = text.split(begin)
    return "\n".join([head + begin, "", *lines, "", end]) + rest.split(end)[1]


def write(section, command, lines):
    """Replaces a section by the command line that measured, the machine, and `lines`."""
    heading = textwrap.fill(f"`{command}` on {machine()}:", WIDTH, break_long_words=False, break_on_hyphens=False)
    DOCUMENT.write_text(replaced(DOCUMENT.read_text(encoding="utf-8"), section, [heading, "", *lines]),
                        encoding="utf-8")


def machine():
    """Describes the machine, the system and the commit."""
    processor = re.search(r"^model name\s*:\s*(.*)", pathlib.Path("/proc/cpuinfo").read_text(), re.M)
    memory = os.sysconf("SC_PHYS_PAGES") * os.sysconf("SC_PAGE_SIZE") / 2**30
    system = platform.freedesktop_os_release().get("PRETTY_NAME", "Linux")
    return (f"{processor[1] if processor else platform.machine()}, {os.cpu_count()} processors, {memory:.0f} GiB,"
            f" {system}, Linux {'.'.join(platform.release().split('.')[:2])}, commit {commit()}")


def commit():
    def git(*words):
        return subprocess.run(["git", "-C", ROOT, *words], stdout=subprocess.PIPE, text=True, check=True).stdout.strip()

    changes = git("status", "--porcelain", "--untracked-files=no", "--", ".", ":!docs")
    return git("rev-parse", "--short=12", "HEAD") + (" with changes" if changes else "")
