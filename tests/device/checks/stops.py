"""Somebody stops or restarts the unit, or restarts the box, during an upgrade."""
from checking import UNIT, check, expect, expect_equal, expect_in
from checks.deaths import expect_next_upgrade_works, expect_told
from upgrade import CLIENT, STEPS, upgrade_until, wait_for_client


def expect_no_failure(box):
    expect_equal(box.property(UNIT, "Result"), "success", "how the unit ended")
    expect(box.run("systemctl", "is-failed", UNIT, check=False).output != "failed", "the unit has not failed")


def stop_in_each_step(bench, word):
    for step in STEPS:
        box = bench.booted_box()
        upgrade_until(box, step)
        before = box.property(UNIT, "InvocationID")
        box.run("systemctl", word, UNIT)
        expect_no_failure(box)
        expect_told(wait_for_client(box), "daemon")
        expect_equal(box.property(CLIENT, "ExecMainStatus"), "1", "the exit status of the client")
        expect(box.property(UNIT, "InvocationID") != before, "the daemon that ran has ended")
        expect_next_upgrade_works(box, step)
        expect_no_failure(box)
        box.cut()


@check("A stop of the unit in an upgrade is no failure, the client is told, and no lock is lost")
def stop_in_upgrade(bench):
    stop_in_each_step(bench, "stop")


@check("A restart of the unit in an upgrade is no failure, the client is told, and no lock is lost")
def restart_in_upgrade(bench):
    stop_in_each_step(bench, "restart")


@check("A reboot in an upgrade loses no lock, and the next upgrade works")
def reboot_in_upgrade(bench):
    for step in STEPS:
        box = bench.booted_box()
        upgrade_until(box, step)
        box.reboot()
        log = box.journal("--unit=" + UNIT, "--boot=-1")
        expect_in(UNIT + ": Deactivated successfully.", log, "the journal of the boot that ended")
        expect("Failed with result" not in log, f"the daemon ended in order when the box went down:\n{log[-500:]}")
        expect_next_upgrade_works(box, step)
        box.cut()
