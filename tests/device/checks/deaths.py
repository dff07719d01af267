"""Somebody is killed in the middle of an upgrade: the client, the core or the daemon."""
import re

from checking import UNIT, check, expect_equal, expect_in
from upgrade import (CLIENT, CORE_NAME, DAEMON_NAME, STEPS, calls_of_core, expect_no_lock, expect_refused,
                     expect_upgrade_works, expect_whole_lock, kill, reasons_of_cancels, release_lock, upgrade_until,
                     wait_for_client)
from waiting import wait_until

DISCONNECTED = "Invalidating Service, because ServiceManager client disconnected: "
# What the client is told. A call to the core that was under way ends otherwise than the next one.
TOLD = {
    "core": [r"TransactionInvalidatedException: There is no transaction of :[\d.]+\.",
             r"DAXUnknownException: Message recipient disconnected from message bus without replying"],
    "daemon": [r"TransactionInvalidatedException: m_serviceTransaction is already canceled or was never created\. "
               r"Sender: :[\d.]+",
               r"RemoteObjectNotAccessible: Message recipient disconnected from message bus without replying"],
}


def expect_told(said, victim):
    last = said.splitlines()[-1]
    known = any(re.fullmatch("daxctl: " + text, last) for text in TOLD[victim])
    expect_equal(known, True, f"whether the client is told of the death of the {victim}: {last}")


def expect_next_upgrade_works(box, step):
    """An upgrade that was being finalized holds the next one back, until somebody releases the lock."""
    if step == "finalization":
        expect_whole_lock(box)
        expect_refused(box)
        release_lock(box)
    else:
        expect_no_lock(box)
    expect_upgrade_works(box)


@check("A client that is killed ends its upgrade, whatever the step, and the next one works")
def client_is_killed(bench):
    for step in STEPS:
        box = bench.booted_box()
        upgrade_until(box, step)
        box.run("systemctl", "kill", "--signal=KILL", CLIENT)
        wait_until(lambda: reasons_of_cancels(box), "the core is told to cancel")
        expect_in(DISCONNECTED, reasons_of_cancels(box)[0], "the reason that the core is told")
        expect_next_upgrade_works(box, step)
        box.cut()


def end_by_death_of(box, name, victim):
    """Kills one of the two daemons, and sees that the upgrade of its client ends for that."""
    kill(box, name)
    expect_told(wait_for_client(box), victim)
    expect_equal(box.property(CLIENT, "ExecMainStatus"), "1", "the exit status of the client")


@check("A core that is killed ends the upgrade, its client is told, and the next one works")
def core_is_killed(bench):
    for step in STEPS:
        box = bench.booted_box()
        upgrade_until(box, step)
        end_by_death_of(box, CORE_NAME, "core")
        expect_next_upgrade_works(box, step)
        box.cut()


@check("A daemon that is killed ends the upgrade, its client is told, and the next one works")
def daemon_is_killed(bench):
    for step in STEPS:
        box = bench.booted_box()
        upgrade_until(box, step)
        end_by_death_of(box, DAEMON_NAME, "daemon")
        # The client's next call has started it anew. The new one knows no transaction, so that the core hears nothing.
        expect_equal(box.property(UNIT, "ActiveState"), "active", "the state of the unit")
        expect_equal(calls_of_core(box).count("cancelCoreTransaction"), 0, "how often the core was told to cancel")
        expect_next_upgrade_works(box, step)
        box.cut()
