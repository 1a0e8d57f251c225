"""Waits for conditions instead of fixed times."""

import time


class Timeout(AssertionError):
    """The awaited condition did not become true in time."""


def until(condition, what, seconds=60.0):
    """Calls `condition` until its result is true, and returns that result.

    After `seconds`, raises `Timeout` with `what`, a text or a callable that returns one."""
    deadline = time.monotonic() + seconds
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > deadline:
            raise Timeout(f"waited {seconds:g} s for: {what() if callable(what) else what}")
        time.sleep(0.02)
