#!/usr/bin/env python3
"""What scripts/desk does: opens a shell, or runs a command, on a bus of its own with the daemon, the simulated core and
the simulated device. At its end nothing of it is left. See --help and docs/desk.md.

This process waits for the shell. Another one, the keeper (desk_keeper.py), has made the desk and takes it away, also
when this one is killed.
"""
import argparse
import ctypes
import errno
import json
import os
import select
import shlex
import shutil
import signal
import subprocess
import sys
import time

sys.dont_write_bytecode = True
from desk_keeper import CALLS, CORE, DAEMON, ENDING, LOGS, Request, end_processes, keep  # noqa: E402

TREE = os.path.dirname(os.path.dirname(os.path.realpath(__file__)))
PROGRAMS = ["DAXService", "DAXCoreSimulator", "daxctl", "kovanctl"]
NAMES = {"daemon": DAEMON, "core": CORE}

SHELL_ENDS_WITHIN = 5    # seconds after it was asked to
PROGRAM_ENDS_WITHIN = 10

HELP = """\
usage: scripts/desk [OPTION...] [-- COMMAND [ARGUMENT...]]
       desk log|core|calls|errors [-f]
       desk stop [daemon|core]
       desk environment

Opens a shell, or runs the command, on a bus of its own with the daemon, the simulated core and the simulated device.
When the shell ends, everything that was started in it ends, and its files go. Builds what is missing first.

  --keep DIR          keep the files in DIR, and begin with those that an earlier desk left there
  --scenario FILE     have the core play a copy of this scenario
  --production        make the device one with production software
  --monitor           show what crosses the bus in a second pane (needs tmux)
  --programs DIR      take the programs of this folder, and build nothing
  -h, --help          print this

In the shell of a desk:

  desk log            the daemon's log; with -f, go on with what comes
  desk core           the core's log
  desk calls          what the core was called with, and when
  desk errors         what the bus says, and what the daemon and the core wrote to their standard error
  desk stop daemon    end the daemon, or the core; the next call to it starts it again
  desk stop           end the whole desk
  desk environment    print what another terminal needs: eval "$(desk environment)" does it for this one

There DESK is the folder with the logs, KOVAN_ROOT the root of the device, DBUS_SYSTEM_BUS_ADDRESS the bus.
Exit status: that of the command or shell; 1 when the desk could not be set up, 2 on wrong usage.
"""

def say(text):
    print(f"scripts/desk: {text}", file=sys.stderr, flush=True)


def refuse(text):
    say(f"{text}\nTry scripts/desk --help.")
    sys.exit(2)


class Options(argparse.ArgumentParser):
    def error(self, message):
        refuse(message)


def read_options(words):
    before, command = words, None
    if "--" in words:
        at = words.index("--")
        before, command = words[:at], words[at + 1:]
    options = Options(add_help=False, allow_abbrev=False)
    options.add_argument("-h", "--help", action="store_true")
    options.add_argument("--keep")
    options.add_argument("--scenario")
    options.add_argument("--production", action="store_true")
    options.add_argument("--monitor", action="store_true")
    options.add_argument("--programs")
    options, rest = options.parse_known_args(before)
    if options.help:
        print(HELP, end="")
        sys.exit(0)
    if rest:
        refuse(f"there is no option {rest[0]}" if rest[0].startswith("-") else
               f"a command stands behind --: scripts/desk -- {' '.join(rest)}")
    if command == []:
        refuse("no command stands behind --")
    options.command = command
    return options


def request_of(options):
    """Refuses what cannot be, before anything is started."""
    scenario = options.scenario
    if scenario is not None:
        try:
            if os.path.exists(scenario) and not os.path.isfile(scenario):
                refuse(f"the scenario {scenario} is no regular file")
            with open(scenario, "rb"):
                pass
        except OSError as error:
            refuse(f"the scenario {scenario}: {error.strerror}")
    if options.keep == "":
        refuse("--keep needs the name of a folder")
    if options.programs is not None:
        for name in PROGRAMS:
            if not os.access(os.path.join(options.programs, name), os.X_OK):
                refuse(f"there is no program {name} in {options.programs}")
    return Request(os.path.abspath(options.programs or os.path.join(TREE, "build/release/bin")),
                   keep=options.keep and os.path.realpath(options.keep),
                   scenario=scenario and os.path.abspath(scenario), production=options.production)


def build():
    """Says nothing when all is built. Writes to the standard error, since the output is the command's."""
    line = [os.path.join(TREE, "scripts/build"), "release", *PROGRAMS]
    there = all(os.path.exists(os.path.join(TREE, "build/release/bin", name)) for name in PROGRAMS)
    if not there and sys.stderr.isatty():
        status = subprocess.run(line, stdin=subprocess.DEVNULL, stdout=sys.stderr, check=False).returncode
    else:
        status = build_quietly(line)
    if status != 0:
        say("the programs could not be built")
        sys.exit(1)


def build_quietly(line):
    """Leaves out the line that tells of the end, unless another came before."""
    with subprocess.Popen(line, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True, errors="replace") as run:
        told = False
        for text in run.stdout:
            if told or "built in" not in text:
                print(text, end="", file=sys.stderr, flush=True)
                told = True
    return run.returncode


# The shell.

FROM_KERNEL = 0x80  # the origin of a signal that the terminal sent; then the shell or command has got it as well
WATCHED = [signal.SIGINT, signal.SIGQUIT, signal.SIGTERM, signal.SIGHUP, signal.SIGUSR1, signal.SIGUSR2, signal.SIGCHLD]
ASKED_TO_STOP = signal.SIGUSR1  # by `desk stop`
KEEPER_REPORTS = signal.SIGUSR2


class Keeper:
    """The process that has the desk."""

    def __init__(self, request):
        self._report = os.memfd_create("report")
        held, self._lifeline = os.pipe()
        front = os.getpid()
        self.pid = os.fork()
        if self.pid == 0:
            os.close(self._lifeline)
            try:
                keep(request, held, lambda report: self._tell(front, report))
            finally:
                os._exit(0)
        os.close(held)

    def _tell(self, front, report):
        os.write(self._report, json.dumps(report).encode())
        if os.getppid() == front:
            os.kill(front, KEEPER_REPORTS)

    def report(self):
        """Empty until it has reported."""
        return json.loads(os.pread(self._report, os.fstat(self._report).st_size, 0) or "{}")

    def let_go(self):
        """The desk is gone when this returns. Does the keeper's work if it was killed."""
        os.close(self._lifeline)
        os.waitpid(self.pid, 0)
        report = self.report()
        if os.path.isdir(report.get("run", "")):
            end_processes(report["mark"])
            shutil.rmtree(report["run"], ignore_errors=True)


def wait_for_report(keeper):
    """The number of the signal that came before it, or None. Without a keeper there will be none."""
    while not keeper.report() and not has_ended(keeper.pid):
        got = signal.sigwaitinfo(WATCHED).si_signo
        if got not in (signal.SIGCHLD, KEEPER_REPORTS):
            return got
    return None


def has_ended(pid):
    """Leaves it to be waited for."""
    return os.waitid(os.P_PID, pid, os.WEXITED | os.WNOHANG | os.WNOWAIT) is not None


PR_SET_CHILD_SUBREAPER = 36


def adopt_orphans():
    """From now on a process of the shell is a child of this one when its own parent has ended. So it is known, whatever
    is in its environment."""
    ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, *map(ctypes.c_ulong, (1, 0, 0, 0)))


def children():
    found = []
    for name in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{name}/stat", "rb") as file:
                parent = int(file.read().rpartition(b")")[2].split()[1])
        except OSError:  # ended
            continue
        if parent == os.getpid():
            found.append(int(name))
    return found


def end_children():
    """Ends and reaps all children, except those with the rights of another user. The number of a child is its own until
    it is reaped."""
    began = time.monotonic()
    steps_of = {}
    foreign = set()
    while left := {pid for pid in children() if os.waitpid(pid, os.WNOHANG)[0] == 0} - foreign:
        for pid in left:
            steps = steps_of.setdefault(pid, list(ENDING))
            try:
                while steps and time.monotonic() - began >= steps[0][0]:
                    os.kill(pid, steps.pop(0)[1])
                    os.kill(pid, signal.SIGCONT)
            except PermissionError:
                foreign.add(pid)
        time.sleep(0.01)


class Shell:
    """The person's shell or command."""

    def __init__(self, line, environment, mask, is_interactive, keeper):
        program = line[0] if "/" in line[0] else shutil.which(line[0], path=environment["PATH"])
        if program is None:
            raise FileNotFoundError(errno.ENOENT, "command not found")
        # What Python ignores for itself is not for others.
        self.pid = os.posix_spawn(program, line, environment, setsigmask=mask,
                                  setsigdef=[signal.SIGPIPE, signal.SIGXFSZ])
        self._is_interactive = is_interactive
        self._keeper = keeper
        self.asked = None  # the signal at which it shall end
        self._deadline = None

    def wait(self):
        """Its status, as os.waitstatus_to_exitcode has it: negative for a signal."""
        while True:
            pid, status = os.waitpid(self.pid, os.WNOHANG)
            if pid != 0:
                return os.waitstatus_to_exitcode(status)
            self._reap_orphans()
            if self.asked:
                got = signal.sigtimedwait(WATCHED, max(0, self._deadline - time.monotonic()))
            else:
                got = signal.sigwaitinfo(WATCHED)
            if got is None:
                os.kill(self.pid, signal.SIGKILL)
                self._deadline += SHELL_ENDS_WITHIN
            elif got.si_signo not in (signal.SIGCHLD, KEEPER_REPORTS):
                self._pass_on(signal.Signals(got.si_signo), got.si_code == FROM_KERNEL)

    def _reap_orphans(self):
        for pid in children():
            if pid not in (self.pid, self._keeper.pid):
                os.waitpid(pid, os.WNOHANG)

    def _pass_on(self, number, has_got_it):
        if has_got_it and number in (signal.SIGINT, signal.SIGQUIT):
            return  # what comes of it is the command's own affair
        if not self.asked:
            self.asked = number
            self._deadline = time.monotonic() + SHELL_ENDS_WITHIN
        if number == ASKED_TO_STOP or self._is_interactive:
            number = signal.SIGHUP  # a shell with a terminal takes no notice of SIGTERM
        if not has_got_it:
            os.kill(self.pid, number)


def shell_line(options, run, is_interactive):
    if options.command:
        return options.command
    return ["bash", "--rcfile", os.path.join(run, "bashrc"), "-i"] if is_interactive else ["bash"]


def run_shell(options, request, keeper, mask):
    """The status for this program; negative for a signal."""
    is_interactive = options.command is None and sys.stdin.isatty() and sys.stderr.isatty()
    report = keeper.report()
    run, environment = report["run"], report["environment"]
    with open(os.path.join(run, "front"), "w", encoding="ascii") as file:
        file.write(str(os.getpid()))
    line = shell_line(options, run, is_interactive)
    if options.monitor:
        line = with_monitor(line, report, request.programs)
    try:
        shell = Shell(line, environment, mask, is_interactive, keeper)
    except OSError as error:
        say(f"{line[0]}: {error.strerror}")
        return 127 if isinstance(error, FileNotFoundError) else 126
    status = shell.wait()
    told = os.path.join(run, "status")
    if os.path.exists(told):
        with open(told, encoding="ascii") as file:
            status = int(file.read())
    if shell.asked == ASKED_TO_STOP:
        return 0
    return -shell.asked if shell.asked and status < 0 else status


# The monitor.

def with_monitor(line, report, programs):
    """The line that has the monitor beside it. Where that cannot be, says what to do, and returns the line as it is."""
    run, environment = report["run"], report["environment"]
    monitor = f"{shlex.quote(programs)}/daxctl monitor || {{ echo 'Press Enter to close this pane.'; read -r _; }}"
    if not shutil.which("tmux"):
        say("tmux is missing, so there is no second pane. Install it (apt-get install tmux), or type this in another "
            f"terminal:\n  . {run}/environment; daxctl monitor")
        return line
    if not (sys.stdin.isatty() and sys.stdout.isatty()):
        say("there is no terminal for a second pane. Type this in one:\n"
            f"  . {run}/environment; daxctl monitor")
        return line
    if os.environ.get("TMUX"):
        own = [f"-e{name}={value}" for name, value in environment.items() if os.environ.get(name) != value]
        subprocess.run(["tmux", "split-window", "-d", *own, monitor], stdin=subprocess.DEVNULL, check=False)
        return line
    return in_own_tmux(line, run, monitor)


def in_own_tmux(line, run, monitor):
    """A terminal multiplexer of the desk's own, which ends with the shell and leaves its status in a file."""
    server = ["tmux", "-S", os.path.join(run, "tmux")]
    inside = os.path.join(run, "inside")
    with open(inside, "w", encoding="utf-8", errors="surrogateescape") as file:
        file.write(f'#!/bin/sh\n{shlex.join(line)}\necho $? >"$DAX_DESK/status"\n{shlex.join(server)} kill-server\n')
    return [*server, "new-session", "sh", inside, ";", "split-window", "-d", monitor]


# What a person says in the shell of a desk.

def the_desk():
    run = os.environ.get("DAX_DESK", "")
    if not os.path.isdir(run):
        refuse("this is not the shell of a desk")
    return run


def show(word, rest):
    the_desk()
    if rest not in ([], ["-f"]):
        refuse(f"'desk {word}' takes -f and nothing else")
    path = os.path.join(os.environ["DESK"], CALLS if word == "calls" else LOGS[word])
    if rest:
        os.execvp("tail", ["tail", "-n", "+1", "-F", path])
    if not os.path.exists(path):
        say(f"nothing has been written yet to {path}")
        sys.exit(1)
    os.execvp("cat", ["cat", path])


def owner_of(name):
    """The process that has the name on the desk's bus, or None."""
    asked = subprocess.run(
        ["dbus-send", "--system", "--print-reply=literal", "--dest=org.freedesktop.DBus", "/",
         "org.freedesktop.DBus.GetConnectionUnixProcessID", f"string:{name}"],
        stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
    return int(asked.stdout.split()[-1]) if asked.returncode == 0 else None


def stop(rest):
    run = the_desk()
    if not rest:
        with open(os.path.join(run, "front"), encoding="ascii") as file:
            os.kill(int(file.read()), ASKED_TO_STOP)
        return
    if len(rest) > 1 or rest[0] not in NAMES:
        refuse("'desk stop' takes 'daemon', 'core' or nothing")
    pid = owner_of(NAMES[rest[0]])
    if pid is None:
        say(f"the {rest[0]} is not running")
        return
    process = os.pidfd_open(pid)
    signal.pidfd_send_signal(process, signal.SIGINT)
    if not select.select([process], [], [], PROGRAM_ENDS_WITHIN)[0]:
        say(f"the {rest[0]} did not end within {PROGRAM_ENDS_WITHIN} s, and was killed")
        signal.pidfd_send_signal(process, signal.SIGKILL)


def print_environment(rest):
    run = the_desk()
    if rest:
        refuse("'desk environment' takes nothing")
    with open(os.path.join(run, "environment"), encoding="utf-8", errors="surrogateescape") as file:
        sys.stdout.write(file.read())


def main(words):
    if words and words[0] in ("log", "core", "calls", "errors"):
        return show(words[0], words[1:])
    if words and words[0] == "stop":
        return stop(words[1:])
    if words and words[0] == "environment":
        return print_environment(words[1:])
    return run_desk(read_options(words))


def fill_standard_streams():
    """So that no file of ours takes the place of a standard stream that the caller has closed."""
    descriptor = os.open(os.devnull, os.O_RDWR)
    while descriptor <= 2:
        os.set_inheritable(descriptor, True)
        descriptor = os.open(os.devnull, os.O_RDWR)
    os.close(descriptor)


def run_desk(options):
    fill_standard_streams()
    request = request_of(options)
    if options.programs is None:
        build()
    signal.signal(signal.SIGCHLD, signal.SIG_DFL)
    mask = signal.pthread_sigmask(signal.SIG_BLOCK, WATCHED)
    keeper = Keeper(request)
    adopt_orphans()
    status = 1
    try:
        interrupted = wait_for_report(keeper)
        report = keeper.report()
        if interrupted:
            status = -interrupted
        elif "run" in report:
            status = run_shell(options, request, keeper, mask)
        else:
            say(report.get("error", "the process that sets the desk up was killed"))
            status = report.get("status", 1)
    finally:
        keeper.let_go()
        end_children()
    end_with(status)


def end_with(status):
    """Ends as the shell has: a signal that asks to end also ends this process, so that a caller sees it."""
    if -status in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(-status, signal.SIG_DFL)
        signal.pthread_sigmask(signal.SIG_UNBLOCK, [-status])
        os.kill(os.getpid(), -status)
    sys.exit(128 - status if status < 0 else status)


if __name__ == "__main__":
    main(sys.argv[1:])
