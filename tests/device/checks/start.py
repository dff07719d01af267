"""The daemon starts when it is called."""
import json
import re

from checking import UNIT, Failed, check, expect, expect_equal, expect_in
from upgrade import DAEMON_NAME, owner_of

LOG_LINE = re.compile(r"\[DAXService-[\d.]+\]\[\d+ [^\]]+\]\[\d+\]\[(DBG|INF|WRN|ERR)\] (\w+\.(?:cpp|h):\d+>)?")
PRIORITIES = {"DBG": "7", "INF": "6", "WRN": "4", "ERR": "4"}


@check("The first call starts the unit through systemd")
def first_call_starts_the_unit(bench):
    box = bench.booted_box()
    expect_equal(box.property(UNIT, "ActiveState"), "inactive", "the state of the unit before the first call")
    status = box.run("daxctl", "status")
    expect_in("daemon            was not running; this has started it", status.output, "the status")
    expect_equal(box.property(UNIT, "ActiveState"), "active", "the state of the unit")
    expect_equal(owner_of(box, DAEMON_NAME), box.property(UNIT, "MainPID"), "the process that owns the name")


@check("The journal has the log of the daemon, with level, file and line")
def journal_has_the_log(bench):
    box = bench.booted_box()
    box.run("daxctl", "status")
    entries = [json.loads(line) for line in box.journal("--unit=" + UNIT, "--output=json").splitlines()]
    logged = [entry for entry in entries if entry.get("SYSLOG_IDENTIFIER") == "org.kovan.tv.dax.DAX"]
    expect(len(logged) > 20, f"the journal has more than 20 lines of the daemon's log, not {len(logged)}")
    with_place = 0
    for entry in logged:
        found = LOG_LINE.match(entry["MESSAGE"])
        if not found:
            raise Failed(f"this is no line of the log: {entry['MESSAGE']}")
        expect_equal(entry["PRIORITY"], PRIORITIES[found[1]], f"the priority of: {entry['MESSAGE']}")
        with_place += found[2] is not None
    expect(with_place > 20, f"more than 20 lines have a file and line, not {with_place}")


@check("systemd watches the daemon, with the limit of 300 s that it sets itself")
def systemd_watches(bench):
    box = bench.booted_box()
    box.run("daxctl", "status")
    expect_equal(box.property(UNIT, "WatchdogUSec"), "5min", "the limit of the watchdog")
