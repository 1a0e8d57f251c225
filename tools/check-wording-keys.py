#!/usr/bin/env python3
"""Fails if the code looks up a wording key that is not documented.

    check-wording-keys.py [ROOT]      checks the sources under ROOT (default: this repository)
    check-wording-keys.py --update    rewrites the document's rows from the code
    check-wording-keys.py --self-test tests that each kind of fault is found

A key is documented if the built-in tables contain it or docs/wording-keys.md lists it. The document may
list only keys that the code looks up, each with the default text from the code."""

import pathlib
import re
import sys
import tempfile

FOLDERS = ("platform", "text", "wording", "editor", "find", "view", "controls", "code", "macro", "window", "app")
TABLES = "wording/WordingTables.cpp"
DOCUMENT = "docs/wording-keys.md"
PREFIXES = ("app", "cli", "common", "dialog", "editor", "error", "macro", "menu", "profile", "status")

_TABLE_KEY = re.compile(r'\{\s*u"([\w.]+)"')
_LITERAL = re.compile(r'u"((?:\\.|[^"\\])*)"(?:_s)?(?:\s*,\s*(u"(?:\\.|[^"\\])*"(?:_s)?(?:\s*u?"(?:\\.|[^"\\])*"(?:_s)?)*))?')
_KEY = re.compile(r"(?:%s)\.[a-z]\w*(?:\.[a-z]\w*)*" % "|".join(PREFIXES))
# The first argument of a lookup is a key with any prefix.
_LOOKUP = re.compile(r'\btext\(\s*u"([a-z]\w*(?:\.\w+)+)"')
_ROW = re.compile(r"^\| `([\w.]+)` \| (.*?) \| (.*?) \|$", re.M)


def table_keys(root):
    return set(_TABLE_KEY.findall((root / TABLES).read_text()))


def used_keys(root):
    """Returns {key: {default text or "": [file]}}."""
    used = {}
    for folder in FOLDERS:
        for path in sorted((root / folder).rglob("*")):
            place = path.relative_to(root).as_posix()
            if path.suffix in (".cpp", ".h") and place != TABLES:
                _collect(_without_comments(path.read_text()), place, used)
    return used


def _without_comments(text):
    return re.sub(r"^\s*//.*$", "", text, flags=re.M)


def _collect(text, place, used):
    looked_up = set(_LOOKUP.findall(text))
    for key, following in _LITERAL.findall(text):
        if not _KEY.fullmatch(key) and key not in looked_up:
            continue
        default = "".join(re.findall(r'"((?:\\.|[^"\\])*)"', following or ""))
        # The document shows only the first line of a text.
        default = re.sub(r"\\n.*", " …", default, flags=re.S)
        if _KEY.fullmatch(default):
            default = ""
        files = used.setdefault(key, {}).setdefault(default, [])
        if place not in files:
            files.append(place)


def rows(root):
    """Returns the rows that the document must have: (key, defaults, files)."""
    known = table_keys(root)
    result = []
    for key, defaults in sorted(used_keys(root).items()):
        if key in known:
            continue
        files = sorted({file for places in defaults.values() for file in places})
        result.append((key, sorted(default for default in defaults if default), files))
    return result


def faults(root):
    listed = {key: default for key, default, _ in _ROW.findall((root / DOCUMENT).read_text())}
    found = []
    needed = rows(root)
    for key, defaults, files in needed:
        where = ", ".join(files)
        if key not in listed:
            found.append(f"{where}: {key} is in no table and not in {DOCUMENT}")
        for default in defaults:
            if key in listed and listed[key] != default:
                found.append(f"{where}: {key} has the default {default!r}, not {listed[key]!r}")
    for key in sorted(set(listed) - {key for key, _, _ in needed}):
        found.append(f"{DOCUMENT}: {key} is looked up nowhere, or the built-in tables hold it")
    return found


def update(root):
    document = root / DOCUMENT
    head, rule, _ = document.read_text().partition("|---|---|---|\n")
    lines = (
        f"| `{key}` | {' / '.join(defaults)} | {', '.join(files)} |\n"
        for key, defaults, files in rows(root)
    )
    document.write_text(head + rule + "".join(lines))


_GOOD = {
    TABLES: '    {u"menu.file", u"ファイル"},\n    {u"menu.edit", u"編集"},\n',
    "app/Menu.cpp": 'text(u"menu.file"_s); text(u"dialog.title"_s, u"入力"_s); f(u"note.txt"_s);\n',
    DOCUMENT: "| key | default | where |\n|---|---|---|\n| `dialog.title` | 入力 | menu |\n",
}
_BAD = [
    ("app/Menu.cpp", 'text(u"dialog.title"_s, u"別"_s);', "has the default '別'"),
    ("app/Menu.cpp", 'text(u"dialog.title"_s); kKeys = {u"dialog.new"_s};', "in no table"),
    ("app/Menu.cpp", 'text(u"dialog.title"_s); text(u"other.new"_s);', "in no table"),
    ("app/Menu.cpp", 'text(u"menu.file"_s);', "is looked up nowhere"),
]


def self_test():
    def complaints(change):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for place, text in {**_GOOD, **change}.items():
                (root / place).parent.mkdir(parents=True, exist_ok=True)
                (root / place).write_text(text)
            return faults(root)

    if complaints({}):
        sys.exit(f"a tree in order is refused: {complaints({})}")
    for place, text, expected in _BAD:
        found = complaints({place: text})
        if len(found) != 1 or expected not in found[0]:
            sys.exit(f"{place} with {text!r}: expected one complaint with {expected!r}, got {found}")
    print(f"{len(_BAD)} faults found as they should be")


def main(arguments):
    if arguments == ["--self-test"]:
        self_test()
        return
    if arguments == ["--update"]:
        update(pathlib.Path(__file__).resolve().parent.parent)
        return
    root = pathlib.Path(arguments[0]) if arguments else pathlib.Path(__file__).resolve().parent.parent
    found = faults(root)
    print("\n".join(found) or f"{len(used_keys(root))} keys are known")
    sys.exit(bool(found))


if __name__ == "__main__":
    main(sys.argv[1:])
