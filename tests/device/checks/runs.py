"""The runs of these checks themselves."""
import os
import shutil
import signal
import subprocess
import sys

from box import children_of, text_of
from checking import Failed, check, expect_equal, expect_in, outside
from confinement import PREFIX, RUN, cgroup_hierarchies, hand_down_controllers
from waiting import NeverHappened, wait_until

RUN_SECONDS = 300
NO_BOX = 77
PROGRAM = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "run.py")
TREE = os.path.dirname(os.path.dirname(os.path.dirname(PROGRAM)))


def start_run(bench, *words, by=()):
    """Starts another run of these checks inside this one, in a process group of its own. `by` is a command that runs
    another one."""
    return subprocess.Popen([*by, sys.executable, PROGRAM, "--packages", bench.options.packages, "--cache",
                             bench.options.cache, *words], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, text=True, process_group=0)


def outcome(bench, *words, by=()):
    """The status of another run, and what it says."""
    run = start_run(bench, *words, by=by)
    output, _ = run.communicate(timeout=RUN_SECONDS)
    return run.returncode, output


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
        wait_until(lambda: not new_traces(before, of_run), "")
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


def group(run):
    """For a signal to the front and all that is in its process group."""
    return -run.pid


ENDS = [
    ("was asked to end by SIGTERM", signal.SIGTERM, front, 128 + signal.SIGTERM),
    ("was interrupted", signal.SIGINT, front, 128 + signal.SIGINT),
    ("lost its terminal", signal.SIGHUP, front, 128 + signal.SIGHUP),
    ("was killed", signal.SIGKILL, front, -signal.SIGKILL),
    ("was killed with its process group", signal.SIGKILL, group, -signal.SIGKILL),
    ("was killed inside", signal.SIGKILL, first_inside, 128 + signal.SIGKILL),
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
        ended = run.wait(RUN_SECONDS)
        expect_equal(ended, 128 + signal.SIGTERM if status is None else status, f"the status of a run that {how}")
        expect_no_new_traces(before, name, how)


@check("A run that is killed at its very start leaves nothing behind")
def nothing_stays_of_a_start(bench):
    for _ in range(10):
        before = traces()
        run = start_run(bench, "--hold")
        wait_until(lambda: cgroups() - before["cgroups"], "the run makes its cgroups")
        run.kill()
        run.wait(RUN_SECONDS)
        expect_no_new_traces(before, f"{PREFIX}{run.pid}-", "was killed at its start")


@check("Two runs work side by side")
def two_at_once(bench):
    runs = [start_run(bench, "start", "--bus", "dbus-daemon") for _ in range(2)]
    for run in runs:
        output, _ = run.communicate(timeout=RUN_SECONDS)
        expect_equal((run.returncode, output.splitlines()[-1].endswith(" passed, 0 failed")), (0, True),
                     f"what a run came to that said\n{output}\n")


@check("Where no root can be made, a run says why and ends with 77")
def no_root(bench):
    status, output = outcome(bench, "--cache", bench.folder + "/empty", by=["unshare", "--net"])
    expect_equal(status, NO_BOX, f"the status of a run that said\n{output}\n")
    expect_in("No box can run here: the root could not be made, which needs the network once:", output, "what it says")


@check("Where the kernel refuses what a box needs, a run says why and ends with 77")
def kernel_refuses(bench):
    for capability, reason in (("sys_admin", "no namespaces can be made: unshare: unshare failed: "),
                               ("sys_chroot", "the box did not start:\nFailed to move root directory: ")):
        status, output = outcome(bench, by=["setpriv", "--bounding-set=-" + capability, "--inh-caps=-" + capability])
        expect_equal(status, NO_BOX, f"the status of a run without {capability}, which said\n{output}\n")
        expect_in("No box can run here: ", output, "what it says")
        expect_in(reason, output, "the reason")


@check("A box in which a unit fails at the boot is a failure, and not a missing box")
def box_that_boots_badly(bench):
    status, output = outcome(bench, "--spoil")
    expect_equal(status, 1, f"the status of a run that said\n{output}\n")
    expect_in("a box does not boot: after the boot the box is degraded:", output, "what it says")
    expect_in("fails.service", output, "the units that it names")


@check("On cgroups of version 2, a run hands the controllers of the limits down to its boxes")
def controllers_are_handed_down(bench):
    given = {"cgroup.controllers": "cpuset cpu io memory hugetlb pids rdma\n", "cgroup.subtree_control": ""}
    for name, text in given.items():
        with open(f"{bench.folder}/{name}", "w", encoding="ascii") as file:
            file.write(text)
    hand_down_controllers(bench.folder)
    expect_equal(text_of(bench.folder + "/cgroup.subtree_control"), "+memory +pids", "what is handed down")


def put_script(path, *lines):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as file:
        file.write("\n".join(["#!/bin/sh", *lines, ""]))
    os.chmod(path, 0o755)


def tree_with_stand_ins(bench):
    """A repository with scripts/test-device, in which the other programs say that they were called."""
    tree = bench.folder + "/tree"
    put_script(tree + "/scripts/install-dependencies")
    put_script(tree + "/scripts/package", "echo builds", "mkdir -p build/packages", "touch build/packages/a.deb",
               "git rev-parse HEAD >build/packages/commit")
    put_script(tree + "/tests/device/run.py", "print('checks')")
    shutil.copy(os.path.join(TREE, "scripts/test-device"), tree + "/scripts")
    outside("git", "init", "--quiet", tree)
    return tree


def commit(tree, date):
    outside("env", "GIT_COMMITTER_DATE=" + date, "git", "-C", tree, "-c", "user.name=a", "-c", "user.email=a@b",
            "commit", "--quiet", "--allow-empty", "--message=" + date)


@check("Packages of another commit are built anew, whatever its date")
def packages_of_another_commit(bench):
    tree = tree_with_stand_ins(bench)
    script = tree + "/scripts/test-device"
    commit(tree, "2026-01-02T00:00:00Z")
    expect_equal(outside(script), "builds\nchecks\n", "what a run does without packages")
    expect_equal(outside(script), "checks\n", "what a run does with the packages of the last commit")
    commit(tree, "2020-01-02T00:00:00Z")
    expect_equal(outside(script, "--packages", "elsewhere"), "checks\n", "what a run does that is given packages")
    expect_equal(outside(script), "builds\nchecks\n", "what a run does with the packages of another commit")
    os.unlink(tree + "/build/packages/commit")
    expect_equal(outside(script), "builds\nchecks\n", "what a run does with packages of nobody knows what commit")
