"""Waiting for a condition, never for a time."""

import time


class Timeout(AssertionError):
    """What was waited for did not come."""


def until(condition, what, seconds=60.0):
    """Calls `condition` until its result is true, and returns that result.

    Raises `Timeout` with `what`, a text or a callable that gives one, after `seconds`."""
    deadline = time.monotonic() + seconds
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > deadline:
            raise Timeout(f"waited {seconds:g} s for: {what() if callable(what) else what}")
        time.sleep(0.02)
