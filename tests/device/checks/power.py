"""The power goes in the middle of an upgrade."""
import random
import re
import subprocess
import time

from checking import Failed, check, expect, expect_equal, json_of, outside
from cutting import COUNTER, IN_CLOSE_WRITE, IN_CREATE, IN_MODIFY, OLD_DATE_SHOWN, Counter, CutBench, LockWatch, Run
from upgrade import (calls_of_core, expect_refused, expect_upgrade_works, lock_of, play, release_lock, run_upgrade)
from waiting import wait_until

HARD_CUTS = 20
SPREAD_CUTS = 40
AIMED_CUTS = 20
CUTS_WITHOUT_SYNC = 10  # at most; the first that loses something is enough
CUTS_WITH_SYNC = 3
TELLING_SECONDS = 60  # of an upgrade that takes no time at the core, on a busy machine


class LockLost(Failed):
    """The lock that the client or the core relies on is not whole."""

    def __init__(self, lock):
        super().__init__(f"the lock that the client or the core relies on: {lock}")
        self.lock = lock


def length_of_upgrade(box):
    """In seconds, of an upgrade that takes no time at the core."""
    began = time.monotonic()
    expect_equal(run_upgrade(box).get("outcome"), "finalized", "the outcome of an upgrade")
    release_lock(box)
    return time.monotonic() - began


def expect_sound_after_cut(box, told_finalized, core_finalizes):
    """The box is on again."""
    status = json_of(box.run("daxctl", "status", "--json", check=False))
    expect_equal(status.get("error"), None, "an error in the status after the cut")
    lock = lock_of(box)
    if (told_finalized or core_finalizes) and lock.get("record") != "verified":
        raise LockLost(lock)
    if lock["installationLock"]:
        expect(lock["record"] in ("verified", "torn"), f"the lock is whole, or said to be torn: {lock}")
        expect_refused(box)
        release_lock(box)
    box.run("kovanctl", "setting", "set", "db/test/after", "int", "1")
    expect_equal(box.run("kovanctl", "setting", "get", "db/test/after").output, "1", "a setting that is set after it")
    return lock


def is_core_told(box):
    return "startFinalization" in calls_of_core(box)


def core_is_told(box, _):
    """Waits for a moment at which the lock has to be on the disk, however slow this machine is."""
    wait_until(lambda: is_core_told(box), "the core is told to finalize", within=TELLING_SECONDS)


@check(f"The power goes {HARD_CUTS} times in an upgrade: the box boots, the daemon answers, no lock is lost")
def power_goes(bench):
    box = bench.booted_box()
    length = length_of_upgrade(box)
    outcomes = []
    for number in range(HARD_CUTS):
        box.write("/var/log/kovan/core-calls.jsonl", "")
        play(box)
        run = Run(box)
        if number < HARD_CUTS - 1:
            time.sleep(length * 1.1 * number / (HARD_CUTS - 2))  # the moment of the cut, and not a wait for anything
        else:
            core_is_told(box, None)
        box.cut()
        run.end()
        box.boot()
        lock = expect_sound_after_cut(box, run.was_told_finalized(), is_core_told(box))
        outcomes.append(lock.get("record", "none"))
    expect_upgrade_works(box)
    expect("none" in outcomes and "verified" in outcomes, f"the cuts come before and after the lock: {outcomes}")
    return f"locks after the cuts: {outcomes.count('none')} none, {outcomes.count('verified')} whole, " \
           f"{outcomes.count('torn')} torn"


def expect_old_or_new_date(box):
    date = json_of(box.run("daxctl", "status", "--json"))["lastSearch"]
    is_new = date is not None and re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d", date) and date > "2026"
    expect(date == OLD_DATE_SHOWN or is_new, f"the date of the last search is the old or the new one, not {date}")


def one_true_cut(cuts, wait_for_moment):
    """Cuts once, and checks what is there after it. What became of the lock, and whether the core had been told to
    finalize. The moment is waited for with a box and a watch."""
    cuts.prepare()
    watch = LockWatch(cuts.data)
    counter = Counter(cuts.box, cuts.counted)
    run = Run(cuts.box)
    wait_for_moment(cuts.box, watch)
    cuts.cut()
    watch.close()
    run.end()
    counter.end()
    cuts.restore()
    box = cuts.box
    is_told = is_core_told(box)
    lock = expect_sound_after_cut(box, run.was_told_finalized(), is_told)
    expect_old_or_new_date(box)
    kept = box.run("kovanctl", "setting", "get", COUNTER, check=False).output
    expect(int(kept or 0) >= counter.acknowledged, f"a setting of {counter.acknowledged} was acknowledged, not {kept}")
    cuts.counted = int(kept or 0)
    return lock.get("record", "none"), is_told


def spread_moments(seed, cuts):
    """How each round waits for the moment of its cut, which may be any of an upgrade. The first is before the lock, and
    the last behind it, however slow the upgrades of this machine are just then."""
    length = length_of_upgrade(cuts.box)
    chance = random.Random(f"spread {seed}")
    yield lambda *_: None
    for _ in range(SPREAD_CUTS - 2):
        delay = chance.uniform(0, length * 1.2)
        yield lambda *_, delay=delay: time.sleep(delay)
    yield core_is_told


def time_to_write_lock(cuts):
    """In seconds, from the moment at which the file is made until it is closed."""
    watch = LockWatch(cuts.data)
    run = Run(cuts.box)
    watch.wait(IN_CREATE, TELLING_SECONDS)
    began = time.monotonic()
    watch.wait(IN_CLOSE_WRITE, TELLING_SECONDS)
    length = time.monotonic() - began
    run.end()
    watch.close()
    release_lock(cuts.box)
    return length


def aimed_moments(seed, cuts):
    """Those at which the lock file is made and written, and others until it is closed."""
    play(cuts.box)
    length = time_to_write_lock(cuts)
    chance = random.Random(f"aimed {seed}")
    for _ in range(AIMED_CUTS):
        kind = chance.choice([IN_CREATE, IN_MODIFY])
        delay = chance.choice([0, chance.uniform(0, length)])
        yield lambda _, watch, kind=kind, delay=delay: (watch.wait(kind, TELLING_SECONDS), time.sleep(delay))


def cut_again_and_again(bench, moments):
    """What became of the locks, and a text about it."""
    cuts = CutBench(bench)
    found = [one_true_cut(cuts, wait) for wait in moments(bench.seed, cuts)]
    expect_upgrade_works(cuts.box)
    locks = [lock for lock, _ in found]
    return locks, f"seed {bench.seed}; locks after the cuts: {locks.count('none')} none, {locks.count('verified')} " \
        f"whole, {locks.count('torn')} torn; {len([told for _, told in found if not told])} cuts before the core was " \
        f"told; {cuts.counted} settings acknowledged"


@check(f"The power is cut {SPREAD_CUTS} times in an upgrade: what was synced is there, and who was told of it finds it")
def power_is_cut(bench):
    locks, text = cut_again_and_again(bench, spread_moments)
    expect("none" in locks and "verified" in locks, f"the cuts come before and after the lock: {text}")
    return text


@check(f"The power is cut {AIMED_CUTS} times while the lock file is made: who was told of it finds it")
def power_is_cut_at_the_lock(bench):
    return cut_again_and_again(bench, aimed_moments)[1]


NO_SYNC = """
int fsync(int f) { (void)f; return 0; }
int fdatasync(int f) { (void)f; return 0; }
int msync(void *a, unsigned long b, int c) { (void)a; (void)b; (void)c; return 0; }
void sync(void) {}
"""


def first_loss(cuts):
    """None when no cut loses the lock."""
    for _ in range(CUTS_WITHOUT_SYNC):
        try:
            one_true_cut(cuts, core_is_told)
        except LockLost as lost:
            return lost
    return None


@check("A daemon that does not sync loses its lock at such a cut, and one that does keeps it: the checks above see it")
def cut_without_sync(bench):
    source = bench.folder + "/nosync.c"
    with open(source, "w", encoding="ascii") as file:
        file.write(NO_SYNC)
    outside("cc", "-shared", "-fPIC", "-o", bench.folder + "/nosync.so", source)
    cuts = CutBench(bench, "LD_PRELOAD=/usr/lib/nosync.so")
    subprocess.run(["cp", bench.folder + "/nosync.so", cuts.box.root + "/usr/lib/nosync.so"], check=True)
    lost = first_loss(cuts)
    expect(lost is not None, f"{CUTS_WITHOUT_SYNC} cuts lose the lock")
    expect(not lost.lock["installationLock"] or lost.lock["record"] == "torn", f"the lock is absent or torn: {lost}")
    with_sync = CutBench(bench)
    for _ in range(CUTS_WITH_SYNC):
        one_true_cut(with_sync, core_is_told)
    return str(lost)
