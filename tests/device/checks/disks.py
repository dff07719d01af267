"""The data partition is full, read-only or absent; the state folder is full."""
import os
import subprocess

from checking import UNIT, check, expect_equal, expect_in, outside
from disk import Disk
from upgrade import (CALLS, calls_of_core, expect_no_lock, expect_refused, expect_upgrade_works, expect_whole_lock,
                     lock_of, play, release_lock, run_upgrade)


def box_with(bench, place):
    """A box with a disk of its own at this place."""
    disk = Disk(bench.folder + "/disk")
    os.rmdir(disk.place + "/lost+found")
    bench.at_end(disk.unmount)
    box = bench.new_box()
    box.bind(disk.place, place)
    box.boot()
    play(box)
    return box, disk


def fill(disk):
    """Until not one block is free."""
    for number, size in enumerate(("64k", "1k")):
        subprocess.run(["dd", "if=/dev/zero", f"of={disk.place}/filler{number}", f"bs={size}"], capture_output=True,
                       check=False)
    expect_equal(os.statvfs(disk.place).f_bavail, 0, "the free blocks of a full disk")


def make_room(disk):
    for number in range(2):
        os.unlink(f"{disk.place}/filler{number}")


@check("On a full data partition an upgrade ends before the core finalizes, and works again when there is room")
def data_full(bench):
    box, disk = box_with(bench, "/mnt/systemrw")
    fill(disk)
    report = run_upgrade(box)
    expect_in("Flushing file failed.", str(report), "what the client is told")
    expect_equal(calls_of_core(box).count("startFinalization"), 0, "how often the core was told to finalize")
    expect_equal(lock_of(box).get("record"), "torn", "the lock that could not be written")
    expect_refused(box)
    make_room(disk)
    expect_refused(box)
    release_lock(box)
    expect_upgrade_works(box)


@check("On a read-only data partition a lock stays in force, and no upgrade begins")
def data_read_only(bench):
    box, disk = box_with(bench, "/mnt/systemrw")
    expect_upgrade_works(box)
    box.run("systemctl", "stop", UNIT)
    outside("mount", "-o", "remount,ro", disk.place)
    expect_refused(box)
    expect_whole_lock(box)
    done = box.run("daxctl", "installation-lock", "release", "--yes", check=False)
    expect_equal(done.status, 1, f"the status of a release that cannot be ({done})")

    outside("mount", "-o", "remount,rw", disk.place)
    release_lock(box)
    outside("mount", "-o", "remount,ro", disk.place)
    box.write(CALLS, "")
    report = run_upgrade(box)
    expect_in("Unable to open date register file", str(report), "what the client is told")
    expect_equal(calls_of_core(box).count("startInstallation"), 0, "how often the core was told to install")
    expect_no_lock(box)

    outside("mount", "-o", "remount,rw", disk.place)
    expect_upgrade_works(box)


@check("Without its data folder the daemon does not start, so that no lock is overlooked; the journal says why")
def data_absent(bench):
    box = bench.booted_box()
    box.run("mv", "/mnt/systemrw/org.kovan.tv.dax", "/mnt/systemrw/away")
    done = box.run("daxctl", "status", check=False)
    expect_equal(done.status, 1, "the status of a caller")
    expect_in("/mnt/systemrw/org.kovan.tv.dax: No such file or directory", box.journal("--unit=" + UNIT), "the journal")
    box.run("mv", "/mnt/systemrw/away", "/mnt/systemrw/org.kovan.tv.dax")
    box.run("systemctl", "reset-failed", UNIT)
    expect_upgrade_works(box)


@check("A data partition that cannot be mounted keeps the daemon from starting, and the journal says so")
def data_not_mounted(bench):
    box = bench.booted_box()
    box.write("/run/systemd/system/mnt-systemrw.mount",
              "[Mount]\nWhat=none\nWhere=/mnt/systemrw\nType=no-such-system\n")
    box.run("systemctl", "daemon-reload")
    done = box.run("daxctl", "status", check=False)
    expect_equal(done.status, 1, "the status of a caller")
    expect_in(f"Dependency failed for {UNIT}", box.journal("--unit=" + UNIT), "the journal")


@check("With a full state folder upgrades work, a setting that cannot be kept is refused, and those of before stay")
def state_full(bench):
    box, disk = box_with(bench, "/var/lib/kovan")
    box.run("kovanctl", "setting", "set", "db/test/kept", "int", "1")
    fill(disk)
    refused = box.run("kovanctl", "setting", "set", "db/test/" + "long" * 100, "string", "x" * 20000, check=False)
    expect_equal((refused.status, "No space left on device" in refused.errors), (1, True), f"a setting ({refused})")
    expect_upgrade_works(box)
    expect_equal(box.run("kovanctl", "setting", "get", "db/test/kept").output, "1", "the setting of before")
    make_room(disk)
    box.run("kovanctl", "setting", "set", "db/test/kept", "int", "2")
    expect_equal(box.run("kovanctl", "setting", "get", "db/test/kept").output, "2", "the setting when there is room")
