"""The daemon ends when nobody needs it, when it hangs, and when it cannot live; and comes back."""
from checking import UNIT, check, expect, expect_equal, expect_in
from upgrade import DAEMON_NAME, expect_upgrade_works, kill
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
    wait_until(lambda: box.property(UNIT, "ActiveState") == "inactive", "the daemon ends by its idle time")
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
    wait_until(lambda: box.property(UNIT, "Result") == "watchdog", "the watchdog ends the daemon")
    wait_until(lambda: box.property(UNIT, "ActiveState") == "failed", "the unit has ended", within=100)
    expect_in("Watchdog timeout (limit 2s)!", box.journal("--unit=" + UNIT), "the journal")
    box.run("daxctl", "status")
    expect(invocation(box) != first, "the next call starts the unit anew")
    expect_upgrade_works(box)


# What a caller is told. dbus-daemon does not hear of a start that fails, and waits for the name.
WAITED = ("daxctl: RemoteObjectActivationTimedOut: Failed to activate service "
          "'org.kovan.tv.dax.service.servicemanager': timed out (service_start_timeout=25000ms)")
NOT_STARTED = "daxctl: RemoteObjectNotAccessible: Could not activate remote peer: "
TOLD_OF_LIMIT = {"dbus-daemon": [WAITED], "dbus-broker": [NOT_STARTED + "startup job failed."]}
# The program may be dead before or after systemd takes it for started.
TOLD_OF_DEATH = {"dbus-daemon": [WAITED], "dbus-broker": [NOT_STARTED + why for why in
                                                          ("unit failed.", "startup job failed.")]}


def expect_caller_is_told(box, texts):
    done = box.run("daxctl", "status", check=False)
    expect_equal((done.status, done.errors in texts), (1, True), f"that a caller is told one of {texts}: {done}")


@check("A daemon that dies again and again after it was called is given up; callers are told, and so is the journal")
def crash_loop(bench):
    box = bench.booted_box()
    limits = (box.property(UNIT, "StartLimitIntervalUSec"), box.property(UNIT, "StartLimitBurst"))
    expect_equal(limits, ("1min", "5"), "the limits of the unit")
    # However slow this machine is, the starts fall into one interval.
    box.write(DROP_IN, "[Unit]\nStartLimitIntervalSec=1h\n")
    box.run("systemctl", "daemon-reload")
    for _ in range(5):
        box.run("daxctl", "status")
        kill(box, DAEMON_NAME)
        wait_until(lambda: box.property(UNIT, "ActiveState") == "failed", "systemd sees the death")
    expect_caller_is_told(box, TOLD_OF_LIMIT[bench.bus])
    expect_in("Start request repeated too quickly.", box.journal("--unit=" + UNIT), "the journal")
    box.run("systemctl", "reset-failed", UNIT)
    expect_upgrade_works(box)


@check("Callers of a daemon that cannot start are told, and the next one that can is started")
def dies_before_its_name(bench):
    box = bench.booted_box()
    drop_in(box, "ExecStart=\nExecStart=/bin/false\n")
    expect_caller_is_told(box, TOLD_OF_DEATH[bench.bus])
    expect_in("Main process exited, code=exited, status=1/FAILURE", box.journal("--unit=" + UNIT), "the journal")
    box.run("rm", DROP_IN)
    box.run("systemctl", "daemon-reload")
    expect_upgrade_works(box)
