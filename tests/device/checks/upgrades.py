"""An upgrade from its start to its end, and what stays of it."""
from checking import check, expect_equal
from upgrade import (SETTINGS, calls_of_core, expect_refused, expect_whole_lock, run_upgrade)

KEPT_KEY = "db/menu/support/softwareupdate/use_cellular_int"
PRIORITY = SETTINGS + "currentServiceClientPriority"


def setting(box, key):
    return box.run("kovanctl", "setting", "get", key, check=False).output


@check("An upgrade ends with a whole lock, the next one is refused, and both stay so over a reboot")
def upgrade_and_reboot(bench):
    box = bench.booted_box()
    box.run("kovanctl", "setting", "set", KEPT_KEY, "int", "1")
    expect_equal(run_upgrade(box).get("outcome"), "finalized", "the outcome of the upgrade")
    expect_equal(calls_of_core(box).count("startFinalization"), 1, "how often the core was told to finalize")
    expect_whole_lock(box)
    expect_refused(box)
    expect_equal((setting(box, KEPT_KEY), setting(box, PRIORITY)), ("1", "-1"), "a db/ and a memory/ setting before")

    box.reboot()

    expect_whole_lock(box)
    expect_refused(box)
    expect_equal((setting(box, KEPT_KEY), setting(box, PRIORITY)), ("1", ""), "a db/ and a memory/ setting after it")
