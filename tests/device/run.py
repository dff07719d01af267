#!/usr/bin/env python3
"""What scripts/test-device does: installs the packages into a box, boots it, and checks them there. See --help and
docs/device-box.md."""
import argparse
import concurrent.futures
import importlib
import os
import random
import signal
import sys
import threading
import time
import traceback

sys.dont_write_bytecode = True
from box import CommandFailed, DidNotStart  # noqa: E402
from checking import CHECKS, Bench, Failed, Skipped  # noqa: E402
from confinement import RUN, NoBox, end_with, is_refusal, pass_over, run_confined  # noqa: E402
from disk import Disk  # noqa: E402
from root import Cache, bind, install, packages_in  # noqa: E402
from waiting import NeverHappened  # noqa: E402

TREE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.realpath(__file__))))
NO_BOX = 77
FAILING_UNIT = "[Unit]\nDescription=It fails at each boot\n[Service]\nType=oneshot\nExecStart=false\n"
GROUPS = ["runs", "start", "callers", "upgrades", "deaths", "idle", "sandbox", "power", "disks", "stops", "packages"]
ALONE = ["runs"]  # they look at what else there is
LONGEST = ["power"]
OVER_BOTH_BUSES = ["start", "callers", "upgrades", "deaths", "idle", "sandbox"]
BUSES = ["dbus-daemon", "dbus-broker"]


def read_options(words):
    options = argparse.ArgumentParser(prog="scripts/test-device", allow_abbrev=False,
                                      description="Boots the built packages in a box and checks them there.")
    options.add_argument("groups", nargs="*", metavar="GROUP", help="check only these: " + ", ".join(GROUPS))
    options.add_argument("--packages", default=os.path.join(TREE, "build/packages"), metavar="DIR",
                         help="the packages to check (build/packages)")
    options.add_argument("--cache", default=os.path.join(TREE, "build/device-box"), metavar="DIR",
                         help="where roots are kept between runs (build/device-box)")
    options.add_argument("--bus", choices=BUSES, help="check only over this one")
    options.add_argument("--seed", type=int, help="repeat the random choices of another run")
    options.add_argument("--jobs", type=int, default=3, help="how many checks run at a time (3); they mostly wait")
    options.add_argument("--shell", action="store_true", help="check nothing, but open a shell in a box that is on")
    options.add_argument("--list", action="store_true", help="list the checks, and check nothing")
    options.add_argument("--inside", type=int, help=argparse.SUPPRESS)  # in the namespaces of the run
    options.add_argument("--hold", action="store_true", help=argparse.SUPPRESS)  # keep a box and a disk until the end
    options.add_argument("--spoil", action="store_true", help=argparse.SUPPRESS)  # a unit fails at each boot
    given = options.parse_args(words)
    unknown = set(given.groups) - set(GROUPS)
    if unknown:
        options.error(f"there is no group {sorted(unknown)[0]}")
    return given


def chosen(options):
    """The checks to be run, each with the bus that it is run over."""
    for group in GROUPS:
        importlib.import_module("checks." + group)
    for bus in BUSES:
        for one in CHECKS:
            is_wanted = (not options.groups or one.group in options.groups) and options.bus in (None, bus)
            if is_wanted and (bus == BUSES[0] or one.group in OVER_BOTH_BUSES):
                yield one, bus


def label_of(one, bus):
    return f"{one.group}{'' if bus == BUSES[0] else ' over ' + bus}: {one.title}"


class Tally:
    """Prints a line for each check, and counts."""

    def __init__(self):
        self.counts = {"passed": 0, "FAILED": 0, "skipped": 0}
        self._lock = threading.Lock()

    def add(self, verdict, label, seconds, details=""):
        lines = [f"{verdict:<7} {label} ({seconds:.1f} s)", *("        " + line for line in details.splitlines())]
        with self._lock:
            self.counts[verdict] += 1
            print("\n".join(lines), flush=True)

    def close(self):
        if self.counts["skipped"]:
            print(f"{self.counts['skipped']} skipped: this machine does not let them be shown")
        print(f"{self.counts['passed']} passed, {self.counts['FAILED']} failed", flush=True)
        return 1 if self.counts["FAILED"] or not self.counts["passed"] else 0


def run_check(one, bus, make_bench, tally):
    began = time.monotonic()
    bench = make_bench()
    verdict, details = "passed", ""
    try:
        details = one.function(bench) or ""
    except Skipped as reason:
        verdict, details = "skipped", str(reason)
    except (Failed, NeverHappened) as failure:
        verdict, details = "FAILED", f"{failure}\n{bench.describe()}"
    except Exception:  # whatever a check meets is its failure, and not that of the others
        verdict, details = "FAILED", f"{traceback.format_exc()}{bench.describe()}"
    try:
        bench.close()
    except Exception:
        verdict, details = "FAILED", f"{details}\n{traceback.format_exc()}"
    tally.add(verdict, label_of(one, bus), time.monotonic() - began, details)


def hold(bench):
    """For a check of what a run leaves behind when it is killed."""
    box = bench.new_box()
    box.bind(Disk(f"{bench.folder}/{os.path.basename(os.environ[RUN])}").place, "/mnt/systemrw")
    box.boot()
    print("holding", flush=True)
    box.run("sleep", "infinity", within=None)


def spoil(root):
    """Adds a unit that fails at each boot."""
    units = root + "/etc/systemd/system/"
    os.makedirs(units + "multi-user.target.wants", exist_ok=True)
    with open(units + "fails.service", "w", encoding="ascii") as file:
        file.write(FAILING_UNIT)
    os.symlink("../fails.service", units + "multi-user.target.wants/fails.service")


def expect_box(bench):
    """That a small Debian boots, before it has anything of ours. Only where the kernel refuses that, there is no box;
    one that boots badly, or too slowly, is a failure."""
    box = bench.new_box(installed=False)
    if bench.options.spoil:
        spoil(box.root)
    try:
        box.boot()
    except DidNotStart as failure:
        if is_refusal(str(failure)):
            raise NoBox(str(failure)) from failure
        raise
    finally:
        bench.close()


def open_shell(bench):
    signal.signal(signal.SIGINT, pass_over)
    box = bench.booted_box()
    print("A box with the packages installed, and systemd. `exit` throws it away. Try: daxctl upgrade, journalctl -u "
          "DAXService", flush=True)
    box.shell()
    return 0


def run_inside(options):
    """In the namespaces of the run."""
    packages = packages_in(options.packages)
    base = Cache(options.cache).root_for(packages)
    seed = options.seed if options.seed is not None else random.randrange(1_000_000)
    if not options.shell:
        print(f"Seed {seed}", flush=True)
    folder = "/run/device"
    os.makedirs(folder)
    run = os.environ[RUN]
    base = bind(base, folder)
    expect_box(Bench(run, folder, [base], options, BUSES[0], seed))
    lowers = install(base, packages, folder)
    if options.hold:
        return hold(Bench(run, folder, lowers, options, BUSES[0], seed))
    if options.shell:
        return open_shell(Bench(run, folder, lowers, options, options.bus or BUSES[0], seed))
    tally = Tally()

    def run_one(one, bus):
        run_check(one, bus, lambda: Bench(run, folder, lowers, options, bus, seed), tally)

    all_of_them = list(chosen(options))
    for one, bus in all_of_them:
        if one.group in ALONE:
            run_one(one, bus)
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for one, bus in sorted(all_of_them, key=lambda pair: pair[0].group not in LONGEST):
            if one.group not in ALONE:
                pool.submit(run_one, one, bus)
    return tally.close()


def main(words):
    options = read_options(words)
    try:
        if options.list:
            for one, bus in chosen(options):
                print(label_of(one, bus))
            return 0
        if options.inside is not None:
            with end_with(options.inside):
                return run_inside(options)
        packages_in(options.packages)
        return run_confined([sys.executable, os.path.abspath(__file__), *words, "--inside"], options.shell)
    except NoBox as reason:
        print(f"No box can run here: {reason}", file=sys.stderr)
        return NO_BOX
    except (CommandFailed, DidNotStart, NeverHappened) as failure:
        print(f"scripts/test-device: a box does not boot: {failure}", file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
