"""The power goes in the middle of an upgrade."""
import random
import re
import subprocess
import time

from checking import Failed, check, expect, expect_equal, json_of, outside
from cutting import COUNTER, IN_CLOSE_WRITE, IN_CREATE, IN_MODIFY, OLD_DATE_SHOWN, Counter, CutBench, LockWatch, Run
from upgrade import (calls_of_core, expect_refused, expect_upgrade_works, lock_of, play, release_lock, run_upgrade)

HARD_CUTS = 20
SPREAD_CUTS = 40
AIMED_CUTS = 20
CUTS_WITHOUT_SYNC = 10  # at most; the first that loses something is enough
RELIED_ON = "the lock that the client or the core relies on"
LATEST_AFTER_LOCK = 0.004  # seconds, of an aimed cut


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
    if told_finalized or core_finalizes:
        expect_equal(lock.get("record"), "verified", f"{RELIED_ON}: {lock}")
    if lock["installationLock"]:
        expect(lock["record"] in ("verified", "torn"), f"the lock is whole, or said to be torn: {lock}")
        expect_refused(box)
        release_lock(box)
    box.run("kovanctl", "setting", "set", "db/test/after", "int", "1")
    expect_equal(box.run("kovanctl", "setting", "get", "db/test/after").output, "1", "a setting that is set after it")
    return lock


@check(f"The power goes {HARD_CUTS} times in an upgrade: the box boots, the daemon answers, no lock is lost")
def power_goes(bench):
    box = bench.booted_box()
    length = length_of_upgrade(box)
    outcomes = []
    for number in range(HARD_CUTS):
        box.write("/var/log/kovan/core-calls.jsonl", "")
        play(box)
        run = Run(box)
        time.sleep(length * 1.1 * number / (HARD_CUTS - 1))  # the moment of the cut, and not a wait for anything
        box.cut()
        run.end()
        box.boot()
        lock = expect_sound_after_cut(box, run.was_told_finalized(), "startFinalization" in calls_of_core(box))
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
    """Cuts once, and checks what is there after it. What became of the lock."""
    cuts.prepare()
    watch = LockWatch(cuts.data)
    counter = Counter(cuts.box, cuts.counted)
    run = Run(cuts.box)
    wait_for_moment(watch)
    cuts.cut()
    watch.close()
    run.end()
    counter.end()
    cuts.restore()
    box = cuts.box
    lock = expect_sound_after_cut(box, run.was_told_finalized(), "startFinalization" in calls_of_core(box))
    expect_old_or_new_date(box)
    kept = box.run("kovanctl", "setting", "get", COUNTER, check=False).output
    expect(int(kept or 0) >= counter.acknowledged, f"a setting of {counter.acknowledged} was acknowledged, not {kept}")
    cuts.counted = int(kept or 0)
    return lock.get("record", "none")


def spread_moments(seed, length):
    """How each round waits for the moment of its cut, which may be any of an upgrade."""
    chance = random.Random(f"spread {seed}")
    for _ in range(SPREAD_CUTS):
        delay = chance.uniform(0, length * 1.2)
        yield lambda watch, delay=delay: time.sleep(delay)


def aimed_moments(seed, length):
    """Those at which the lock file is made, written and closed, and a moment later."""
    chance = random.Random(f"aimed {seed}")
    for _ in range(AIMED_CUTS):
        kind = chance.choice([IN_CREATE, IN_MODIFY, IN_CLOSE_WRITE])
        delay = chance.uniform(0, LATEST_AFTER_LOCK)
        yield lambda watch, kind=kind, delay=delay: (watch.wait(kind, 20 + length), time.sleep(delay))


def cut_again_and_again(bench, moments):
    cuts = CutBench(bench)
    length = length_of_upgrade(cuts.box)
    found = [one_true_cut(cuts, wait) for wait in moments(bench.seed, length)]
    expect_upgrade_works(cuts.box)
    return f"seed {bench.seed}; locks after the cuts: {found.count('none')} none, {found.count('verified')} whole, " \
           f"{found.count('torn')} torn; {cuts.counted} settings acknowledged"


@check(f"The power is cut {SPREAD_CUTS} times in an upgrade: what was synced is there, and who was told of it finds it")
def power_is_cut(bench):
    return cut_again_and_again(bench, spread_moments)


@check(f"The power is cut {AIMED_CUTS} times while the lock file is made: who was told of it finds it")
def power_is_cut_at_the_lock(bench):
    return cut_again_and_again(bench, aimed_moments)


NO_SYNC = """
int fsync(int f) { (void)f; return 0; }
int fdatasync(int f) { (void)f; return 0; }
int msync(void *a, unsigned long b, int c) { (void)a; (void)b; (void)c; return 0; }
void sync(void) {}
"""


@check("A daemon that does not sync loses its lock at such a cut: the checks above would see it")
def cut_without_sync(bench):
    source = bench.folder + "/nosync.c"
    with open(source, "w", encoding="ascii") as file:
        file.write(NO_SYNC)
    outside("cc", "-shared", "-fPIC", "-o", bench.folder + "/nosync.so", source)
    cuts = CutBench(bench, "LD_PRELOAD=/usr/lib/nosync.so")
    subprocess.run(["cp", bench.folder + "/nosync.so", cuts.box.root + "/usr/lib/nosync.so"], check=True)
    for number in range(CUTS_WITHOUT_SYNC):
        try:
            one_true_cut(cuts, lambda watch: (watch.wait(IN_CLOSE_WRITE, 30), time.sleep(0.3)))
        except Failed as failure:
            expect(str(failure).startswith(RELIED_ON), f"the lock is lost, and not: {failure}")
            return f"cut {number + 1}: {failure}"
    raise Failed(f"nothing was lost in {CUTS_WITHOUT_SYNC} cuts")
