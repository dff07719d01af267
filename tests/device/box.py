"""A device in a box: a small Debian that systemd boots, with processes, network and cgroups of its own."""
import os
import signal
import subprocess
import uuid

from confinement import cgroup_hierarchies, make_cgroup
from root import choose_bus, mount_overlay
from waiting import wait_until

BOOT_SECONDS = 120
DOWN_SECONDS = 120
ASKED_FOR_REBOOT = 133
COMMAND_SECONDS = 120
PATH = "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin"
# In these the kernel enforces limits of a unit. Where cgroups are of version 1, the box gets them read-only.
CONTROLLERS = ("memory", "pids", "devices")


class Done:
    """What a command in the box came to. The texts have no line end at their end."""

    def __init__(self, status, output, errors):
        self.status = status
        self.output = output.rstrip("\n")
        self.errors = errors.rstrip("\n")

    def __str__(self):
        return f"status {self.status}\n{self.output}\n{self.errors}".rstrip()


class CommandFailed(Exception):
    """A command in the box did not end with the status 0."""


class DidNotStart(Exception):
    """The box ended by itself before it was on."""


def text_of(path):
    """Empty when the process or file is gone."""
    try:
        with open(path, encoding="utf-8", errors="replace") as file:
            return file.read()
    except OSError:
        return ""


def parent_of(pid):
    fields = text_of(f"/proc/{pid}/stat").rpartition(")")[2].split()
    return int(fields[1]) if fields else None


def children_of(pid):
    return [int(name) for name in os.listdir("/proc") if name.isdigit() and parent_of(name) == pid]


class Box:
    """One device. It keeps its files while it is off, until it is thrown away."""

    def __init__(self, run, folder, lowers, bus="dbus-daemon"):
        self.bus = bus
        self.name = "box-" + uuid.uuid4().hex[:8]
        self._run = run
        self._folder = os.path.join(folder, self.name)
        self._binds = []
        self._nspawn = None
        self.init = None  # the number of its first process, outside
        os.makedirs(self._folder)
        self.root = mount_overlay(self._folder, lowers)
        choose_bus(self.root, bus)
        with open(self.root + "/etc/machine-id", "w", encoding="ascii") as file:
            file.write(uuid.uuid4().hex + "\n")
        self._cgroups = [make_cgroup(place, os.path.join(run, self.name)) for place in cgroup_hierarchies()]

    def bind(self, source, target):
        """From the next boot on, a folder of outside stands at a path of the box."""
        self._binds.append(f"--bind={source}:{target}")

    # On and off.

    def boot(self):
        """Returns when everything that starts with the box has started."""
        line = ["systemd-nspawn", "--quiet", "--directory=" + self.root, "--machine=" + self.name, "--private-network",
                "--register=no", "--keep-unit", "--console=pipe", "--link-journal=no", *self._binds, "--boot"]
        enter = 'for group in $0; do echo 0 >"$group/cgroup.procs"; done; exec "$@"'
        with open(self._folder + "/console", "ab") as console:
            self._nspawn = subprocess.Popen(["sh", "-c", enter, " ".join(self._cgroups), *line],
                                            stdin=subprocess.DEVNULL, stdout=console, stderr=console, process_group=0)
        self._wait_for_boot()

    def _wait_for_boot(self):
        wait_until(self._find_init, f"the box has a first process\n{self.console()}", BOOT_SECONDS)
        wait_until(self._is_manager_ready, f"systemd answers\n{self.console()}", BOOT_SECONDS)
        self._let_limits_count()
        state = self.run("systemctl", "is-system-running", "--wait", check=False).output
        if state != "running":
            raise CommandFailed(f"after the boot the box is {state}:\n" + self.run("systemctl", "--failed").output)

    def _find_init(self):
        self._expect_alive()
        found = [pid for pid in children_of(self._nspawn.pid) if text_of(f"/proc/{pid}/comm") == "systemd\n"]
        self.init = found[0] if found else None
        return self.init

    def _expect_alive(self):
        if self._nspawn.poll() is not None:
            raise DidNotStart(f"the box did not start:\n{self.console()}")

    def _is_manager_ready(self):
        self._expect_alive()
        return self.run("systemctl", "show", "--property=Version", check=False).status == 0

    def _let_limits_count(self):
        """systemd looks only at its start which controllers it may use."""
        read_only = [f"/sys/fs/cgroup/{name}" for name in CONTROLLERS
                     if os.path.isdir(self.path(f"/sys/fs/cgroup/{name}"))]
        if read_only:
            for place in read_only:
                self.run("mount", "-o", "remount,bind,rw", place)
            self.run("systemctl", "daemon-reexec")

    def reboot(self):
        """In order, as a person would."""
        self.run("systemctl", "reboot", check=False)
        status = self._nspawn.wait(DOWN_SECONDS)
        if status != ASKED_FOR_REBOOT:
            raise CommandFailed(f"the box went down with the status {status}:\n{self.console()}")
        self.boot()

    def cut(self):
        """As if the power went: its processes end at once, all together."""
        if self.init:
            try:
                os.kill(self.init, signal.SIGKILL)  # the kernel ends the others with the first one
            except ProcessLookupError:
                pass
        if self._nspawn:
            try:
                # If it had not yet come to a first process, it is waiting for nothing.
                self._nspawn.wait(10 if self.init else 0)
            except subprocess.TimeoutExpired:
                self._nspawn.kill()
                self._nspawn.wait()
        self._nspawn = self.init = None

    def throw_away(self):
        self.cut()
        subprocess.run(["umount", "--lazy", self.root], check=True)
        subprocess.run(["rm", "-rf", self._folder], check=True)

    # Inside.

    def path(self, inside):
        """Where a file of the running box is, seen from outside."""
        return f"/proc/{self.init}/root{inside}"

    def read(self, inside):
        """The text of a file; empty when it is not there."""
        return text_of(self.path(inside))

    def write(self, inside, text, mode=0o644):
        path = self.path(inside)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(path, mode)

    def exists(self, inside):
        return os.path.lexists(self.path(inside))

    def shell(self):
        """A shell in the box for a person, with the terminal of this process. Returns when it has ended."""
        subprocess.run(["nsenter", f"--target={self.init}", "--all", "--wdns=/root", "env", "-i", "PATH=" + PATH,
                        "HOME=/root", "TERM=" + os.environ.get("TERM", "dumb"), "PS1=[box] # ", "bash", "--norc"],
                       check=False)

    def start(self, *command, user=None):
        """Starts a command in the box, outside of its units, and returns it. The texts come through pipes. To kill what
        is returned is to kill the command."""
        as_user = ["--reuid=" + user, "--regid=" + self._group_of(user), "--init-groups"] if user else []
        return subprocess.Popen(["nsenter", f"--target={self.init}", "--all", "--wdns=/", "env", "-i", "PATH=" + PATH,
                                 "LC_ALL=C.UTF-8", "setpriv", "--pdeathsig=KILL", *as_user, *command],
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                errors="replace")

    def _group_of(self, user):
        """The number of the first group of a user."""
        return next(line.split(":")[3] for line in self.read("/etc/passwd").splitlines() if line.startswith(user + ":"))

    def run(self, *command, user=None, check=True, within=COMMAND_SECONDS):
        """Runs a command in the box as this user, or as root."""
        started = self.start(*command, user=user)
        try:
            output, errors = started.communicate(timeout=within)
        except subprocess.TimeoutExpired:
            started.kill()
            output, errors = started.communicate()
            errors += f"(ended after {within} s)"
        done = Done(started.returncode, output, errors)
        if check and done.status != 0:
            raise CommandFailed(f"{' '.join(command)}: {done}")
        return done

    # What it says.

    def console(self):
        return text_of(self._folder + "/console").strip()

    def journal(self, *options):
        """The texts of the journal, one entry a line."""
        self.run("journalctl", "--sync", check=False)
        return self.run("journalctl", "--quiet", "--output=cat", "--no-pager", *options).output

    def last_words(self, lines=25):
        """The end of the journal, also when the box is off, for somebody who looks for a cause."""
        done = subprocess.run(["journalctl", f"--directory={self.root}/var/log/journal", f"--lines={lines}", "--quiet",
                               "--no-pager", "--output=short-monotonic"], capture_output=True, text=True, check=False)
        return f"{self.name}:\n{done.stdout}"

    def property(self, unit, name):
        """A property of a unit, as systemd prints it."""
        return self.run("systemctl", "show", "--property=" + name, "--value", unit).output
