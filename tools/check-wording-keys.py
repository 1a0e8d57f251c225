#!/usr/bin/env python3
"""Fails if the wording keys of the sources, the tables, the English profile and the document differ.

    check-wording-keys.py [ROOT]      checks the sources under ROOT (default: this repository)
    check-wording-keys.py --update    rewrites the document's rows from the tables
    check-wording-keys.py --self-test tests that each kind of fault is found

A key that is looked up must be in the built-in Japanese table or among penwick's own texts. A key of the own
texts must be looked up, and the built-in table must not have it. A key outside a lookup's call is recognized by
its first part. No lookup passes a default text. The English profile has a text for each key of the tables, in the
order of the keys and with the places (%1) of the Japanese text, and no others."""

import json
import pathlib
import re
import sys

import selftest

TABLES = "wording/WordingTables.cpp"
OWN = "wording/OwnTexts.cpp"
ENGLISH = "packaging/profiles/english.json"
DOCUMENT = "docs/wording-keys.md"

_PAIR = re.compile(r'^    \{u"([\w.]+)", u"(.*)"\},$', re.M)
_KEY = re.compile(
    r'u"((?:app|batch|cli|command|common|dialog|editor|error|macro|menu|palette|preference|profile|status)\.[a-z]\w*(?:\.[a-z]\w*)*)"(?!, Place::)')  # A command's name is no key.
_LOOKUP = re.compile(r'\btext\(\s*u"([a-z]\w*(?:\.\w+)+)"(?:_s)?\s*(\)|,\s*\{)?')
_PLACE = re.compile(r"%[1-9]")
_RULE = "|---|---|---|\n"


def used_keys(root):
    """Returns {key: a file that looks it up} and a fault for each lookup that passes a default text."""
    used, found = {}, []
    layers = (root / "CMakeLists.txt").read_text()
    for folder in re.search(r"set\(penwick_layers\s+([^)]*)\)", layers).group(1).split():
        for path in sorted((root / folder).rglob("*.[ch]*")):
            place = path.relative_to(root).as_posix()
            if place in (TABLES, OWN):
                continue
            text = re.sub(r"^\s*//.*$", "", path.read_text(), flags=re.M)
            for key, end in _LOOKUP.findall(text):
                used.setdefault(key, place)
                if not end:
                    found.append(f"{place}: {key} is looked up with a default text")
            for key in _KEY.findall(text):
                used.setdefault(key, place)
    return used, found


def built_in(root):
    """Returns the texts of the built-in tables by key, the Japanese and the English ones."""
    tables = (root / TABLES).read_text().partition("kEnglish")
    return dict(_PAIR.findall(tables[0])), dict(_PAIR.findall(tables[2]))


def english_pairs(root):
    """Returns the (key, text) pairs of the English profile in the order of the file."""
    profile = json.loads((root / ENGLISH).read_text(), object_pairs_hook=lambda pairs: pairs)
    return dict(profile)["values"]


def escaped(text):
    """The text as the tables write it."""
    return text.replace("\\", r"\\").replace("\n", r"\n")


def english_faults(japanese, keys, pairs):
    """Faults of the English profile, given the Japanese texts and all keys of the tables."""
    texts, order = dict(pairs), [key for key, _ in pairs]
    found = [f"{ENGLISH}: {key} has no text" for key in sorted(keys) if not texts.get(key)]
    found += [f"{ENGLISH}: {key} is in no table" for key in sorted(texts.keys() - keys)]
    found += [f"{ENGLISH}: {key} does not come after {last}" for last, key in zip(order, order[1:]) if last >= key]
    found += [
        f"{ENGLISH}: {key} has other places than the Japanese text"
        for key in order
        if set(_PLACE.findall(texts[key])) != set(_PLACE.findall(japanese.get(key, texts[key])))
    ]
    return found


def row(*cells):
    return f"| `{cells[0]}` | {' | '.join(cells[1:])} |\n".replace(r"\n", "<br>")


def document(root):
    """Returns the document with the rows that it must have."""
    head, rule, _ = (root / DOCUMENT).read_text().partition(_RULE)
    japanese, english = built_in(root)
    japanese.update(_PAIR.findall((root / OWN).read_text()))
    keys = sorted(japanese.keys() | english.keys())
    texts = dict(english_pairs(root))
    return head + rule + "".join(row(key, japanese.get(key, ""), escaped(texts.get(key, ""))) for key in keys)


def faults(root):
    table, english = built_in(root)
    japanese, own_texts = table.keys(), _PAIR.findall((root / OWN).read_text())
    own = [key for key, _ in own_texts]
    used, found = used_keys(root)
    found += [f"{used[key]}: {key} has no Japanese text" for key in sorted(used.keys() - japanese - set(own))]
    found += [f"{OWN}: {key} is looked up nowhere" for key in own if key not in used]
    found += [f"{OWN}: {key} is in {TABLES}, too" for key in own if key in japanese]
    found += [f"{OWN}: {key} does not come after {last}" for last, key in zip(own, own[1:]) if last >= key]
    texts = table | dict(own_texts)
    found += english_faults(texts, texts.keys() | english.keys(), english_pairs(root))
    if document(root) != (root / DOCUMENT).read_text():
        found.append(f"{DOCUMENT} is out of date: run tools/check-wording-keys.py --update")
    return found


_GOOD = {
    "CMakeLists.txt": "set(penwick_layers wording app)",
    TABLES: '    {u"menu.file", u"ファイル"},\nkEnglish\n    {u"menu.window", u"Window"},\n',
    OWN: '    {u"dialog.a", u"入力\\n%1"},\n    {u"other.b", u"別"},\n',
    "app/Menu.cpp": 'text(u"menu.file"_s); kKeys = {u"other.b", u"note.txt"};\n'
                    'text(u"dialog.a"_s, {x}); text(u"other.b"_s);\n',
    ENGLISH: '{"values": {"dialog.a": "Input\\n%1",\n"menu.file": "File",\n"menu.window": "Window",\n'
             '"other.b": "Other"}}',
    DOCUMENT: "| key | Japanese | English |\n|---|---|---|\n| `dialog.a` | 入力<br>%1 | Input<br>%1 |\n"
              "| `menu.file` | ファイル | File |\n| `menu.window` |  | Window |\n| `other.b` | 別 | Other |\n",
}
_BAD = [
    ("app/Menu.cpp", 'text(u"menu.file"_s)', 'text(u"dialog.new"_s)', "dialog.new has no Japanese text"),
    ("app/Menu.cpp", 'text(u"menu.file"_s)', 'text(u"other.new"_s)', "other.new has no Japanese text"),
    ("app/Menu.cpp", "note.txt", "menu.window", "menu.window has no Japanese text"),
    ("app/Menu.cpp", 'text(u"dialog.a"_s, {x});', "", "dialog.a is looked up nowhere"),
    ("app/Menu.cpp", 'text(u"dialog.a"_s, {x});', '\n // text(u"dialog.a"_s)\n', "dialog.a is looked up nowhere"),
    ("app/Menu.cpp", "{x}", 'u"入力"_s', "dialog.a is looked up with a default"),
    (TABLES, '"menu.file", u"ファイル"', '"menu.file", u""},\n    {u"dialog.a", u""', "dialog.a is in"),
    (OWN, "other.b", "dialog.a", "dialog.a does not come after dialog.a"),
    (OWN, "入力", "別", "is out of date"),
    (DOCUMENT, "| `other.b` | 別 | Other |\n", "", "is out of date"),
    (ENGLISH, '"Window"', '"Windows"', "is out of date"),
    (ENGLISH, '"menu.file": "File",\n', "", "menu.file has no text"),
    (ENGLISH, '"menu.window": "Window",\n', "", "menu.window has no text"),
    (ENGLISH, '"Other"', '""', "other.b has no text"),
    (ENGLISH, '"other.b"', '"other.c"', "other.c is in no table"),
    (ENGLISH, '"menu.file": "File"', '"menu.window": "Window"', "menu.window does not come after menu.window"),
    (ENGLISH, "%1", "%2", "dialog.a has other places"),
    (ENGLISH, "\\n%1", "", "dialog.a has other places"),
]


def main(arguments):
    root = pathlib.Path(__file__).resolve().parent.parent
    if arguments == ["--self-test"]:
        selftest.run(_GOOD, _BAD, faults)
    elif arguments == ["--update"]:
        (root / DOCUMENT).write_text(document(root))
    else:
        found = faults(pathlib.Path(arguments[0]) if arguments else root)
        print("\n".join(found) or "every key has its text")
        sys.exit(bool(found))


if __name__ == "__main__":
    main(sys.argv[1:])
