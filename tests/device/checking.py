"""What a check is, and how it says what it found.

A check is a function that takes a Bench and has a title. It fails by an exception. What cannot be shown on this machine
is skipped, with the reason; it never counts as passed.
"""
import json
import os
import shutil
import subprocess
import tempfile

from box import Box

UNIT = "DAXService.service"
CHECKS = []


class Check:
    """A function with a title. Its group is the name of its module."""

    def __init__(self, title, function):
        self.title = title
        self.function = function
        self.group = function.__module__.rpartition(".")[2]


def check(title):
    """Makes a check of a function."""
    def register(function):
        CHECKS.append(Check(title, function))
        return function
    return register


class Failed(Exception):
    """What was found is not what must be."""


class Skipped(Exception):
    """Why this cannot be shown here."""


def expect(condition, what):
    """`what` says what must hold."""
    if not condition:
        raise Failed(what)


def expect_equal(actual, expected, what):
    if actual != expected:
        raise Failed(f"{what}:\n  found    {actual!r}\n  expected {expected!r}")


def expect_in(part, text, what):
    if part not in text:
        raise Failed(f"{what}:\n  missing  {part!r}\n  in       {text!r}")


class Bench:
    """What a check works with: boxes, and a folder of its own outside of them. Everything goes at its end."""

    def __init__(self, run, folder, lowers, options, bus, seed):
        self.bus = bus
        self.options = options
        self.seed = seed
        self.folder = tempfile.mkdtemp(dir=folder)
        self._run = run
        self._lowers = lowers
        self._boxes = []
        self._endings = []

    def new_box(self, installed=True):
        """A box, switched off, with the packages installed or without them."""
        box = Box(self._run, self.folder, self._lowers if installed else self._lowers[-1:], self.bus)
        self._boxes.append(box)
        return box

    def booted_box(self):
        box = self.new_box()
        box.boot()
        return box

    def at_end(self, function):
        """Calls the function when the boxes are gone."""
        self._endings.append(function)

    def describe(self):
        """The end of what the boxes say, for somebody who looks for a cause."""
        return "\n".join(box.last_words() for box in self._boxes)

    def close(self):
        for box in self._boxes:
            box.throw_away()
        for function in reversed(self._endings):
            function()
        shutil.rmtree(self.folder, ignore_errors=True)


def json_of(done):
    """The document that a program of ours printed with --json."""
    try:
        return json.loads(done.output)
    except ValueError:
        raise Failed(f"no JSON document was printed: {done}") from None


def outside(*command):
    """Runs a command of this machine, which must succeed, and returns what it printed."""
    done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise Failed(f"{' '.join(command)}: {done.stdout}{done.stderr}")
    return done.stdout


INSIDE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "inside")


def put_program(box, name):
    """Copies a program of inside/ into the box, with what it imports, and returns the words that run it there."""
    for file in ("bus.py", name):
        with open(os.path.join(INSIDE, file), encoding="utf-8") as text:
            box.write("/usr/local/lib/device/" + file, text.read(), 0o755)
    return ["python3", "-B", "/usr/local/lib/device/" + name]
