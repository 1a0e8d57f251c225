#!/usr/bin/env python3
"""Fails where an include goes beyond what a layer declares, or where the layers do not form layers.

    check-layers.py [ROOT]      checks the sources under ROOT (default: this repository)
    check-layers.py --table     prints the table of docs/architecture.md as it has to be
    check-layers.py --folders   prints the folders of the layers, one a line
    check-layers.py --self-test proves that each kind of fault is found

All rights are read where CMake declares them. The folders are those of `penwick_layers` in the top
CMakeLists.txt. A target may include its own files and those of the layers that LINKS of its add_layer()
call names; a layer that it links and never includes from is a fault too. It may include foreign headers
whose library it links, and headers of the operating system if the call says SYSTEM."""

import pathlib
import re
import sys

import selftest

ARCHITECTURE = "docs/architecture.md"

# Headers of a library that stays behind one seam -> the link that permits them.
SEAMS = {
    r"JavaScriptCore/|glib|jsc/": "PkgConfig::JavaScriptCore",
    r"unicode/": "ICU::",
    r"xcb/": "PkgConfig::Xcb",
    r"fontconfig/": "PkgConfig::Fontconfig",
    r"seccomp\.h": "PkgConfig::Seccomp",
    r"nlohmann/": "nlohmann_json::",
    r"QtSvg/": "Qt6::Svg",
    r"Qt(Gui|Widgets)/": "Qt6::Widgets",
    r"QtNetwork/": "Qt6::Network",
    r"QtPrintSupport/": "Qt6::PrintSupport",
    r"(sys|netinet|arpa|linux)/|(unistd|fcntl|pwd|grp|sched|signal|spawn|dirent|poll|dlfcn)\.h$": "SYSTEM",
}
_CALL = re.compile(r"(add_layer|target_link_libraries)\(\s*([\w-]+)(.*?)\)\s*$", re.S | re.M)
_INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.M)


class Target:
    def __init__(self, folder, words):
        self.folder = folder
        self.paths = []
        self.links = []
        self.add(words)

    def add(self, words):
        current = self.links
        for word in words:
            if word == "SOURCES":
                current = self.paths
            elif word in ("LINKS", "PRIVATE", "PUBLIC"):
                current = self.links
            elif current is self.paths:
                self.paths.append(f"{self.folder}/{word}")
            else:
                self.links.append(word)


def read_folders(root):
    text = (root / "CMakeLists.txt").read_text()
    return re.search(r"set\(penwick_layers\s+([^)]*)\)", text).group(1).split()


def read_targets(root):
    """{name: Target} of the add_layer() calls, and of the links added to those targets later."""
    targets = {}
    for folder in read_folders(root):
        script = root / folder / "CMakeLists.txt"
        text = re.sub(r"#.*", "", script.read_text()) if script.exists() else ""
        for call, name, rest in _CALL.findall(text):
            words = rest.replace('"', "").split()
            if call == "add_layer":
                targets[name] = Target(folder, words)
            elif name in targets:
                targets[name].add(words)
    return targets


def qualified(header):
    """A header of Qt with its module's folder before it; others as they are."""
    for base in pathlib.Path("/usr/include").glob("*/qt6"):
        for module in ("QtGui", "QtWidgets", "QtNetwork", "QtPrintSupport", "QtSvg"):
            if (base / module / header).exists():
                return f"{module}/{header}"
    return header


def missing_link(target, header):
    """The link that `target` needs for a foreign header and does not have, or None."""
    name = qualified(header)
    for pattern, link in SEAMS.items():
        if re.match(pattern, name):
            return None if any(link in known for known in target.links) else link
    return None


def layer_links(target, targets):
    return [link for link in target.links if link in targets]


def cycle(targets):
    """The names of targets that link each other in a circle, if there is one."""
    remaining = dict(targets)
    while free := [n for n, t in remaining.items() if not set(layer_links(t, remaining)) - {n}]:
        for name in free:
            del remaining[name]
    return sorted(remaining)


def faults(root):
    targets = read_targets(root)
    owner = {path: name for name, target in targets.items() for path in target.paths}
    found = []
    if circle := cycle(targets):
        found.append(f"{', '.join(circle)}: they link each other in a circle")
    for name, target in targets.items():
        used = {name}
        for path in target.paths:
            found.extend(_faults_of_file(root, path, name, targets, owner, used))
        for link in layer_links(target, targets):
            if link not in used:
                found.append(f"{name}: links {link} and includes nothing of it")
    for folder in read_folders(root):
        for path in sorted((root / folder).glob("*.[ch]*")):
            place = path.relative_to(root).as_posix()
            if path.suffix in (".h", ".cpp") and place not in owner and path.name != "main.cpp":
                found.append(f"{place}: in no add_layer() call")
    found.extend(_faults_of_table(root, targets))
    return found


def _faults_of_file(root, path, name, targets, owner, used):
    file = root / path
    if file.suffix not in (".h", ".cpp"):
        return
    if not file.exists():
        yield f"{path}: named in add_layer({name}) but absent"
        return
    target = targets[name]
    for kind, header in _INCLUDE.findall(file.read_text()):
        other = owner.get(header)
        if other:
            used.add(other)
            if other != name and other not in target.links:
                yield f"{path}: {header}: {name} does not link {other}"
        elif kind == '"' and not header.endswith(".moc"):
            yield f'{path}: "{header}" is no path from the root to a file of a layer'
        elif link := missing_link(target, header):
            yield f"{path}: {header}: {name} does not link {link}"


def table(targets):
    """Lines `| target | links |`, lowest first: a target stands below all that it links."""
    lines = []
    remaining = dict(targets)
    while remaining:
        free = [n for n, t in remaining.items() if not set(layer_links(t, remaining)) - {n}]
        for name in free or list(remaining):
            links = ", ".join(sorted(layer_links(targets[name], targets))) or "-"
            lines.append((name, links))
            del remaining[name]
    return lines


def _faults_of_table(root, targets):
    document = root / ARCHITECTURE
    if not document.exists():
        return
    stated = dict(re.findall(r"^\| `(\w+)` \|.*\| ([^|]*) \|$", document.read_text(), re.M))
    for name, links in table(targets):
        if stated.get(name) != links:
            yield f"{ARCHITECTURE}: {name} links {links}, the table says {stated.get(name)}"


_GOOD = {
    "CMakeLists.txt": "set(penwick_layers platform wording text)",
    "platform/CMakeLists.txt": "add_layer(platform SYSTEM SOURCES Uuid.h LINKS Qt6::Core)\n",
    "platform/Uuid.h": "#include <QString>\n#include <unistd.h>\n",
    "wording/CMakeLists.txt": "add_layer(wording SOURCES Key.h LINKS platform)\n"
    "add_layer(wording_ui SOURCES View.h LINKS wording Qt6::Widgets)\n",
    "wording/Key.h": '#include "platform/Uuid.h"\n#include <string>\n',
    "wording/View.h": '#include "wording/Key.h"\n#include <QWidget>\n',
    "docs/architecture.md": "| `platform` | ids | - |\n| `wording` | texts | platform |\n"
    "| `wording_ui` | views | wording |\n",
}
_USES = '#include "platform/Uuid.h"\n'
_BAD = [
    ("platform/Uuid.h", "", '#include "wording/Key.h"', "platform does not link wording"),
    ("wording/Key.h", "<string>", '"wording/View.h"', "wording does not link wording_ui"),
    ("wording/Key.h", _USES, "", "links platform and includes nothing of it"),
    ("wording/Key.h", "<string>", "<QWidget>", "wording does not link Qt6::Widgets"),
    ("wording/Key.h", "<string>", "<QtGui/QFont>", "wording does not link Qt6::Widgets"),
    ("wording/Key.h", "<string>", "<unistd.h>", "wording does not link SYSTEM"),
    ("platform/Uuid.h", "<QString>", "<JavaScriptCore/JavaScript.h>", "link PkgConfig::JavaScriptCore"),
    ("platform/Uuid.h", "<QString>", '"Key.h"', "is no path from the root"),
    ("wording/Lost.h", "", "#pragma once", "in no add_layer() call"),
    ("wording/CMakeLists.txt", "Key.h", "Key.h Lost.h", "named in add_layer(wording) but absent"),
    ("platform/CMakeLists.txt", "Qt6::Core", "wording", "they link each other in a circle"),
    ("docs/architecture.md", "| views | wording |", "| views | platform |", "wording_ui links wording, the table"),
]


def main(arguments):
    root = pathlib.Path(__file__).resolve().parent.parent
    if arguments == ["--self-test"]:
        selftest.run(_GOOD, _BAD, faults)
        return
    if arguments == ["--folders"]:
        print("\n".join(read_folders(root)))
        return
    if arguments == ["--table"]:
        print("\n".join(f"| `{name}` | | {links} |" for name, links in table(read_targets(root))))
        return
    found = faults(pathlib.Path(arguments[0]) if arguments else root)
    print("\n".join(found) or f"{len(read_targets(root))} targets keep to their layers")
    sys.exit(bool(found))


if __name__ == "__main__":
    main(sys.argv[1:])
