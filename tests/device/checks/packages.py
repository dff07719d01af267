"""The packages are installed, upgraded, removed and purged while the box runs."""
import os
import shutil

from checking import UNIT, check, expect, expect_equal, outside
from checks.callers import add_user
from root import field_of, packages_in
from upgrade import (CLIENT, DAEMON_NAME, LOCK_FILE, calls_of_core, expect_refused, expect_upgrade_works,
                     expect_whole_lock, owner_of, play, release_lock, start_upgrade, wait_for_client, wait_for_step)

EARLIER = "~earlier"  # behind a version: sorts before it
SETTING = "db/test/kept"
OF_THE_PACKAGES = ("/etc/kovan", "/var/lib/kovan", "/var/log/kovan", "/run/kovan")
# What installing anything changes.
OF_THE_SYSTEM = ("/var/lib/dpkg", "/var/log", "/var/cache", "/var/lib/systemd", "/etc/group", "/etc/gshadow",
                 "/etc/ld.so.cache")


def put_packages(bench, box):
    """Into the folder /new of the box, and those of an earlier version into /old."""
    for folder in ("/old", "/new"):
        os.makedirs(box.root + folder)
    for package in packages_in(bench.options.packages):
        shutil.copy(package, box.root + "/new")
        version = field_of(package, "Version")
        tree = f"{bench.folder}/{os.path.basename(package)}.tree"
        outside("dpkg-deb", "--raw-extract", package, tree)
        control = tree + "/DEBIAN/control"
        with open(control, encoding="utf-8") as file:
            text = file.read().replace(version, version + EARLIER)
        with open(control, "w", encoding="utf-8") as file:
            file.write(text)
        outside("dpkg-deb", "--root-owner-group", "-Znone", "--build", tree, box.root + "/old")


def box_with_packages_beside(bench):
    box = bench.new_box(installed=False)
    put_packages(bench, box)
    box.boot()
    return box


def names_of_packages(bench):
    return [field_of(package, "Package") for package in packages_in(bench.options.packages)]


def install(box, folder):
    box.run("sh", "-c", f"DEBIAN_FRONTEND=noninteractive dpkg --install {folder}/*.deb")


def version_of(box, package):
    return box.run("dpkg-query", "--show", "--showformat=${Version}", package).output


def files_of(box):
    """All that is on the box's own disk, but for what the system writes about itself."""
    found = box.run("find", "/", "-xdev", "-not", "-path", "/old*", "-not", "-path", "/new*").output.splitlines()
    return {name for name in found if not name.startswith(OF_THE_SYSTEM)}


def folders_left(box):
    return [folder for folder in OF_THE_PACKAGES if box.exists(folder)]


@check("Installed in a running box, all works at once, also for a member of the group dax")
def install_in_running_box(bench):
    box = box_with_packages_beside(bench)
    install(box, "/new")
    expect_equal(box.property(UNIT, "ActiveState"), "inactive", "the state of the unit, which nobody has called")
    add_user(box, "viewer", group="dax")
    done = box.run("daxctl", "search", user="viewer", check=False)
    expect_equal(done.status, 0, f"a search of a member of the group ({done})")
    expect_upgrade_works(box)


@check("An upgrade of the packages leaves a running upgrade of the device alone")
def upgrade_over_transaction(bench):
    box = box_with_packages_beside(bench)
    install(box, "/old")
    play(box, installation=25)
    start_upgrade(box)
    wait_for_step(box, "installation")
    before = owner_of(box, DAEMON_NAME)

    install(box, "/new")
    expect_equal(version_of(box, "dax-service").endswith(EARLIER), False, "whether the version is the earlier one")
    expect_equal(owner_of(box, DAEMON_NAME), before, "the process of the daemon")
    expect_equal(calls_of_core(box).count("startFinalization"), 0, "the finalizations: the upgrade is still under way")

    said = wait_for_client(box)
    expect_equal((box.property(CLIENT, "ExecMainStatus"), said.splitlines()[-1].split(".")[0]), ("0", "Finalized"),
                 "how the upgrade ended")
    expect_whole_lock(box)
    box.run("systemctl", "restart", UNIT)
    expect_refused(box)
    release_lock(box)
    expect_upgrade_works(box)


@check("Removed, the packages leave the lock and the settings for the next installation")
def remove(bench):
    box = box_with_packages_beside(bench)
    install(box, "/new")
    expect_upgrade_works(box)
    box.run("kovanctl", "setting", "set", SETTING, "int", "1")
    box.run("sh", "-c", f"dpkg --remove {' '.join(names_of_packages(bench))}")
    expect_equal((owner_of(box, DAEMON_NAME), box.exists("/usr/bin/DAXService")), (None, False), "what is left to run")
    expect(box.exists(LOCK_FILE), "the lock file is there")

    install(box, "/new")
    expect_whole_lock(box)
    expect_refused(box)
    expect_equal(box.run("kovanctl", "setting", "get", SETTING).output, "1", "the setting")


@check("Purged, the packages leave nothing but a lock that is in force")
def purge(bench):
    box = box_with_packages_beside(bench)
    before = files_of(box)
    install(box, "/new")
    expect_upgrade_works(box)
    box.run("kovanctl", "setting", "set", SETTING, "int", "1")
    expect_equal(folders_left(box), list(OF_THE_PACKAGES), "the folders of the packages while they are installed")
    box.run("sh", "-c", f"dpkg --purge {' '.join(names_of_packages(bench))}")
    folders = {LOCK_FILE.rsplit("/", count)[0] for count in range(1, 5)}
    expect_equal(files_of(box) - before - folders, {LOCK_FILE}, "what is left while the lock is in force")
    expect_equal(folders_left(box), [], "the folders of the packages that are left")

    install(box, "/new")
    release_lock(box)
    box.run("daxctl", "search")
    box.run("sh", "-c", f"dpkg --purge {' '.join(names_of_packages(bench))}")
    expect_equal(files_of(box) - before - {"/mnt/systemrw"}, set(), "what is left without a lock")
    expect_equal(folders_left(box), [], "the folders of the packages that are left without a lock")
