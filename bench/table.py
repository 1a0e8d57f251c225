"""The rows that the benchmarks measure, as lines of a Markdown table and as JSON."""

import dataclasses
import json
import statistics

HEADER = ("| case | input | metric | value | runs | floor | ratio |\n"
          "|---|---|---|---:|---|---|---:|")


@dataclasses.dataclass(frozen=True)
class Floor:
    """A lower bound: what the same work costs at least.

    `name` says what it is; `value` is in the unit of the row."""

    name: str
    value: float


@dataclasses.dataclass(frozen=True)
class Row:
    """One figure. `runs` are the values of the single runs in `unit`, at least one; less is better.

    `miss` says how the figure misses its limit; it is empty if the figure meets the limit or has none."""

    case: str
    metric: str
    unit: str
    runs: list
    floor: Floor | None = None
    miss: str = ""
    input: str = ""

    @property
    def value(self):
        return statistics.median(self.runs)

    @property
    def range(self):
        """The lowest and the highest run; of ten or more, without a tenth at each end."""
        cut = len(self.runs) // 10
        kept = sorted(self.runs)[cut:len(self.runs) - cut]
        return kept[0], kept[-1]

    @property
    def ratio(self):
        return self.value / self.floor.value if self.floor and self.floor.value else None

    def json(self):
        """Returns the row as one line of JSON."""
        low, high = self.range
        floor = self.floor or Floor(None, None)
        return json.dumps({"case": self.case, "input": self.input, "metric": self.metric, "unit": self.unit,
                           "value": self.value, "low": low, "high": high, "runs": len(self.runs),
                           "floor": floor.value, "floorName": floor.name, "ratio": self.ratio}, ensure_ascii=False)

    def markdown(self):
        """Returns the row as a line of the table below `HEADER`."""
        low, high = (formatted(end, self.unit) for end in self.range)
        runs = f"{len(self.runs)}: {low} to {high}" if len(self.runs) > 1 else "1"
        floor = f"{formatted(self.floor.value, self.unit)}: {self.floor.name}" if self.floor else "none"
        ratio = "" if self.ratio is None else f"{self.ratio:.2f}"
        cells = self.case, self.input, self.metric, formatted(self.value, self.unit), runs, floor, ratio
        return f"| {' | '.join(cells)} |"


def formatted(value, unit):
    if unit == "bytes":
        return f"{value / 1e6:.1f} MB"
    return f"{value:.2f} {unit}"
