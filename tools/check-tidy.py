#!/usr/bin/env python3
"""Runs clang-tidy over the program's sources, several of them at a time.

    check-tidy.py BUILD         checks the sources in BUILD/compile_commands.json
    check-tidy.py --analyzer BUILD
                                runs clang's path-sensitive analyzer over them
    check-tidy.py --self-test   tests that faults are found in every file of a group

clang-tidy spends most of its time per file on the declarations in Qt's headers. Therefore sources with the
same compile options are included into one group file, which is checked at once. Sources in a group must not
declare the same name in their unnamed namespaces. If a group has a fault, each of its files is checked
separately, and only those results count: a conflict between two files is never reported as a fault.

The tests are not checked, because QtTest's macros and data rows exceed the limits on function size."""

import concurrent.futures
import itertools
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

import selftest

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDERS = re.search(r"set\(penwick_layers\s+([^)]*)\)", (ROOT / "CMakeLists.txt").read_text()).group(1).split()
GROUP = 8  # With larger groups, other processors would be idle while the last group is checked.

CHECKS = "-clang-analyzer-*"
# The analyzer takes as long as all other checks together, so it runs only on request.
ANALYZER_CHECKS = "-bugprone-*,-performance-*,-modernize-*,-readability-*"
GROUP_CHECKS = CHECKS + ",-bugprone-suspicious-include"  # A group consists of such includes.
GROUP_FILTER = rf"/({'|'.join(FOLDERS)})/[^.]*\.(h|cpp)$"
HEADER_FILTER = rf"--header-filter=/({'|'.join(FOLDERS)})/[^.]*\.h$"

_UNNAMED = re.compile(r"^namespace \{\n(.*?)^\} // namespace$", re.S | re.M)
_TYPE = re.compile(r"(?:template.*>\s*)?(?:class|struct|enum class|enum|using) (\w+)")
_OTHER = re.compile(r".*?\b(\w+)(?:\(|\[|\{| = )")


def unnamed_names(text):
    """Returns the names that the unnamed namespaces of a source declare, found by its formatting."""
    names = set()
    for body in _UNNAMED.findall(text):
        for line in body.splitlines():
            if re.match(r"\w", line):
                found = _TYPE.match(line) or _OTHER.match(line)
                names |= {found.group(1)} if found else set()
    return names


def without_files(command):
    """Returns the compiler and its options from a compile command, without input and output files."""
    words = shlex.split(command)
    words = words[next(i for i, word in enumerate(words) if re.search(r"(\+\+|cc)(-\d+)?$", word)) :]
    words = words[: words.index("-o")]
    # clang cannot read a precompiled header of another compiler.
    while "-include" in words:
        at = words.index("-include")
        del words[at : at + 2]
    return tuple(word for word in words if word != "-Winvalid-pch")


def groups(entries):
    """Returns [(command, directory, [source...])] for entries of a compilation database."""
    bins = {}
    for entry in entries:
        names = unnamed_names(pathlib.Path(entry["file"]).read_text())
        alike = bins.setdefault((without_files(entry["command"]), entry["directory"]), [])
        for files, taken in alike:
            if len(files) < GROUP and not taken & names:
                files.append(entry["file"])
                taken |= names
                break
        else:
            alike.append(([entry["file"]], names))
    return [(*key, files) for key, alike in bins.items() for files, _ in alike]


def tidy(database, file, *options):
    """Returns the output of clang-tidy for `file`, or None if there is no complaint."""
    done = subprocess.run(
        ["clang-tidy", "-quiet", "-p", database, *options, file],
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        text=True,
    )
    if done.returncode == 0:
        return None
    return done.stdout or done.stderr or f"{file}: clang-tidy ended with status {done.returncode}"


def write_groups(folder, entries):
    """Writes a source file for each group into `folder`, and a database of the groups and of all single
    sources. Returns [(group source, [its files])], the largest group first."""
    folder.mkdir(parents=True, exist_ok=True)
    made = []
    database = [
        {
            "directory": entry["directory"],
            "arguments": [*without_files(entry["command"]), "-c", entry["file"]],
            "file": entry["file"],
        }
        for entry in entries
    ]
    for number, (command, directory, files) in enumerate(groups(entries)):
        source = str(folder / f"group{number}.cpp")
        pathlib.Path(source).write_text("".join(f'#include "{file}"\n' for file in files))
        words = [*command, "-c", source]
        database.append({"directory": directory, "arguments": words, "file": source})
        made.append((source, files))
    (folder / "compile_commands.json").write_text(json.dumps(database))
    return sorted(made, key=lambda group: -len(group[1]))


def faults(build, entries, config=ROOT / ".clang-tidy"):
    """Returns the complaints about the sources of `entries`, one text for each source that has any."""
    folder = build / "tidy"
    made = write_groups(folder, entries)
    rules = f"--config-file={config}"
    workers = os.cpu_count() or 1
    with concurrent.futures.ThreadPoolExecutor(workers) as pool:
        filters = (rules, f"--checks={GROUP_CHECKS}", f"--header-filter={GROUP_FILTER}")
        said = pool.map(lambda group: tidy(folder, group[0], *filters), made)
        doubtful = [files for (_, files), words in zip(made, said) if words]
        single = pool.map(
            lambda file: tidy(folder, file, rules, HEADER_FILTER, f"--checks={CHECKS}"),
            itertools.chain.from_iterable(doubtful),
        )
        return [words for words in single if words]


def analyzer_faults(build, entries):
    """Returns the analyzer's complaints in the form of `faults`."""
    folder = build / "tidy"
    write_groups(folder, entries)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count() or 1) as pool:
        files = [entry["file"] for entry in entries]
        options = (HEADER_FILTER, f"--checks={ANALYZER_CHECKS}")
        said = pool.map(lambda file: tidy(folder, file, *options), files)
        return [words for words in said if words]


def entries_of(build, root):
    """Returns the entries of the program's own sources, without generated files and tests."""
    wanted = re.compile(rf"{re.escape(str(root))}/({'|'.join(FOLDERS)})/.*\.cpp$")
    entries = json.loads((build / "compile_commands.json").read_text())
    return [entry for entry in entries if wanted.match(entry["file"])]


_GOOD = "namespace {\n\nint twice(int a)\n{\n    return 2 * a;\n}\n\n} // namespace\n\n"
_SOURCES = {
    "text/One.cpp": _GOOD + "int one()\n{\n    return twice(1);\n}\n",
    # The same name again, and a third time in a layout that `unnamed_names` does not recognize.
    "text/Two.cpp": _GOOD + "int two()\n{\n    return twice(2);\n}\n",
    "text/Three.cpp": "namespace\n{\nint twice(int a)\n{\n    return a;\n}\n} // namespace\n\n"
    "int three()\n{\n    return twice(3);\n}\n",
    "text/Four.cpp": "int four()\n{\n    return 4;\n}\n",
    "view/Five.h": "inline int five()\n{\n    return 5;\n}\n",
    "view/Five.cpp": '#include "view/Five.h"\n',
}
_BAD = [
    ("text/One.cpp", "int one()", "int *none()\n{\n    return 0;\n}\n\nint one()", "modernize-use-nullptr"),
    ("text/Two.cpp", "int two()", "int Wrong()", "readability-identifier-naming"),
    ("text/Four.cpp", "return 4;", "if (four() > 1);\n    return 4;", "bugprone-suspicious-semicolon"),
    ("view/Five.h", "int five()", "int Wrong()", "readability-identifier-naming"),
]


def faults_of_tree(root):
    """As `faults`, for a tree without a compilation database."""
    entries = []
    for file in sorted(root.glob("*/*.cpp")):
        ahead = f"-Winvalid-pch -include {root}/of-another-compiler.hxx"
        command = f"c++ -std=c++20 -I{root} {ahead} -o {file}.o -c {file}"
        entries.append({"directory": str(root), "command": command, "file": str(file)})
    (root / "compile_commands.json").write_text(json.dumps(entries))
    return faults(root, entries_of(root, root))


def self_test():
    selftest.run(_SOURCES, _BAD, faults_of_tree)
    with tempfile.TemporaryDirectory() as name:
        # Simulates a clang-tidy that the kernel kills for lack of memory.
        killed = pathlib.Path(name) / "clang-tidy"
        killed.write_text("#!/bin/sh\nkill -9 $$\n")
        killed.chmod(0o700)
        os.environ["PATH"] = f"{name}:{os.environ['PATH']}"
        if len(selftest.complaints(_SOURCES, faults_of_tree)) != sum(place.endswith(".cpp") for place in _SOURCES):
            sys.exit("a clang-tidy that is killed counts as content")


def main(arguments):
    if arguments == ["--self-test"]:
        self_test()
        return
    finder = analyzer_faults if arguments[0] == "--analyzer" else faults
    build = pathlib.Path(arguments[-1]).resolve()
    entries = entries_of(build, ROOT)
    if not entries:
        sys.exit(f"{build} compiles no source of penwick")
    found = finder(build, entries)
    print("\n".join(found) or f"{len(entries)} sources are tidy")
    sys.exit(bool(found))


if __name__ == "__main__":
    main(sys.argv[1:])
