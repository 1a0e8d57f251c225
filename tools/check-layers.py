#!/usr/bin/env python3
"""Fails if an include or a link violates the layers.

    check-layers.py [ROOT]      checks the sources under ROOT (default: this repository)
    check-layers.py --self-test tests that each kind of fault is found

The add_layer() calls define which file belongs to which target. The table below, which matches the one of
docs/architecture.md, defines what a target may see."""

import pathlib
import re
import sys
import tempfile

# target -> the targets it may include from and link.
LAYERS = {
    "platform": set(),
    "text": set(),
    "wording": {"platform"},
    "editor": {"text", "wording", "platform"},
    "macro_library": {"wording", "platform"},
    "macro_value": set(),
    "macro_script": {"macro_value"},
    "macro_host": {"macro_value", "platform"},
    "macro_process": {"macro_value", "platform"},
    "macro_engine": {"text", "wording", "platform", "macro_value", "macro_process"},
}
# Widget target -> its logic target, lowest layer first. A widget target sees its logic target, what that
# one sees, and the widget targets before it.
_UI = {
    "platform_ui": "platform",
    "controls": "wording",
    "editor_ui": "editor",
    "macro_library_ui": "macro_library",
    "wording_ui": "wording",
    "macro_engine_ui": "macro_engine",
}
for _name, _logic in _UI.items():
    _lower = [name for name in LAYERS if name in _UI]
    LAYERS[_name] = {_logic, *LAYERS[_logic], *_lower, *(_UI[name] for name in _lower)}
LAYERS["app_logic"] = {"text", "wording", "platform"}
LAYERS["app"] = set(LAYERS)

# Qt module -> the targets that may include its headers. Logic targets are built and tested without a GUI.
WIDGET_TARGETS = {*_UI, "app"}
QT_MODULES = {
    "QtCore": set(LAYERS),
    "QtGui": WIDGET_TARGETS,
    "QtWidgets": WIDGET_TARGETS,
    "QtSvg": {"controls"},
    "QtNetwork": {"app"},
    "QtPrintSupport": {"app"},
}

# Third-party and system headers that only a few targets may include: pattern -> targets.
SEAMS = {
    r"JavaScriptCore/|glib|jsc/": {"macro_script"},
    r"unicode/": {"text"},
    r"xcb/": {"platform_ui"},
    r"fontconfig/": {"platform_ui"},
    r"seccomp\.h|linux/landlock\.h": {"macro_host"},
    r"(sys|netinet|arpa)/|(unistd|fcntl|pwd|grp|sched|signal|spawn|dirent|poll|dlfcn)\.h$": {
        "platform",
        "macro_host",
        "macro_process",
        "macro_value",
    },
}

FOLDERS = ("platform", "text", "wording", "controls", "editor", "macro", "app")
_CALL = re.compile(r"add_layer\(\s*(\w+)(.*?)\)", re.S)
_INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.M)


def read_targets(root):
    """Returns {target: (files, links)}; files are paths relative to `root`."""
    targets = {}
    for folder in FOLDERS:
        for script in sorted((root / folder).rglob("CMakeLists.txt")):
            text = re.sub(r"#.*", "", script.read_text())
            for name, rest in _CALL.findall(text):
                words = rest.replace('"', "").split()
                sources, links = _arguments(words)
                paths = [(script.parent / word).relative_to(root).as_posix() for word in sources]
                targets[name] = (paths, links)
    return targets


def _arguments(words):
    lists = {"SOURCES": [], "LINKS": []}
    current = None
    for word in words:
        if word in lists:
            current = lists[word]
        elif current is not None:
            current.append(word)
    return lists["SOURCES"], lists["LINKS"]


def qt_module(header):
    """Returns the Qt module that contains `header`, or None for a header that is not Qt's."""
    if header.startswith("Qt") and "/" in header:
        return header.split("/")[0]
    for base in pathlib.Path("/usr/include").glob("*/qt6"):
        for module in ("QtCore", "QtGui", "QtWidgets", "QtNetwork", "QtPrintSupport", "QtSvg", "QtTest"):
            if (base / module / header).exists():
                return module
    return "an unknown Qt module" if re.match(r"Q[A-Z]", header) else None


def fault_of_include(target, header, owner):
    """Returns why `target` may not include `header`, or None if it may.

    `owner` maps the files of this repository to their targets."""
    if header in owner:
        other = owner[header]
        if other != target and other not in LAYERS[target]:
            return f"{target} may not see {other}"
        return None
    module = qt_module(header)
    if module:
        return None if target in QT_MODULES.get(module, set()) else f"{target} may not see {module}"
    for pattern, allowed in SEAMS.items():
        if re.match(pattern, header) and target not in allowed:
            return f"only {', '.join(sorted(allowed))} may see it"
    return None


def faults(root):
    targets = read_targets(root)
    owner = {path: name for name, (paths, _) in targets.items() for path in paths}
    found = []
    for name, (paths, links) in targets.items():
        if name not in LAYERS:
            found.append(f"{name}: a target that the table of layers does not know")
            continue
        for link in links:
            if link in LAYERS and link not in LAYERS[name]:
                found.append(f"{name}: may not link {link}")
        for path in paths:
            found.extend(_faults_of_file(root, path, name, owner))
    for folder in FOLDERS:
        for path in sorted((root / folder).rglob("*.[ch]*")):
            place = path.relative_to(root).as_posix()
            if path.suffix in (".h", ".cpp") and place not in owner and path.name != "main.cpp":
                found.append(f"{place}: in no add_layer() call")
    return found


def _faults_of_file(root, path, target, owner):
    file = root / path
    if file.suffix not in (".h", ".cpp"):
        return
    if not file.exists():
        yield f"{path}: named in add_layer({target}) but absent"
        return
    for kind, header in _INCLUDE.findall(file.read_text()):
        if kind == '"' and header not in owner and not _is_generated(header):
            yield f'{path}: "{header}" is no path from the root to a file of a layer'
            continue
        why = fault_of_include(target, header, owner)
        if why:
            yield f"{path}: {header}: {why}"


def _is_generated(header):
    return header.endswith(".moc") or header.startswith("moc_") or header.endswith("_generated.h")


_GOOD = {
    "platform/CMakeLists.txt": "add_layer(platform SOURCES Uuid.h LINKS Qt6::Core)",
    "platform/Uuid.h": "#include <QString>\n#include <unistd.h>\n",
    "wording/CMakeLists.txt": "add_layer(wording SOURCES Key.h LINKS platform)\n"
    "add_layer(wording_ui SOURCES View.h LINKS wording Qt6::Widgets)",
    "wording/Key.h": '#include "platform/Uuid.h"\n#include <string>\n',
    "wording/View.h": '#include "wording/Key.h"\n#include <QWidget>\n',
}
# (file to replace in the good tree, its new content, part of the expected complaint)
_BAD = [
    ("platform/Uuid.h", '#include "wording/Key.h"', "platform may not see wording"),
    ("platform/CMakeLists.txt", "add_layer(platform SOURCES Uuid.h LINKS wording)", "may not link"),
    ("wording/Key.h", '#include "wording/View.h"', "wording may not see wording_ui"),
    ("wording/Key.h", "#include <QWidget>", "wording may not see QtWidgets"),
    ("wording/Key.h", "#include <QtGui/QFont>", "wording may not see QtGui"),
    ("wording/Key.h", "#include <unistd.h>", "only macro_host, macro_process, macro_value, platform may see it"),
    ("wording/View.h", "#include <JavaScriptCore/JavaScript.h>", "only macro_script may see it"),
    ("wording/View.h", '#include "Key.h"', "is no path from the root"),
    ("wording/Lost.h", "", "in no add_layer() call"),
    ("text/CMakeLists.txt", "add_layer(strange SOURCES LINKS)", "does not know"),
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
    root = pathlib.Path(arguments[0]) if arguments else pathlib.Path(__file__).resolve().parent.parent
    found = faults(root)
    print("\n".join(found) or f"{len(read_targets(root))} targets keep to their layers")
    sys.exit(bool(found))


if __name__ == "__main__":
    main(sys.argv[1:])
