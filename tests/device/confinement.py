"""Namespaces of its own for a run, so that nothing of it stays behind however it ends.

The processes of a run are in a process namespace, its mounts in a mount namespace with a /run of its own; both go with
their first process, and loop devices with the mount that stands on them. That process ends when the one that started it
ends: it reads from a socket, whose other end, the lifeline, nobody else holds open. What is left are empty cgroups: the
process that started the run removes them, or, if that was killed, its keeper does. The keeper is in a session of its
own, so that it outlives its process group.
"""
import contextlib
import errno
import os
import signal
import socket
import subprocess
import sys
import threading
import time
import uuid

PREFIX = "dax-box-"
RUN = "DAX_BOX_RUN"  # in the environment of a run: the name of its cgroups. A run inside it has its own below these
ENDING_SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)
EMPTY_WITHIN = 30  # seconds for the kernel to end the processes of a run
LIMITING = ("memory", "pids")  # the controllers of cgroups that keep the limits of units
OF_ITSELF = b"."  # on the lifeline: the command came to its end


# What the kernel says when it does not let somebody do something at all.
REFUSALS = (errno.EPERM, errno.EACCES, errno.EROFS, errno.ENOSYS, errno.EOPNOTSUPP, errno.ENODEV)


class NoBox(Exception):
    """Why no box can run here."""


def is_refusal(text):
    """Whether a program says that the kernel refused it something."""
    return any(os.strerror(number) in text for number in REFUSALS)


def cgroup_hierarchies():
    """Where the cgroups are mounted, of version 1 or 2."""
    with open("/proc/self/mounts", encoding="utf-8") as mounts:
        fields = [line.split() for line in mounts]
    return [place for _, place, kind, *_ in fields if kind in ("cgroup", "cgroup2")]


def make_cgroup(hierarchy, name):
    """The folder of a cgroup that processes can be put into."""
    folder = os.path.join(hierarchy, name)
    os.makedirs(folder)
    for setting in ("cpuset.cpus", "cpuset.mems"):
        own = os.path.join(folder, setting)
        if os.path.exists(os.path.join(hierarchy, setting)) and os.path.exists(own):
            copy_setting(os.path.join(os.path.dirname(folder), setting), own)
    return folder


def copy_setting(source, target):
    with open(source, encoding="ascii") as file:
        value = file.read()
    with open(target, "w", encoding="ascii") as file:
        file.write(value)


def make_run_cgroups(name):
    try:
        hierarchies = cgroup_hierarchies()
        for hierarchy in hierarchies:
            hand_down_controllers(make_cgroup(hierarchy, name))
    except OSError as error:
        if error.errno not in REFUSALS:
            raise
        raise NoBox(f"no cgroup can be made: {error.filename}: {error.strerror}") from error
    if not hierarchies:
        raise NoBox("no cgroups are mounted")


def hand_down_controllers(folder):
    """Has the cgroups below this one keep limits. Those of version 2 have the controllers that are handed down to them;
    those of version 1 have them in any case."""
    with contextlib.suppress(FileNotFoundError):
        with open(os.path.join(folder, "cgroup.controllers"), encoding="ascii") as file:
            words = [f"+{name}" for name in file.read().split() if name in LIMITING]
        with open(os.path.join(folder, "cgroup.subtree_control"), "w", encoding="ascii") as file:
            file.write(" ".join(words))


def remove_cgroups(name):
    """Waits until their processes have ended."""
    deadline = time.monotonic() + EMPTY_WITHIN
    for hierarchy in cgroup_hierarchies():
        while not remove_tree(os.path.join(hierarchy, name)) and time.monotonic() < deadline:
            time.sleep(0.01)


def remove_tree(folder):
    """Whether the cgroup is gone, with those below it."""
    for place, _, _ in os.walk(folder, topdown=False):
        try:
            os.rmdir(place)
        except FileNotFoundError:
            pass
        except OSError:
            return False
    return True


def remove_leftovers():
    """The cgroups of runs of which both processes were killed. Those that are in use stay: they cannot be removed."""
    for hierarchy in cgroup_hierarchies():
        for name in os.listdir(hierarchy):
            if RUN not in os.environ and name.startswith(PREFIX) and not is_alive(name.split("-")[2]):
                remove_tree(os.path.join(hierarchy, name))


def is_alive(pid):
    return pid.isdigit() and os.path.exists(f"/proc/{pid}")


def start_keeper(name, held, lifeline):
    """A process that removes the cgroups when this one has let go of the lifeline."""
    pid = os.fork()
    if pid == 0:
        try:
            os.setsid()
            for number in ENDING_SIGNALS:
                signal.signal(number, signal.SIG_IGN)
            lifeline.close()
            nothing = os.open(os.devnull, os.O_RDWR)
            for standard in range(3):
                os.dup2(nothing, standard)
            held.recv(1)
            remove_cgroups(name)
        finally:
            os._exit(0)
    return pid


def confined(command):
    """The command line that runs a command in namespaces of its own."""
    return ["unshare", "--mount", "--propagation", "private", "--pid", "--fork", "--kill-child=KILL", "--mount-proc",
            "sh", "-c", 'mount -t tmpfs -o mode=755 tmpfs /run && exec "$@"', "sh", *command]


MOUNT_OVERLAY = ("cd /run && mkdir lower upper work root && "
                 "mount -t overlay -o lowerdir=lower,upperdir=upper,workdir=work overlay root")


def expect_confinement():
    """That the kernel lets this process have what a run is made of."""
    for what, command in (("namespaces can be made", "true"), ("overlay can be mounted", MOUNT_OVERLAY)):
        done = subprocess.run(confined(["sh", "-c", command]), stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              check=False)
        if done.returncode != 0:
            raise NoBox(f"no {what}: {done.stderr.strip()}")


@contextlib.contextmanager
def end_with(held):
    """Has this process end, and with it all that are in its namespace, when nobody holds the lifeline any more. Whoever
    holds it is told when the block is left."""
    def wait():
        os.read(held, 1)
        os._exit(1)
    threading.Thread(target=wait, daemon=True).start()
    try:
        yield
    finally:
        os.write(held, OF_ITSELF)


def has_ended_of_itself(lifeline):
    with contextlib.suppress(BlockingIOError):
        return lifeline.recv(1, socket.MSG_DONTWAIT) == OF_ITSELF
    return False


def status_of(run, lifeline):
    """As a shell counts. `unshare` makes 1 of a SIGKILL that ended the command."""
    status = run.wait()
    if status == 1 and not has_ended_of_itself(lifeline):
        raise Ended(signal.SIGKILL)
    if status < 0:
        raise Ended(-status)
    return status


class Ended(Exception):
    """By a signal, whose number it has."""


def end(number, _):
    raise Ended(number)


def pass_over(*_):
    """For a signal that is the affair of others. Unlike one that is ignored, programs that are started get it."""


def run_confined(command, is_interactive=False):
    """The status of a command that runs in namespaces of its own, with the name of its cgroups in the environment. To
    its words the number of a descriptor is added, with which it has to call end_with. An interactive one gets the
    Ctrl-C of the terminal itself."""
    name = os.path.join(os.environ.get(RUN, ""), f"{PREFIX}{os.getpid()}-{uuid.uuid4().hex[:6]}")
    expect_confinement()
    remove_leftovers()
    held, lifeline = socket.socketpair()
    keeper = start_keeper(name, held, lifeline)
    run = None
    try:
        for number in ENDING_SIGNALS:
            signal.signal(number, end)
        make_run_cgroups(name)
        if is_interactive:
            signal.signal(signal.SIGINT, pass_over)
        # What programs say of a failure is read, in English.
        environment = {**os.environ, "LC_ALL": "C.UTF-8", RUN: name}
        # A process group of its own, so that Ctrl-C reaches this process alone.
        run = subprocess.Popen(confined([*command, str(held.fileno())]), env=environment, pass_fds=[held.fileno()],
                               process_group=None if is_interactive else 0)
        return status_of(run, lifeline)
    except Ended as signalled:
        print(f"Ended by signal {signalled.args[0]}.", file=sys.stderr)
        return 128 + signalled.args[0]
    finally:
        for number in ENDING_SIGNALS:
            signal.signal(number, signal.SIG_IGN)
        if run:
            run.kill()
            run.wait()
        lifeline.close()
        os.waitpid(keeper, 0)
        remove_cgroups(name)  # if the keeper was killed
