"""Upgrades in a box: what the core shall do, an upgrade from its start to its end, and what stays of it."""
import json

from checking import UNIT, Failed, expect_equal, json_of
from waiting import wait_until

CORE_NAME = "org.kovan.tv.dax.core.TV"
DAEMON_NAME = "org.kovan.tv.dax.service.servicemanager"
DATA = "/mnt/systemrw/org.kovan.tv.dax/data/tv"
LOCK_FILE = DATA + "/InstallationLock.dat"
DATE_FILE = DATA + "/LastSearchingDate"
CALLS = "/var/log/kovan/core-calls.jsonl"
SETTINGS = "memory/menu/support/softwareupdate/"
LOCKED = ("Refused: an installation lock is in force. Restart the device, which ends the installation, or see daxctl "
          "installation-lock.")
INSTALLING = "Type: OTN(F) from: 1000 to: 1100"

STEPS = ("search", "installation", "finalization")
METHODS = {"search": "Search", "installation": "Installation", "finalization": "Finalization"}
CLIENT = "upgrade.service"  # the unit in which a client runs that is to be killed, or watched


def play(box, **seconds):
    """Has the core take so long for each step; those that are not named take no time."""
    groups = [f"[{step}]\nseconds={seconds.get(step, 0)}\n" for step in STEPS]
    box.write("/etc/kovan/core-scenario.ini", "".join(groups))


def run_upgrade(box, *options):
    """An upgrade with no time in it but that of the calls, from its start to its end. The client's own report."""
    play(box)
    return json_of(box.run("daxctl", "upgrade", "--json", *options, check=False))


def start_upgrade(box):
    """Starts a client in a unit of its own, as a device does."""
    box.run("systemctl", "reset-failed", CLIENT, check=False)
    box.run("systemd-run", "--quiet", "--unit=" + CLIENT, "daxctl", "upgrade", "--progress=plain")


def calls_of_core(box):
    """The methods that the core was called with, in their order."""
    return [json.loads(line)["method"] for line in box.read(CALLS).splitlines()]


def reasons_of_cancels(box):
    records = [json.loads(line) for line in box.read(CALLS).splitlines()]
    return [record["arguments"]["reason"] for record in records if record["method"] == "cancelCoreTransaction"]


def wait_for_step(box, step):
    """Until the client has asked the core twice how far the step is."""
    asked = f"get{METHODS[step]}Progress"
    wait_until(lambda: calls_of_core(box).count(asked) >= 2, f"the {step} is under way")


def upgrade_until(box, step):
    """Starts an upgrade that comes to this step and stays in it."""
    play(box, **{step: 600})
    start_upgrade(box)
    wait_for_step(box, step)


def wait_for_client(box):
    """Until the client has ended. What it said, and its exit status."""
    wait_until(lambda: box.property(CLIENT, "ActiveState") in ("inactive", "failed"), "the client ends", within=90)
    return box.journal("_SYSTEMD_UNIT=" + CLIENT)


def lock_of(box):
    """What `daxctl installation-lock` says: whether it is in force, and whether its file is whole."""
    return json_of(box.run("daxctl", "installation-lock", "--json", check=False))


def expect_whole_lock(box):
    lock = lock_of(box)
    expect_equal((lock["installationLock"], lock.get("record"), lock.get("installing")), (True, "verified", INSTALLING),
                 "the installation lock")


def expect_no_lock(box):
    expect_equal(lock_of(box)["installationLock"], False, "whether an installation lock is in force")


def expect_refused(box):
    """By the installation lock."""
    done = box.run("daxctl", "upgrade", check=False)
    expect_equal((done.status, done.errors), (1, LOCKED), "an upgrade while the lock is in force")


def release_lock(box):
    box.run("daxctl", "installation-lock", "release", "--yes")


def expect_upgrade_works(box):
    expect_equal(run_upgrade(box).get("outcome"), "finalized", "the outcome of the next upgrade")
    expect_whole_lock(box)


def owner_of(box, name):
    """The number, in the box, of the process that owns a name on the bus; None when nobody does."""
    done = box.run("busctl", "call", "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                   "GetConnectionUnixProcessID", "s", name, check=False)
    return done.output.removeprefix("u ") if done.status == 0 else None


def kill(box, name):
    """Kills the process that owns a name on the bus, and waits until the bus has noticed."""
    pid = owner_of(box, name)
    if pid is None:
        raise Failed(f"nobody owns {name}")
    box.run("sh", "-c", "kill -KILL " + pid)
    wait_until(lambda: owner_of(box, name) != pid, f"the bus notices the end of {name}")


def log_of_daemon(box, *options):
    return box.journal("--unit=" + UNIT, *options)
