"""The runs of these checks themselves."""
import os
import signal
import subprocess
import sys

from box import children_of, text_of
from checking import Failed, check, expect_equal, expect_in
from confinement import PREFIX, RUN, cgroup_hierarchies
from waiting import NeverHappened, wait_until

PROGRAM = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "run.py")


def start_run(bench, *words, without_network=False):
    """Starts another run of these checks inside this one. It has a box that is on, and a disk, and keeps them."""
    prefix = ["unshare", "--net"] if without_network else []
    return subprocess.Popen([*prefix, sys.executable, PROGRAM, "--packages", bench.options.packages, "--cache",
                             bench.options.cache, *words], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, text=True)


def wait_for_hold(run):
    for line in run.stdout:
        if line == "holding\n":
            return


def processes():
    """Those that have not ended. Here the first process waits for no others."""
    return {name for name in os.listdir("/proc") if name.isdigit() and text_of(f"/proc/{name}/cmdline")}


def cgroups():
    places = [os.path.join(place, os.environ[RUN]) for place in cgroup_hierarchies()]
    return {folder for place in places for folder, _, _ in os.walk(place)}


def loop_devices(of_run):
    """Other programs of the machine have loop devices, too."""
    found = set()
    for name in os.listdir("/sys/block"):
        if of_run in text_of(f"/sys/block/{name}/loop/backing_file"):
            found.add(name)
    return found


def mounts():
    return set(text_of("/proc/self/mounts").splitlines())


def traces(of_run="no run"):
    return {"processes": processes(), "cgroups": cgroups(), "loop devices": loop_devices(of_run), "mounts": mounts()}


def name_of(run):
    """A run inside this one has its cgroups below those of this one."""
    return next(name for name in map(os.path.basename, cgroups()) if name.startswith(f"{PREFIX}{run.pid}-"))


def new_traces(before, of_run):
    now = traces(of_run)
    return {kind: now[kind] - before[kind] for kind in now if now[kind] - before[kind]}


def expect_no_new_traces(before, of_run, how):
    """The kernel takes processes and loop devices away a moment later."""
    try:
        wait_until(lambda: not new_traces(before, of_run), "", within=10)
    except NeverHappened:
        raise Failed(f"a run that {how} leaves behind: {new_traces(before, of_run)}") from None


def front(run):
    return run.pid


def keeper(run):
    """The child of the front that is one more of the same program."""
    return next(pid for pid in children_of(run.pid) if children_of(pid) == [])


def first_inside(run):
    """The child of `unshare`, with which its namespace ends."""
    unshare = next(pid for pid in children_of(run.pid) if children_of(pid))
    return children_of(unshare)[0]


ENDS = [
    ("was asked to end by SIGTERM", signal.SIGTERM, front, 128 + signal.SIGTERM),
    ("was interrupted", signal.SIGINT, front, 128 + signal.SIGINT),
    ("lost its terminal", signal.SIGHUP, front, 128 + signal.SIGHUP),
    ("was killed", signal.SIGKILL, front, -signal.SIGKILL),
    ("was killed inside", signal.SIGKILL, first_inside, 1),
    ("lost its keeper and then was asked to end", signal.SIGKILL, keeper, None),
]


@check("A run that a signal ends leaves no process, mount, cgroup or loop device behind")
def nothing_stays(bench):
    for how, number, whom, status in ENDS:
        before = traces()
        run = start_run(bench, "--hold")
        wait_for_hold(run)
        name = name_of(run)
        held = set(new_traces(before, name))
        expect_equal(held, {"processes", "cgroups", "loop devices"}, "what a run has while it works")
        os.kill(whom(run), number)
        if status is None:
            os.kill(run.pid, signal.SIGTERM)
        ended = run.wait(30)
        expect_equal(ended, 128 + signal.SIGTERM if status is None else status, f"the status of a run that {how}")
        expect_no_new_traces(before, name, how)


@check("A run that is killed at its very start leaves nothing behind")
def nothing_stays_of_a_start(bench):
    for _ in range(10):
        before = traces()
        run = start_run(bench, "--hold")
        wait_until(lambda: cgroups() - before["cgroups"], "the run makes its cgroups")
        run.kill()
        run.wait(30)
        expect_no_new_traces(before, f"{PREFIX}{run.pid}-", "was killed at its start")


@check("Two runs work side by side")
def two_at_once(bench):
    runs = [start_run(bench, "start", "--bus", "dbus-daemon") for _ in range(2)]
    for run in runs:
        output, _ = run.communicate(timeout=120)
        expect_equal((run.returncode, output.splitlines()[-1].endswith(" passed, 0 failed")), (0, True),
                     f"what a run came to that said\n{output}\n")


@check("Where no root can be made, a run says why and ends with 77")
def no_root(bench):
    run = start_run(bench, "--cache", bench.folder + "/empty", without_network=True)
    output, _ = run.communicate(timeout=120)
    expect_equal(run.returncode, 77, f"the status of a run that said\n{output}\n")
    expect_in("No box can run here: the root could not be made, which needs the network once:", output, "what it says")
