#!/usr/bin/env python3
"""Proves that the benchmarks compare and print figures as they claim; measures nothing."""

import json
import sys

sys.dont_write_bytecode = True
import compare  # noqa: E402
import document  # noqa: E402
from table import Floor, Row  # noqa: E402

# The runs before, the runs now, what compare.verdict says.
VERDICTS = [
    ([9, 9, 10, 11, 11], [19, 19, 20, 21, 21], "worse"),
    ([19, 19, 20, 21, 21], [9, 9, 10, 11, 11], "better"),
    ([99, 99, 100, 101, 101], [103, 103, 104, 105, 105], "same"),  # Less than 5 %.
    ([99, 99, 100, 101, 101], [105, 105, 106, 107, 107], "worse"),
    ([5, 5, 10, 15, 15], [14, 14, 20, 26, 26], "same"),  # The ranges overlap.
    ([14, 14, 20, 26, 26], [5, 5, 10, 15, 15], "same"),
    ([5, 5, 10, 15, 15], [16, 16, 20, 26, 26], "worse"),  # The gap is narrow, but the runs are many.
    ([5, 10, 15], [16, 20, 26], "same"),
    ([5, 5, 10, 15, 15], [16, 20, 26], "same"),
    ([9.9, 10, 10.1], [14, 20, 26], "same"),
    ([9, 10, 11], [14, 15, 16], "worse"),  # The runs are few, but the gap is wide.
    ([14, 15, 16], [9, 10, 11], "better"),
    ([10], [20, 20, 20], "unknown"),
    ([10, 10], [20], "unknown"),
    ([-1, -2], [2, 3], "worse"),
    ([1] * 9 + [50], [20] * 9 + [1], "worse"),  # Ten runs: an outlier hides nothing.
]


def row(runs, case="key", **rest):
    return Row(case, "time", "ms", runs, **rest)


def figure(*arguments, **rest):
    return json.loads(row(*arguments, **rest).json())


def expect(what, got, expected):
    if got != expected:
        sys.exit(f"{what}: expected {expected!r}, got {got!r}")


def check_rows():
    floored = row([3, 1, 2], floor=Floor("a plain read", 0.5), input="10 MB")
    expect("the figure in JSON", json.loads(floored.json()),
           {"case": "key", "input": "10 MB", "metric": "time", "unit": "ms", "value": 2, "low": 1, "high": 3,
            "runs": 3, "floor": 0.5, "floorName": "a plain read", "ratio": 4.0})
    expect("a line of the table", floored.markdown(),
           "| key | 10 MB | time | 2.00 ms | 3: 1.00 ms to 3.00 ms | 0.50 ms: a plain read | 4.00 |")
    expect("a line without a floor", row([2]).markdown(), "| key |  | time | 2.00 ms | 1 | none |  |")
    expect("a figure without a floor", figure([2])["ratio"], None)
    expect("the range of 20 runs", row(list(range(20))).range, (2, 17))
    expect("the range of 9 runs", row(list(range(9))).range, (0, 8))


def check_verdicts():
    for before, now, expected in VERDICTS:
        expect(f"{before} and then {now}", compare.verdict(figure(before), figure(now)), expected)
    old = {name: value for name, value in figure([9, 10, 11]).items() if name not in ("low", "high", "runs")}
    expect("a file without ranges", compare.verdict(old, figure([19, 20, 21])), "unknown")


def check_report():
    before = [row([100, 101, 99]), row([9, 10, 11], "open"), row([5, 5], "save"), row([1], "once"), row([1], "gone")]
    now = [row([100, 101, 99]), row([4, 5, 6], "open", floor=Floor("a plain read", 3)), row([9, 9], "save"),
           row([9], "once"), row([1], "new"), row([1], "newer")]
    text = compare.report(*(compare.read("\n".join(row.json() for row in rows)) for rows in (before, now)))
    expect("the report", text.splitlines()[2:],
           ["| worse | save |  | time | 5.00 ms | 9.00 ms | +80 % | none | none |",
            "| better | open |  | time | 10.00 ms | 5.00 ms | -50 % | none | 3.00 ms |", "",
            "2 of 4 figures changed; 1 within the noise of their runs; 1 not judged, because a single run tells no"
            " noise; 1 only in the earlier run; 2 only in this run."])


def check_document():
    text = "a\n<!-- x -->\nold\n<!-- end of x -->\nb"
    expect("a section", document.replaced(text, "x", ["new"]), "a\n<!-- x -->\n\nnew\n\n<!-- end of x -->\nb")
    for broken in ("", text + text, text.replace("end of x", "end")):
        try:
            document.replaced(broken, "x", [])
        except ValueError:
            continue
        sys.exit(f"a document without markers is accepted: {broken!r}")
    for section in ("bench/run", "bench/peers"):  # The document itself can be written.
        document.replaced(document.DOCUMENT.read_text(encoding="utf-8"), section, [])


if __name__ == "__main__":
    check_rows()
    check_verdicts()
    check_report()
    check_document()
    print("the benchmarks compare and print as they should")
