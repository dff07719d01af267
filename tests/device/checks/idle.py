"""The daemon ends when nobody needs it, when it hangs, and when it cannot live; and comes back."""
from checking import UNIT, check, expect, expect_equal, expect_in
from upgrade import expect_upgrade_works
from waiting import wait_until

DROP_IN = f"/run/systemd/system/{UNIT}.d/90-test.conf"
SHORT_LIMIT = "2000000"  # microseconds


def drop_in(box, text):
    box.write(DROP_IN, "[Service]\n" + text)
    box.run("systemctl", "daemon-reload")


def program_of(box):
    """The command line of the unit, without its options."""
    return box.property(UNIT, "ExecStart").split("path=")[1].split(" ")[0]


def invocation(box):
    return box.property(UNIT, "InvocationID")


@check("When nobody has called it for its idle time, the daemon ends in order, and the next call starts it anew")
def idle_end(bench):
    box = bench.booted_box()
    drop_in(box, f"ExecStart=\nExecStart={program_of(box)} --idle-timeout=1\n")
    box.run("daxctl", "status")
    first = invocation(box)
    wait_until(lambda: box.property(UNIT, "ActiveState") == "inactive", "the daemon ends by its idle time", within=15)
    expect_equal((box.property(UNIT, "Result"), box.property(UNIT, "ExecMainStatus")), ("success", "0"), "how it ended")
    box.run("daxctl", "status")
    expect(invocation(box) != first, "the next call starts the unit anew")


def shorten_watchdog(box):
    """Tells systemd a new limit in the name of the daemon, from a process of the unit."""
    group = box.property(UNIT, "ControlGroup")
    enter = " ".join(f"{place}{group}/cgroup.procs" for place in
                     ("/sys/fs/cgroup/systemd", "/sys/fs/cgroup/unified", "/sys/fs/cgroup")
                     if box.exists(f"{place}{group}/cgroup.procs"))
    box.run("sh", "-c", f"for group in {enter}; do echo $$ >$group; done; "
            f"NOTIFY_SOCKET=/run/systemd/notify exec systemd-notify WATCHDOG_USEC={SHORT_LIMIT}")
    wait_until(lambda: box.property(UNIT, "WatchdogUSec") == "2s", "systemd takes the shorter limit")


@check("A daemon that hangs is killed by the watchdog of systemd, and the next call starts it anew")
def watchdog(bench):
    box = bench.booted_box()
    drop_in(box, "NotifyAccess=all\n")
    box.run("daxctl", "status")
    first = invocation(box)
    shorten_watchdog(box)
    box.run("systemctl", "kill", "--signal=STOP", UNIT)
    wait_until(lambda: box.property(UNIT, "Result") == "watchdog", "the watchdog ends the daemon", within=15)
    wait_until(lambda: box.property(UNIT, "ActiveState") == "failed", "the unit has ended", within=100)
    expect_in("Watchdog timeout (limit 2s)!", box.journal("--unit=" + UNIT), "the journal")
    box.run("daxctl", "status")
    expect(invocation(box) != first, "the next call starts the unit anew")
    expect_upgrade_works(box)


@check("A daemon that dies at each start is given up for a while; callers are told, and so is the journal")
def crash_loop(bench):
    box = bench.booted_box()
    drop_in(box, "ExecStart=\nExecStart=/bin/false\n")
    # Not by calls: each would wait until the bus gives the start up, and the minute would be over.
    for _ in range(int(box.property(UNIT, "StartLimitBurst"))):
        box.run("systemctl", "start", UNIT)
        wait_until(lambda: box.property(UNIT, "ActiveState") == "failed", "the daemon dies")
    done = box.run("daxctl", "status", check=False)
    expect_equal(done.status, 1, "the status of a caller")
    expect_in("Start request repeated too quickly.", box.journal("--unit=" + UNIT), "the journal")
    box.run("rm", DROP_IN)
    box.run("systemctl", "daemon-reload")
    box.run("systemctl", "reset-failed", UNIT)
    expect_upgrade_works(box)
