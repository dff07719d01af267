"""Makes a desk, keeps it, and takes it away again: see scripts/desk.

The keeper is a process of its own in a session of its own. It ends the desk when the process that asked for it lets go
of it, whatever the reason, even SIGKILL. Every process of the desk, also one that a person started in its shell, is
known by a variable in its environment that no other desk has.
"""
import fcntl
import os
import select
import shlex
import shutil
import signal
import subprocess
import tempfile
import time
import traceback
from xml.sax.saxutils import escape

DAEMON = "org.kovan.tv.dax.service.servicemanager"
CORE = "org.kovan.tv.dax.core.TV"
LOGS = {"log": "daemon.log", "core": "core.log", "errors": "errors.log"}
CALLS = "root/var/log/kovan/core-calls.jsonl"

LONGEST_SOCKET_PATH = 107  # what the kernel takes
BUS_START_SECONDS = 20
ENDING = [(0, signal.SIGTERM), (1, signal.SIGHUP), (5, signal.SIGKILL)]  # after so many seconds, send this

BUS_CONFIGURATION = """\
<busconfig>
  <listen>{address}</listen>
  <auth>EXTERNAL</auth>
  <servicedir>{services}</servicedir>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*"/>
    <allow receive_type="method_call"/>
    <allow receive_type="method_return"/>
    <allow receive_type="error"/>
    <allow receive_type="signal"/>
  </policy>
</busconfig>
"""

GREETING = """\
A desk of its own: a bus, the daemon, a simulated core and a simulated device. `exit` ends it all.
  daxctl status, daxctl upgrade, kovanctl --help    try these
  desk log, desk core, desk calls, desk errors      the logs; -f goes on with what comes
  desk stop daemon, desk stop core                  the next call starts it again
"""

# The person's own settings come first. What the desk needs is set again behind them, and the label is put before each
# prompt, since some settings make a new prompt for each command.
SHELL_SETTINGS = """\
[[ -r ~/.bashrc ]] && . ~/.bashrc
{environment}
desk_label='{label} '
[[ $TERM == dumb ]] || desk_label='\\[\\e[1;36m\\]{label}\\[\\e[0m\\] '
desk_prompt() {{
    [[ $PS1 == "$desk_label"* ]] || PS1=$desk_label$PS1
}}
PROMPT_COMMAND+=(desk_prompt)
cat >&2 <<'END'
{greeting}
END
"""


class DeskError(Exception):
    """Why there is no desk. The status is that of the program."""

    def __init__(self, text, status=1):
        super().__init__(text)
        self.status = status


class Ended(BaseException):
    """Somebody asks the keeper to end, or nobody needs it."""


class Request:
    """What kind of desk somebody wants. The fields are absolute paths, or None."""

    def __init__(self, programs, keep=None, scenario=None, production=False):
        self.programs = programs
        self.keep = keep
        self.scenario = scenario
        self.production = production


def write(path, text, mode=0o666):
    with open(os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, mode), "w", encoding="utf-8",
              errors="surrogateescape") as file:
        file.write(text)


def bus_address(path):
    """All other bytes have to be escaped in an address."""
    plain = b"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_/."
    return "unix:path=" + "".join(chr(byte) if byte in plain else f"%{byte:02x}" for byte in os.fsencode(path))


def exec_line(words):
    """As the bus reads it: words quoted as for a shell, in a file whose values have escapes of their own."""
    return shlex.join(words).replace("\\", "\\\\")


# The folders.

def check_name(folder, use):
    """A bus cannot be told of a program or a folder whose name has a line end."""
    if "\n" in folder or "\r" in folder:
        raise DeskError(f"{use}: there is a line end in the name {folder!r}", 2)


def make_run_folder():
    """A new folder for the socket and what else is of no use after the desk's end. Inside that of the desk in whose
    shell this one is started, so that it goes with that one at the latest."""
    places = [place for place in (os.environ.get("DAX_DESK"), tempfile.gettempdir(), "/tmp") if place]
    for place in places:
        if os.path.isdir(place) and len(os.fsencode(place)) + len("/desk-12345678/tmux") <= LONGEST_SOCKET_PATH:
            place = os.path.realpath(place)
            check_name(place, "the folder for temporary files")
            return tempfile.mkdtemp(prefix="desk-", dir=place)
    raise DeskError("there is no folder for temporary files whose path is short enough for a socket in it")


def take_kept_folder(folder):
    """Makes the folder if need be, and holds it as long as this process lives, so that no two desks share one. True
    when it was made."""
    made = False
    try:
        if not os.path.exists(folder):
            os.mkdir(folder)
            made = True
        held = os.open(folder, os.O_RDONLY | os.O_DIRECTORY)
        fcntl.flock(held, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except BlockingIOError:
        raise DeskError(f"{folder} is in use by another desk", 2)
    except OSError as error:
        raise DeskError(f"{folder}: {error.strerror}", 2)
    if os.listdir(folder) and not os.path.isdir(os.path.join(folder, "root")):
        raise DeskError(f"{folder} has files, but no desk was kept there; name an empty folder or a new one", 2)
    return made


class Desk:
    """The desk's files and its bus."""

    def __init__(self, request):
        check_name(request.keep or "", "--keep")
        check_name(request.programs, "the folder of the programs")
        self.request = request
        self.run = make_run_folder()
        self.mark = "DAX_DESK_MARK_" + os.path.basename(self.run).removeprefix("desk-")
        self.bus = None
        self.made_folder = False
        self.started = False
        self.folder = request.keep or self.run
        self.root = os.path.join(self.folder, "root")
        self.address = bus_address(os.path.join(self.run, "bus"))

    def environment(self):
        """What the desk adds to the environment of its programs."""
        own_path = [os.path.join(self.run, "bin"), self.request.programs]
        return {
            "DAX_DESK": self.run,
            self.mark: "1",
            "DESK": self.folder,
            "KOVAN_ROOT": self.root,
            "DBUS_SYSTEM_BUS_ADDRESS": self.address,
            "PATH": os.pathsep.join([*own_path, os.environ.get("PATH", os.defpath)]),
        }

    def whole_environment(self):
        environment = {**os.environ, **self.environment()}
        # Where the log goes, and who watches, is for each program of the desk, and not for that which started it.
        for name in ("KOVAN_DLOG", "NOTIFY_SOCKET", "WATCHDOG_USEC", "WATCHDOG_PID"):
            environment.pop(name, None)
        return environment

    def program(self, name):
        return os.path.join(self.request.programs, name)

    def set_up(self, lifeline):
        """Throws Ended when nobody holds the lifeline any more."""
        if self.request.keep:
            self.made_folder = take_kept_folder(self.request.keep)
        if self.request.scenario:
            self._check_scenario()
        os.makedirs(os.path.join(self.root, "etc/kovan"), exist_ok=True)
        if self.request.scenario:
            shutil.copyfile(self.request.scenario, os.path.join(self.root, "etc/kovan/core-scenario.ini"))
        if self.request.production:
            self._run_kovanctl("info", "set", "software/production", "true")
        self._write_run_folder()
        self._start_bus(lifeline)
        self.started = True

    def _check_scenario(self):
        """The core reads its scenario before it looks for the bus."""
        trial = subprocess.run(
            [self.program("DAXCoreSimulator"), "--scenario", self.request.scenario],
            env={**self.whole_environment(), "KOVAN_DLOG": "none", "KOVAN_ROOT": os.path.join(self.run, "trial"),
                 "DBUS_SYSTEM_BUS_ADDRESS": bus_address(os.path.join(self.run, "no-bus"))},
            stdin=subprocess.DEVNULL, capture_output=True, text=True, errors="replace", check=False)
        if trial.returncode == 2:
            raise DeskError(trial.stderr.strip().removeprefix("DAXCoreSimulator: "), 2)

    def _run_kovanctl(self, *words):
        done = subprocess.run([self.program("kovanctl"), *words], env=self.whole_environment(),
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, errors="replace", check=False)
        if done.returncode != 0:
            raise DeskError(done.stderr.strip())

    def _write_run_folder(self):
        services = os.path.join(self.run, "services")
        commands = os.path.join(self.run, "bin")
        os.mkdir(services)
        os.mkdir(commands)
        for name, program, log in ((DAEMON, "DAXService", "log"), (CORE, "DAXCoreSimulator", "core")):
            line = ["/usr/bin/env", "KOVAN_DLOG=" + os.path.join(self.folder, LOGS[log]), self.program(program)]
            write(os.path.join(services, name + ".service"), f"[D-BUS Service]\nName={name}\nExec={exec_line(line)}\n")
        write(os.path.join(self.run, "bus.conf"),
              BUS_CONFIGURATION.format(address=self.address, services=escape(services)))
        os.symlink(os.path.join(os.path.dirname(os.path.realpath(__file__)), "desk.py"), os.path.join(commands, "desk"))
        exports = "\n".join(f"export {name}={shlex.quote(value)}" for name, value in self.environment().items())
        write(os.path.join(self.run, "environment"), exports + "\nunset KOVAN_DLOG\n")
        level = sum(name.startswith("DAX_DESK_MARK_") for name in self.whole_environment())
        label = "[desk]" if level == 1 else f"[desk {level}]"
        write(os.path.join(self.run, "bashrc"),
              SHELL_SETTINGS.format(environment=exports + "\nunset KOVAN_DLOG", label=label,
                                    greeting=GREETING))

    def _start_bus(self, lifeline):
        ready, of_bus = os.pipe()
        errors = os.open(os.path.join(self.folder, LOGS["errors"]), os.O_WRONLY | os.O_CREAT | os.O_APPEND, 0o640)
        line = ["setpriv", "--pdeathsig", "TERM", "dbus-daemon", "--nofork", "--nopidfile", "--nosyslog",
                "--config-file=" + os.path.join(self.run, "bus.conf"), f"--print-address={of_bus}"]
        try:
            self.bus = subprocess.Popen(line, env=self.whole_environment(), stdin=subprocess.DEVNULL,
                                        stdout=subprocess.DEVNULL, stderr=errors, pass_fds=[of_bus])
        except FileNotFoundError as error:
            raise DeskError(f"{error.filename} is missing; scripts/install-dependencies installs what is")
        finally:
            os.close(of_bus)
            os.close(errors)
        # The bus is ready when it prints its address.
        readable, _, _ = select.select([ready, lifeline], [], [], BUS_START_SECONDS)
        if lifeline in readable:
            raise Ended
        if not readable or not os.read(ready, 1):
            with open(os.path.join(self.folder, LOGS["errors"]), errors="replace") as file:
                said = file.read().strip().splitlines() or ["it said nothing"]
            raise DeskError(f"the bus did not start: {said[-1]}")
        os.close(ready)

    def take_away(self):
        if self.bus:
            # The daemon and the core end by themselves without their bus.
            self.bus.terminate()
        end_processes(self.mark, self.bus)
        shutil.rmtree(self.run, ignore_errors=True)
        if self.made_folder and not self.started:
            shutil.rmtree(self.folder, ignore_errors=True)


# The processes.

def has_mark(pid, mark):
    try:
        with open(f"/proc/{pid}/environ", "rb") as file:
            return b"\0" + mark.encode() + b"=" in b"\0" + file.read()
    except OSError:  # another's, or ended
        return False


def processes_with(mark):
    """The numbers of the living processes that have the variable in their environment."""
    return [int(name) for name in os.listdir("/proc") if name.isdigit() and has_mark(name, mark)]


def send(pid, mark, number):
    """Sends the signal to that very process: the number may be another's by now."""
    try:
        process = os.pidfd_open(pid)
    except OSError:
        return
    try:
        if has_mark(pid, mark):
            signal.pidfd_send_signal(process, number)
            signal.pidfd_send_signal(process, signal.SIGCONT)  # one that is stopped hears nothing
    except OSError:
        pass
    finally:
        os.close(process)


def end_processes(mark, child=None):
    """Ends every process with the mark, and reaps the child, which is one of them."""
    began = time.monotonic()
    steps_of = {}
    while True:
        if child:
            child.poll()
        left = processes_with(mark)
        if not left:
            return
        for pid in left:
            steps = steps_of.setdefault(pid, list(ENDING))
            while steps and time.monotonic() - began >= steps[0][0]:
                send(pid, mark, steps.pop(0)[1])
        time.sleep(0.01)


# The keeper.

ENDINGS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)


def end_keeper(number, frame):
    raise Ended


def keep(request, lifeline, report):
    """Makes the desk, and takes it away when the other end of the lifeline is closed. Runs in a child, with the signals
    blocked, of the process that wants the desk. `report` is called once: with the environment for the desk's programs,
    or with what went wrong."""
    os.setsid()
    nothing = os.open(os.devnull, os.O_RDWR)
    for standard in range(3):
        os.dup2(nothing, standard)
    for ending in ENDINGS:
        signal.signal(ending, end_keeper)
    desk = None
    failure = None
    try:
        signal.pthread_sigmask(signal.SIG_SETMASK, [])
        desk = Desk(request)
        desk.set_up(lifeline)
        report({"run": desk.run, "mark": desk.mark, "environment": desk.whole_environment()})
        os.read(lifeline, 1)
    except Ended:
        failure = {"error": "ended before it had started", "status": 1}
    except DeskError as error:
        failure = {"error": str(error), "status": error.status}
    except OSError as error:
        failure = {"error": f"{error.filename or 'the desk'}: {error.strerror}", "status": 1}
    except BaseException:
        failure = {"error": traceback.format_exc(), "status": 1}
    finally:
        signal.pthread_sigmask(signal.SIG_BLOCK, ENDINGS)
        if desk:
            desk.take_away()
    if failure and not (desk and desk.started):
        report(failure)
