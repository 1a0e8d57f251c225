"""Compares two runs of bench/run or bench/peers on one machine, by what --json wrote.

A figure became better or worse if its medians differ by more than 5 % and the ranges of its single runs do not
overlap. With five runs on both sides, chance separates the ranges of two equal programs in 2 of 252 cases
(2 / (10 over 5)); with three in 2 of 20. So where one side has fewer than five, the gap between the ranges must be
wider than both ranges. Whether a figure of a single run changed cannot be known; nor can that of a file from
before `low` and `high` were written."""

import json

from table import formatted

LEAST_CHANGE = 0.05  # Of the earlier median.
ENOUGH_RUNS = 5
_HEADER = ("| | case | input | metric | before | now | change | floor before | floor now |\n"
           "|---|---|---|---|---:|---:|---:|---:|---:|")


def read(text):
    """{(case, input, metric): figure}, from lines of JSON."""
    figures = [json.loads(line) for line in text.splitlines()]
    return {(figure["case"], figure["input"], figure["metric"]): figure for figure in figures}


def verdict(before, now):
    """"better", "worse", "same" (within the noise of the runs) or "unknown" (nothing tells the noise)."""
    runs = min(before.get("runs", 1), now.get("runs", 1))
    if runs < 2:
        return "unknown"
    gap = max(before["low"] - now["high"], now["low"] - before["high"])
    least = 0 if runs >= ENOUGH_RUNS else max(side["high"] - side["low"] for side in (before, now))
    if gap <= least or abs(now["value"] - before["value"]) <= LEAST_CHANGE * abs(before["value"]):
        return "same"
    return "better" if now["value"] < before["value"] else "worse"


def report(before, now):
    """Describes what became better or worse, and how many figures did not or cannot be compared."""
    both = [key for key in before if key in now]
    verdicts = {key: verdict(before[key], now[key]) for key in both}
    changed = [key for key in both if verdicts[key] in ("better", "worse")]
    changed.sort(key=lambda key: verdicts[key] != "worse")
    lines = [_HEADER, *(_line(key, verdicts[key], before[key], now[key]) for key in changed), ""] if changed else []
    counts = {"within the noise of their runs": list(verdicts.values()).count("same"),
              "not judged, because a single run tells no noise": list(verdicts.values()).count("unknown"),
              "only in the earlier run": len(before) - len(both), "only in this run": len(now) - len(both)}
    unchanged = [f"{count} {what}" for what, count in counts.items() if count]
    lines.append("; ".join([f"{len(changed)} of {len(both)} figures changed", *unchanged]) + ".")
    return "\n".join(lines)


def _line(key, word, before, now):
    change = f"{(now['value'] / before['value'] - 1) * 100:+.0f} %" if before["value"] else ""
    cells = [word, *key, _value(before), _value(now), change, _value(before, "floor"), _value(now, "floor")]
    return f"| {' | '.join(cells)} |"


def _value(figure, key="value"):
    return "none" if figure[key] is None else formatted(figure[key], figure["unit"])
