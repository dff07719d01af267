"""Waiting for a condition, with a bound."""
import time


class NeverHappened(Exception):
    """What was waited for did not come."""


def wait_until(condition, what, within=60, every=0.01):
    """The first true value of the condition. `within` and `every` are in seconds."""
    deadline = time.monotonic() + within
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise NeverHappened(f"not within {within} s: {what}")
        time.sleep(every)
