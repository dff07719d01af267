"""The root folder of a box: a small Debian, with the packages under test installed."""
import contextlib
import fcntl
import hashlib
import os
import re
import shutil
import subprocess
import sys

from confinement import NoBox

SUITE = "bookworm"
# What a box needs besides what the packages depend on. Python is for the programs in inside/.
SYSTEM = ["systemd", "systemd-sysv", "dbus", "dbus-broker", "python3", "util-linux"]
OTHER_BUS = "/usr/lib/systemd/system/dbus-broker.service"
KEPT = 2  # roots; older ones are removed
UNREACHABLE = "E: Failed to fetch "  # apt's word for a mirror that does not answer


def packages_in(folder):
    """Those that are installed: not the debug symbols."""
    names = sorted(os.listdir(folder)) if os.path.isdir(folder) else []
    found = [os.path.join(folder, name) for name in names if name.endswith(".deb") and "-dbgsym_" not in name]
    if not found:
        sys.exit(f"scripts/test-device: there are no packages in {folder}")
    return found


def field_of(package, field):
    done = subprocess.run(["dpkg-deb", "--field", package, field], capture_output=True, text=True, check=True)
    return done.stdout.strip()


def needs_of(packages):
    """The names of the packages of the distribution that these depend on; of alternatives the first."""
    own = {field_of(package, "Package") for package in packages}
    clauses = []
    for package in packages:
        for field in ("Pre-Depends", "Depends"):
            clauses += field_of(package, field).split(",")
    names = {re.split(r"[ (|:]", clause.strip())[0] for clause in clauses}
    return sorted(names - own - {""})


class Cache:
    """The folder that keeps the roots between runs. The name of a root says what went into it."""

    def __init__(self, folder):
        self._folder = folder
        os.makedirs(folder, mode=0o700, exist_ok=True)

    def root_for(self, packages):
        """The folder of a root without the packages, but with all that they need. Made when it is not there, which
        needs the network. Nobody may write there."""
        includes = sorted({*SYSTEM, *needs_of(packages)})
        key = hashlib.sha256("\n".join([SUITE, *includes]).encode()).hexdigest()[:16]
        root = os.path.join(self._folder, "root-" + key)
        with self._alone():
            if not os.path.isdir(root):
                self._make(root, includes)
            os.utime(root)
            self._remove_old()
        return root

    @contextlib.contextmanager
    def _alone(self):
        """One run makes a root, and others wait for it."""
        with open(os.path.join(self._folder, "lock"), "w", encoding="ascii") as file:
            fcntl.flock(file, fcntl.LOCK_EX)
            yield

    def _make(self, root, includes):
        unfinished = os.path.join(self._folder, "unfinished")
        shutil.rmtree(unfinished, ignore_errors=True)  # of a run that was killed
        print("Making a root for the box: mmdebstrap fetches a small Debian.", flush=True)
        done = subprocess.run(["mmdebstrap", "--variant=minbase", "--include=" + ",".join(includes), SUITE,
                               unfinished], stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
        if done.returncode != 0:
            shutil.rmtree(unfinished, ignore_errors=True)
            if UNREACHABLE in done.stderr:
                raise NoBox("the root could not be made, which needs the network once:\n" + done.stderr.strip())
            raise RuntimeError("the root could not be made:\n" + done.stderr.strip())
        os.rename(unfinished, root)

    def _remove_old(self):
        roots = [entry for entry in os.scandir(self._folder) if entry.name.startswith("root-")]
        roots.sort(key=lambda entry: entry.stat().st_mtime, reverse=True)
        for entry in roots[KEPT:]:
            shutil.rmtree(entry.path, ignore_errors=True)


def mount_overlay(folder, lowers):
    """A folder "root" in this one, in which the lower ones show through and stay as they are."""
    for name in ("upper", "work", "root"):
        os.makedirs(os.path.join(folder, name))
    done = subprocess.run(["mount", "-t", "overlay", "-o",
                           f"lowerdir={':'.join(lowers)},upperdir={folder}/upper,workdir={folder}/work", "overlay",
                           folder + "/root"], capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise RuntimeError(f"no overlay can be mounted: {done.stderr.strip()}")
    return folder + "/root"


def in_root(root, *command):
    """Runs a command with this root, in which nothing is started."""
    environment = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "DEBIAN_FRONTEND": "noninteractive", "LC_ALL": "C.UTF-8"}
    done = subprocess.run(["chroot", root, *command], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          check=False, env=environment)
    if done.returncode != 0:
        raise RuntimeError(f"{' '.join(command)} failed in the root:\n{done.stdout}{done.stderr}")
    return done.stdout


def bind(base, folder):
    """The root, at a path in `folder`, without a colon, which would end it in the options of an overlay."""
    os.makedirs(folder + "/base")
    subprocess.run(["mount", "--bind", base, folder + "/base"], check=True)
    return folder + "/base"


def install(base, packages, folder):
    """The folders, uppermost first, of a root with the packages installed. They lie in `folder`; `base` stays."""
    installed = folder + "/installed"
    root = mount_overlay(installed, [base])
    os.makedirs(root + "/packages")
    for package in packages:
        shutil.copy(package, root + "/packages")
    # What needs a device that is not there fails alone, not the installation.
    in_root(root, "sh", "-c", "dpkg --install /packages/*.deb")
    choose_bus(root, "dbus-daemon")
    subprocess.run(["umount", root], check=True)
    return [installed + "/upper", base]


def choose_bus(root, bus):
    """Which of the two serves the system bus. The package of the broker makes itself the one."""
    link = root + "/etc/systemd/system/dbus.service"
    with contextlib.suppress(FileNotFoundError):
        os.unlink(link)
    if bus == "dbus-broker":
        os.symlink(OTHER_BUS, link)
