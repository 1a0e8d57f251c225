"""The self-test of the checkers: a small tree in order passes, and each fault put into it is found."""

import pathlib
import sys
import tempfile


def complaints(files, check):
    """What `check(root)` returns for a tree of these files, {path: text}."""
    with tempfile.TemporaryDirectory() as name:
        root = pathlib.Path(name).resolve()
        for place, text in files.items():
            (root / place).parent.mkdir(parents=True, exist_ok=True)
            (root / place).write_text(text)
        return check(root)


def run(good, faults, check):
    """Exits with a message unless `check` accepts the tree `good` and finds each of `faults`, given as
    (place, text, changed, expected): `text` in that file becomes `changed` ("" stands for the whole
    file), and one complaint contains `expected`."""
    if found := complaints(good, check):
        sys.exit(f"a tree in order is refused: {found}")
    for place, text, changed, expected in faults:
        before = good.get(place, "")
        if text not in before:
            sys.exit(f"{place} does not contain {text!r}")
        after = before.replace(text, changed) if text else changed
        found = complaints({**good, place: after}, check)
        if not any(expected in complaint for complaint in found):
            sys.exit(f"{place} with {changed!r}: expected a complaint with {expected!r}, got {found}")
    print(f"{len(faults)} faults found as they should be")
